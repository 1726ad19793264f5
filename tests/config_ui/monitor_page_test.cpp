// The Monitor page: eight gains on the screen, in the card while it plays and records, and in what is saved.
#include <array>
#include <cmath>

#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

// One number for each mixer input: analog and digital input, analog and digital playback into the analog
// output, then the same into the digital one.
using Eight = std::array<DWORD, 8>;

constexpr Eight DefaultGains = {128, 0, 128, 0, 0, 128, 0, 128};

constexpr int SliderOf(size_t input) {
    return IDC_FIRST_MIXER_SLIDER + 2 * static_cast<int>(input);
}

class MonitorPageTest : public SheetTest {
protected:
    static SheetPage ShowPage(const Sheet& sheet) { return sheet.Show(u"Monitor: 'Kestrelvox'"); }

    static Eight Positions(const SheetPage& page) {
        Eight positions = {};
        for (size_t input = 0; input < positions.size(); ++input) {
            positions[input] = static_cast<DWORD>(page.Position(SliderOf(input)));
        }
        return positions;
    }
    static void SlideAll(const SheetPage& page, int position) {
        for (size_t input = 0; input < 8; ++input) {
            page.Slide(SliderOf(input), position);
        }
    }
};

TEST_F(MonitorPageTest, AGainIsShownInDecibelsAndSavedAsACodeAndAGain) {
    StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
    StoreMonitor({0, 17, 200, 64, 19, 82, 18, 0x80000000}, {});
    Sheet& sheet = Open();
    const SheetPage page = ShowPage(sheet);
    EXPECT_EQ(Positions(page), (Eight{18, 18, 83, 64, 19, 82, 18, 83}));
    const std::u16string texts[] = {u"-INF dB",  u"-INF dB", u" 0.0 dB", u"-8.1 dB",
                                    u"-42.0 dB", u"-0.2 dB", u"-INF dB", u" 0.0 dB"};
    for (size_t input = 0; input < 8; ++input) {
        EXPECT_EQ(page.Text(SliderOf(input) + 1), texts[input]) << "input " << input;
    }
    EXPECT_FALSE(sheet.CanApply());

    page.Slide(SliderOf(3), 39);
    EXPECT_EQ(page.Text(SliderOf(3) + 1), u"-24.0 dB");
    EXPECT_TRUE(sheet.CanApply());
    sheet.Apply();
    EXPECT_EQ(StoredMonitor().Codes, (Eight{18, 18, 83, 39, 19, 82, 18, 83}));
    EXPECT_EQ(StoredMonitor().Gains, (Eight{0, 0, 128, 8, 1, 123, 0, 128}));
}

TEST_F(MonitorPageTest, EachPositionSaysWhatItsGainIs) {
    const SheetPage page = ShowPage(Open());
    WaveRecorder recorder(0, PcmFormat(44100, 2, 16));
    DWORD before = 0;
    DWORD gains = 0;
    int tenths = 0;
    for (int position = 19; position <= 83; ++position) {
        page.Slide(SliderOf(0), position);
        const DWORD gain = MixerGains()[0];
        EXPECT_GE(gain, before);
        before = gain;
        const std::u16string text = page.Text(SliderOf(0) + 1);
        const double decibels = std::stod(std::string(text.begin(), text.end()));
        EXPECT_NEAR(decibels, 20 * std::log10(gain / 128.0), 0.15) << position;
        gains += gain;
        tenths += static_cast<int>(std::lround(decibels * 10));
    }
    EXPECT_EQ(gains, 2352u) << "all of them: not every text is that of the nearest gain";
    EXPECT_EQ(tenths, -11511);
}

// The open of a device takes what the sliders show; from then on they move the card's gains.
TEST_F(MonitorPageTest, OnlyOpenDevicesAreHeardAtOnce) {
    StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
    const struct {
        bool Input;
        UINT Device;
        size_t Inputs[2];
    } devices[] = {{true, 0, {0, 4}}, {true, 1, {1, 5}}, {false, 0, {2, 6}}, {false, 1, {3, 7}}};
    for (const auto& device : devices) {
        Cards().SetDigitalInputRate(0, 44100);
        Sheet& sheet = Open();
        const SheetPage page = ShowPage(sheet);
        Cards().ClearTrace();
        SlideAll(page, 50);
        EXPECT_EQ(TraceText(), Lines()) << "requests for devices that are not open";

        WavePlayer player;
        WaveRecorder recorder;
        const WaveFormat format = PcmFormat(44100, 2, 16);
        ASSERT_EQ(device.Input ? recorder.Open(device.Device, format) : player.Open(device.Device, format),
                  MMSYSERR_NOERROR);
        Eight expected = MixerGains();
        SlideAll(page, 64);
        for (const size_t input : device.Inputs) {
            expected[input] = 50;
        }
        EXPECT_EQ(MixerGains(), expected);
        // Through the device's own handle: what is selected, and its gain.
        Cards().ClearTrace();
        page.Slide(SliderOf(device.Inputs[0]), 82);
        EXPECT_EQ(TraceText().size(), 2u);

        sheet.Dismiss();
        for (const size_t input : device.Inputs) {
            expected[input] = DefaultGains[input];
        }
        EXPECT_EQ(MixerGains(), expected);
    }
}

