// The Clocks + Sync page: every card's clock source and place in the tree, as its user changes them, and
// what is saved of it.
#include <commctrl.h>
#include <prsht.h>

#include <optional>
#include <string>

#include "config_ui/resource.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_player.h"

namespace {

using Menu = std::vector<std::u16string>;

constexpr DWORD Internal = 0;
constexpr DWORD Digital = 64;
constexpr DWORD Pll = 96;
constexpr DWORD Automatic = 97;

const std::u16string OnInternal = u" (internal clock)";
const std::u16string OnDigital = u" (digital input clock)";
const std::u16string OnPll = u" (PLL clock)";
const std::u16string OnAutomatic = u" (automatic clock selection)";

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
    explicit ClocksPageTest(unsigned cards = 4) : SheetTest(cards) {
        for (unsigned card = 0; card < cards; ++card) {
            StoreText(card, TEXT("Name"), std::u16string(1, static_cast<char16_t>(u'A' + card)));
        }
    }

    // A new sheet; one that is open is cancelled first.
    void Open() {
        sheet_ = &SheetTest::Open();
        tree_.emplace(sheet_->Show(u"Clocks + Sync").Window());
    }

    Sheet& Shown() { return *sheet_; }
    ClockTreeUser& Tree() { return *tree_; }
    std::u16string Outline() { return Tree().Outline(); }

    // The messages shown since the last call, one after the other.
    std::u16string Told() {
        std::u16string told;
        const std::vector<test_system::MessageBoxShown> boxes = test_system::MessageBoxes();
        for (; boxesSeen_ < boxes.size(); ++boxesSeen_) {
            told += boxes[boxesSeen_].Text;
        }
        return told;
    }
    UINT LastStyle() { return test_system::MessageBoxes().back().Style; }

    // A card's saved clock: its source and the card that it follows.
    struct SavedClock {
        std::optional<DWORD> Source;
        int Master;  // None, or the card's number

        static constexpr int None = -1;
        bool operator==(const SavedClock&) const = default;
        friend void PrintTo(const SavedClock& clock, std::ostream* out) {
            *out << "source " << testing::PrintToString(clock.Source) << ", master " << clock.Master;
        }
    };
    SavedClock Saved(unsigned card) {
        SavedClock clock = {StoredNumber(u"ClockSource", card), SavedClock::None};
        const std::optional<RegistryValue> master = ReadRegistry(ConfigKey(card), u"Master");
        for (unsigned other = 0; other < Cards().CardCount(); ++other) {
            if (master == TextValue(REG_SZ, simulator::Simulator::RegistryPath(other))) {
                clock.Master = static_cast<int>(other);
            }
        }
        return clock;
    }
    static constexpr SavedClock Free(DWORD source) { return {source, SavedClock::None}; }
    static constexpr SavedClock Follows(int master) { return {32, master}; }

private:
    Sheet* sheet_ = nullptr;
    std::optional<ClockTreeUser> tree_;
    size_t boxesSeen_ = 0;
};

