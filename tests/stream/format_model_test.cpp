// Random formats, every field of them varied, against the rules of what a device takes: query and open agree,
// and the card is told the layout.
#include <optional>
#include <random>

#include "tests/reliability/stride.h"
#include "tests/support/driver_test.h"

namespace {

using simulator::Port;

constexpr WORD NonAudio = WAVE_FORMAT_DOLBY_AC3_SPDIF;
constexpr UINT Analog = 0;
constexpr UINT Digital = 1;
constexpr DWORD Rates[] = {8000, 11025, 22050, 32000, 44100, 48000, 88200, 96000};

struct Setting {
    DWORD Left24;
    DWORD DitherADC;
};

// The layouts of the card's memory, as bits 6 and 7 of the port register say them.
enum Layout { Bytes = 0x00, Words = 0x40, RightSlots = 0x80, LeftSlots = 0xC0 };

// What the port register's layout and mono bits hold when the format is taken.
std::optional<int> Model(const WaveFormat& format, bool input, UINT device, const Setting& setting) {
    const WAVEFORMATEX& basic = format;
    const WORD tag = basic.wFormatTag;
    const bool law = tag == WAVE_FORMAT_ALAW || tag == WAVE_FORMAT_MULAW;
    const bool extensible = tag == WAVE_FORMAT_EXTENSIBLE;
    const bool known = tag == WAVE_FORMAT_PCM || extensible || (law && !input) ||
                       (tag == NonAudio && !input && device == Digital);
    if (!known || (basic.nChannels != 1 && basic.nChannels != 2) ||
        basic.nBlockAlign % basic.nChannels != 0 ||
        std::find(std::begin(Rates), std::end(Rates), basic.nSamplesPerSec) == std::end(Rates)) {
        return std::nullopt;
    }
    static const WaveFormat plain = ExtensibleFormat(44100, 2, 16, 16);
    if (extensible &&
        (basic.cbSize != 22 || format.Extensible.Samples.wValidBitsPerSample > basic.wBitsPerSample ||
         memcmp(&format.Extensible.SubFormat, &plain.Extensible.SubFormat, sizeof(GUID)) != 0)) {
        return std::nullopt;
    }
    const unsigned container = basic.nBlockAlign / basic.nChannels;
    const WORD bits = basic.wBitsPerSample;
    const WORD valid = format.Extensible.Samples.wValidBitsPerSample;
    std::optional<Layout> layout;
    if (bits == 8 * container && (bits == 8 || (bits == 16 && !law))) {
        const bool dithered = input && device == Analog && setting.DitherADC != 0;
        layout = dithered ? LeftSlots : bits == 8 && !law ? Bytes : Words;
    } else if ((extensible && container == 4 && bits == 32 && (valid == 20 || valid == 24)) ||
               (!law && container == 3 && (bits == 24 || (bits == 20 && !extensible)))) {
        layout = LeftSlots;
    } else if (!law && !extensible && container == 4 && (bits == 20 || bits == 24 || bits == 32)) {
        layout = setting.Left24 != 0 ? LeftSlots : RightSlots;
    }
    return layout ? std::optional(*layout | (basic.nChannels == 1 ? 0x20 : 0)) : std::nullopt;
}

class FormatModelTest : public DriverTest {
protected:
    DWORD Draw(size_t below) { return static_cast<DWORD>(random_() % below); }
    template <typename Value>
    Value One(std::initializer_list<Value> values) {
        return values.begin()[Draw(values.size())];
    }
    bool Sometimes() { return Draw(12) == 0; }

