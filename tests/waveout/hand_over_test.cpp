// How written buffers reach the card: which requests, how many buffers at once, and what is refused.
#include <mmddk.h>

#include "tests/support/output_test.h"

namespace {

using Lines = std::vector<std::string>;

class HandOverTest : public OutputTest {
protected:
    void Open(const WaveFormat& format) {
        ASSERT_EQ(player_.Open(AnalogOut, format), MMSYSERR_NOERROR);
        Cards().ClearTrace();
    }
    void Write(size_t bytes, unsigned misalignment = 0) {
        ASSERT_EQ(player_.Write(Pattern(bytes), 0, 0, misalignment), MMSYSERR_NOERROR);
    }
    // What was sent since the last look.
    Lines Sent() {
        Lines lines = TraceText();
        Cards().ClearTrace();
        return lines;
    }
};

Lines Buffer(size_t bytes, Lines after = {}, int direct = 0) {
    Lines lines = {"BEGIN_BUFFER", "MAP_BUFFER " + std::to_string(bytes), "SET_BUFFER_COOKIE",
                   "QUEUE_BUFFER " + std::to_string(direct)};
    lines.insert(lines.end(), after.begin(), after.end());
    return lines;
}

TEST_F(HandOverTest, InFlightRuleDecidesHowManyBuffersTheCardHas) {
    struct Case {
        const char* Name;
        WaveFormat Format;
        DWORD AvgBytesPerSec;
        size_t Bytes;
        unsigned InFlight;
    };
    const Case cases[] = {
        {"44100 bytes of small ones", PcmFormat(44100, 2, 16), 176400, 4096, 11},
        {"exactly a quarter of a second", PcmFormat(44100, 2, 16), 176400, 4410, 10},
        {"four large ones", PcmFormat(44100, 2, 16), 176400, 65536, 4},
        {"no rate given", PcmFormat(44100, 2, 16), 0, 100, 4},
        {"the client's bytes count, not the card's", TaggedFormat(WAVE_FORMAT_MULAW, 8000, 1, 8), 8000, 100,
         20},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.Name);
        WaveFormat format = test.Format;
        format.Basic().nAvgBytesPerSec = test.AvgBytesPerSec;
        Open(format);
        for (unsigned i = 0; i < 30; ++i) {
            Write(test.Bytes);
            EXPECT_EQ(Output().BuffersInFlight, std::min(i + 1, test.InFlight));
        }
        for (unsigned i = 0; i < 26; ++i) {
            EXPECT_TRUE(Cards().AdvanceToNextCompletion(10 * Second));
            EXPECT_EQ(Output().BuffersInFlight, std::min(29 - i, test.InFlight)) << i;
        }
        EXPECT_EQ(player_.Reset(), MMSYSERR_NOERROR);
        EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    }
}

