// Which formats a device takes, and what the card is told about them; in both directions.
#include <mmddk.h>

#include "tests/support/driver_library.h"
#include "tests/support/driver_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"

namespace {

using simulator::Port;

constexpr WORD NonAudio = WAVE_FORMAT_DOLBY_AC3_SPDIF;
constexpr UINT Analog = 0;  // devices of card 0
constexpr UINT Digital = 1;

enum class Takes { Both, OutputOnly };
// 8 or 16 bits are dithered by the analog input when it is told to.
enum class Width { Narrow, Wide, Slot };  // of a slot: where the samples stand is the card's Left24 setting

struct AcceptedFormat {
    const char* Name;
    WaveFormat Format;
    int Control;  // format and mono bits of the port register
    Width Is;
    Takes By = Takes::Both;
};

const AcceptedFormat Accepted[] = {
    {"8 mono", PcmFormat(44100, 1, 8), 0x20, Width::Narrow},
    {"8 stereo", PcmFormat(44100, 2, 8), 0x00, Width::Narrow},
    {"16 mono", PcmFormat(44100, 1, 16), 0x60, Width::Narrow},
    {"16 stereo", PcmFormat(44100, 2, 16), 0x40, Width::Narrow},
    {"20 packed", PcmFormat(44100, 2, 20), 0xC0, Width::Wide},
    {"24 packed mono", PcmFormat(44100, 1, 24), 0xE0, Width::Wide},
    {"24 packed", PcmFormat(44100, 2, 24), 0xC0, Width::Wide},
    {"20 in 4 bytes", PcmFormat(44100, 2, 20, 4), 0xC0, Width::Slot},
    {"24 in 4 bytes mono", PcmFormat(44100, 1, 24, 4), 0xE0, Width::Slot},
    {"32", PcmFormat(44100, 2, 32), 0xC0, Width::Slot},
    {"A-law mono", TaggedFormat(WAVE_FORMAT_ALAW, 44100, 1, 8), 0x60, Width::Narrow, Takes::OutputOnly},
    {"mu-law stereo", TaggedFormat(WAVE_FORMAT_MULAW, 44100, 2, 8), 0x40, Width::Narrow, Takes::OutputOnly},
    {"extensible 8", ExtensibleFormat(44100, 2, 8, 8), 0x00, Width::Narrow},
    {"extensible 12 in 16 mono", ExtensibleFormat(44100, 1, 16, 12), 0x60, Width::Narrow},
    {"extensible 16", ExtensibleFormat(44100, 2, 16, 16), 0x40, Width::Narrow},
    {"extensible 20 in 24", ExtensibleFormat(44100, 2, 24, 20), 0xC0, Width::Wide},
    {"extensible 20 in 32", ExtensibleFormat(44100, 2, 32, 20), 0xC0, Width::Wide},
    {"extensible 24 in 32 mono", ExtensibleFormat(44100, 1, 32, 24), 0xE0, Width::Wide},
};

struct RefusedFormat {
    const char* Name;
    WaveFormat Format;
};

template <typename Change>
WaveFormat Changed(WaveFormat format, Change change) {
    change(format);
    return format;
}
WaveFormat Aligned(WaveFormat format, WORD alignment) {
    return Changed(format, [=](WaveFormat& f) { f.Basic().nBlockAlign = alignment; });
}
WaveFormat Extended(WORD extraBytes) {
    return Changed(ExtensibleFormat(44100, 2, 16, 16), [=](WaveFormat& f) { f.Basic().cbSize = extraBytes; });
}

const RefusedFormat Refused[] = {
    {"12 bits", PcmFormat(44100, 2, 12)},
    {"no channel", Changed(PcmFormat(44100, 1, 16), [](WaveFormat& f) { f.Basic().nChannels = 0; })},
    {"3 channels", PcmFormat(44100, 3, 16)},
    {"8 in 2 bytes", PcmFormat(44100, 1, 8, 2)},
    {"16 in 4 bytes", PcmFormat(44100, 2, 16, 4)},
    {"24 in 2 bytes", PcmFormat(44100, 2, 24, 2)},
    {"32 in 3 bytes", PcmFormat(44100, 2, 32, 3)},
    {"stereo with the alignment of mono", Aligned(PcmFormat(44100, 2, 16), 2)},
    {"0 Hz", PcmFormat(0, 2, 16)},
    {"12000 Hz", PcmFormat(12000, 2, 16)},
    {"44101 Hz", PcmFormat(44101, 2, 16)},
    {"192000 Hz", PcmFormat(192000, 2, 16)},
    {"float", TaggedFormat(WAVE_FORMAT_IEEE_FLOAT, 44100, 2, 32)},
    {"16-bit A-law", TaggedFormat(WAVE_FORMAT_ALAW, 44100, 2, 16)},
    {"mu-law of wrong alignment", Aligned(TaggedFormat(WAVE_FORMAT_MULAW, 44100, 2, 8), 1)},
    {"12-bit non-audio", TaggedFormat(NonAudio, 44100, 2, 12)},
    {"extensible, 24 extra bytes", Extended(24)},
    {"extensible, no extra bytes", Extended(0)},
    {"extensible float",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { f.Extensible.SubFormat.Data1 = 3; })},
    {"extensible, last byte of the subformat",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { ++f.Extensible.SubFormat.Data4[7]; })},
    {"extensible 24 in 16", ExtensibleFormat(44100, 2, 16, 24)},
    {"extensible 28 in 24", ExtensibleFormat(44100, 2, 24, 28)},
    {"extensible 16 in 32", ExtensibleFormat(44100, 2, 32, 16)},
    {"extensible 32 in 32", ExtensibleFormat(44100, 2, 32, 32)},
    {"extensible 20 in 20", ExtensibleFormat(44100, 2, 20, 20)},
    {"extensible 24 in 24 of 4 bytes", Aligned(ExtensibleFormat(44100, 2, 24, 24), 8)},
};

