// Which formats an input takes, and what the card is told about them.
#include <mmddk.h>

#include "tests/support/input_test.h"

namespace {

using simulator::Port;

enum class Narrow { Yes, No };  // 8 or 16 bits: the analog input dithers them when it is told to

struct FormatCase {
    const char* Name;
    WaveFormat Format;
    int Control;  // format and mono bits of the port register
    Narrow Is = Narrow::No;
};

template <typename Change>
WaveFormat Changed(WaveFormat format, Change change) {
    change(format);
    return format;
}

const FormatCase Accepted[] = {
    {"8 mono", PcmFormat(44100, 1, 8), 0x20, Narrow::Yes},
    {"8 stereo", PcmFormat(44100, 2, 8), 0x00, Narrow::Yes},
    {"16 mono", PcmFormat(44100, 1, 16), 0x60, Narrow::Yes},
    {"16 stereo", PcmFormat(44100, 2, 16), 0x40, Narrow::Yes},
    {"20 packed", PcmFormat(44100, 2, 20), 0xC0},
    {"24 packed mono", PcmFormat(44100, 1, 24), 0xE0},
    {"24 packed", PcmFormat(44100, 2, 24), 0xC0},
    {"extensible 8", ExtensibleFormat(44100, 2, 8, 8), 0x00, Narrow::Yes},
    {"extensible 12 in 16 mono", ExtensibleFormat(44100, 1, 16, 12), 0x60, Narrow::Yes},
    {"extensible 16", ExtensibleFormat(44100, 2, 16, 16), 0x40, Narrow::Yes},
    {"extensible 20 in 24", ExtensibleFormat(44100, 2, 24, 20), 0xC0},
    {"extensible 20 in 32", ExtensibleFormat(44100, 2, 32, 20), 0xC0},
    {"extensible 24 in 32 mono", ExtensibleFormat(44100, 1, 32, 24), 0xE0},
};

// Where these stand in their slot is the card's Left24 setting.
const FormatCase InSlots[] = {
    {"20 in 4 bytes", PcmFormat(44100, 2, 20, 4), 0xC0},
    {"24 in 4 bytes mono", PcmFormat(44100, 1, 24, 4), 0xE0},
    {"32", PcmFormat(44100, 2, 32), 0xC0},
};

const FormatCase Refused[] = {
    {"12 bits", PcmFormat(44100, 2, 12), 0},
    {"no channel", Changed(PcmFormat(44100, 1, 16), [](WaveFormat& f) { f.Basic().nChannels = 0; }), 0},
    {"3 channels", PcmFormat(44100, 3, 16), 0},
    {"8 mono in 2 bytes", PcmFormat(44100, 1, 8, 2), 0},
    {"16 in 4 bytes", PcmFormat(44100, 2, 16, 4), 0},
    {"24 in 2 bytes", PcmFormat(44100, 2, 24, 2), 0},
    {"32 in 3 bytes", PcmFormat(44100, 2, 32, 3), 0},
    {"A-law", TaggedFormat(WAVE_FORMAT_ALAW, 44100, 2, 8), 0},
    {"mu-law", TaggedFormat(WAVE_FORMAT_MULAW, 44100, 1, 8), 0},
    {"non-audio", TaggedFormat(WAVE_FORMAT_DOLBY_AC3_SPDIF, 48000, 2, 16), 0},
    {"float", TaggedFormat(WAVE_FORMAT_IEEE_FLOAT, 44100, 2, 32), 0},
    {"12000 Hz", PcmFormat(12000, 2, 16), 0},
    {"extensible, no extra bytes",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { f.Basic().cbSize = 0; }), 0},
    {"extensible float",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { f.Extensible.SubFormat.Data1 = 3; }), 0},
    {"extensible 24 in 16", ExtensibleFormat(44100, 2, 16, 24), 0},
    {"extensible 28 in 24", ExtensibleFormat(44100, 2, 24, 28), 0},
    {"extensible 16 in 32", ExtensibleFormat(44100, 2, 32, 16), 0},
    {"extensible 32 in 32", ExtensibleFormat(44100, 2, 32, 32), 0},
    {"extensible 20 in 20", ExtensibleFormat(44100, 2, 20, 20), 0},
};

class InputFormatTest : public InputTest {
protected:
    void SetUp() override { Cards().PlugIn(0, Port::Digital, simulator::InputSignal::Run({})); }

    // A question about a format is answered like the open, but nothing is asked of the card.
    void ExpectQuery(UINT device, const WaveFormat& format, MMRESULT result) {
        Cards().ClearTrace();
        EXPECT_EQ(waveInOpen(nullptr, device, format.Get(), 0, 0, WAVE_FORMAT_QUERY), result);
        EXPECT_EQ(TraceText(), std::vector<std::string>());
    }

