// To whom the sheet's messages belong, and what stands above them.
#include "platform/inspect.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"
#include "tests/support/wave_player.h"

namespace {

class SheetMessageBoxes : public SheetTest {
protected:
    SheetMessageBoxes() : SheetTest(4) {
        for (unsigned card = 0; card < 4; ++card) {
            StoreText(card, TEXT("Name"), std::u16string(1, static_cast<char16_t>(u'A' + card)));
        }
    }
};

TEST_F(SheetMessageBoxes, BelongToThePageAndHaveTheirCaptions) {
    Follow(1, 0);
    Follow(3, 2);
    const Sheet& sheet = Open();
    const HWND page = sheet.Show(u"Clocks + Sync").Window();
    const ClockTreeUser tree(page);
    tree.Drag(u"D", u"C");
    tree.Command(u"B", u'B');
    tree.Drag(u"A", ClockTreeUser::Root);
    platform::AnswerMessageBoxes(IDNO);
    tree.ShiftRightClick(ClockTreeUser::Space);
    tree.Choose(u'R');
    WavePlayer player;
    ASSERT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    tree.Command(u"B", u'S');
    player.Shut();
    Cards().SetPresent(3, false);
    sheet.Apply();
    tree.OnItsThread([] {});

    const struct {
        const char16_t* TextBegins;
        const char16_t* Caption;
        HWND Owner;
        UINT Style;
    } expected[] = {
        {u"Your configuration has", u"Error", page,
         MB_ICONHAND},  // as the system calls what has no caption of its own
        {u"Another card is", u"Error", page, MB_ICONHAND},
        {u"Tessalink masters", u"KESTVOX.DLL", page, MB_ICONINFORMATION},
        {u"WARNING!", u"Kestrelvox(TM)", page,
         MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2 | MB_SYSTEMMODAL},
        {u"Clock selections", u"Error", page, MB_ICONHAND},
        {u"Could not save", u"Error", nullptr, MB_ICONHAND | MB_SYSTEMMODAL},
    };
    const std::vector<platform::MessageBoxRecord> boxes = platform::MessageBoxes();
    ASSERT_EQ(boxes.size(), std::size(expected));
    for (size_t box = 0; box < boxes.size(); ++box) {
        EXPECT_TRUE(boxes[box].Text.starts_with(expected[box].TextBegins)) << box;
        EXPECT_EQ(boxes[box].Caption, expected[box].Caption) << box;
        EXPECT_EQ(boxes[box].Owner, expected[box].Owner) << box;
        EXPECT_EQ(boxes[box].Style, expected[box].Style) << box;
    }
}

}  // namespace
