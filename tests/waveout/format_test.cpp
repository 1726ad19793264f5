// Which formats an output takes, and what the card is told about them.
#include <mmddk.h>

#include "tests/support/output_test.h"

namespace {

using simulator::Port;

constexpr WORD NonAudio = WAVE_FORMAT_DOLBY_AC3_SPDIF;

struct FormatCase {
    const char* Name;
    WaveFormat Format;
    int Control;  // format and mono bits of the port register
};

template <typename Change>
WaveFormat Changed(WaveFormat format, Change change) {
    change(format);
    return format;
}

const FormatCase Accepted[] = {
    {"8 mono", PcmFormat(44100, 1, 8), 0x20},
    {"8 stereo", PcmFormat(44100, 2, 8), 0x00},
    {"16 mono", PcmFormat(44100, 1, 16), 0x60},
    {"16 stereo", PcmFormat(44100, 2, 16), 0x40},
    {"20 packed", PcmFormat(44100, 2, 20), 0xC0},
    {"24 packed mono", PcmFormat(44100, 1, 24), 0xE0},
    {"24 packed", PcmFormat(44100, 2, 24), 0xC0},
    {"A-law mono", TaggedFormat(WAVE_FORMAT_ALAW, 44100, 1, 8), 0x60},
    {"A-law stereo", TaggedFormat(WAVE_FORMAT_ALAW, 44100, 2, 8), 0x40},
    {"mu-law mono", TaggedFormat(WAVE_FORMAT_MULAW, 44100, 1, 8), 0x60},
    {"mu-law stereo", TaggedFormat(WAVE_FORMAT_MULAW, 44100, 2, 8), 0x40},
    {"extensible 8", ExtensibleFormat(44100, 2, 8, 8), 0x00},
    {"extensible 12 in 16 mono", ExtensibleFormat(44100, 1, 16, 12), 0x60},
    {"extensible 16", ExtensibleFormat(44100, 2, 16, 16), 0x40},
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
    {"8 in 2 bytes", PcmFormat(44100, 1, 8, 2), 0},
    {"16 in 4 bytes", PcmFormat(44100, 2, 16, 4), 0},
    {"24 in 2 bytes", PcmFormat(44100, 2, 24, 2), 0},
    {"32 in 3 bytes", PcmFormat(44100, 2, 32, 3), 0},
    {"stereo with the alignment of mono",
     Changed(PcmFormat(44100, 2, 16), [](WaveFormat& f) { f.Basic().nBlockAlign = 2; }), 0},
    {"float", TaggedFormat(WAVE_FORMAT_IEEE_FLOAT, 44100, 2, 32), 0},
    {"16-bit A-law", TaggedFormat(WAVE_FORMAT_ALAW, 44100, 2, 16), 0},
    {"mu-law of wrong alignment",
     Changed(TaggedFormat(WAVE_FORMAT_MULAW, 44100, 2, 8), [](WaveFormat& f) { f.Basic().nBlockAlign = 1; }),
     0},
    {"12-bit non-audio", TaggedFormat(NonAudio, 44100, 2, 12), 0},
    {"extensible, 24 extra bytes",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { f.Basic().cbSize = 24; }), 0},
    {"extensible, no extra bytes",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { f.Basic().cbSize = 0; }), 0},
    {"extensible float",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { f.Extensible.SubFormat.Data1 = 3; }), 0},
    {"extensible, last byte of the subformat",
     Changed(ExtensibleFormat(44100, 2, 16, 16), [](WaveFormat& f) { ++f.Extensible.SubFormat.Data4[7]; }),
     0},
    {"extensible 24 in 16", ExtensibleFormat(44100, 2, 16, 24), 0},
    {"extensible 16 in 32", ExtensibleFormat(44100, 2, 32, 16), 0},
    {"extensible 32 in 32", ExtensibleFormat(44100, 2, 32, 32), 0},
    {"extensible 20 in 20", ExtensibleFormat(44100, 2, 20, 20), 0},
    {"extensible 24 in 24 of 4 bytes",
     Changed(ExtensibleFormat(44100, 2, 24, 24), [](WaveFormat& f) { f.Basic().nBlockAlign = 8; }), 0},
};