    void ExpectAccepted(UINT device, const FormatCase& test, int control) {
        SCOPED_TRACE(testing::Message() << test.Name << " on device " << device);
        ExpectQuery(device, test.Format, MMSYSERR_NOERROR);
        ASSERT_EQ(recorder_.Open(device, test.Format), MMSYSERR_NOERROR);
        EXPECT_EQ(Cards().InputRegister(0, static_cast<Port>(device), 0) & 0xE0, control);
        EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
        EXPECT_EQ(recorder_.Messages(), (std::vector<UINT>{WIM_OPEN, WIM_CLOSE}));
        recorder_.Forget();
    }

    void ExpectRefused(UINT device, const WaveFormat& format, MMRESULT result = WAVERR_BADFORMAT) {
        EXPECT_EQ(recorder_.Open(device, format), result);
        EXPECT_EQ(recorder_.Messages(), std::vector<UINT>());
        EXPECT_FALSE(Cards().ChannelClaimed(0, device));
    }
};

TEST_F(InputFormatTest, AcceptedFormatsReachThePortRegister) {
    waveInGetNumDevs();
    for (const UINT device : {AnalogIn, DigitalIn}) {
        for (const FormatCase& test : Accepted) {
            ExpectAccepted(device, test, test.Control);
        }
        for (const FormatCase& test : InSlots) {
            ExpectAccepted(device, test, test.Control);
        }
    }
}

TEST_F(InputFormatTest, ASettingMovesPlainSamplesToTheRightOfTheirSlot) {
    StoreSetting(0, TEXT("Left24"), 0);
    waveInGetNumDevs();
    for (const UINT device : {AnalogIn, DigitalIn}) {
        for (const FormatCase& test : Accepted) {
            ExpectAccepted(device, test, test.Control);
        }
        for (const FormatCase& test : InSlots) {
            ExpectAccepted(device, test, (test.Control & 0x20) | 0x80);
        }
    }
}

TEST_F(InputFormatTest, DitherRecordsWholeSlotsOnTheAnalogInputOnly) {
    StoreSetting(0, TEXT("DitherADC"), 3);
    waveInGetNumDevs();
    for (const FormatCase& test : Accepted) {
        const bool dithered = test.Is == Narrow::Yes;
        ExpectAccepted(AnalogIn, test, dithered ? (test.Control & 0x20) | 0xC0 : test.Control);
        ExpectAccepted(DigitalIn, test, test.Control);
    }
}

TEST_F(InputFormatTest, RefusedFormatsLeaveNothing) {
    waveInGetNumDevs();
    for (const FormatCase& test : Refused) {
        for (const UINT device : {AnalogIn, DigitalIn}) {
            SCOPED_TRACE(testing::Message() << test.Name << " on device " << device);
            ExpectQuery(device, test.Format, WAVERR_BADFORMAT);
            ExpectRefused(device, test.Format);
        }
    }
}

TEST_F(InputFormatTest, OneClockHasOneRateAndAnInputOneClient) {
    Open(PcmFormat(48000, 2, 16));
    WaveRecorder other;
    const WaveFormat slower = PcmFormat(44100, 2, 16);
    ExpectQuery(DigitalIn, slower, MMSYSERR_NOERROR);
    EXPECT_EQ(other.Open(DigitalIn, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Open(AnalogIn, slower), unsigned{WAVERR_BADFORMAT});  // rather than: in use
    EXPECT_EQ(other.Open(AnalogIn, PcmFormat(48000, 1, 24)), unsigned{MMSYSERR_ALLOCATED});
    EXPECT_EQ(other.Messages(), std::vector<UINT>());
    EXPECT_EQ(other.Open(DigitalIn, PcmFormat(48000, 2, 24)), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.Open(AnalogIn, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(recorder_.Open(AnalogIn, slower), MMSYSERR_NOERROR);
}

TEST_F(InputFormatTest, AnOpenThatFailsIsUndone) {
    struct Case {
        const char* Call;
        const char* Fault;
        MMRESULT Result;
    };
    const Case cases[] = {
        {"HeapAlloc", nullptr, MMSYSERR_NOMEM},
        {"CreateFileW", nullptr, MMSYSERR_NODRIVER},
        {nullptr, "BIND_HANDLE:1", MMSYSERR_ALLOCATED},
        {nullptr, "ACQUIRE_CHANNEL:1", MMSYSERR_ERROR},
    };
    waveInGetNumDevs();
    for (const Case& test : cases) {
        SCOPED_TRACE(test.Call != nullptr ? test.Call : test.Fault);
        if (test.Call != nullptr) {
            test_system::FailCall(test.Call, 1);
        } else {
            AddFault(test.Fault);
        }
        ExpectRefused(AnalogIn, PcmFormat(44100, 2, 16), test.Result);
        EXPECT_EQ(Cards().OpenFiles(), 0u);
    }
    EXPECT_EQ(recorder_.Open(AnalogIn, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
}

}  // namespace