// The playback gains are the user's only with advanced monitoring. Whichever page is shown first, they are
// what switching it off made of them, as long as that is not cancelled; switching it on again does not bring
// the others back.
TEST_F(MonitorPageTest, WithoutAdvancedMonitoringEachPlaybackGoesItsOwnWay) {
    const Eight stored = {64, 64, 64, 64, 64, 64, 64, 64};
    const Eight standard = {64, 64, 83, 18, 64, 64, 18, 83};
    enum End { Cancelled, Accepted, Applied };
    const struct {
        bool MonitorFirst;
        unsigned Clicks;
        bool MonitorAfter;
        End Ending;
    } cases[] = {
        {false, 1, true, Cancelled}, {false, 1, true, Accepted},   {false, 1, true, Applied},
        {false, 2, true, Accepted},  {true, 2, true, Accepted},    {false, 1, false, Accepted},
        {true, 1, true, Accepted},   {true, 1, false, Applied},    {false, 2, false, Applied},
        {true, 1, false, Cancelled}, {false, 1, false, Cancelled},
    };
    const auto expectShown = [](const SheetPage& page, const Eight& positions, bool playback) {
        EXPECT_EQ(Positions(page), positions);
        EXPECT_EQ(page.Text(SliderOf(3) + 1), positions[3] == 18 ? u"-INF dB" : u"-8.1 dB");
        for (size_t input = 0; input < 8; ++input) {
            const bool enabled = input % 4 < 2 || playback;
            EXPECT_EQ(page.IsEnabled(SliderOf(input)), enabled) << "slider of input " << input;
            EXPECT_EQ(page.IsEnabled(SliderOf(input) + 1), enabled) << "value of input " << input;
        }
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(static_cast<int>(&each - cases));
        StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
        StoreMonitor(stored, {50, 50, 50, 50, 50, 50, 50, 50});
        Reload();
        WavePlayer player(0, PcmFormat(44100, 2, 16));
        Sheet& sheet = Open();
        if (each.MonitorFirst) {
            expectShown(ShowPage(sheet), stored, true);
        }
        for (unsigned click = 0; click < each.Clicks; ++click) {
            sheet.Show(0).Click(IDC_ADVANCED_MONITORING);
        }
        WavePlayer digital(1, PcmFormat(44100, 2, 16));
        EXPECT_EQ(MixerGains()[3], 0u);
        EXPECT_EQ(MixerGains()[7], 128u);
        if (each.MonitorAfter) {
            expectShown(ShowPage(sheet), standard, each.Clicks == 2);
            EXPECT_EQ(MixerGains()[2], 128u);
            EXPECT_EQ(MixerGains()[6], 0u);
        }
        if (each.Ending == Applied) {
            sheet.Apply();
            EXPECT_EQ(Positions(ShowPage(sheet)), standard);
        }
        each.Ending == Accepted ? sheet.Ok() : sheet.Cancel();
        sheet.Closed();
        const bool kept = each.Ending == Cancelled;
        digital.Shut();
        ASSERT_EQ(digital.Open(1, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
        EXPECT_EQ(MixerGains()[7] == 128, !kept);
        if (each.MonitorFirst || each.MonitorAfter) {
            EXPECT_EQ(MixerGains()[2], kept ? 50u : 128u);
            EXPECT_EQ(MixerGains()[6], kept ? 50u : 0u);
            EXPECT_EQ(StoredMonitor().Codes, kept ? stored : standard);
        }
        EXPECT_EQ(Positions(ShowPage(Open())), kept ? stored : standard) << "the next time";
        player.Shut();
    }
}

TEST_F(MonitorPageTest, ARouteThatIsResetToWhatItWasShowsItsGain) {
    StoreSetting(0, TEXT("AdvancedMonitoring"), 1);
    Sheet& sheet = Open();
    sheet.Show(0).Click(IDC_ADVANCED_MONITORING);
    const SheetPage page = ShowPage(sheet);
    EXPECT_EQ(page.Text(SliderOf(2) + 1), u" 0.0 dB");
    EXPECT_EQ(page.Text(SliderOf(7) + 1), u" 0.0 dB");
}

TEST_F(MonitorPageTest, ACardThatIsGoneTakesNoGains) {
    Sheet& sheet = Open();
    WaveRecorder recorder(0, PcmFormat(44100, 2, 16));
    const SheetPage page = ShowPage(sheet);
    Cards().SetPresent(0, false);
    page.Slide(SliderOf(0), 18);
    EXPECT_EQ(page.Text(SliderOf(0) + 1), u"-INF dB");
    sheet.Accept();
    ASSERT_FALSE(test_system::MessageBoxes().empty());
    EXPECT_EQ(test_system::MessageBoxes().back().Text,
              u"Could not save configuration information in registry");
}

}  // namespace