class OutputFormatTest : public OutputTest {
protected:
    // A question about a format is answered like the open, but nothing is asked of the card.
    void ExpectQuery(UINT device, const WaveFormat& format, MMRESULT result) {
        Cards().ClearTrace();
        EXPECT_EQ(waveOutOpen(nullptr, device, format.Get(), 0, 0, WAVE_FORMAT_QUERY), result);
        EXPECT_EQ(TraceText(), std::vector<std::string>());
    }

    void ExpectAccepted(const FormatCase& test, int control) {
        for (const UINT device : {AnalogOut, DigitalOut}) {
            SCOPED_TRACE(testing::Message() << test.Name << " on device " << device);
            ExpectQuery(device, test.Format, MMSYSERR_NOERROR);
            ASSERT_EQ(player_.Open(device, test.Format), MMSYSERR_NOERROR);
            EXPECT_EQ(Cards().OutputRegister(0, static_cast<Port>(device), 0) & 0xE0, control);
            EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
        }
    }

    void ExpectRefused(UINT device, const WaveFormat& format, MMRESULT result = WAVERR_BADFORMAT) {
        EXPECT_EQ(player_.Open(device, format), result);
        EXPECT_EQ(player_.Messages(), std::vector<UINT>());
        EXPECT_FALSE(Cards().ChannelClaimed(0, device + 2));
    }
};

TEST_F(OutputFormatTest, AcceptedFormatsReachThePortRegister) {
    waveOutGetNumDevs();
    for (const FormatCase& test : Accepted) {
        ExpectAccepted(test, test.Control);
    }
    for (const FormatCase& test : InSlots) {
        ExpectAccepted(test, test.Control);
    }
}

TEST_F(OutputFormatTest, ASettingMovesPlainSamplesToTheRightOfTheirSlot) {
    StoreSetting(0, TEXT("Left24"), 0);
    waveOutGetNumDevs();
    for (const FormatCase& test : Accepted) {
        ExpectAccepted(test, test.Control);
    }
    for (const FormatCase& test : InSlots) {
        ExpectAccepted(test, (test.Control & 0x20) | 0x80);
    }
}

TEST_F(OutputFormatTest, RefusedFormatsLeaveNothing) {
    waveOutGetNumDevs();
    for (const FormatCase& test : Refused) {
        for (const UINT device : {AnalogOut, DigitalOut}) {
            SCOPED_TRACE(testing::Message() << test.Name << " on device " << device);
            ExpectQuery(device, test.Format, WAVERR_BADFORMAT);
            ExpectRefused(device, test.Format);
        }
    }
}

TEST_F(OutputFormatTest, EightRatesAreTaken) {
    for (const DWORD rate : {8000u, 11025u, 22050u, 32000u, 44100u, 48000u, 88200u, 96000u}) {
        SCOPED_TRACE(rate);
        ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(rate, 2, 16)), MMSYSERR_NOERROR);
        EXPECT_EQ(Cards().SampleRate(0), rate);
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    }
    for (const DWORD rate : {0u, 7999u, 12000u, 16000u, 44101u, 64000u, 192000u}) {
        SCOPED_TRACE(rate);
        EXPECT_EQ(player_.Open(AnalogOut, PcmFormat(rate, 2, 16)), unsigned{WAVERR_BADFORMAT});
    }
}

TEST_F(OutputFormatTest, NonAudioDataIsForTheDigitalOutputWhichSaysSo) {
    const auto saysNonAudio = [this] { return (Cards().IndirectRegister(0, 0) & 0x02) != 0; };
    const WaveFormat compressed = TaggedFormat(NonAudio, 48000, 2, 16);
    waveOutGetNumDevs();
    ExpectRefused(AnalogOut, compressed);
    ASSERT_EQ(player_.Open(DigitalOut, compressed), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().OutputRegister(0, Port::Digital, 0) & 0xE0, 0x40);
    EXPECT_TRUE(saysNonAudio());
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    ASSERT_EQ(player_.Open(DigitalOut, PcmFormat(48000, 2, 16)), MMSYSERR_NOERROR);
    EXPECT_FALSE(saysNonAudio());
}

