// Pause, restart, reset, position and close.
#include <mmddk.h>

#include "tests/support/output_test.h"

namespace {

constexpr MMRESULT Done = MMSYSERR_NOERROR;

class OutputControlTest : public OutputTest {
protected:
    static constexpr DWORD BufferFrames = 1000;

    void SetUp() override { ASSERT_EQ(player_.Open(AnalogOut, format_), Done); }

    void Write(unsigned buffers = 1) {
        for (unsigned i = 0; i < buffers; ++i) {
            const std::vector<BYTE> data =
                Pattern(BufferFrames * 4, static_cast<unsigned>(player_.HeaderCount()) + 1);
            ASSERT_EQ(player_.Write(data), Done);
            written_.insert(written_.end(), data.begin(), data.end());
        }
    }
    void Pause() { EXPECT_EQ(waveOutPause(player_.Handle()), Done); }
    void Restart() { EXPECT_EQ(waveOutRestart(player_.Handle()), Done); }
    void Reset() { EXPECT_EQ(waveOutReset(player_.Handle()), Done); }
    void AdvanceFrames(int64_t frames) { Cards().Advance(frames * Second / 44100); }
    // The kernel gives flushed buffers back on a thread of its own.
    void LetFlushedBuffersComeBack() { Cards().Advance(1000); }

    const WaveFormat format_ = PcmFormat(44100, 2, 16);
    std::vector<BYTE> written_;
};

TEST_F(OutputControlTest, APauseStopsTheSoundWhereItIs) {
    Write(5);
    AdvanceFrames(2500);
    Pause();
    const DWORD position = player_.Position();
    EXPECT_NEAR(position, 2500, 5);
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), position);
    EXPECT_EQ(player_.DoneCount(), 2u);
    Write(2);
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), position) << "a write does not end a pause";
    Restart();
    Restart();
    Cards().Advance(Second);
    EXPECT_EQ(player_.Position(), 7 * BufferFrames);
    EXPECT_EQ(Played(), Sound(format_, written_));
    ExpectEachReturnedOnce();
}

TEST_F(OutputControlTest, PositionIsInSamplesUnlessBytesAreAskedFor) {
    Write();
    Cards().Advance(Second);
    MMTIME time = {};
    const auto answer = [&](UINT type, DWORD size) {
        time.wType = type;
        return Send(WODM_GETPOS, reinterpret_cast<DWORD_PTR>(&time), size);
    };
    for (const UINT type :
         std::initializer_list<UINT>{TIME_MS, TIME_SMPTE, TIME_MIDI, TIME_TICKS, TIME_SAMPLES, 0}) {
        EXPECT_EQ(answer(type, sizeof time), Done);
        EXPECT_EQ(time.wType, unsigned{TIME_SAMPLES});
        EXPECT_EQ(time.u.sample, BufferFrames);
    }
    EXPECT_EQ(answer(TIME_BYTES, sizeof time + 1), Done);
    EXPECT_EQ(time.wType, unsigned{TIME_BYTES});
    EXPECT_EQ(time.u.cb, 4 * BufferFrames);

    EXPECT_EQ(Send(WODM_GETPOS, 0, sizeof time), unsigned{MMSYSERR_INVALPARAM});
    EXPECT_EQ(answer(TIME_BYTES, sizeof time - 1), unsigned{MMSYSERR_INVALPARAM});
    for (const auto kind : {simulator::Fault::Kind::Fail, simulator::Fault::Kind::Short}) {
        Fail("GET_POSITION", 1, kind);
        EXPECT_EQ(answer(TIME_BYTES, sizeof time), unsigned{MMSYSERR_ERROR});
    }
}

TEST_F(OutputControlTest, ACloseWhilePlayingIsRefusedReportedAndHarmless) {
    Write(20);
    AdvanceFrames(1500);
    EXPECT_EQ(player_.Close(), unsigned{WAVERR_STILLPLAYING});
    const std::vector<test_system::LoggedEvent> events = test_system::EventLog();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].Source, u"KESTVOX.DLL");
    EXPECT_EQ(events[0].Type, EVENTLOG_WARNING_TYPE);
    EXPECT_EQ(events[0].Id, 0x40070004u);
    test_system::FailCall("RegisterEventSourceW", 1);
    EXPECT_EQ(player_.Close(), unsigned{WAVERR_STILLPLAYING});
    EXPECT_EQ(test_system::EventLog().size(), 1u);
    Write();
    Cards().Advance(Second);
    EXPECT_EQ(Played(), Sound(format_, written_));
    ExpectEachReturnedOnce();
    EXPECT_EQ(player_.Close(), Done);
}

