// How written buffers reach the card: which requests, how many buffers at once, and what is refused.
#include "tests/support/output_test.h"

namespace {

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

Lines Buffer(size_t bytes, const Lines& after = {}) {
    return Lines{"BEGIN_BUFFER", "MAP_BUFFER " + std::to_string(bytes), "SET_BUFFER_COOKIE",
                 "QUEUE_BUFFER 0"} +
           after;
}

TEST_F(HandOverTest, InFlightRuleDecidesHowManyBuffersTheCardHas) {
    const struct {
        WaveFormat Format;
        DWORD AvgBytesPerSec;
        size_t Bytes;
        unsigned InFlight;
    } cases[] = {
        {PcmFormat(44100, 2, 16), 176400, 4096, 11},
        {PcmFormat(44100, 2, 16), 176400, 4410, 10},  // exactly a quarter of a second
        {PcmFormat(44100, 2, 16), 176400, 65536, 4},
        {PcmFormat(44100, 2, 16), 0, 100, 4},
        {TaggedFormat(WAVE_FORMAT_MULAW, 8000, 1, 8), 8000, 100, 20},  // the client's bytes, not the card's
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(&test - cases);
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

// Converted, neither would fit into what the card can address. The data is not looked at.
TEST_F(HandOverTest, ABufferThatIsTooLargeForTheCardIsRefused) {
    WAVEHDR* header = test_system::TakeHeader(100);
    header->dwBufferLength = 0x80000001;
    ASSERT_EQ(player_.Open(AnalogOut, TaggedFormat(WAVE_FORMAT_MULAW, 8000, 1, 8)), MMSYSERR_NOERROR);
    EXPECT_EQ(waveOutWrite(player_.Handle(), header, sizeof *header), unsigned{MMSYSERR_NOMEM});
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
    header->dwBufferLength = 3 * 0x40000001u;
    header->dwFlags = WHDR_PREPARED;
    WaveRecorder recorder(AnalogIn, PcmFormat(44100, 2, 24));
    EXPECT_EQ(waveInAddBuffer(recorder.Handle(), header, sizeof *header), unsigned{MMSYSERR_NOMEM});
    test_system::GiveBackPage(header);
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

TEST_F(HandOverTest, HeadersThatAreRefusedLeaveNoTrace) {
    Open(PcmFormat(44100, 2, 24));
    char data[12] = {};
    const struct {
        LPSTR Data;
        DWORD Length, Flags;
        size_t Size;
        MMRESULT Result;
    } cases[] = {
        {data, 12, 0, sizeof(WAVEHDR) - 1, MMSYSERR_INVALPARAM},
        {data, 12, WHDR_PREPARED, sizeof(WAVEHDR) + 1, MMSYSERR_INVALPARAM},
        {nullptr, 0, 0, sizeof(WAVEHDR), WAVERR_UNPREPARED},
        {nullptr, 12, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},
        {data, 0, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},
        {data, 11, WHDR_PREPARED, sizeof(WAVEHDR), MMSYSERR_INVALPARAM},  // parts of samples
    };
    for (const auto& test : cases) {
        WAVEHDR header = {test.Data, test.Length, 0, 0, test.Flags, 0, nullptr, 0};
        EXPECT_EQ(Send(WODM_WRITE, reinterpret_cast<DWORD_PTR>(&header), test.Size), test.Result)
            << &test - cases;
    }
    EXPECT_EQ(Send(WODM_WRITE, 0, sizeof(WAVEHDR)), unsigned{MMSYSERR_INVALPARAM});
    EXPECT_EQ(Sent(), Lines());
    EXPECT_EQ(player_.Close(), MMSYSERR_NOERROR);
}

// A shadow buffer that cannot be resized is replaced. A reset gives back what conversions have taken.
TEST_F(HandOverTest, OnlyANewBufferNeedsMemoryAndAResetGivesItBack) {
    Open(TaggedFormat(WAVE_FORMAT_ALAW, 8000, 1, 8));
    Write(200);
    Cards().Advance(Second);
    for (const char* call : {"GlobalReAlloc", "GlobalLock"}) {
        test_system::FailCall(call, 1);
        Write(120);
        EXPECT_FALSE(test_system::CallFailuresAreWaiting());
        Cards().Advance(Second);
        Write(200);
        Cards().Advance(Second);
    }
    test_system::FailCall("GlobalAlloc", 1);
    EXPECT_EQ(player_.Write(Pattern(120), 0, 0), MMSYSERR_NOERROR);
    EXPECT_EQ(player_.Write(Pattern(120), 0, 0), MMSYSERR_NOMEM) << "the other one is in the card";

    // The second reset gives back what has come too late for the first one, on a busy machine.
    const auto reset = [this] {
        for (int time = 1; time <= 2; ++time) {
            EXPECT_EQ(player_.Reset(), MMSYSERR_NOERROR);
            Cards().Advance(1);  // waits for the service thread
        }
    };
    reset();
    const std::string usage = test_system::Usage();
    for (unsigned i = 0; i < 20; ++i) {
        Write(80);
    }
    reset();
    EXPECT_EQ(test_system::Usage(), usage);
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

}  // namespace
