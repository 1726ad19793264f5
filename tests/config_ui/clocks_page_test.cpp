// The Clocks + Sync page: every card's clock source and place in the tree, as its user changes them, and
// what is saved of it.
#include <algorithm>
#include <optional>

#include "config_ui/resource.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"

namespace {

using Menu = std::vector<std::u16string>;

const WaveFormat Format = PcmFormat(44100, 2, 16);

constexpr DWORD Internal = 0;
constexpr DWORD Digital = 64;
constexpr DWORD Pll = 96;
constexpr DWORD Automatic = 97;

constexpr const char16_t* AnotherMaster = u"Another card is already the clock master.";
constexpr const char16_t* SeveralMasters =
    u"Your configuration has more than one card selected as the Tessalink master.\n"
    u"Please change your configuration so that only one card is the Tessalink master.";
constexpr const char16_t* InUse =
    u"Clock selections cannot be changed while playback/recording is in progress.";
constexpr const char16_t* NoAutomaticMaster =
    u"Tessalink masters cannot use automatic clock selection.\n"
    u"The new Tessalink master's sample clock source has been changed to the internal clock.\n\n"
    u"Click 'OK' to continue.";

// Four cards A, B, C, D, on automatic clock selection until a test stores something else.
class ClocksPageTest : public SheetTest {
protected:
    explicit ClocksPageTest(unsigned cards = 4) : SheetTest(cards) { NameCards(); }

    // A new sheet; one that is open is cancelled first.
    void Open() {
        SheetTest::Open();
        tree_.emplace(Shown().Show(u"Clocks + Sync").Window());
    }

    ClockTreeUser& Tree() { return *tree_; }
    // "A int [B]; C auto": the tree with its clocks in short.
    std::u16string Outline() { return InShort(Tree().Outline()); }
    static std::u16string InShort(std::u16string text) {
        const std::u16string sources[][2] = {{u"(internal clock)", u"int"},
                                             {u"(digital input clock)", u"dig"},
                                             {u"(PLL clock)", u"pll"},
                                             {u"(automatic clock selection)", u"auto"}};
        for (const auto& [shown, inShort] : sources) {
            for (size_t at = 0; (at = text.find(shown, at)) != text.npos;) {
                text.replace(at, shown.size(), inShort);
            }
        }
        return text;
    }

    // The messages shown since the last call, one after the other.
    std::u16string Told() {
        std::u16string told;
        const std::vector<platform::MessageBoxRecord> boxes = test_system::MessageBoxes();
        for (; boxesSeen_ < boxes.size(); ++boxesSeen_) {
            told += boxes[boxesSeen_].Text;
        }
        return told;
    }
    // The last of them.
    void ExpectBox(const char16_t* caption, UINT style, HWND owner) {
        const platform::MessageBoxRecord box = test_system::MessageBoxes().back();
        EXPECT_EQ(box.Caption, caption);
        EXPECT_EQ(box.Style, style);
        EXPECT_EQ(box.Owner, owner);
    }
    void ExpectRefusal() { ExpectBox(u"Error", MB_ICONHAND, Shown().Current().Window()); }

