// The sheet as a whole: which pages it has, how it is asked for and what it answers, and its help.
#include "tests/support/sheet_test.h"

#include <windows.h>
#include <commctrl.h>
#include <mmddk.h>
#include <prsht.h>

#include <array>

#include "config_ui/resource.h"
#include "tests/support/system.h"

namespace {

using Texts = std::vector<std::u16string>;
using test_system::HelpRequest;

class SheetFrameTest : public SheetTest {
protected:
    SheetFrameTest() : SheetTest(1) {}
    explicit SheetFrameTest(unsigned cards) : SheetTest(cards) {}

    void ForgetIdentity(unsigned card) { Cards().SetIdentityPage(card, std::array<uint8_t, 128>{}); }
};

class SeveralCards : public SheetFrameTest {
protected:
    SeveralCards() : SheetFrameTest(2) {}
};

TEST_F(SeveralCards, HaveTheirPagesOneAfterTheOther) {
    StoreText(0, TEXT("Name"), u"A");
    StoreText(1, TEXT("Name"), u"B");
    const Sheet& sheet = Open();
    EXPECT_EQ(sheet.Titles(),
              (Texts{u"Configuration: 'A'", u"Monitor: 'A'", u"Version: 'A'", u"Configuration: 'B'",
                     u"Monitor: 'B'", u"Version: 'B'", u"Clocks + Sync", u"ASIO + EASI"}));
    EXPECT_EQ(sheet.Show(3).Text(IDC_NAME), u"B");
    EXPECT_EQ(sheet.Show(0).Text(IDC_NAME), u"A");
    EXPECT_EQ(sheet.Show(5).Text(IDC_SERIAL_NUMBER), u"01-20-12346");
    EXPECT_EQ(sheet.Show(2).Text(IDC_SERIAL_NUMBER), u"01-20-12345");
    EXPECT_FALSE(sheet.CanApply()) << "looking changes nothing";
}

TEST_F(SheetFrameTest, CardOfUnknownIdentityHasNoVersionPage) {
    StoreText(0, TEXT("Name"), u"X");
    ForgetIdentity(0);
    EXPECT_EQ(Open().Titles(),
              (Texts{u"Configuration: 'X'", u"Monitor: 'X'", u"Clocks + Sync", u"ASIO + EASI"}));
}

class AllCards : public SheetFrameTest {
protected:
    AllCards() : SheetFrameTest(simulator::MaxCards) {}
};

// As large as the sheet of one card, on the smallest screen that the system is used with, with all buttons in
// it.
TEST_F(AllCards, HaveASheetNoLargerThanThatOfOne) {
    for (unsigned card = 0; card < simulator::MaxCards; ++card) {
        StoreText(card, TEXT("Name"), std::u16string(50, u'W'));
    }
    const Sheet& sheet = Open();
    RECT page = {};
    RECT frame = {};
    RECT inside = {};
    GetWindowRect(sheet.Current().Window(), &page);
    GetWindowRect(sheet.Window(), &frame);
    GetClientRect(sheet.Window(), &inside);
    MapWindowPoints(sheet.Window(), nullptr, reinterpret_cast<POINT*>(&inside), 2);
    EXPECT_LE(frame.right, 800);
    EXPECT_LE(frame.bottom, 600);
    EXPECT_GE(frame.left, 0);
    EXPECT_GE(frame.top, 0);
    EXPECT_LT(inside.right - page.right, 20);
    EXPECT_GE(page.right - page.left, 227 * 3 / 2) << "a dialog unit is a pixel and a half at least";
    for (const int button : {IDOK, IDCANCEL, 0x3021, IDHELP}) {
        RECT area = {};
        GetWindowRect(GetDlgItem(sheet.Window(), button), &area);
        EXPECT_GT(area.top, page.bottom) << button;
        EXPECT_TRUE(area.left > inside.left && area.right < inside.right && area.bottom < inside.bottom)
            << button;
    }
}

TEST_F(SheetFrameTest, NothingIsShownWithoutACard) {
    Cards().SetPresent(0, false);
    Sheet sheet(Library());
    EXPECT_EQ(sheet.Window(), nullptr);
    EXPECT_EQ(sheet.Closed(), DRVCNF_CANCEL);
}

TEST_F(SheetFrameTest, NothingIsShownAfterAnInstallation) {
    Library().DriverProc(DRV_INSTALL);
    Sheet sheet(Library());
    EXPECT_EQ(sheet.Window(), nullptr);
    EXPECT_EQ(sheet.Closed(), DRVCNF_RESTART);
}

TEST_F(SheetFrameTest, OpensWithNothingToApplyAndAnswersOkHoweverItCloses) {
    Sheet& cancelled = Open();
    EXPECT_EQ(cancelled.Current().Text(IDC_NAME), u"Kestrelvox");
    EXPECT_FALSE(cancelled.CanApply());
    cancelled.Cancel();
    EXPECT_EQ(cancelled.Closed(), DRVCNF_OK);

    Sheet& unchanged = Open();
    unchanged.Ok();
    EXPECT_EQ(unchanged.Closed(), DRVCNF_OK);

    Sheet& changed = Open();
    changed.Current().Click(IDC_NON_AUDIO);
    changed.Ok();
    EXPECT_EQ(changed.Closed(), DRVCNF_OK);

    Sheet& restart = Open();
    SendMessageW(restart.Window(), PSM_RESTARTWINDOWS, 0, 0);
    restart.Ok();
    EXPECT_EQ(restart.Closed(), DRVCNF_RESTART);
}

TEST_F(SheetFrameTest, OnlyOneSheetUnlessTheCallerBringsInformation) {
    Sheet first(Library(), Sheet::Entry::Configure);
    ASSERT_NE(first.Window(), nullptr);
    {
        Sheet second(Library(), Sheet::Entry::Configure);
        EXPECT_EQ(second.Window(), nullptr);
        EXPECT_EQ(second.Closed(), DRVCNF_OK);
        EXPECT_TRUE(first.IsOpen());
    }
    ShowWindow(first.Window(), SW_MINIMIZE);
    ASSERT_TRUE(IsIconic(first.Window()));
    EXPECT_EQ(Library().DriverProc(DRV_CONFIGURE), DRVCNF_OK);
    EXPECT_FALSE(IsIconic(first.Window())) << "is brought back";
    const Sheet other(Library());
    EXPECT_TRUE(other.IsOpen());
    EXPECT_NE(other.Window(), first.Window());
}

TEST_F(SheetFrameTest, PageThatWasNeverShownStoresNothing) {
    Sheet& sheet = Open();
    sheet.Current().Click(IDC_NON_AUDIO);
    sheet.Ok();
    sheet.Closed();
    EXPECT_TRUE(RegistryKeyExists(ConfigKey()));
    EXPECT_FALSE(RegistryKeyExists(u"Software\\Zephyr Harmonic Works\\Kestrelvox\\Configuration"));
}

// The tab key goes from group to group as one reads them, the arrow keys round in a group and not out of it.
TEST_F(SheetFrameTest, TheKeysReachEveryControl) {
    const std::vector<int> order[] = {
        {IDC_NAME, IDC_LEFT, IDC_ADVANCED_MONITORING, IDC_PUNCH_IN, IDC_DITHER, IDC_CHECK_CLOCKS,
         IDC_PROFESSIONAL, IDC_NON_AUDIO, IDC_PREEMPHASIS},
        {IDC_FIRST_MIXER_SLIDER, IDC_FIRST_MIXER_SLIDER + 2, IDC_FIRST_MIXER_SLIDER + 8,
         IDC_FIRST_MIXER_SLIDER + 10},
        {IDC_PCI_REVISION, IDC_BOARD_REVISION, IDC_FPGA_REVISION, IDC_FPGA_VERSION, IDC_SERIAL_NUMBER},
        {IDC_CLOCK_TREE},
        {IDC_ASIO_BUFFER, IDC_EASI_BUFFER},
    };
    const Sheet& sheet = Open();
    for (size_t index = 0; index < std::size(order); ++index) {
        const HWND page = sheet.Show(index).Window();
        std::vector<int> reached;
        const HWND first = GetNextDlgTabItem(page, nullptr, FALSE);
        for (HWND control = first; reached.empty() || control != first;
             control = GetNextDlgTabItem(page, control, FALSE)) {
            reached.push_back(GetDlgCtrlID(control));
        }
        EXPECT_EQ(reached, order[index]) << "page " << index;
    }
    const HWND page = sheet.Show(0).Window();
    const int pairs[][2] = {
        {IDC_LEFT, IDC_RIGHT}, {IDC_PUNCH_IN, IDC_LOCK_TO_PLAYBACK}, {IDC_PROFESSIONAL, IDC_CONSUMER}};
    for (const auto& [one, other] : pairs) {
        for (const BOOL back : {FALSE, TRUE}) {
            EXPECT_EQ(GetDlgCtrlID(GetNextDlgGroupItem(page, GetDlgItem(page, one), back)), other);
            EXPECT_EQ(GetDlgCtrlID(GetNextDlgGroupItem(page, GetDlgItem(page, other), back)), one);
        }
    }
}

struct PageHelpCase {
    size_t Page;
    ULONG_PTR Context;
    std::vector<std::pair<int, ULONG_PTR>> Controls;
};

TEST_F(SheetFrameTest, EachPageAndControlHasItsHelp) {
    std::vector<std::pair<int, ULONG_PTR>> mixer;
    for (int control = IDC_FIRST_MIXER_SLIDER; control <= IDC_LAST_MIXER_VALUE; ++control) {
        mixer.emplace_back(control, 911);
    }
    const std::vector<PageHelpCase> cases = {
        {0,
         902,
         {{1002, 904},
          {1003, 918},
          {1004, 909},
          {1005, 909},
          {1023, 912},
          {1024, 912},
          {1025, 913},
          {1026, 914},
          {1027, 915},
          {1028, 916},
          {1029, 916},
          {1030, 917},
          {1047, 919}}},
        {1, 818, mixer},
        {2, 811, {}},
        {3, 903, {{1001, 910}}},
        {4, 819, {{1048, 920}, {1049, 920}, {1050, 921}, {1051, 921}}},
    };
    Sheet& sheet = Open();
    for (const PageHelpCase& each : cases) {
        const SheetPage page = sheet.Show(each.Page);
        sheet.Help();
        EXPECT_EQ(test_system::HelpShown().back(),
                  (HelpRequest{u"kestvox.hlp>window", HELP_CONTEXT, each.Context}));
        for (const auto& [control, context] : each.Controls) {
            page.AskHelp(control);
            EXPECT_EQ(test_system::HelpShown().back(),
                      (HelpRequest{u"kestvox.hlp", HELP_CONTEXTPOPUP, context}))
                << "control " << control;
        }
    }
    const size_t before = test_system::HelpShown().size();
    sheet.Show(2).AskHelp(IDC_SERIAL_NUMBER);
    EXPECT_EQ(test_system::HelpShown().size(), before) << "a control without help";
    sheet.Cancel();
    sheet.Closed();
    const std::vector<HelpRequest> shown = test_system::HelpShown();
    EXPECT_EQ(std::vector<HelpRequest>(shown.begin() + static_cast<ptrdiff_t>(before), shown.end()),
              std::vector<HelpRequest>(5, HelpRequest{u"kestvox.hlp", HELP_QUIT, 0}));
}

}  // namespace
