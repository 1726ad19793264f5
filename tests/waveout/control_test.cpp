// Pause, restart, reset, position and close.
#include <utility>

#include "tests/support/output_test.h"

namespace {

constexpr MMRESULT Done = MMSYSERR_NOERROR;

class OutputControlTest : public OutputTest {
protected:
    static constexpr DWORD BufferFrames = 1000;

    void SetUp() override { Open(); }

    void AdvanceFrames(int64_t frames) { Cards().Advance(frames * Second / 44100); }
    // What is not to be heard any more.
    void BeginToPlay() {
        Write(20);
        AdvanceFrames(500);
        Cards().ForgetAudio();
        written_.clear();
    }
};

TEST_F(OutputControlTest, PositionIsInSamplesUnlessBytesAreAskedFor) {
    Write();
    Cards().Advance(Second);
    MMTIME time = {};
    const auto answer = [&](UINT type, DWORD size) {
        time.wType = type;
        return Send(WODM_GETPOS, reinterpret_cast<DWORD_PTR>(&time), size);
    };
    for (const UINT type : {UINT{TIME_MS}, UINT{TIME_SMPTE}, UINT{TIME_SAMPLES}, 0u}) {
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
    EXPECT_EQ(Events(), std::vector<DWORD>{0x40070004});
    Write();
    ExpectAllPlayed();
    ExpectEachReturnedOnce();
    EXPECT_EQ(player_.Close(), Done);
}

// The card gives nothing back in time, so buffers are in flight at every close.
TEST_F(OutputControlTest, OnlyAResetThatNothingFollowedLetsAStreamWithBuffersClose) {
    AddFault("completion:all:late=100000000");
    DWORD volume = 0;
    const struct {
        UINT Message;
        DWORD_PTR Parameter;
        bool Closes;
    } cases[] = {
        {WODM_GETVOLUME, reinterpret_cast<DWORD_PTR>(&volume), true},
        {WODM_SETVOLUME, 0x8000, true},
        {DirectMode, 0, true},
        {WODM_WRITE, 0, false},  // of no header at all
        {WODM_PAUSE, 0, false},
        {WODM_RESTART, 0, false},
        {WODM_BREAKLOOP, 0, false},
        {SavePci, 0, false},
        {RestorePci, 0, false},
    };
    EXPECT_EQ(player_.Close(), Done);
    for (const auto& test : cases) {
        SCOPED_TRACE(test.Message);
        WavePlayer player(AnalogOut, format_);
        ASSERT_EQ(player.Write(Pattern(4000)), Done);
        EXPECT_EQ(player.Reset(), Done);
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

// What a client writes in answer to a buffer that the reset returns is played after it. What comes back on
// another thread is not answered: the order of two threads' buffers would be anybody's guess.
TEST_F(OutputControlTest, AResetDoesNotReturnWhatIsWrittenMeanwhile) {
    BeginToPlay();
    player_.OnDoneHere([&](WAVEHDR&) { Write(); });
    EXPECT_EQ(player_.Reset(), Done);
    Cards().Advance(1000);  // what was in the card comes back on a thread of the kernel's
    EXPECT_GT(player_.HeaderCount(), 20u);
    EXPECT_EQ(player_.DoneCount(), 20u);
    ExpectAllPlayed();
    ExpectEachReturnedOnce();
}

// A reset inside a reset's callback, and what is written after it, is not the last that the port hears.
TEST_F(OutputControlTest, WhatIsWrittenAfterAResetInsideAResetIsPlayed) {
    BeginToPlay();
    bool again = false;
    player_.OnDoneHere([&](WAVEHDR&) {
        if (!std::exchange(again, true)) {
            EXPECT_EQ(player_.Reset(), Done);
            Write();
        }
    });
    EXPECT_EQ(player_.Reset(), Done);
    EXPECT_FALSE(written_.empty());
    ExpectAllPlayed();
    ExpectEachReturnedOnce();
}

// A card that gives nothing back leaves the buffers to the close, whose callbacks are the last, and the
// memory that they were converted in.
TEST_F(OutputControlTest, AWriteFromInsideACloseIsRefused) {
    EXPECT_EQ(player_.Close(), Done);
    Open(PcmFormat(44100, 2, 24));
    Fail(simulator::Fault::Completion, 0, simulator::Fault::Kind::Lost);
    Write(3, 6000);
    EXPECT_EQ(player_.Reset(), Done);
    std::vector<MMRESULT> results;
    player_.OnDone([&](WAVEHDR& header) {
        results.push_back(player_.HandIn(header));
        player_.Start();
    });
    EXPECT_EQ(player_.Close(), Done);
    EXPECT_EQ(results, std::vector<MMRESULT>(3, MMSYSERR_INVALHANDLE));
    ExpectEachReturnedOnce();
}

}  // namespace