    // What is saved of each card: its source ("-": nothing) and the card that it follows, as "32>1 0 97".
    std::string Saved() {
        std::string saved;
        for (unsigned card = 0; card < Cards().CardCount(); ++card) {
            const std::optional<DWORD> source = StoredNumber(u"ClockSource", card);
            saved += (card != 0 ? " " : "") + (source ? std::to_string(*source) : "-");
            const std::optional<RegistryValue> master = ReadRegistry(ConfigKey(card), u"Master");
            for (unsigned other = 0; other < Cards().CardCount(); ++other) {
                if (master == TextValue(REG_SZ, simulator::Simulator::RegistryPath(other))) {
                    saved += ">" + std::to_string(other);
                }
            }
        }
        return saved;
    }

private:
    std::optional<ClockTreeUser> tree_;
    size_t boxesSeen_ = 0;
};

TEST_F(ClocksPageTest, CardsAreDraggedIntoAGroupAndOutOfIt) {
    Open();
    const struct {
        const char16_t* Card;
        const char16_t* Place;
        const char16_t* Outline;
        const char16_t* Told;
    } moves[] = {
        {u"B", u"A", u"A int [B]; C auto; D auto", NoAutomaticMaster},
        {u"C", u"B", u"A int [B, C]; D auto", u""},
        {u"C", u"D", u"A int [B, C]; D auto", AnotherMaster},
        {u"B", u"A", u"A int [C, B]; D auto", u""},
        {u"C", u"C", u"A int [C, B]; D auto", u""},
        {u"A", u"D", u"A int [C, B]; D auto", u""},
        {u"Sample Clock", u"D", u"A int [C, B]; D auto", u""},
        {u"C", ClockTreeUser::Space, u"A int [B]; D auto; C auto", u""},
        {u"D", ClockTreeUser::Root, u"A int [B]; C auto; D auto", u""},
        {u"B", ClockTreeUser::Root, u"A int; C auto; D auto; B auto", u""},
        {u"A", u"B", u"C auto; D auto; B int [A]", NoAutomaticMaster},
    };
    EXPECT_FALSE(Shown().CanApply());
    for (const auto& move : moves) {
        Tree().Drag(move.Card, move.Place);
        EXPECT_EQ(Outline(), move.Outline);
        EXPECT_EQ(Told(), move.Told);
        if (move.Told == AnotherMaster) {
            ExpectRefusal();
        }
    }
    ExpectBox(u"KESTVOX.DLL", MB_ICONINFORMATION, Shown().Current().Window());
    EXPECT_EQ(Tree().Highlighted(), u"");
    EXPECT_TRUE(Shown().CanApply());
    EXPECT_EQ(Saved(), "- - - -") << "nothing is saved before Apply";
    Shown().Apply();
    EXPECT_FALSE(Shown().CanApply());
    EXPECT_EQ(Saved(), "32>1 0 97 97");
}

// Mouse and cursor belong to the drag from its begin to its end.
TEST_F(ClocksPageTest, EscapeEndsADragAndNotTheSheet) {
    Open();
    const std::u16string before = Outline();
    // The sheet's own cursor, which the system sets only when the mouse moves over the sheet.
    const HCURSOR usual = LoadCursorW(nullptr, IDC_ARROW);
    Tree().OnItsThread([&] { SetCursor(usual); });
    const auto expectDragging = [&](bool dragging) {
        Tree().OnItsThread([&] {
            EXPECT_EQ(GetCapture() == Shown().Current().Window(), dragging);
            EXPECT_EQ(GetCursor() != usual, dragging);
        });
    };

    Tree().PickUp(u"B");
    expectDragging(true);
    EXPECT_EQ(InShort(Tree().Selected()), u"B auto");
    EXPECT_EQ(InShort(Tree().DragTo(u"A")), u"A auto");
    EXPECT_EQ(Tree().DragTo(ClockTreeUser::Space), ClockTreeUser::Root);
    Tree().DragTo(u"A");
    Tree().PressKey(VK_ESCAPE);
    EXPECT_TRUE(Shown().IsOpen());
    EXPECT_EQ(Tree().Highlighted(), u"");
    expectDragging(false);

    // The button that comes up later drops nothing.
    Tree().Drop(u"A");
    EXPECT_EQ(Outline(), before);
    EXPECT_EQ(Told(), u"");
    EXPECT_FALSE(Shown().CanApply());

    Tree().Drag(u"B", ClockTreeUser::Root);
    expectDragging(false);

    // So does a page that goes meanwhile.
    const HWND page = Shown().Current().Window();
    Tree().PickUp(u"B");
    Shown().Show(0);
    Tree().OnItsThread([&] { EXPECT_NE(GetCapture(), page); });
    Shown().Dismiss();
}

TEST_F(ClocksPageTest, TheMenuOffersWhatSuitsTheCard) {
    Follow(1, 0);
    StoreSetting(0, TEXT("ClockSource"), Digital);
    StoreSetting(2, TEXT("ClockSource"), Pll);
    Open();
    const struct {
        const char16_t* Card;
        Menu Lines;
    } menus[] = {
        {u"A",
         {u"&Internal clock", u"* &Digital input clock", u"-", u"&Stop being Tessalink master", u"-",
          u"&Cancel"}},
        {u"B", {u"&Become Tessalink master", u"&Stop being a slave", u"-", u"&Cancel"}},
        {u"C",
         {u"&Automatic clock selection", u"&Internal clock", u"&Digital input clock", u"-",
          u"&Become Tessalink master", u"-", u"&Cancel"}},
        {u"D",
         {u"* &Automatic clock selection", u"&Internal clock", u"&Digital input clock", u"-",
          u"&Become Tessalink master", u"-", u"&Cancel"}},
    };
    const std::u16string before = Outline();
    for (const auto& menu : menus) {
        EXPECT_EQ(Tree().RightClick(menu.Card), menu.Lines);
        Tree().Choose(u'C');
        EXPECT_TRUE(Tree().Selected().starts_with(menu.Card));
        EXPECT_EQ(Tree().ShiftF10(), menu.Lines);
        Tree().Choose(VK_ESCAPE);
    }
    EXPECT_EQ(Tree().RightClick(ClockTreeUser::Root), Menu());
    EXPECT_EQ(Tree().RightClick(ClockTreeUser::Space), Menu());
    EXPECT_EQ(Tree().ShiftRightClick(ClockTreeUser::Root), Menu());
    Tree().Select(ClockTreeUser::Root);
    EXPECT_EQ(Tree().ShiftF10(), Menu());
    EXPECT_EQ(Outline(), before);
    EXPECT_FALSE(Shown().CanApply());
}

TEST_F(ClocksPageTest, CommandsOfTheMenuDoAsTheySayUntilACancel) {
    Follow(3, 0);
    StoreSetting(0, TEXT("ClockSource"), Pll);
    Open();
    const std::u16string before = Outline();
    const struct {
        const char16_t* Card;
        char16_t Letter;
        const char16_t* Outline;
        const char16_t* Told;
    } commands[] = {
        {u"A", u'D', u"A dig [D]; B auto; C auto", u""},
        {u"A", u'S', u"A dig; B auto; C auto; D auto", u""},
        {u"A", u'B', u"A dig [B, C, D]", u""},
        {u"C", u'S', u"A dig [B, D]; C auto", u""},
        {u"C", u'I', u"A dig [B, D]; C int", u""},
        {u"A", u'I', u"A int [B, D]; C int", u""},
        // Another master takes all over, and keeps its own clock unless that is chosen automatically.
        {u"C", u'B', u"C int [A, B, D]", u""},
        {u"D", u'B', u"D int [C, A, B]", NoAutomaticMaster},
        {u"D", u'S', u"D int; C auto; A auto; B auto", u""},
        {u"D", u'A', u"D auto; C auto; A auto; B auto", u""},
        {u"B", u'B', u"B int [D, C, A]", NoAutomaticMaster},
    };
    for (const auto& command : commands) {
        Tree().Command(command.Card, command.Letter);
        EXPECT_EQ(Outline(), command.Outline);
        EXPECT_TRUE(Tree().Selected().starts_with(command.Card));
        EXPECT_EQ(Told(), command.Told);
    }
    EXPECT_TRUE(Shown().CanApply());
    Shown().Cancel();
    Open();
    EXPECT_EQ(Outline(), before);
}

TEST_F(ClocksPageTest, WhatIsSavedIsShown) {
    Follow(0, 3);                                     // before its master in the table
    StoreSetting(3, TEXT("ClockSource"), Automatic);  // a master is not left on it
    StoreText(1, TEXT("Master"), u"nobody's key");
    StoreSetting(1, TEXT("ClockSource"), 32);  // its master is gone: it runs on another source
    StoreText(2, TEXT("Name"), u"0");          // sorted by what is shown
    StoreSetting(2, TEXT("ClockSource"), 5);   // no clock source at all
    WavePlayer(2, Format);                     // opened and closed
    Open();
    for (const char16_t* item : {u"D", ClockTreeUser::Root}) {  // which cannot be folded
        Tree().Select(item);
        Tree().PressKey(VK_LEFT);
        Tree().PressKey(VK_SUBTRACT);
        EXPECT_EQ(Outline(), u"0; B auto; D int [A]");
    }
    EXPECT_FALSE(Shown().CanApply());
    EXPECT_EQ(Told(), u"");
}

TEST_F(ClocksPageTest, AStreamRunsOnWhatIsStored) {
    Follow(1, 0);
    Open();
    Tree().Command(u"B", u'S');
    Tree().Command(u"A", u'D');
    const WavePlayer player(0, Format);
    EXPECT_EQ(Cards().CardRegister(0, 32) & 0x60, 0) << "nothing is applied yet";
    EXPECT_EQ(Cards().CardRegister(1, 32) & 0x60, 0x20);
}

// It was dragged before the stream was opened, and that is applied while the stream is open.
TEST_F(ClocksPageTest, ACardThatHasGotAMasterWakesUpAtItsOpenStreamsRate) {
    Open();
    Tree().Drag(u"B", u"A");
    WavePlayer player(2, PcmFormat(96000, 2, 16));
    Shown().Accept();
    ASSERT_EQ(Saved(), "0 32>0 97 97");
    FallAsleep();
    WakeUp();
    EXPECT_EQ(Cards().SampleRate(1), 96000u);
}

// A start hold is for groups, however few of their streams are open.
TEST_F(ClocksPageTest, AMasterThatNobodyFollowsAnyMoreStartsAtOnce) {
    Follow(1, 0);
    Open();
    for (const bool followed : {true, false}) {
        if (!followed) {
            Tree().Drag(u"B", ClockTreeUser::Root);
            Shown().Accept();
        }
        WavePlayer player(0, Format);
        Cards().ClearTrace();
        EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
        const Lines lines = TraceText({"BEGIN", "MAP", "SET", "QUEUE", "START", "ARM"});
        EXPECT_EQ(lines.empty(), !followed) << testing::PrintToString(lines);
    }
}

TEST_F(ClocksPageTest, TwoMastersAreToldOfAndNotSaved) {
    Follow(1, 0);
    Follow(3, 2);
    StoreSetting(0, TEXT("ClockSource"), Internal);
    StoreSetting(2, TEXT("ClockSource"), Internal);
    Open();
    EXPECT_EQ(Told(), SeveralMasters);
    ExpectRefusal();
    EXPECT_EQ(Outline(), u"A int [B]; C int [D]");
    Tree().Command(u"A", u'D');
    Shown().Ok();
    EXPECT_EQ(Told(), SeveralMasters);
    EXPECT_TRUE(Shown().IsOpen());
    EXPECT_EQ(Saved(), "0 32>0 0 32>2");

    Tree().Command(u"C", u'S');
    Shown().Ok();
    EXPECT_EQ(Told(), u"");
    Shown().Closed();
    EXPECT_EQ(Saved(), "64 32>0 0 97");
}

TEST_F(ClocksPageTest, NothingChangesWhileAudioRuns) {
    const WavePlayer player(2, Format);
    Open();
    const std::u16string before = Outline();
    Tree().Drag(u"C", u"A");
    EXPECT_EQ(Told(), InUse);
    ExpectRefusal();
    EXPECT_EQ(Tree().Highlighted(), u"");
    Tree().Command(u"B", u'D');
    EXPECT_EQ(Told(), InUse);
    Tree().Command(u"A", u'B');
    EXPECT_EQ(Told(), InUse);
    EXPECT_EQ(Outline(), before);
    EXPECT_FALSE(Shown().CanApply());

    // A source is the card's own affair, and direct mode does without the card's clock.
    Tree().Command(u"A", u'D');
    EXPECT_EQ(Told(), u"");
    ASSERT_EQ(waveOutMessage(player.Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
    Tree().Drag(u"C", u"A");
    EXPECT_EQ(Told(), u"");
    EXPECT_EQ(Outline(), u"A dig [C]; B auto; D auto");
}

TEST_F(ClocksPageTest, TheDriverIsResetWhenTheUserInsists) {
    Open();
    const Menu menu = {u"&Reset Kestrelvox driver", u"-", u"&Cancel"};
    Cards().ClearTrace();
    for (const int answer : {IDNO, IDYES}) {
        test_system::AnswerMessageBoxes(answer);
        EXPECT_EQ(Tree().ShiftRightClick(ClockTreeUser::Space), menu);
        Tree().Choose(u'R');
        EXPECT_TRUE(Told().starts_with(u"WARNING!\n\nThis will soft-reset the Kestrelvox driver!"));
        ExpectBox(u"Kestrelvox(TM)", MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2 | MB_SYSTEMMODAL,
                  Shown().Current().Window());
        const auto resets = std::ranges::count_if(
            TraceText(), [](const std::string& request) { return request.starts_with("SOFT_RESET"); });
        EXPECT_EQ(resets, answer == IDYES ? 4 : 0);
    }
    EXPECT_FALSE(Shown().CanApply());
}

TEST_F(ClocksPageTest, CardsThatAreGoneDoNotKeepTheOthersFromBeingSaved) {
    Open();
    for (const size_t page : {3u, 4u, 9u}) {  // of cards B and D
        Shown().Show(page);
    }
    Shown().Show(u"Clocks + Sync");
    Cards().SetPresent(1, false);
    Cards().SetPresent(3, false);
    Tree().Drag(u"C", u"A");
    Tree().Command(u"B", u'D');
    Shown().Apply();
    Tree().OnItsThread([] {});
    EXPECT_EQ(Told(), std::u16string(NoAutomaticMaster) +
                          u"Could not save configuration information in registry\nB\nD");
    ExpectBox(u"Error", MB_ICONHAND | MB_SYSTEMMODAL, nullptr);
    EXPECT_EQ(Saved(), "0 - 32>0 -");
}

// A stream that opens goes by what is saved, and brings the working settings in line with it.
TEST_F(ClocksPageTest, AFreedCardOnWhichAStreamOpensStaysAsShown) {
    Follow(1, 0);
    StoreSetting(0, TEXT("ClockSource"), Internal);
    Open();
    Tree().Command(u"B", u'S');
    Tree().Command(u"B", u'D');
    WavePlayer(2, Format);  // opened and closed
    Tree().Drag(u"B", ClockTreeUser::Root);
    const WavePlayer player(2, Format);
    const char16_t* const freed = u"A int; C auto; D auto; B dig";
    EXPECT_EQ(Outline(), freed);
    EXPECT_TRUE(Tree().RightClick(u"B")[2].starts_with(u"*"));
    Tree().Choose(VK_ESCAPE);
    Shown().Apply();
    EXPECT_EQ(Saved(), "0 64 97 97");
    EXPECT_EQ(Outline(), freed);
}

WNDPROC treeProcedure = nullptr;
LRESULT CALLBACK TakeNoItem(HWND tree, UINT message, WPARAM wParam, LPARAM lParam) {
    return message == TVM_INSERTITEMW ? 0 : CallWindowProcW(treeProcedure, tree, message, wParam, lParam);
}

TEST_F(ClocksPageTest, ACardThatCannotBeInsertedAgainStaysWhereItIs) {
    Follow(1, 0);
    StoreSetting(0, TEXT("ClockSource"), Internal);
    Open();
    const std::u16string before = Outline();
    const HWND tree = Shown().Current().Control(1001);
    treeProcedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(tree, GWLP_WNDPROC));
    SetWindowLongPtrW(tree, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(TakeNoItem));
    Tree().Drag(u"C", u"A");
    Tree().Command(u"B", u'S');
    Tree().Command(u"A", u'S');
    Tree().Command(u"D", u'B');
    EXPECT_EQ(Outline(), before);
    SetWindowLongPtrW(tree, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(treeProcedure));
    Shown().Accept();
    EXPECT_EQ(Saved(), "0 32>0 97 97");
}

using OneCardTest = WithCards<ClocksPageTest, 1>;
using SixteenCardsTest = WithCards<ClocksPageTest, 16>;

TEST_F(OneCardTest, ACardAloneIsNobodysMaster) {
    Open();
    EXPECT_EQ(Tree().RightClick(u"A"),
              (Menu{u"* &Automatic clock selection", u"&Internal clock", u"&Digital input clock", u"-",
                    u"(&Become Tessalink master)", u"-", u"&Cancel"}));
    Tree().Choose(u'I');
    Tree().Drag(u"A", ClockTreeUser::Root);
    EXPECT_EQ(Outline(), u"A int");
    Shown().Accept();
    EXPECT_EQ(Saved(), "0");
}

TEST_F(SixteenCardsTest, OneLeadsAllOthers) {
    Follow(0, 15);
    StoreSetting(15, TEXT("ClockSource"), Internal);
    Open();
    Tree().Command(u"H", u'B');
    EXPECT_EQ(Outline(), u"H int [B, C, D, E, F, G, I, J, K, L, M, N, O, P, A]");
    EXPECT_EQ(Told(), NoAutomaticMaster);
    Shown().Accept();
    EXPECT_EQ(Saved(), "32>7 32>7 32>7 32>7 32>7 32>7 32>7 0 32>7 32>7 32>7 32>7 32>7 32>7 32>7 32>7");
    Open();
    EXPECT_EQ(Outline(), u"H int [A, B, C, D, E, F, G, I, J, K, L, M, N, O, P]");
}

}  // namespace
