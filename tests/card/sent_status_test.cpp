// What the other end of a digital cable is told, as a recorder shows it.
#include <optional>

#include "config_ui/resource.h"
#include "tests/support/sheet_test.h"

namespace {

using simulator::ChannelStatus;
using simulator::InputSignal;

// Card 0 sends to card 1.
class SentStatusTest : public SheetTest {
protected:
    SentStatusTest() : SheetTest(2) {
        Cards().PlugIn(1, Port::Digital, InputSignal::Cable(0, Port::Digital));
    }
    std::optional<ChannelStatus> Arriving() { return Cards().DigitalInput(1).Status; }
    void OpenAndClose(UINT device, const WaveFormat& format) { WavePlayer player(device, format); }
};

TEST_F(SentStatusTest, SettingsAndKindOfData) {
    const struct {
        DWORD Professional, NonAudio, CopyProtect, Preemphasis;
        WORD Tag;
        ChannelStatus Sent;  // professional, non-audio, copy permitted, emphasis, rate
        int Category;        // byte 1
    } cases[] = {
        {1, 0, 0, 0, WAVE_FORMAT_PCM, {true, false, false, false, 48000}, 0x00},
        {7, 4, 0, 2, WAVE_FORMAT_PCM, {true, true, false, true, 48000}, 0x00},  // any value but 0 is a yes
        {1, 0, 0, 1, WAVE_FORMAT_DOLBY_AC3_SPDIF, {true, true, false, true, 48000}, 0x00},
        {0, 0, 0, 0, WAVE_FORMAT_PCM, {false, false, true, false, 48000}, 0x81},
        {0, 0, 1, 1, WAVE_FORMAT_PCM, {false, false, false, true, 48000}, 0x01},
        {0, 0, 1, 1, WAVE_FORMAT_DOLBY_AC3_SPDIF, {false, true, false, false, 48000}, 0x01},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(&test - cases);
        UnloadDriver();
        StoreSetting(0, TEXT("Professional"), test.Professional);
        StoreSetting(0, TEXT("NonAudio"), test.NonAudio);
        StoreSetting(0, TEXT("CopyProtect"), test.CopyProtect);
        StoreSetting(0, TEXT("Preemphasis"), test.Preemphasis);
        OpenAndClose(DigitalOut, TaggedFormat(test.Tag, 48000, 2, 16));
        EXPECT_EQ(Arriving(), test.Sent);
        EXPECT_EQ(Cards().IndirectRegister(0, 1), test.Category);
        OpenAndClose(DigitalOut, PcmFormat(48000, 2, 16));
        EXPECT_EQ(Arriving()->NonAudio, test.NonAudio != 0) << "the next stream is audio";
    }
}

// An open of the analog output sets the clock, and so the rate, of the digital one, too. The sender's master
// speaks the other format.
TEST_F(SentStatusTest, TheRateInTheCardsOwnFormat) {
    const struct {
        DWORD Rate;
        unsigned Professional, Consumer;  // 0: not told
    } cases[] = {{96000, 96000, 44100}, {88200, 88200, 44100}, {48000, 48000, 48000}, {44100, 44100, 44100},
                 {32000, 32000, 32000}, {22050, 22050, 44100}, {11025, 0, 44100},     {8000, 0, 44100}};
    Follow(0, 1);
    for (const DWORD professional : {1u, 0u}) {
        UnloadDriver();
        StoreSetting(0, TEXT("Professional"), professional);
        StoreSetting(1, TEXT("Professional"), 1 - professional);
        for (const auto& test : cases) {
            SCOPED_TRACE(test.Rate);
            OpenAndClose(AnalogOut, PcmFormat(test.Rate, 2, 16));
            EXPECT_EQ(Arriving().value().Professional, professional != 0);
            EXPECT_EQ(Arriving()->Rate, professional != 0 ? test.Professional : test.Consumer);
        }
    }
}

TEST_F(SentStatusTest, ANewFormatIsUnderstoodFromTheNextOpenOn) {
    for (const bool professional : {false, true, false}) {
        Sheet& sheet = Open();
        sheet.Current().Click(professional ? IDC_PROFESSIONAL : IDC_CONSUMER);
        sheet.Ok();
        sheet.Closed();
        OpenAndClose(AnalogOut, PcmFormat(32000, 2, 16));
        EXPECT_EQ(Arriving().value().Professional, professional);
        EXPECT_EQ(Arriving()->Rate, 32000u);
        OpenAndClose(DigitalOut, PcmFormat(32000, 2, 16));
        EXPECT_EQ(Cards().IndirectRegister(0, 0) & 0xC0, professional ? 0xC0 : 0) << "the rate, or the mode";
    }
}

}  // namespace
