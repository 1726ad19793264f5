// Streams of one clock start on one frame of it: outputs together, inputs together, and all of them when
// recording is locked to playback.
#include <algorithm>
#include <map>
#include <optional>

#include "tests/clock/clock_script.h"

namespace {

// Outputs are numbered 0 to 3, inputs 4 to 7, as devices of the two cards.
class StartTest : public ClockTest {
protected:
    // Each request takes more than a frame: what is not behind a hold starts apart.
    StartTest() : ClockTest(2) {
        Cards().SetRequestTime(30);
        StoreSetting(0, TEXT("CheckClocks"), 0);
    }
    void LockToPlayback() { StoreSetting(0, TEXT("Punchin"), 0); }

    static bool IsInput(UINT stream) { return stream >= 4; }
    static Port PortOf(UINT stream) { return static_cast<Port>(stream % 2); }
    // Of the stream's client, whichever way it goes.
    template <typename Act>
    void With(UINT stream, Act act) {
        IsInput(stream) ? act(recorders_[stream]) : act(players_[stream]);
    }

    void Open(const std::vector<UINT>& streams) {
        const WaveFormat format = PcmFormat(44100, 2, 16);
        for (const UINT stream : streams) {
            if (IsInput(stream)) {
                ASSERT_EQ(recorders_[stream].Open(stream - 4, format), MMSYSERR_NOERROR);
                for (int i = 0; i < 5; ++i) {  // each stop ends one
                    ASSERT_EQ(recorders_[stream].Add(40000), MMSYSERR_NOERROR);
                }
            } else {
                ASSERT_EQ(players_[stream].Open(stream, format), MMSYSERR_NOERROR);
            }
        }
    }
    // A playback with half a second of sound.
    void Start(UINT stream) {
        if (IsInput(stream)) {
            StartAgain(stream);
        } else {
            EXPECT_EQ(players_[stream].Write(std::vector<BYTE>(44100 * 4 / 2)), MMSYSERR_NOERROR);
        }
        Cards().Advance(3000);
    }
    void StartAgain(UINT stream) {
        With(stream, [](auto& client) { EXPECT_EQ(client.Start(), MMSYSERR_NOERROR); });
    }
    void Stop(UINT stream) {
        With(stream, [](auto& client) { EXPECT_EQ(client.Stop(), MMSYSERR_NOERROR); });
    }
    void Shut(UINT stream) {
        With(stream, [](auto& client) { client.Shut(); });
    }

    // Frames that it has played or recorded.
    uint64_t Frames(UINT stream) {
        return IsInput(stream) ? Cards().Input(stream % 4 / 2, PortOf(stream)).FramesRecorded
                               : Cards().Output(stream / 2, PortOf(stream)).FramesPlayed;
    }
    // ... in a tenth of a second.
    double GoesOn(UINT stream) {
        const uint64_t before = Frames(stream);
        Cards().Advance(100000);
        return static_cast<double>(Frames(stream) - before);
    }
    // Nothing until it has started.
    std::optional<uint64_t> StartFrame(UINT stream) {
        const auto of = [](const auto& status) {
            return status.Started ? std::optional(status.StartFrame) : std::nullopt;
        };
        return IsInput(stream) ? of(Cards().Input(stream % 4 / 2, PortOf(stream)))
                               : of(Cards().Output(stream / 2, PortOf(stream)));
    }
    bool Started(UINT stream) { return StartFrame(stream).has_value(); }

    // Starts the streams in that order: nobody before the last one, then all on one frame.
    void ExpectTogether(const std::vector<UINT>& order) {
        SCOPED_TRACE(testing::PrintToString(order));
        std::vector<UINT> streams = order;
        std::sort(streams.begin(), streams.end());
        for (const bool ascending : {true, false}) {
            Open(streams);
            for (const UINT stream : order) {
                for (const UINT any : order) {
                    EXPECT_FALSE(Started(any)) << any << " before " << stream;
                }
                Start(stream);
            }
            for (const UINT any : order) {
                EXPECT_TRUE(Started(any)) << any;
                EXPECT_EQ(StartFrame(any), StartFrame(order.front())) << any << ", ascending " << ascending;
            }
            for (const UINT stream : streams) {
                Shut(stream);
            }
            std::reverse(streams.begin(), streams.end());
        }
    }

