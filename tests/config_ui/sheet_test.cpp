// The sheet as a whole: which pages it has, how it is asked for and what it answers, and its help.
#include "tests/support/sheet_test.h"

#include <array>

#include "config_ui/resource.h"

namespace {

using Texts = std::vector<std::u16string>;

using SheetFrameTest = WithCards<SheetTest, 1>;
using SeveralCards = WithCards<SheetTest, 2>;
using AllCards = WithCards<SheetTest, simulator::MaxCards>;

TEST_F(SeveralCards, HaveTheirPagesOneAfterTheOther) {
    NameCards();
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

TEST_F(SeveralCards, AnUnknownIdentityHasNoPage) {
    StoreText(0, TEXT("Name"), u"X");
    Cards().SetIdentityPage(0, std::array<uint8_t, 128>{});
    Cards().SetPresent(1, false);
    EXPECT_EQ(Open().Titles(),
              (Texts{u"Configuration: 'X'", u"Monitor: 'X'", u"Clocks + Sync", u"ASIO + EASI"}));
}

// As large as the sheet of one card, on the smallest screen that the system is used with, with all buttons in
// it and the tabs in one row.
TEST_F(AllCards, HaveTheirPagesInASheetNoLargerThanThatOfOne) {
    for (unsigned card = 0; card < simulator::MaxCards; ++card) {
        StoreText(card, TEXT("Name"), std::u16string(50, u'W'));
    }
    const Sheet& sheet = Open();
    EXPECT_EQ(sheet.Titles().size(), 50u);
    EXPECT_EQ(sheet.Show(47).Text(IDC_SERIAL_NUMBER), u"01-20-12360");
    EXPECT_NE(sheet.Show(49).Control(IDC_EASI_BUFFER), nullptr);
    const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheet.Window(), PSM_GETTABCONTROL, 0, 0));
    EXPECT_EQ(GetWindowLongPtrW(tabs, GWL_STYLE) & TCS_MULTILINE, 0);
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

TEST_F(SheetFrameTest, NothingIsShownWithoutACardOrAfterAnInstallation) {
    const auto expectNothing = [this](LONG answer) {
        Sheet sheet(Library());
        EXPECT_EQ(sheet.Window(), nullptr);
        EXPECT_EQ(sheet.Closed(), answer);
    };
    Cards().SetPresent(0, false);
    expectNothing(DRVCNF_CANCEL);
    Reload();
    Cards().SetPresent(0, true);
    Library().DriverProc(DRV_INSTALL);
    expectNothing(DRVCNF_RESTART);
}

TEST_F(SheetFrameTest, ChangesOnlyWhatWasShownAndAsksForARestart) {
    Sheet& changed = Open();
    changed.Current().Click(IDC_NON_AUDIO);
    EXPECT_EQ(changed.Accept(), DRVCNF_OK);
    EXPECT_TRUE(RegistryKeyExists(ConfigKey()));
    EXPECT_FALSE(RegistryKeyExists(CommonKey)) << "stored by a page that was never shown";

    Sheet& restart = Open();
    SendMessageW(restart.Window(), PSM_RESTARTWINDOWS, 0, 0);
    EXPECT_EQ(restart.Accept(), DRVCNF_RESTART);
}

TEST_F(SheetFrameTest, EachPageAndControlHasItsHelp) {
    const ULONG_PTR pages[] = {902, 818, 811, 903, 819};
    struct ControlHelp {
        size_t Page;
        int Control;
        ULONG_PTR Context;
    };
    std::vector<ControlHelp> controls = {
        {0, 1002, 904}, {0, 1003, 918}, {0, 1004, 909}, {0, 1005, 909}, {0, 1023, 912}, {0, 1024, 912},
        {0, 1025, 913}, {0, 1026, 914}, {0, 1027, 915}, {0, 1028, 916}, {0, 1029, 916}, {0, 1030, 917},
        {0, 1047, 919}, {3, 1001, 910}, {4, 1048, 920}, {4, 1049, 920}, {4, 1050, 921}, {4, 1051, 921}};
    for (int control = IDC_FIRST_MIXER_SLIDER; control <= IDC_LAST_MIXER_VALUE; ++control) {
        controls.push_back({1, control, 911});
    }
    Sheet& sheet = Open();
    for (size_t page = 0; page < std::size(pages); ++page) {
        sheet.Show(page);
        sheet.Help();
        EXPECT_EQ(HelpShown().back(), (HelpCall{u"kestvox.hlp>window", HELP_CONTEXT, pages[page]}));
    }
    for (const auto& [page, control, context] : controls) {
        sheet.Show(page).AskHelp(control);
        EXPECT_EQ(HelpShown().back(), (HelpCall{u"kestvox.hlp", HELP_CONTEXTPOPUP, context}))
            << "control " << control;
    }
    const auto before = static_cast<ptrdiff_t>(HelpShown().size());
    sheet.Show(2).AskHelp(IDC_SERIAL_NUMBER);  // has none
    sheet.Dismiss();
    const std::vector<HelpCall> shown = HelpShown();
    EXPECT_EQ(std::vector<HelpCall>(shown.begin() + before, shown.end()),
              std::vector<HelpCall>(5, HelpCall{u"kestvox.hlp", HELP_QUIT, 0}));
}

}  // namespace