// The clock is set already, for the other port.
TEST_F(HandOverTest, TheRequestsOfOpenAndClose) {
    WavePlayer digital;
    ASSERT_EQ(digital.Open(DigitalOut, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    Cards().ClearTrace();
    ASSERT_EQ(player_.Open(AnalogOut, PcmFormat(44100, 1, 16)), MMSYSERR_NOERROR);
    EXPECT_EQ(Sent(), Lines({"BIND_HANDLE 0 2", "ACQUIRE_CHANNEL", "write port 0 = 40 / C0",
                             "write port 0 = 20 / 20", "write port 0 = 00 / 02", "DISARM_CHANNEL",
                             "write card 3 = 02 / 07", "write card 2 = 80 / FF", "SET_COMPLETION_ROUTINE"}));
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    EXPECT_EQ(Sent(), Lines({"FLUSH_BUFFERS", "write card 3 = 02 / 07", "write card 2 = 00 / FF",
                             "SET_COMPLETION_ROUTINE 0", "RELEASE_CHANNEL"}));
    EXPECT_EQ(digital.Close(), MMSYSERR_NOERROR);
}

TEST_F(HandOverTest, TheRequestsOfABuffer) {
    WaveFormat format = PcmFormat(44100, 2, 16);
    format.Basic().nAvgBytesPerSec = 0;
    Open(format);
    Write(4096);
    EXPECT_EQ(Sent(), Buffer(4096, {"START_TRANSFER", "ARM_CHANNEL"})) << "the first starts the port";
    Write(1000, 1);
    EXPECT_EQ(Sent(), Buffer(1000, {"START_TRANSFER"})) << "while the port runs";
    Write(4096);
    Write(4096);
    Sent();
    Write(512);
    EXPECT_EQ(Sent(), Lines()) << "enough is in flight";
    Cards().AdvanceToNextCompletion(Second);
    EXPECT_EQ(Sent(), Buffer(512, {"START_TRANSFER"})) << "refill";
    Cards().Advance(Second);
    EXPECT_EQ(Sent(), Lines()) << "nothing left to hand over";
}

TEST_F(HandOverTest, TheRequestsOfControl) {
    using Call = MMRESULT (WavePlayer::*)();
    const auto expect = [this](Call call, const Lines& requests, const char* why = "") {
        EXPECT_EQ((player_.*call)(), MMSYSERR_NOERROR);
        EXPECT_EQ(Sent(), requests) << why;
    };
    Open(PcmFormat(44100, 2, 16));
    expect(&WavePlayer::Stop, {});
    Write(4096);
    EXPECT_EQ(Sent(), Buffer(4096)) << "a paused port is not started";
    expect(&WavePlayer::Start, {"START_TRANSFER", "ARM_CHANNEL"});
    expect(&WavePlayer::Start, {}, "it plays already");
    expect(&WavePlayer::Stop, {"DISARM_CHANNEL"});
    expect(&WavePlayer::Stop, {}, "it is paused already");
    Write(512);
    EXPECT_EQ(Sent(), Buffer(512, {"START_TRANSFER"})) << "paused after playing";
    expect(&WavePlayer::Start, {"START_TRANSFER", "ARM_CHANNEL"});
    expect(&WavePlayer::Reset, {"DISARM_CHANNEL", "FLUSH_BUFFERS"});
    expect(&WavePlayer::Reset, {"FLUSH_BUFFERS"});
    EXPECT_EQ(waveOutBreakLoop(player_.Handle()), MMSYSERR_NOERROR);
    EXPECT_EQ(Sent(), Lines());
    player_.Position();
    EXPECT_EQ(Sent(), Lines({"GET_POSITION"}));
}

TEST_F(HandOverTest, DirectModeIsAFlagOfEveryLaterBuffer) {
    Open(PcmFormat(44100, 2, 24));
    Write(300);
    EXPECT_EQ(Sent(), Buffer(400, {"START_TRANSFER", "ARM_CHANNEL"}));
    EXPECT_EQ(Send(0x4002), MMSYSERR_NOERROR);
    EXPECT_EQ(Sent(), Lines({"write port 0 = C0 / C0"}));
    Write(300);
    EXPECT_EQ(Sent(), Buffer(400, {"START_TRANSFER"}, 1));
    EXPECT_EQ(player_.Reset(), MMSYSERR_NOERROR);
    Sent();
    Write(300);
    EXPECT_EQ(Sent(), Buffer(400, {"START_TRANSFER", "ARM_CHANNEL"}, 1));
}

TEST_F(HandOverTest, HeadersThatAreRefusedLeaveNoTrace) {
    Open(PcmFormat(44100, 2, 24));
    char data[12] = {};
    struct Case {
        const char* Name;
        LPSTR Data;
        DWORD Length;
        DWORD Flags;
        size_t Size;
        MMRESULT Result;
    };
    const Case cases[] = {
        {"size too small", data, 12, 0, sizeof(WAVEHDR) - 1, MMSYSERR_INVALPARAM},
        {"size too large", data, 12, WHDR_PREPARED, sizeof(WAVEHDR) + 1, MMSYSERR_INVALPARAM},
        {"not prepared", nullptr, 0, 0, sizeof(WAVEHDR), WAVERR_UNPREPARED},
        {"no data", nullptr, 12, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},
        {"no length", data, 0, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},
        {"parts of samples", data, 11, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},
        {"less than a sample", data, 2, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},
    };
    for (const Case& test : cases) {
        WAVEHDR header = {test.Data, test.Length, 0, 0, test.Flags, 0, nullptr, 0};
        EXPECT_EQ(Send(WODM_WRITE, reinterpret_cast<DWORD_PTR>(&header), test.Size), test.Result)
            << test.Name;
    }
    EXPECT_EQ(Send(WODM_WRITE, 0, sizeof(WAVEHDR)), unsigned{MMSYSERR_INVALPARAM});
    EXPECT_EQ(Sent(), Lines());
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
}

// A buffer for which there is no memory is refused; the one after it plays. A shadow buffer that cannot be
// resized is replaced.
TEST_F(HandOverTest, OnlyANewBufferNeedsMemory) {
    struct Case {
        const char* Call;
        unsigned Nth;
        bool Refused;
    };
    const Case cases[] = {
        {"GlobalAlloc", 1, true}, {"GlobalLock", 1, true},     {"HeapAlloc", 1, true},
        {"HeapAlloc", 2, true},   {"GlobalReAlloc", 1, false}, {"GlobalLock", 1, false},
    };
    const WaveFormat format = TaggedFormat(WAVE_FORMAT_ALAW, 8000, 1, 8);
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << test.Call << " " << test.Nth);
        Open(format);
        if (!test.Refused) {
            Write(200);  // leaves a shadow buffer, of another size
            Cards().Advance(Second);
        }
        Cards().ForgetAudio();
        test_system::FailCall(test.Call, test.Nth);
        EXPECT_EQ(player_.Write(Pattern(120)), test.Refused ? unsigned{MMSYSERR_NOMEM} : MMSYSERR_NOERROR);
        EXPECT_FALSE(test_system::CallFailuresAreWaiting());
        if (test.Refused) {
            Write(120);
        }
        Cards().Advance(Second);
        EXPECT_EQ(Played(), Sound(format, Pattern(120)));
        CloseAndForget();
    }
}