TEST_F(ClocksPageTest, CardsAreDraggedIntoAGroupAndOutOfIt) {
    Open();
    const struct {
        const char16_t* Card;
        const char16_t* Place;
        std::u16string Outline;
        std::u16string Told;
    } moves[] = {
        {u"B", u"A", u"A" + OnInternal + u" [B]; C" + OnAutomatic + u"; D" + OnAutomatic, NoAutomaticMaster},
        {u"C", u"B", u"A" + OnInternal + u" [B, C]; D" + OnAutomatic, u""},
        {u"C", u"D", u"A" + OnInternal + u" [B, C]; D" + OnAutomatic, AnotherMaster},
        {u"B", u"A", u"A" + OnInternal + u" [C, B]; D" + OnAutomatic, u""},
        {u"C", u"C", u"A" + OnInternal + u" [C, B]; D" + OnAutomatic, u""},
        {u"A", u"D", u"A" + OnInternal + u" [C, B]; D" + OnAutomatic, u""},
        {u"Sample Clock", u"D", u"A" + OnInternal + u" [C, B]; D" + OnAutomatic, u""},
        {u"C", ClockTreeUser::Space, u"A" + OnInternal + u" [B]; D" + OnAutomatic + u"; C" + OnAutomatic,
         u""},
        {u"D", ClockTreeUser::Root, u"A" + OnInternal + u" [B]; C" + OnAutomatic + u"; D" + OnAutomatic, u""},
        {u"B", ClockTreeUser::Root,
         u"A" + OnInternal + u"; C" + OnAutomatic + u"; D" + OnAutomatic + u"; B" + OnAutomatic, u""},
        {u"A", u"B", u"C" + OnAutomatic + u"; D" + OnAutomatic + u"; B" + OnInternal + u" [A]",
         NoAutomaticMaster},
    };
    EXPECT_FALSE(Shown().CanApply());
    for (const auto& move : moves) {
        Tree().Drag(move.Card, move.Place);
        EXPECT_EQ(Outline(), move.Outline);
        EXPECT_EQ(Told(), move.Told);
    }
    EXPECT_EQ(Tree().Highlighted(), u"");
    EXPECT_TRUE(Shown().CanApply());
    EXPECT_EQ(Saved(0).Source, std::nullopt) << "nothing is saved before Apply";

    Shown().Apply();
    EXPECT_FALSE(Shown().CanApply());
    EXPECT_EQ(Saved(0), Follows(1));
    EXPECT_EQ(Saved(1), Free(Internal));
    EXPECT_EQ(Saved(2), Free(Automatic));
    EXPECT_EQ(Saved(3), Free(Automatic));
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
    EXPECT_EQ(Tree().Selected(), u"B" + OnAutomatic);
    EXPECT_EQ(Tree().DragTo(u"A"), u"A" + OnAutomatic);
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
    Shown().Cancel();
    Shown().Closed();
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

TEST_F(ClocksPageTest, CommandsOfTheMenuDoAsTheySay) {
    Open();
    const struct {
        const char16_t* Card;
        char16_t Letter;
        std::u16string Outline;
        std::u16string Selected;
        std::u16string Told;
    } commands[] = {
        {u"A", u'D', u"A" + OnDigital + u"; B" + OnAutomatic + u"; C" + OnAutomatic + u"; D" + OnAutomatic,
         u"A" + OnDigital, u""},
        {u"A", u'B', u"A" + OnDigital + u" [B, C, D]", u"A" + OnDigital, u""},
        {u"C", u'S', u"A" + OnDigital + u" [B, D]; C" + OnAutomatic, u"C" + OnAutomatic, u""},
        {u"C", u'I', u"A" + OnDigital + u" [B, D]; C" + OnInternal, u"C" + OnInternal, u""},
        {u"A", u'I', u"A" + OnInternal + u" [B, D]; C" + OnInternal, u"A" + OnInternal, u""},
        // Another master takes all over, and keeps its own clock unless that is chosen automatically.
        {u"C", u'B', u"C" + OnInternal + u" [A, B, D]", u"C" + OnInternal, u""},
        {u"D", u'B', u"D" + OnInternal + u" [C, A, B]", u"D" + OnInternal, NoAutomaticMaster},
        {u"D", u'S', u"D" + OnInternal + u"; C" + OnAutomatic + u"; A" + OnAutomatic + u"; B" + OnAutomatic,
         u"D" + OnInternal, u""},
        {u"D", u'A', u"D" + OnAutomatic + u"; C" + OnAutomatic + u"; A" + OnAutomatic + u"; B" + OnAutomatic,
         u"D" + OnAutomatic, u""},
    };
    for (const auto& command : commands) {
        Tree().Command(command.Card, command.Letter);
        EXPECT_EQ(Outline(), command.Outline);
        EXPECT_EQ(Tree().Selected(), command.Selected);
        EXPECT_EQ(Told(), command.Told);
    }
    EXPECT_TRUE(Shown().CanApply());
}

TEST_F(ClocksPageTest, WhatIsSavedIsShown) {
    Follow(0, 3);                                     // before its master in the table
    StoreSetting(3, TEXT("ClockSource"), Automatic);  // a master is not left on it
    StoreText(1, TEXT("Master"), u"nobody's key");
    StoreSetting(1, TEXT("ClockSource"), 32);  // its master is gone
    StoreText(2, TEXT("Name"), u"0");          // sorted by what is shown
    StoreSetting(2, TEXT("ClockSource"), 5);   // no clock source at all
    Open();
    EXPECT_EQ(Outline(), u"0; B" + OnAutomatic + u"; D" + OnInternal + u" [A]");
    EXPECT_FALSE(Shown().CanApply());
    EXPECT_EQ(Told(), u"");
}

TEST_F(ClocksPageTest, AStreamRunsOnWhatIsStored) {
    Follow(1, 0);
    Open();
    Tree().Command(u"B", u'S');
    Tree().Command(u"A", u'D');
    WavePlayer player;
    EXPECT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().CardRegister(0, 32) & 0x60, 0) << "nothing is applied yet";
    EXPECT_EQ(Cards().CardRegister(1, 32) & 0x60, 0x20);
}