struct Output {
    using Client = WavePlayer;
    using Calls = WaveOutCalls;
    static constexpr bool IsInput = false;
    static constexpr unsigned FirstChannel = 2;
    static int Control(simulator::Simulator& cards, UINT device) {
        return cards.OutputRegister(0, static_cast<Port>(device), 0) & 0xE0;
    }
};

struct Input {
    using Client = WaveRecorder;
    using Calls = WaveInCalls;
    static constexpr bool IsInput = true;
    static constexpr unsigned FirstChannel = 0;
    static int Control(simulator::Simulator& cards, UINT device) {
        return cards.InputRegister(0, static_cast<Port>(device), 0) & 0xE0;
    }
};

template <typename Direction>
class FormatTest : public DriverTest {
protected:
    using Client = typename Direction::Client;

    void SetUp() override { Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Run({})); }
    void TearDown() override {
        client_.Shut();
        DriverTest::TearDown();
    }

    // A question about a format is answered like the open, but nothing is asked of the card.
    void ExpectQuery(UINT device, const WaveFormat& format, MMRESULT result) {
        waveOutGetNumDevs();
        Cards().ClearTrace();
        EXPECT_EQ(Direction::Calls::Open(nullptr, device, format.Get(), 0, 0, WAVE_FORMAT_QUERY), result);
        EXPECT_EQ(TraceText(), std::vector<std::string>());
    }

    // `control` tells what the port register is expected to hold, from a table row and a device.
    template <typename Control>
    void ExpectAccepted(Control control) {
        for (const AcceptedFormat& test : Accepted) {
            for (const UINT device : {Analog, Digital}) {
                SCOPED_TRACE(testing::Message() << test.Name << " on device " << device);
                if (test.By == Takes::OutputOnly && Direction::IsInput) {
                    ExpectQuery(device, test.Format, WAVERR_BADFORMAT);
                    ExpectRefused(device, test.Format);
                    continue;
                }
                ExpectQuery(device, test.Format, MMSYSERR_NOERROR);
                ASSERT_EQ(client_.Open(device, test.Format), MMSYSERR_NOERROR);
                EXPECT_EQ(Direction::Control(Cards(), device), control(test, device));
                EXPECT_EQ(client_.Close(), MMSYSERR_NOERROR);
                client_.Forget();
            }
        }
    }

    void ExpectRefused(UINT device, const WaveFormat& format, MMRESULT result = WAVERR_BADFORMAT) {
        EXPECT_EQ(client_.Open(device, format), result);
        EXPECT_EQ(client_.Messages(), std::vector<UINT>());
        EXPECT_FALSE(Cards().ChannelClaimed(0, device + Direction::FirstChannel));
        EXPECT_EQ(Cards().OpenFiles(), 0u);
    }

    Client client_;
};