// The card gives nothing back in time, so buffers are in flight at every close.
TEST_F(OutputControlTest, OnlyAResetThatNothingFollowedLetsAStreamWithBuffersClose) {
    Cards().AddFault({.What = simulator::Fault::Kind::Late,
                      .Code = simulator::Fault::Completion,
                      .Nth = 0,
                      .Delay = 100 * Second});
    DWORD volume = 0;
    struct Case {
        const char* Name;
        UINT Message;
        DWORD_PTR Parameter;
        bool Closes;
    };
    const Case cases[] = {
        {"get volume", WODM_GETVOLUME, reinterpret_cast<DWORD_PTR>(&volume), true},
        {"set volume", WODM_SETVOLUME, 0x8000, true},
        {"direct mode", 0x4002, 0, true},
        {"write", WODM_WRITE, 0, false},  // of no header at all
        {"pause", WODM_PAUSE, 0, false},
        {"restart", WODM_RESTART, 0, false},
        {"break loop", WODM_BREAKLOOP, 0, false},
        {"save PCI configuration", 0x4000, 0, false},
        {"restore PCI configuration", 0x4001, 0, false},
    };
    EXPECT_EQ(player_.Close(), Done);
    for (const Case& test : cases) {
        SCOPED_TRACE(test.Name);
        WavePlayer player;
        ASSERT_EQ(player.Open(AnalogOut, format_), Done);
        ASSERT_EQ(player.Write(Pattern(4000)), Done);
        EXPECT_EQ(waveOutReset(player.Handle()), Done);
        player.Position();
        waveOutMessage(player.Handle(), test.Message, test.Parameter, 0);
        EXPECT_EQ(player.DoneCount(), 0u);
        EXPECT_EQ(player.Close() == Done, test.Closes);
        player.Shut();
        EXPECT_EQ(player.DoneCount(0), 1u);
    }
}

TEST_F(OutputControlTest, AClientMayCloseFromInsideItsLastCallback) {
    std::vector<MMRESULT> results;
    player_.OnDone([&](WAVEHDR&) { results.push_back(player_.Close()); });
    Write(3);
    Cards().Advance(Second);
    EXPECT_EQ(results, std::vector<MMRESULT>({WAVERR_STILLPLAYING, WAVERR_STILLPLAYING, Done}));
    EXPECT_EQ(player_.Messages().back(), unsigned{WOM_CLOSE});
    EXPECT_FALSE(Cards().ChannelClaimed(0, 2));
    ExpectEachReturnedOnce();
    EXPECT_EQ(player_.Open(AnalogOut, format_), Done);
}

// A client that answers every returned buffer with a new one, during a reset as well: the reset ends,
// and what was written meanwhile is played.
TEST_F(OutputControlTest, AResetDoesNotReturnWhatIsWrittenMeanwhile) {
    // What comes back on the resetting thread is answered; the order of buffers that two threads write at
    // the same time would be anybody's guess.
    const DWORD resettingThread = GetCurrentThreadId();
    size_t answers = 0;
    player_.OnDone([&](WAVEHDR&) {
        if (GetCurrentThreadId() == resettingThread) {
            ++answers;
            Write();
        }
    });
    Write(20);
    AdvanceFrames(500);
    Cards().ForgetAudio();
    written_.clear();
    Reset();
    LetFlushedBuffersComeBack();
    EXPECT_GT(answers, 0u);
    EXPECT_EQ(player_.DoneCount(), 20u);
    EXPECT_EQ(player_.HeaderCount(), 20u + answers);
    Cards().Advance(Second);
    EXPECT_EQ(Played(), Sound(format_, written_));
    ExpectEachReturnedOnce();
}

// A card that gives nothing back leaves the buffers to the close, whose callbacks are the last.
TEST_F(OutputControlTest, AWriteFromInsideACloseIsRefused) {
    Fail(simulator::Fault::Completion, 0, simulator::Fault::Kind::Lost);
    Write(3);
    Reset();
    std::vector<MMRESULT> results;
    player_.OnDone([&](WAVEHDR& header) {
        results.push_back(waveOutWrite(player_.Handle(), &header, sizeof header));
        Restart();
    });
    EXPECT_EQ(player_.Close(), Done);
    EXPECT_EQ(results, std::vector<MMRESULT>(3, MMSYSERR_INVALHANDLE));
    ExpectEachReturnedOnce();
}

}  // namespace