// It was dragged before the stream was opened, and that is applied while the stream is open.
TEST_F(ClocksPageTest, ACardThatHasGotAMasterWakesUpAtItsOpenStreamsRate) {
    Open();
    Tree().Drag(u"B", u"A");
    WavePlayer player;
    ASSERT_EQ(player.Open(2, PcmFormat(96000, 2, 16)), MMSYSERR_NOERROR);
    Shown().Ok();
    Shown().Closed();
    ASSERT_EQ(Saved(1), Follows(0));
    Library().DriverProc(DRV_POWER, PWR_SUSPENDREQUEST);
    Cards().PowerCycle(1);
    Library().DriverProc(DRV_POWER, PWR_SUSPENDRESUME);
    EXPECT_EQ(Cards().SampleRate(1), 96000u);
}

TEST_F(ClocksPageTest, ACardWhoseMasterIsGoneIsShownOnWhatItRunsOn) {
    StoreSetting(0, TEXT("ClockSource"), 32);
    WavePlayer player;
    ASSERT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    player.Shut();
    Open();
    EXPECT_EQ(Outline().substr(0, 1 + OnAutomatic.size()), u"A" + OnAutomatic);
}

// A start hold is for groups.
TEST_F(ClocksPageTest, AMasterThatNobodyFollowsAnyMoreStartsAtOnce) {
    Follow(1, 0);
    Open();
    WavePlayer player;
    EXPECT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    player.Shut();
    Tree().Drag(u"B", ClockTreeUser::Root);
    Shown().Ok();
    Shown().Closed();
    EXPECT_EQ(player.Open(0, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    EXPECT_EQ(player.Write(Pattern(4000)), MMSYSERR_NOERROR);
    for (const std::string& line : TraceText()) {
        EXPECT_FALSE(line.starts_with("write")) << line;
    }
}

TEST_F(ClocksPageTest, CancelForgetsWhatWasChanged) {
    Follow(1, 0);
    StoreSetting(0, TEXT("ClockSource"), Pll);
    Open();
    const std::u16string before = Outline();
    EXPECT_EQ(before, u"A" + OnPll + u" [B]; C" + OnAutomatic + u"; D" + OnAutomatic);
    Tree().Command(u"C", u'D');
    Tree().Command(u"D", u'B');
    EXPECT_EQ(Outline(), u"D" + OnInternal + u" [A, C, B]");
    Shown().Cancel();
    Open();
    EXPECT_EQ(Outline(), before);
}

TEST_F(ClocksPageTest, TwoMastersAreToldOfAndNotSaved) {
    Follow(1, 0);
    Follow(3, 2);
    StoreSetting(0, TEXT("ClockSource"), Internal);
    StoreSetting(2, TEXT("ClockSource"), Internal);
    Open();
    EXPECT_EQ(Told(), SeveralMasters);
    EXPECT_EQ(Outline(), u"A" + OnInternal + u" [B]; C" + OnInternal + u" [D]");
    Tree().Command(u"A", u'D');
    Shown().Ok();
    EXPECT_EQ(Told(), SeveralMasters);
    EXPECT_TRUE(Shown().IsOpen());
    EXPECT_EQ(Saved(0), Free(Internal));

    Tree().Command(u"C", u'S');
    Shown().Ok();
    EXPECT_EQ(Told(), u"");
    Shown().Closed();
    EXPECT_EQ(Saved(0), Free(Digital));
    EXPECT_EQ(Saved(1), Follows(0));
    EXPECT_EQ(Saved(3), Free(Automatic));
}

TEST_F(ClocksPageTest, NothingChangesWhileAudioRuns) {
    WavePlayer player;
    ASSERT_EQ(player.Open(2, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);  // card B
    Open();
    const std::u16string before = Outline();
    Tree().Drag(u"C", u"A");
    EXPECT_EQ(Told(), InUse);
    EXPECT_EQ(LastStyle(), UINT{MB_ICONHAND});
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
    ASSERT_EQ(waveOutMessage(player.Handle(), 0x4002, 0, 0), MMSYSERR_NOERROR);
    Tree().Drag(u"C", u"A");
    EXPECT_EQ(Told(), u"");
    EXPECT_EQ(Outline(), u"A" + OnDigital + u" [C]; B" + OnAutomatic + u"; D" + OnAutomatic);
    player.Shut();
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
        EXPECT_EQ(LastStyle(), UINT{MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2 | MB_SYSTEMMODAL});
        size_t resets = 0;
        for (const std::string& request : TraceText()) {
            resets += request.starts_with("SOFT_RESET") ? 1 : 0;
        }
        EXPECT_EQ(resets, answer == IDYES ? 4u : 0u);
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
    EXPECT_EQ(Saved(0), Free(Internal));
    EXPECT_EQ(Saved(1).Source, std::nullopt);
    EXPECT_EQ(Saved(2), Follows(0));
}

// A stream that opens goes by what is saved, and brings the working settings in line with it.
TEST_F(ClocksPageTest, AFreedCardOnWhichAStreamOpensStaysAsShown) {
    Follow(1, 0);
    StoreSetting(0, TEXT("ClockSource"), Internal);
    Open();
    Tree().Command(u"B", u'S');
    Tree().Command(u"B", u'D');
    WavePlayer player;
    ASSERT_EQ(player.Open(2, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    EXPECT_EQ(Outline(),
              u"A" + OnInternal + u"; C" + OnAutomatic + u"; D" + OnAutomatic + u"; B" + OnDigital);
    EXPECT_TRUE(Tree().RightClick(u"B")[2].starts_with(u"*"));
    Tree().Choose(VK_ESCAPE);
    Shown().Apply();
    EXPECT_EQ(Saved(1), Free(Digital));
    EXPECT_EQ(Outline(),
              u"A" + OnInternal + u"; C" + OnAutomatic + u"; D" + OnAutomatic + u"; B" + OnDigital);
    player.Shut();
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
    Shown().Ok();
    Shown().Closed();
    EXPECT_EQ(Saved(1), Follows(0));
    EXPECT_EQ(Saved(2), Free(Automatic));
}

TEST_F(ClocksPageTest, TheTreeStaysOpen) {
    Follow(1, 0);
    Open();
    const std::u16string before = Outline();
    for (const char16_t* item : {u"A", ClockTreeUser::Root}) {
        Tree().Select(item);
        Tree().PressKey(VK_LEFT);
        Tree().PressKey(VK_SUBTRACT);
    }
    EXPECT_EQ(Outline(), before);
}

class OneCardTest : public ClocksPageTest {
protected:
    OneCardTest() : ClocksPageTest(1) {}
};

TEST_F(OneCardTest, ACardAloneIsNobodysMaster) {
    Open();
    EXPECT_EQ(Tree().RightClick(u"A"),
              (Menu{u"* &Automatic clock selection", u"&Internal clock", u"&Digital input clock", u"-",
                    u"(&Become Tessalink master)", u"-", u"&Cancel"}));
    Tree().Choose(u'I');
    Tree().Drag(u"A", ClockTreeUser::Root);
    EXPECT_EQ(Outline(), u"A" + OnInternal);
    Shown().Ok();
    Shown().Closed();
    EXPECT_EQ(Saved(0), Free(Internal));
}

class SixteenCardsTest : public ClocksPageTest {
protected:
    SixteenCardsTest() : ClocksPageTest(16) {}
};

TEST_F(SixteenCardsTest, HaveAllTheirPagesAndOneLeadsAllOthers) {
    Follow(0, 15);
    StoreSetting(15, TEXT("ClockSource"), Internal);
    Open();
    EXPECT_EQ(Shown().Titles().size(), 50u);
    const auto tabs = reinterpret_cast<HWND>(SendMessageW(Shown().Window(), PSM_GETTABCONTROL, 0, 0));
    EXPECT_EQ(GetWindowLongPtrW(tabs, GWL_STYLE) & TCS_MULTILINE, 0) << "in one row";
    EXPECT_EQ(Shown().Show(47).Text(IDC_SERIAL_NUMBER), u"01-20-12360");
    EXPECT_NE(Shown().Show(49).Control(IDC_EASI_BUFFER), nullptr);
    Shown().Show(u"Clocks + Sync");
    Tree().Command(u"H", u'B');
    EXPECT_EQ(Outline(), u"H" + OnInternal + u" [B, C, D, E, F, G, I, J, K, L, M, N, O, P, A]");
    EXPECT_EQ(Told(), NoAutomaticMaster);
    Shown().Ok();
    Shown().Closed();
    for (unsigned card = 0; card < 16; ++card) {
        EXPECT_EQ(Saved(card), card == 7 ? Free(Internal) : Follows(7)) << "card " << card;
    }
    Open();
    EXPECT_EQ(Outline(), u"H" + OnInternal + u" [A, B, C, D, E, F, G, I, J, K, L, M, N, O, P]");
}

}  // namespace