using Directions = testing::Types<Output, Input>;
TYPED_TEST_SUITE(FormatTest, Directions);

TYPED_TEST(FormatTest, AcceptedFormatsReachThePortRegister) {
    this->ExpectAccepted([](const AcceptedFormat& test, UINT) { return test.Control; });
}

TYPED_TEST(FormatTest, ASettingMovesPlainSamplesToTheRightOfTheirSlot) {
    this->StoreSetting(0, TEXT("Left24"), 0);
    this->ExpectAccepted([](const AcceptedFormat& test, UINT) {
        return test.Is == Width::Slot ? (test.Control & 0x20) | 0x80 : test.Control;
    });
}

TYPED_TEST(FormatTest, DitherRecordsWholeSlotsOnTheAnalogInputOnly) {
    this->StoreSetting(0, TEXT("DitherADC"), 3);
    this->ExpectAccepted([](const AcceptedFormat& test, UINT device) {
        const bool dithered = TypeParam::IsInput && device == Analog && test.Is == Width::Narrow;
        return dithered ? (test.Control & 0x20) | 0xC0 : test.Control;
    });
}

TYPED_TEST(FormatTest, RefusedFormatsLeaveNothing) {
    for (const RefusedFormat& test : Refused) {
        for (const UINT device : {Analog, Digital}) {
            SCOPED_TRACE(testing::Message() << test.Name << " on device " << device);
            this->ExpectQuery(device, test.Format, WAVERR_BADFORMAT);
            this->ExpectRefused(device, test.Format);
        }
    }
}

