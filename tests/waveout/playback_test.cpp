// What an application writes is what the card plays, bit for bit, at the gains that were asked for.
#include "tests/support/output_test.h"

namespace {

using PlaybackTest = OutputTest;

// Cuts `data` into buffers of odd lengths at every alignment, each a multiple of `unit` bytes.
void WriteInPieces(WavePlayer& player, const std::vector<BYTE>& data, size_t unit) {
    unsigned piece = 0;
    for (size_t at = 0; at < data.size(); ++piece) {
        const size_t length = std::min(unit * (2 * piece + 1), data.size() - at);
        const auto start = data.begin() + static_cast<long>(at);
        ASSERT_EQ(player.Write({start, start + static_cast<long>(length)}, 0, 0, piece % 4),
                  MMSYSERR_NOERROR);
        at += length;
    }
}

TEST_F(PlaybackTest, EveryFormatIsHeardAsItIs) {
    std::vector<WaveFormat> formats;
    for (const WORD channels : {WORD{1}, WORD{2}}) {
        const WaveFormat all[] = {
            PcmFormat(48000, channels, 8),
            PcmFormat(48000, channels, 16),
            PcmFormat(48000, channels, 20),
            PcmFormat(48000, channels, 24),
            PcmFormat(48000, channels, 20, 4),
            PcmFormat(48000, channels, 24, 4),
            PcmFormat(48000, channels, 32),
            TaggedFormat(WAVE_FORMAT_ALAW, 48000, channels, 8),
            TaggedFormat(WAVE_FORMAT_MULAW, 48000, channels, 8),
            ExtensibleFormat(48000, channels, 24, 24),
            ExtensibleFormat(48000, channels, 32, 24),
        };
        formats.insert(formats.end(), std::begin(all), std::end(all));
    }
    for (const Justified side : {Justified::Left, Justified::Right}) {
        UnloadDriver();
        StoreSetting(0, TEXT("Left24"), side == Justified::Left);
        for (const WaveFormat& format : formats) {
            const WAVEFORMATEX& basic = format;
            SCOPED_TRACE(testing::Message()
                         << basic.wFormatTag << ": " << basic.wBitsPerSample << " bits, frame of "
                         << basic.nBlockAlign << ", left " << (side == Justified::Left));
            const bool extensible = basic.wFormatTag == WAVE_FORMAT_EXTENSIBLE;
            Open(format);
            const std::vector<BYTE> data = Pattern(size_t{500} * basic.nBlockAlign);
            WriteInPieces(player_, data, basic.nBlockAlign / basic.nChannels == 3 ? 3 : 1);
            Cards().Advance(Second);
            EXPECT_EQ(Played(), Sound(format, data, extensible ? Justified::Left : side));
            EXPECT_EQ(player_.Position(TIME_SAMPLES), 500u);
            EXPECT_EQ(player_.Position(TIME_BYTES), data.size());
            CloseAndForget();
        }
    }
}

// Mixer inputs 2 and 6 are the analog playback's, 3 and 7 the digital one's. Stored gains are up while the
// port is open; the volume is its left word, and the gain of the own output.
TEST_F(PlaybackTest, GainsAndVolume) {
    StoreMonitor({}, {1, 2, 100, 30, 5, 6, 70, 90});
    struct Volume {
        DWORD Set;
        DWORD Gain;
    };
    const Volume volumes[] = {{0xFFFF, 128}, {0x8000, 64},    {0x7FFF, 63},    {0x0200, 1},
                              {0x01FF, 0},   {0xFFFF0000, 0}, {0x1234C000, 96}};
    const auto volume = [this] {
        DWORD told = 1;
        EXPECT_EQ(waveOutGetVolume(player_.Handle(), &told), MMSYSERR_NOERROR);
        return told;
    };
    const struct {
        UINT Device;
        std::array<DWORD, 8> Gains;
        unsigned Own;
    } ports[] = {{AnalogOut, {0, 0, 100, 0, 0, 0, 70, 0}, 2}, {DigitalOut, {0, 0, 0, 30, 0, 0, 0, 90}, 7}};
    for (const auto& port : ports) {
        SCOPED_TRACE(port.Device);
        Open(PcmFormat(44100, 2, 16), port.Device);
        std::array<DWORD, 8> gains = port.Gains;
        EXPECT_EQ(MixerGains(), gains);
        EXPECT_EQ(volume(), gains[port.Own] * 65535 / 128);
        for (const Volume& test : volumes) {
            SCOPED_TRACE(test.Set);
            EXPECT_EQ(waveOutSetVolume(player_.Handle(), test.Set), MMSYSERR_NOERROR);
            gains[port.Own] = test.Gain;
            EXPECT_EQ(MixerGains(), gains);
            EXPECT_EQ(volume(), test.Set & 0xFFFF);
        }
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        EXPECT_EQ(MixerGains(), (std::array<DWORD, 8>{}));
    }
}

}  // namespace