TEST_F(OutputFormatTest, OneClockHasOneRate) {
    ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(48000, 2, 16)), MMSYSERR_NOERROR);
    WavePlayer other;
    const WaveFormat slower = PcmFormat(44100, 2, 16);
    EXPECT_EQ(waveOutOpen(nullptr, DigitalOut, slower.Get(), 0, 0, WAVE_FORMAT_QUERY), MMSYSERR_NOERROR);
    EXPECT_EQ(other.Open(DigitalOut, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Open(AnalogOut, slower), unsigned{WAVERR_BADFORMAT});  // rather than: in use
    EXPECT_EQ(other.Open(AnalogOut, PcmFormat(48000, 2, 16)), unsigned{MMSYSERR_ALLOCATED});
    EXPECT_EQ(other.Messages(), std::vector<UINT>());
    ASSERT_EQ(other.Open(DigitalOut, PcmFormat(48000, 2, 24)), MMSYSERR_NOERROR);
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(player_.Open(AnalogOut, slower), unsigned{WAVERR_BADFORMAT});
    EXPECT_EQ(other.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(player_.Open(AnalogOut, slower), MMSYSERR_NOERROR);
}

// What is wrong is told in this order: the pointers, the device, the format.
TEST_F(OutputFormatTest, TheFirstThingThatIsWrongIsAnswered) {
    waveOutGetNumDevs();
    const HMODULE driver = test_system::LoadDriver();
    using MessageEntry = DWORD(WINAPI*)(UINT, UINT, DWORD_PTR, DWORD_PTR, DWORD_PTR);
    const auto message = test_system::DriverEntry<MessageEntry>(driver, "wodMessage");
    ASSERT_NE(message, nullptr);
    WaveFormat bad = PcmFormat(44100, 2, 12);
    WAVEOPENDESC without = {};
    WAVEOPENDESC with = {};
    with.lpFormat = reinterpret_cast<LPWAVEFORMAT>(&bad.Basic());
    DWORD_PTR instance = 0;
    struct Case {
        UINT Device;
        DWORD_PTR* Instance;
        WAVEOPENDESC* Description;
        DWORD Result;
    };
    const Case cases[] = {
        {9, nullptr, &with, MMSYSERR_INVALPARAM},      {9, &instance, nullptr, MMSYSERR_INVALPARAM},
        {9, &instance, &without, MMSYSERR_INVALPARAM}, {2, &instance, &with, MMSYSERR_BADDEVICEID},
        {1, &instance, &with, WAVERR_BADFORMAT},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(message(test.Device, WODM_OPEN, reinterpret_cast<DWORD_PTR>(test.Instance),
                          reinterpret_cast<DWORD_PTR>(test.Description), 0),
                  test.Result);
    }
    EXPECT_EQ(instance, 0u);
    FreeLibrary(driver);
}

TEST_F(OutputFormatTest, AnOpenThatFailsIsUndone) {
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
            Fail(test.Request);
        }
        ExpectRefused(AnalogOut, PcmFormat(44100, 2, 16), test.Result);
        EXPECT_EQ(Cards().OpenFiles(), 0u);
    }
    EXPECT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
}

TEST_F(OutputFormatTest, AClockThatIsNotValidFailsTheOpenAndLeavesThePortSilent) {
    StoreSetting(0, TEXT("ClockSource"), 96);
    Cards().SetClockBroken(0, 0x60, true);
    ExpectRefused(AnalogOut, PcmFormat(48000, 2, 16), MMSYSERR_ERROR);
    EXPECT_EQ(Cards().MixerGain(0, 2), 0u);
    EXPECT_EQ(Cards().OpenFiles(), 0u);
    Cards().SetClockBroken(0, 0x60, false);
    ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().MixerGain(0, 2), 128u);
    EXPECT_EQ(player_.Messages(), std::vector<UINT>{WOM_OPEN});
}

}  // namespace