TYPED_TEST(FormatTest, OneClockHasOneRateAndADeviceOneClient) {
    const WaveFormat format = PcmFormat(48000, 2, 16);
    const WaveFormat slower = PcmFormat(44100, 2, 16);
    ASSERT_EQ(this->client_.Open(Analog, format), MMSYSERR_NOERROR);
    typename TypeParam::Client other;
    this->ExpectQuery(Digital, slower, MMSYSERR_NOERROR);
    EXPECT_EQ(other.Open(Digital, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Open(Analog, slower), unsigned{WAVERR_BADFORMAT});  // rather than: in use
    EXPECT_EQ(other.Open(Analog, format), unsigned{MMSYSERR_ALLOCATED});
    EXPECT_EQ(other.Messages(), std::vector<UINT>());
    ASSERT_EQ(other.Open(Digital, PcmFormat(48000, 2, 24)), MMSYSERR_NOERROR);
    EXPECT_EQ(this->client_.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(this->client_.Open(Analog, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(this->client_.Open(Analog, slower), MMSYSERR_NOERROR);
}

TYPED_TEST(FormatTest, AnOpenThatFailsIsUndone) {
    struct Case {
        const char* Call;
        const char* Request;
        MMRESULT Result;
    };
    const Case cases[] = {
        {"HeapAlloc", nullptr, MMSYSERR_NOMEM},       {"CreateFileW", nullptr, MMSYSERR_NODRIVER},
        {"CreateEventW", nullptr, MMSYSERR_ERROR},    {nullptr, "BIND_HANDLE", MMSYSERR_ALLOCATED},
        {nullptr, "ACQUIRE_CHANNEL", MMSYSERR_ERROR},
    };
    waveOutGetNumDevs();
    for (const Case& test : cases) {
        SCOPED_TRACE(test.Call != nullptr ? test.Call : test.Request);
        if (test.Call != nullptr) {
            test_system::FailCall(test.Call, 1);
        } else {
            this->Fail(test.Request);
        }
        this->ExpectRefused(Analog, PcmFormat(44100, 2, 16), test.Result);
    }
    EXPECT_EQ(this->client_.Open(Analog, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
}

// --- outputs only ------------------------------------------------------------------------------

using OutputFormatTest = FormatTest<Output>;

TEST_F(OutputFormatTest, NonAudioDataIsForTheDigitalOutputWhichSaysSo) {
    const auto saysNonAudio = [this] { return (Cards().IndirectRegister(0, 0) & 0x02) != 0; };
    const WaveFormat compressed = TaggedFormat(NonAudio, 48000, 2, 16);
    waveOutGetNumDevs();
    ExpectRefused(Analog, compressed);
    HWAVEIN input = nullptr;
    EXPECT_EQ(waveInOpen(&input, Digital, compressed.Get(), 0, 0, 0), unsigned{WAVERR_BADFORMAT});
    ASSERT_EQ(client_.Open(Digital, compressed), MMSYSERR_NOERROR);
    EXPECT_EQ(Output::Control(Cards(), Digital), 0x40);
    EXPECT_TRUE(saysNonAudio());
    EXPECT_EQ(client_.Close(), MMSYSERR_NOERROR);
    ASSERT_EQ(client_.Open(Digital, PcmFormat(48000, 2, 16)), MMSYSERR_NOERROR);
    EXPECT_FALSE(saysNonAudio());
}

// What is wrong is told in this order: the pointers, the device, the format.
TEST_F(OutputFormatTest, TheFirstThingThatIsWrongIsAnswered) {
    const DriverLibrary driver;
    WaveFormat bad = PcmFormat(44100, 2, 12);
    WAVEOPENDESC without = {};
    WAVEOPENDESC with = {};
    with.lpFormat = reinterpret_cast<LPWAVEFORMAT>(&bad.Basic());
    DWORD_PTR instance = 0;
    struct Case {
        UINT Device;
        DWORD_PTR* Instance;
        WAVEOPENDESC* Description;
        MMRESULT Result;
    };
    const Case cases[] = {
        {9, nullptr, &with, MMSYSERR_INVALPARAM},      {9, &instance, nullptr, MMSYSERR_INVALPARAM},
        {9, &instance, &without, MMSYSERR_INVALPARAM}, {2, &instance, &with, MMSYSERR_BADDEVICEID},
        {1, &instance, &with, WAVERR_BADFORMAT},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(driver.WaveOut(test.Device, WODM_OPEN, reinterpret_cast<DWORD_PTR>(test.Instance),
                                 reinterpret_cast<DWORD_PTR>(test.Description)),
                  test.Result);
    }
    EXPECT_EQ(instance, 0u);
}

TEST_F(OutputFormatTest, AClockThatIsNotValidFailsTheOpenAndLeavesThePortSilent) {
    StoreSetting(0, TEXT("ClockSource"), 96);
    Cards().SetClockBroken(0, 0x60, true);
    ExpectRefused(Analog, PcmFormat(48000, 2, 16), MMSYSERR_ERROR);
    EXPECT_EQ(Cards().MixerGain(0, 2), 0u);
    Cards().SetClockBroken(0, 0x60, false);
    ASSERT_EQ(client_.Open(Analog, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().MixerGain(0, 2), 128u);
    EXPECT_EQ(client_.Messages(), std::vector<UINT>{WOM_OPEN});
}

}  // namespace