    // Mostly nearly right.
    WaveFormat Any() {
        WaveFormat format = ExtensibleFormat(0, 1, 16, One<WORD>({0, 8, 12, 16, 20, 20, 24, 24, 32}));
        WAVEFORMATEX& basic = format.Basic();
        basic.wFormatTag =
            One<WORD>({WAVE_FORMAT_PCM, WAVE_FORMAT_PCM, WAVE_FORMAT_EXTENSIBLE, WAVE_FORMAT_EXTENSIBLE,
                       WAVE_FORMAT_ALAW, WAVE_FORMAT_MULAW, NonAudio, WAVE_FORMAT_IEEE_FLOAT});
        basic.nChannels = Sometimes() ? One<WORD>({0, 3, 4}) : One<WORD>({1, 2});
        basic.nSamplesPerSec = Rates[Draw(std::size(Rates))] + (Sometimes() ? One<DWORD>({1, 0u - 1}) : 0);
        basic.wBitsPerSample = One<WORD>({8, 8, 16, 16, 20, 24, 24, 32, 32, 12, 28});
        const unsigned least = (basic.wBitsPerSample + 7u) / 8;
        const unsigned container = Draw(3) == 0 ? Draw(6) : least;
        basic.nBlockAlign = static_cast<WORD>(container * basic.nChannels + (Sometimes() ? 1 : 0));
        basic.nAvgBytesPerSec = Draw(1u << 31);
        basic.cbSize = Sometimes() ? One<WORD>({0, 21, 23, 24}) : 22;
        format.Extensible.dwChannelMask = Draw(1u << 31);
        if (Sometimes()) {
            reinterpret_cast<BYTE*>(&format.Extensible.SubFormat)[Draw(sizeof(GUID))] ^= 1;
        }
        return format;
    }

    template <typename Calls>
    void Check(WaveClient<Calls>& client, const WaveFormat& format, UINT device,
               std::optional<int> expected) {
        const MMRESULT result = expected ? unsigned{MMSYSERR_NOERROR} : unsigned{WAVERR_BADFORMAT};
        Cards().ClearTrace();
        ASSERT_EQ(Calls::Open(nullptr, device, format.Get(), 0, 0, WAVE_FORMAT_QUERY), result);
        ASSERT_EQ(TraceText(), Lines()) << "a question asks nothing of the card";
        if (Draw(4) != 0) {
            return;
        }
        ASSERT_EQ(client.Open(device, format), result);
        if (expected) {
            const auto port = static_cast<Port>(device);
            const int told = Calls::Done == WIM_DATA ? Cards().InputRegister(0, port, 0)
                                                     : Cards().OutputRegister(0, port, 0);
            EXPECT_EQ(told & 0xE0, *expected);
            ASSERT_EQ(client.Close(), MMSYSERR_NOERROR);
        }
        ASSERT_EQ(Cards().OpenFiles(), 0u);
    }

    std::mt19937 random_{1};
};

TEST_F(FormatModelTest, QueryAndOpenAnswerAsTheRulesSay) {
    WavePlayer player;
    WaveRecorder recorder;
    for (const Setting& setting : {Setting{1, 0}, {0, 0}, {1, 3}, {0, 1}}) {
        StoreSetting(0, TEXT("Left24"), setting.Left24);
        StoreSetting(0, TEXT("DitherADC"), setting.DitherADC);
        waveOutGetNumDevs();
        Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Run({}));
        for (int count = 0; count < 1000 && !HasFatalFailure(); count += RoundStep) {
            const WaveFormat format = Any();
            const WAVEFORMATEX& basic = format;
            for (const UINT device : {Analog, Digital}) {
                SCOPED_TRACE(testing::Message()
                             << "tag " << basic.wFormatTag << ", " << basic.nChannels << " of "
                             << basic.wBitsPerSample << " (" << format.Extensible.Samples.wValidBitsPerSample
                             << ") in " << basic.nBlockAlign << ", " << basic.nSamplesPerSec << " Hz, "
                             << basic.cbSize << " more, device " << device);
                Check(player, format, device, Model(format, false, device, setting));
                Check(recorder, format, device, Model(format, true, device, setting));
            }
        }
        UnloadDriver();
    }
}

}  // namespace
