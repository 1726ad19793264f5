// Two sheets at once: each stores what was changed on it, and shows one state of what both change.
#include <algorithm>
#include <atomic>
#include <thread>

#include "config_ui/resource.h"
#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"

namespace {

constexpr const char16_t* Clocks = u"Clocks + Sync";

class TwoSheetsTest : public SheetTest {
protected:
    TwoSheetsTest() : SheetTest(3) {
        NameCards();
        for (unsigned card = 0; card < 3; ++card) {
            StoreSetting(card, TEXT("ClockSource"), 0);
        }
    }

    static void ShowAll(const Sheet& sheet) {
        for (size_t page = 0; page < sheet.Titles().size(); ++page) {
            sheet.Show(page);
        }
    }
    static ClockTreeUser Tree(const Sheet& sheet) { return ClockTreeUser(sheet.Show(Clocks).Window()); }
};

TEST_F(TwoSheetsTest, ALaterOkKeepsWhatTheOtherStored) {
    Sheet& later = Open();
    ShowAll(later);
    Sheet earlier(Library());
    ASSERT_NE(earlier.Window(), nullptr);
    ShowAll(earlier);

    const SheetPage options = earlier.Show(0);
    options.Click(IDC_NON_AUDIO);
    options.Click(IDC_CONSUMER);
    options.Click(IDC_COPY_PROTECT);
    options.Type(IDC_NAME, u"New");
    options.Choose(IDC_DITHER, 3);
    earlier.Show(1).Slide(IDC_FIRST_MIXER_SLIDER, 50);
    Tree(earlier).Command(u"B", u'D');
    Tree(earlier).Drag(u"C", u"B");
    earlier.Show(u"ASIO + EASI").Slide(IDC_ASIO_BUFFER, 100);
    earlier.Accept();

    later.Show(0).Click(IDC_RIGHT);
    later.Show(1).Slide(IDC_FIRST_MIXER_SLIDER + 2, 60);
    Tree(later).Command(u"A", u'D');
    later.Show(u"ASIO + EASI").Slide(IDC_EASI_BUFFER, 200);
    later.Apply();
    EXPECT_FALSE(later.CanApply());
    EXPECT_EQ(Tree(later).Outline(), u"B (digital input clock) [C]; New (digital input clock)")
        << "is shown, too";
    const SheetPage shown = later.Show(0);
    EXPECT_EQ(shown.Text(IDC_NAME), u"New");
    EXPECT_TRUE(shown.IsChecked(IDC_COPY_PROTECT) && shown.IsEnabled(IDC_COPY_PROTECT));
    EXPECT_FALSE(shown.IsEnabled(IDC_PREEMPHASIS));
    later.Accept();

    EXPECT_EQ(ReadRegistry(ConfigKey(), u"Name"), TextValue(REG_SZ, u"New"));
    EXPECT_EQ(StoredNumber(u"NonAudio"), 1u);
    EXPECT_EQ(StoredNumber(u"Professional"), 0u);
    EXPECT_EQ(StoredNumber(u"CopyProtect"), 1u);
    EXPECT_EQ(StoredNumber(u"DitherADC"), 3u);
    EXPECT_EQ(StoredNumber(u"Left24"), 0u);
    EXPECT_EQ(StoredMonitor().Codes[0], 50u);
    EXPECT_EQ(StoredMonitor().Codes[1], 60u);
    EXPECT_EQ(StoredNumber(u"ClockSource", 0), 64u);
    EXPECT_EQ(StoredNumber(u"ClockSource", 1), 64u);
    EXPECT_EQ(ReadRegistry(ConfigKey(2), u"Master"),
              TextValue(REG_SZ, simulator::Simulator::RegistryPath(1)));
    EXPECT_EQ(StoredBufferSize(u"AsioBufferSize"), 100u);
    EXPECT_EQ(StoredBufferSize(u"EasiBufferSize"), 200u);
}

TEST_F(TwoSheetsTest, WhatBothChangeIsTheLaters) {
    Sheet& later = Open();
    ShowAll(later);
    Tree(later).Command(u"C", u'D');
    Sheet earlier(Library());
    earlier.Show(0).Type(IDC_NAME, u"Earlier");
    earlier.Show(0).Focus(IDC_LEFT);  // a name is taken when its field is left
    Tree(earlier).Drag(u"B", u"Earlier");
    later.Show(0).Type(IDC_NAME, u"Later");
    later.Show(0).Focus(IDC_LEFT);
    Tree(later).Command(u"Later", u'D');
    EXPECT_EQ(Tree(earlier).Outline(), u"C (digital input clock); Later (digital input clock) [B]");
    Tree(later).Drag(u"Later", u"C");
    earlier.Accept();
    EXPECT_EQ(StoredNumber(u"ClockSource", 2), 64u) << "an OK stores the clock sources of both";
    later.Accept();
    EXPECT_EQ(ReadRegistry(ConfigKey(), u"Name"), TextValue(REG_SZ, u"Later"));
    EXPECT_EQ(ReadRegistry(ConfigKey(0), u"Master"),
              TextValue(REG_SZ, simulator::Simulator::RegistryPath(2)));
    EXPECT_EQ(ReadRegistry(ConfigKey(1), u"Master"), TextValue(REG_SZ, u""));
}

// Switched-off advanced monitoring is stored with its gains all the same.
TEST_F(TwoSheetsTest, APageThatIsFirstShownPutsTheStoredGainsBack) {
    constexpr int Input = IDC_FIRST_MIXER_SLIDER;
    constexpr int Playback = IDC_FIRST_MIXER_SLIDER + 4;
    StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
    Sheet& first = Open();
    first.Show(1).Slide(Playback, 50);
    first.Apply();
    first.Show(1).Slide(Input, 40);
    first.Show(0).Click(IDC_ADVANCED_MONITORING);
    Sheet second(Library());
    EXPECT_EQ(second.Show(1).Position(Input), 83);
    EXPECT_EQ(second.Show(1).Position(Playback), 50);
    EXPECT_EQ(first.Show(1).Position(Input), 83);
    second.Show(1).Slide(Input, 60);
    first.Show(0);
    EXPECT_EQ(first.Show(1).Position(Input), 60) << "from then on they are everybody's";
    second.Dismiss();
    first.Accept();
    EXPECT_EQ(StoredMonitor().Codes[0], 83u);
    EXPECT_EQ(StoredMonitor().Codes[2], 83u);
}

// Whether the other sheet, which does not show the group, chooses before the group is stored or after.
TEST_F(TwoSheetsTest, AMasterIsNotStoredAsAutomatic) {
    for (const bool storedFirst : {false, true}) {
        SCOPED_TRACE(storedFirst);
        Sheet& choosing = Open();
        Tree(choosing);
        Sheet grouping(Library());
        Tree(grouping).Drag(u"B", u"A");
        if (storedFirst) {
            grouping.Apply();
        }
        Tree(choosing).Command(u"A", u'A');
        storedFirst ? choosing.Ok() : grouping.Ok();
        EXPECT_EQ(StoredNumber(u"ClockSource", 0), 0u);
        EXPECT_EQ(StoredNumber(u"ClockSource", 1), 32u);
        Sheet& freeing = Open();
        Tree(freeing).Command(u"B", u'S');
        freeing.Accept();
    }
}

// The working clock sources are everybody's: one that changes while it is looked at is shown as one of the
// two.
TEST_F(TwoSheetsTest, ASourceThatChangesMeanwhileIsOneSource) {
    const std::u16string longest(50, u'n');
    StoreText(0, TEXT("Name"), longest);
    const ClockTreeUser tree = Tree(Open());
    const Sheet other(Library());
    const HWND otherPage = other.Show(Clocks).Window();
    tree.Select(longest);
    ClockTreeUser(otherPage).Select(longest);
    std::atomic<bool> done = false;
    std::thread changing([&] {
        while (!done) {
            for (const WPARAM source : {WPARAM{64}, WPARAM{97}, WPARAM{0}}) {
                SendMessageW(otherPage, WM_COMMAND, source, 0);
            }
        }
    });
    for (int i = 0; i < 100; ++i) {
        for (int look = 0; look < 50; ++look) {
            const std::u16string text = tree.Selected().substr(50);
            EXPECT_TRUE(text == u" (digital input clock)" || text == u" (automatic clock selection)" ||
                        text == u" (internal clock)");
        }
        const auto isChecked = [](const std::u16string& line) { return line.starts_with(u"* "); };
        EXPECT_EQ(std::ranges::count_if(tree.ShiftF10(), isChecked), 1);
        tree.Choose(VK_ESCAPE);
    }
    done = true;
    changing.join();
}

}  // namespace