// The card reads plain samples from the client's memory, unless it cannot read at that address.
TEST_F(HandOverTest, OnlyMisalignedBuffersAreCopied) {
    const WaveFormat format = PcmFormat(44100, 2, 16);
    Open(format);
    for (unsigned misalignment = 0; misalignment < 5; ++misalignment) {
        SCOPED_TRACE(misalignment);
        Cards().ForgetAudio();
        EXPECT_EQ(player_.Stop(), MMSYSERR_NOERROR);
        Write(400, misalignment);
        const std::vector<BYTE> later = Pattern(400, 2);
        std::copy(later.begin(), later.end(), player_.Header(misalignment).lpData);
        EXPECT_EQ(player_.Start(), MMSYSERR_NOERROR);
        Cards().Advance(Second);
        EXPECT_EQ(Played(), Sound(format, misalignment % 4 == 0 ? later : Pattern(400)));
    }
}

TEST_F(HandOverTest, AResetGivesTheMemoryOfConversionsBack) {
    Open(TaggedFormat(WAVE_FORMAT_MULAW, 8000, 1, 8));
    std::string usage;
    for (const unsigned buffers : {1u, 20u}) {
        for (unsigned i = 0; i < buffers; ++i) {
            Write(80);
        }
        Cards().Advance(Second);
        EXPECT_EQ(player_.Reset(), MMSYSERR_NOERROR);
        if (usage.empty()) {
            usage = test_system::Usage();
        }
        EXPECT_EQ(test_system::Usage(), usage) << buffers;
    }
    ExpectEachReturnedOnce();
}

}  // namespace