    std::map<UINT, WavePlayer> players_;
    std::map<UINT, WaveRecorder> recorders_;
};

using SynchronizedStartTest = StartTest;

TEST_F(SynchronizedStartTest, ARestartFromInsideAResetDoesNotOutliveIt) {
    Open({0, 1});
    for (int i = 0; i < 6; ++i) {  // more than the card takes: the reset itself returns some
        Start(0);
    }
    players_[0].OnDoneHere([this](WAVEHDR&) { StartAgain(0); });
    EXPECT_EQ(players_[0].Reset(), MMSYSERR_NOERROR);
    players_[0].OnDone(nullptr);
    Start(1);
    EXPECT_FALSE(Started(1));
    Start(0);
    EXPECT_TRUE(Started(0) && Started(1));
    EXPECT_EQ(StartFrame(0), StartFrame(1));
}

// The one that waits is still counted when the other is stopped.
TEST_F(SynchronizedStartTest, WhoseTransferFailedStartsTogetherWhenItIsStartedAgain) {
    Open({0, 1});
    Fail("START_TRANSFER");
    Start(0);
    Start(1);
    Stop(0);
    EXPECT_FALSE(Started(1));
    StartAgain(0);
    Cards().Advance(3000);
    EXPECT_TRUE(Started(0) && Started(1));
    EXPECT_EQ(StartFrame(0), StartFrame(1));
}

// Card 1 follows card 0.
class GroupStartTest : public StartTest {
protected:
    GroupStartTest() {
        Follow(1, 0);
        StoreSetting(1, TEXT("CheckClocks"), 0);
    }
};

TEST_F(GroupStartTest, LockedToPlaybackAllBeginOnOneFrame) {
    LockToPlayback();
    for (const auto& [output, input] :
         {std::pair{0u, 4u}, {0u, 5u}, {1u, 4u}, {0u, 6u}, {2u, 4u}, {3u, 7u}}) {
        ExpectTogether({output, input});
        ExpectTogether({input, output});
    }
    ExpectTogether({4, 0, 5, 1});
    ExpectTogether({2, 7, 4, 1});
    ExpectTogether({6, 0, 5, 3, 1, 4, 7, 2});
}

TEST_F(GroupStartTest, ARecordingThatJoinsWaitsForThePausedPlayback) {
    LockToPlayback();
    Open({0, 4});
    Start(0);
    Start(4);
    Open({5});
    Stop(0);
    Start(5);
    EXPECT_FALSE(Started(5));
    StartAgain(0);
    Cards().Advance(3000);
    EXPECT_TRUE(Started(5));
}

TEST_F(GroupStartTest, OnlyDirectModeWaitsWithPunchIn) {
    for (const bool direct : {false, true}) {
        Open({0, 4});
        if (direct) {
            EXPECT_EQ(waveInMessage(recorders_[4].Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
        }
        Start(4);
        EXPECT_EQ(Started(4), !direct);
        EXPECT_FALSE(Started(0));
        Start(0);
        ASSERT_TRUE(Started(0) && Started(4));
        EXPECT_EQ(StartFrame(0) == StartFrame(4), direct);
        Shut(0);
        Shut(4);
    }
}

// Meanwhile one of two outputs leaves, which concerns the outputs alone.
TEST_F(GroupStartTest, AWaitingRecordingIsNotForgotten) {
    Open({0, 1, 4, 5});
    Start(0);
    Start(1);
    Start(4);
    EXPECT_FALSE(Started(4)) << "waits for the other input";
    Shut(1);
    EXPECT_FALSE(Started(4));
    Shut(5);
    Cards().Advance(3000);
    EXPECT_TRUE(Started(4));
}

// --- over a sleep of the computer; what comes in the middle of a wake-up is the interleavings' to try ------

class StartOverASleepTest : public GroupStartTest {
protected:
    StartOverASleepTest() { LockToPlayback(); }

    bool Moves(UINT stream) { return GoesOn(stream) > 0; }
};

TEST_F(StartOverASleepTest, WhoRanGoesOnWhateverBecomesOfTheOther) {
    const std::function<void(UINT)> ends[] = {
        [this](UINT stream) { Stop(stream); },
        [this](UINT stream) { With(stream, [](auto& client) { client.Reset(); }); },
        [this](UINT stream) { Shut(stream); }};
    for (const auto& [other, stream] :
         {std::pair{0u, 1u}, {1u, 0u}, {2u, 0u}, {4u, 5u}, {4u, 0u}, {0u, 4u}}) {
        for (const bool asleep : {false, true}) {
            for (const auto& end : ends) {
                SCOPED_TRACE(testing::Message() << other << " ends, " << stream << " goes on, " << asleep
                                                << ", " << &end - ends);
                Open({stream, other});
                Start(stream);
                Start(other);
                if (!asleep) {
                    end(other);
                }
                FallAsleep();
                if (asleep) {
                    end(other);
                }
                WakeUp();
                EXPECT_TRUE(Moves(stream));
                Shut(stream);
                Shut(other);
            }
        }
    }
}

TEST_F(StartOverASleepTest, WhoWaitedBeforeItWaitsAfterIt) {
    enum class Earlier { NoRun, EndedBefore, EndedDuring };
    for (const auto& [waiting, missing] : {std::pair{0u, 1u}, {0u, 2u}, {4u, 5u}, {0u, 4u}}) {
        for (const Earlier earlier : {Earlier::NoRun, Earlier::EndedBefore, Earlier::EndedDuring}) {
            SCOPED_TRACE(testing::Message() << waiting << " waits for " << missing << ", earlier run "
                                            << static_cast<int>(earlier));
            const auto runAnew = [this, waits = waiting, misses = missing] {
                Stop(misses);
                Stop(waits);
                StartAgain(waits);
            };
            Open({waiting, missing});
            Stop(missing);
            Start(waiting);
            if (earlier != Earlier::NoRun) {
                StartAgain(missing);
            }
            if (earlier == Earlier::EndedBefore) {
                runAnew();
            }
            FallAsleep();
            if (earlier == Earlier::EndedDuring) {
                runAnew();
            }
            WakeUp();
            EXPECT_FALSE(Moves(waiting));
            StartAgain(missing);
            EXPECT_TRUE(Moves(waiting));
            Shut(waiting);
            Shut(missing);
        }
    }
}

TEST_F(StartOverASleepTest, OthersJoinTogetherAfterIt) {
    Open({0, 1, 2});
    for (const UINT stream : {0u, 1u, 2u}) {
        Start(stream);
    }
    Stop(1);
    Stop(2);
    FallAsleep();
    WakeUp();
    EXPECT_TRUE(Moves(0));
    StartAgain(1);
    EXPECT_FALSE(Moves(1)) << "waits for the third";
    StartAgain(2);
    EXPECT_TRUE(Moves(1));
    EXPECT_TRUE(Moves(0));
}

}  // namespace
