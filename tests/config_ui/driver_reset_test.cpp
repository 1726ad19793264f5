// A user resets the driver from the sheet while programs have streams open.
#include <optional>

#include "tests/support/clock_tree_user.h"
#include "tests/support/sheet_test.h"

namespace {

class DriverResetTest : public SheetTest {
protected:
    explicit DriverResetTest() : SheetTest(2) {}

    void ResetDriver() {
        test_system::AnswerMessageBoxes(IDYES);
        const ClockTreeUser tree(Open().Show(u"Clocks + Sync").Window());
        tree.ShiftRightClick(ClockTreeUser::Space);
        tree.Choose(u'R');
    }
};

TEST_F(DriverResetTest, StreamsThatAreClosedLaterLeaveTheClockFree) {
    Follow(1, 0);
    const WaveFormat before = PcmFormat(44100, 2, 16);
    for (const DWORD rate : {48000u, 96000u}) {
        SCOPED_TRACE(rate);
        const WaveFormat after = PcmFormat(rate, 2, 16);
        WavePlayer players[2];
        ASSERT_EQ(players[0].Open(0, before), MMSYSERR_NOERROR);
        ASSERT_EQ(players[1].Open(2, before), MMSYSERR_NOERROR);
        WaveRecorder recorder(0, before);
        ASSERT_EQ(players[0].Write(Pattern(40000)), MMSYSERR_NOERROR);
        ResetDriver();
        for (WavePlayer& player : players) {
            player.Shut();
            player.ExpectEachReturnedOnce();
        }
        recorder.Shut();

        // The counts are right again: one stream keeps the others off its rate, none does so no more.
        for (int round = 0; round < 2; ++round) {
            ASSERT_EQ(players[0].Open(0, after), MMSYSERR_NOERROR) << round;
            EXPECT_EQ(players[1].Open(2, before), unsigned{WAVERR_BADFORMAT});
            EXPECT_EQ(recorder.Open(0, before), unsigned{WAVERR_BADFORMAT});
            EXPECT_EQ(Cards().SampleRate(0), rate);
            EXPECT_EQ(players[0].Close(), MMSYSERR_NOERROR);
        }
        ASSERT_EQ(players[0].Open(0, after), MMSYSERR_NOERROR);
        ASSERT_EQ(players[0].Write(Pattern(4000)), MMSYSERR_NOERROR);
        Cards().Advance(Second / 10);
        EXPECT_EQ(Cards().Output(0, simulator::Port::Analog).FramesPlayed, 1000u) << "nobody is waited for";
    }
}

// Nobody has stopped the recording, and the next one begins with nothing.
TEST_F(DriverResetTest, ARecordingBeginsAnew) {
    WaveRecorder recorder(0, PcmFormat(44100, 1, 16));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(recorder.Add(800), MMSYSERR_NOERROR);
    }
    ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    Cards().Advance(Second / 80);
    EXPECT_EQ(recorder.Counts(), std::vector<DWORD>{800});
    ResetDriver();
    EXPECT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    recorder.Stop();
    recorder.Reset();
    Cards().Advance(Second / 80);
    EXPECT_EQ(recorder.Counts(), (std::vector<DWORD>{800, 0, 0}));
}

// The stream that is closed after the reset is not the one that has its port's mark by then.
TEST_F(DriverResetTest, ACloseCountsDownOnlyItsOwn) {
    WavePlayer first(0, PcmFormat(44100, 2, 16));
    ResetDriver();
    const WavePlayer second(1, PcmFormat(48000, 2, 16));
    EXPECT_EQ(first.Close(), MMSYSERR_NOERROR);
    WavePlayer third;
    EXPECT_EQ(third.Open(0, PcmFormat(44100, 2, 16)), unsigned{WAVERR_BADFORMAT}) << "the second still runs";
    EXPECT_EQ(Cards().SampleRate(0), 48000u);
}

// What it played with is gone, and the next write starts it, even when it was paused.
TEST_F(DriverResetTest, AnOpenStreamCanBeStartedAnew) {
    for (const bool paused : {false, true}) {
        WavePlayer player(0, PcmFormat(44100, 2, 16));
        ASSERT_EQ(player.Write(Pattern(40000)), MMSYSERR_NOERROR);
        if (paused) {
            player.Stop();
        }
        ResetDriver();
        const uint64_t before = Cards().Output(0, simulator::Port::Analog).FramesPlayed;
        ASSERT_EQ(player.Write(Pattern(40000)), MMSYSERR_NOERROR);
        Cards().Advance(Second / 100);
        EXPECT_GT(Cards().Output(0, simulator::Port::Analog).FramesPlayed, before) << paused;
    }
}

// Each is prepared at a wake-up, the one that was opened first last.
TEST_F(DriverResetTest, StreamsOfTwoRatesWakeUp) {
    const WavePlayer first(0, PcmFormat(44100, 2, 16));
    ResetDriver();
    const WavePlayer second(1, PcmFormat(48000, 2, 16));
    FallAsleep();
    WakeUp();
    EXPECT_EQ(Cards().SampleRate(0), 44100u);
    EXPECT_EQ(Cards().OutputRegister(0, simulator::Port::Analog, 0) & 0xC0, 0x40);
}

// After the reset nobody counts as playing, so the user may take a card out of its group.
TEST_F(DriverResetTest, AnOpenStreamsCardKeepsItsRateWhenItIsFreed) {
    StoreText(1, TEXT("Name"), u"B");
    Follow(1, 0);
    WavePlayer player(2, PcmFormat(48000, 2, 16));
    ResetDriver();
    Sheet& sheet = Open();
    ClockTreeUser(sheet.Show(u"Clocks + Sync").Window()).Command(u"B", u'S');
    sheet.Apply();
    FallAsleep();
    WakeUp();
    EXPECT_EQ(Cards().SampleRate(1), 48000u);
}

}  // namespace
