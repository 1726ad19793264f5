// Streams of one clock start on one frame of it: outputs together, inputs together, and all of them when
// recording is locked to playback.
#include <mmddk.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <thread>

#include "simulator/requests/request_hold.h"
#include "tests/clock/clock_script.h"
#include "tests/support/driver_library.h"
#include "tests/support/wave_recorder.h"

namespace {

using simulator::Port;

constexpr UINT DirectMode = 0x4002;
constexpr unsigned TenthOfASecond = 4410;  // frames

// Outputs are numbered 0 to 3, inputs 4 to 7, as devices of the two cards.
class StartTest : public ClockTest {
protected:
    // Each request takes more than a frame: what is not behind a hold starts apart.
    StartTest() : ClockTest(2) {
        Cards().SetRequestTime(30);
        StoreSetting(0, TEXT("CheckClocks"), 0);
    }
    void TearDown() override {
        players_.clear();
        recorders_.clear();
        ClockTest::TearDown();
    }
    void LockToPlayback() { StoreSetting(0, TEXT("Punchin"), 0); }

    static bool IsInput(UINT stream) { return stream >= 4; }
    WavePlayer& Player(UINT stream) { return players_[stream]; }
    WaveRecorder& Recorder(UINT stream) { return recorders_[stream]; }

    void Open(const std::vector<UINT>& streams) {
        const WaveFormat format = PcmFormat(44100, 2, 16);
        for (const UINT stream : streams) {
            if (IsInput(stream)) {
                ASSERT_EQ(Recorder(stream).Open(stream - 4, format), MMSYSERR_NOERROR);
                for (unsigned i = 0; i < recordings_; ++i) {
                    ASSERT_EQ(Recorder(stream).Add(40000), MMSYSERR_NOERROR);
                }
            } else {
                ASSERT_EQ(Player(stream).Open(stream, format), MMSYSERR_NOERROR);
            }
        }
    }
    // A playback with half a second of sound.
    void Start(UINT stream) {
        if (IsInput(stream)) {
            EXPECT_EQ(Recorder(stream).Start(), MMSYSERR_NOERROR);
        } else {
            EXPECT_EQ(Player(stream).Write(std::vector<BYTE>(44100 * 4 / 2)), MMSYSERR_NOERROR);
        }
        Cards().Advance(3000);
    }
    void Pause(UINT stream) { EXPECT_EQ(waveOutPause(Player(stream).Handle()), MMSYSERR_NOERROR); }
    void Restart(UINT stream) { EXPECT_EQ(waveOutRestart(Player(stream).Handle()), MMSYSERR_NOERROR); }
    void Shut(UINT stream) {
        if (IsInput(stream)) {
            Recorder(stream).Shut();
        } else {
            Player(stream).Shut();
        }
    }

    simulator::OutputStatus Output(UINT stream) {
        return Cards().Output(stream / 2, static_cast<Port>(stream % 2));
    }
    uint64_t Played(UINT stream) { return Output(stream).FramesPlayed; }
    // Frames that the output plays in a tenth of a second.
    double PlaysOn(UINT stream) {
        const uint64_t before = Played(stream);
        Cards().Advance(100000);
        return static_cast<double>(Played(stream) - before);
    }
    // Nothing until it has started.
    std::optional<uint64_t> StartFrame(UINT stream) {
        const auto of = [](const auto& status) {
            return status.Started ? std::optional(status.StartFrame) : std::nullopt;
        };
        return IsInput(stream) ? of(Cards().Input(stream % 4 / 2, static_cast<Port>(stream % 2)))
                               : of(Output(stream));
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

    // What was asked since the last call that has to do with starting and stopping, with card and channel.
    Lines StartLines() {
        Lines lines;
        for (const simulator::TraceEntry& entry : Cards().Trace()) {
            const std::string text = entry.Text();
            const bool start = text.starts_with("write card 36") || text.starts_with("write port 0") ||
                               text.starts_with("BIND_HANDLE") || text.ends_with("_CHANNEL") ||
                               text.ends_with("_TRANSFER");
            if (start) {
                lines.push_back(std::to_string(entry.Card) + "." +
                                (entry.Channel == 0xFFFFFFFF ? "-" : std::to_string(entry.Channel)) + " " +
                                text);
            }
        }
        Cards().ClearTrace();
        return lines;
    }

    unsigned recordings_ = 1;  // buffers of each input
    std::map<UINT, WavePlayer> players_;
    std::map<UINT, WaveRecorder> recorders_;
};

class SynchronizedStartTest : public StartTest {};

// The card is reached through the stream that was opened last.
TEST_F(SynchronizedStartTest, TwoPortsStartTogether) {
    ExpectTogether({0, 1});
    ExpectTogether({1, 0});
    Open({0, 1});
    StartLines();
    Start(0);
    Start(1);
    EXPECT_EQ(StartLines(),
              (Lines{"0.2 START_TRANSFER", "0.3 write card 36 = 01 / 01", "0.2 write port 0 = 02 / 02",
                     "0.2 ARM_CHANNEL", "0.3 START_TRANSFER", "0.3 write port 0 = 02 / 02", "0.3 ARM_CHANNEL",
                     "0.3 write card 36 = 00 / 01"}));
}

TEST_F(SynchronizedStartTest, OneOfSeveralPausesAndJoinsAgain) {
    Open({0, 1});
    Start(0);
    Start(1);
    StartLines();
    Pause(0);
    EXPECT_EQ(StartLines(), (Lines{"0.3 write card 36 = 01 / 01", "0.2 DISARM_CHANNEL"}));
    const uint64_t before = Played(1);
    EXPECT_EQ(PlaysOn(0), 0.0);
    EXPECT_NEAR(static_cast<double>(Played(1) - before), TenthOfASecond, 1) << "a hold stops nobody";
    Restart(0);
    EXPECT_EQ(StartLines(), (Lines{"0.2 START_TRANSFER", "0.2 write port 0 = 02 / 02", "0.2 ARM_CHANNEL",
                                   "0.3 write card 36 = 00 / 01"}));
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1);
}

TEST_F(SynchronizedStartTest, AllPausedRestartTogether) {
    Open({0, 1});
    Start(0);
    Start(1);
    Pause(0);
    Cards().Advance(5000);
    Pause(1);
    const uint64_t lead = Played(1) - Played(0);
    EXPECT_NEAR(static_cast<double>(lead), 220, 5) << "requests take time, too";
    StartLines();
    Restart(1);
    EXPECT_EQ(PlaysOn(1), 0.0) << "the first one waits again";
    Restart(0);
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1);
    EXPECT_EQ(Played(1) - Played(0), lead) << "and both went on at the same frame";
    const Lines lines = StartLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "0.3 write card 36 = 01 / 01"), 1);
    EXPECT_EQ(lines.back(), "0.3 write card 36 = 00 / 01");
}

TEST_F(SynchronizedStartTest, TheOthersPlayOnWhenOneIsClosed) {
    Open({0, 1});
    Start(0);
    Start(1);
    EXPECT_EQ(Player(1).Close(), WAVERR_STILLPLAYING);
    Shut(1);
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1);
    EXPECT_EQ(Output(0).FramesSilent, 0u);
    Pause(0);
    Restart(0);
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1) << "there is nobody to wait for";
    Open({1});
    Start(1);
    EXPECT_TRUE(Started(1)) << "the only one missing";
}

// The hold of both directions is the master's.
TEST_F(SynchronizedStartTest, TheRequestsOfALockedStart) {
    LockToPlayback();
    Open({0, 4});
    StartLines();
    Start(4);
    EXPECT_EQ(StartLines(), (Lines{"0.0 START_TRANSFER", "0.0 write card 36 = 02 / 02",
                                   "0.0 write port 0 = 02 / 02", "0.0 ARM_CHANNEL"}));
    Start(0);
    EXPECT_EQ(StartLines(),
              (Lines{"0.2 START_TRANSFER", "0.0 write card 36 = 01 / 01", "0.2 write port 0 = 02 / 02",
                     "0.2 ARM_CHANNEL", "0.0 write card 36 = 00 / 03"}));
    Recorder(4).Stop();
    EXPECT_EQ(StartLines(),
              (Lines{"0.0 write card 36 = 03 / 03", "0.0 DISARM_CHANNEL", "0.0 STOP_TRANSFER"}));
}

// Card 1 follows card 0.
class GroupStartTest : public StartTest {
protected:
    GroupStartTest() {
        Follow(1, 0);
        StoreSetting(1, TEXT("ClockSource"), 32);
        StoreSetting(1, TEXT("CheckClocks"), 0);
    }
};

TEST_F(GroupStartTest, TwoCardsStartOnOneFrameOfTheirClock) {
    ExpectTogether({0, 2});
    ExpectTogether({2, 0});
}

TEST_F(GroupStartTest, AFollowerAloneStartsThroughTheMastersHold) {
    Open({2});
    StartLines();
    Start(2);
    EXPECT_EQ(StartLines(),
              (Lines{"1.2 START_TRANSFER", "0.- BIND_HANDLE 0 control", "0.- write card 36 = 01 / 01",
                     "0.- RELEASE_CHANNEL", "1.2 write port 0 = 02 / 02", "1.2 ARM_CHANNEL",
                     "0.- BIND_HANDLE 0 control", "0.- write card 36 = 00 / 01", "0.- RELEASE_CHANNEL"}));
    EXPECT_NEAR(PlaysOn(2), TenthOfASecond, 1);
    // The group stays synchronized although one stream is all there is.
    Pause(2);
    Restart(2);
    EXPECT_NEAR(PlaysOn(2), TenthOfASecond, 1);
}

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

TEST_F(GroupStartTest, InputsBeginTogether) {
    ExpectTogether({4, 5});
    ExpectTogether({6, 4, 7});
}

TEST_F(GroupStartTest, PunchInDoesNotWait) {
    Open({0, 4});
    Start(4);
    EXPECT_TRUE(Started(4));
    EXPECT_FALSE(Started(0));
    Start(0);
    EXPECT_TRUE(Started(0));
    EXPECT_GT(StartFrame(0), StartFrame(4));
}

TEST_F(GroupStartTest, DirectModeWaitsInAnyRecordMode) {
    Open({0, 4});
    EXPECT_EQ(waveInMessage(Recorder(4).Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
    Start(4);
    EXPECT_FALSE(Started(4));
    Start(0);
    ASSERT_TRUE(Started(0) && Started(4));
    EXPECT_EQ(StartFrame(0), StartFrame(4));
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

TEST_F(GroupStartTest, ARecordingStopsAndJoinsAPlaybackAgain) {
    LockToPlayback();
    Open({0, 4});
    Start(0);
    Start(4);
    Recorder(4).Stop();
    Cards().Advance(3000);
    const uint64_t before = Cards().Input(0, Port::Analog).FramesRecorded;
    ASSERT_EQ(Recorder(4).Add(4000), MMSYSERR_NOERROR);
    Recorder(4).Start();
    Cards().Advance(100000);
    EXPECT_EQ(Cards().Input(0, Port::Analog).FramesRecorded - before, 1000u);
    EXPECT_EQ(Output(0).FramesSilent, 0u);
}

// --- over a sleep of the computer -----------------------------------------------------------------------

class StartOverASleepTest : public GroupStartTest {
protected:
    StartOverASleepTest() {
        LockToPlayback();
        recordings_ = 5;  // each stop ends one
    }

    void Sleep() {
        DriverLibrary().DriverProc(DRV_POWER, PWR_SUSPENDREQUEST);
        Cards().PowerCycle(0);
        Cards().PowerCycle(1);
    }
    void Wake() { DriverLibrary().DriverProc(DRV_POWER, PWR_SUSPENDRESUME); }
    // Acts before the wake-up that comes last takes its channel. Another one, just before, tells when that
    // is.
    void WakeWith(const std::function<void()>& act) {
        Cards().ClearTrace();
        Wake();
        const Lines lines = TraceText();
        const auto last = std::find(lines.rbegin(), lines.rend(), "ACQUIRE_CHANNEL");
        Sleep();
        simulator::RequestHold hold(static_cast<unsigned>(lines.rend() - last),
                                    simulator::RequestHold::Where::Before);
        std::thread waking([this, &hold] {
            const simulator::RequestHold::Watch watch(hold);
            Wake();
        });
        EXPECT_EQ(hold.AwaitHeldOrEnded(), simulator::RequestHold::State::Held);
        act();
        hold.LetGo();
        waking.join();
    }

    void Stop(UINT stream) { IsInput(stream) ? void(Recorder(stream).Stop()) : Pause(stream); }
    void StartAgain(UINT stream) { IsInput(stream) ? void(Recorder(stream).Start()) : Restart(stream); }
    bool Moves(UINT stream) {
        const auto moved = [this, stream] {
            return IsInput(stream)
                       ? Cards().Input(stream % 4 / 2, static_cast<Port>(stream % 2)).FramesRecorded
                       : Played(stream);
        };
        const uint64_t before = moved();
        Cards().Advance(20000);
        return moved() > before;
    }
    void Close(const std::vector<UINT>& streams) {
        for (const UINT stream : streams) {
            Shut(stream);
        }
    }
};

TEST_F(StartOverASleepTest, WhoRanGoesOnWhateverBecomesOfTheOther) {
    enum class When { Before, During, BetweenTheWakeUps };
    const auto reset = [this](UINT stream) {
        IsInput(stream) ? waveInReset(Recorder(stream).Handle()) : waveOutReset(Player(stream).Handle());
    };
    const std::function<void(UINT)> ends[] = {[this](UINT stream) { Stop(stream); }, reset,
                                              [this](UINT stream) { Shut(stream); }};
    for (const auto& [other, stream] :
         {std::pair{0u, 1u}, {1u, 0u}, {2u, 0u}, {4u, 5u}, {4u, 0u}, {0u, 4u}}) {
        for (const When when : {When::Before, When::During, When::BetweenTheWakeUps}) {
            for (const auto& end : ends) {
                SCOPED_TRACE(testing::Message() << other << " ends, " << stream << " goes on, "
                                                << static_cast<int>(when) << ", " << &end - ends);
                Open({stream, other});
                Start(stream);
                Start(other);
                if (when == When::Before) {
                    end(other);
                }
                Sleep();
                if (when == When::During) {
                    end(other);
                }
                if (when == When::BetweenTheWakeUps) {
                    WakeWith([&end, other] { end(other); });
                } else {
                    Wake();
                }
                EXPECT_TRUE(Moves(stream));
                Close({stream, other});
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
            const auto runAnew = [this, waiting, missing] {
                Stop(missing);
                Stop(waiting);
                StartAgain(waiting);
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
            Sleep();
            if (earlier == Earlier::EndedDuring) {
                runAnew();
            }
            Wake();
            EXPECT_FALSE(Moves(waiting));
            StartAgain(missing);
            EXPECT_TRUE(Moves(waiting));
            Close({waiting, missing});
        }
    }
}

TEST_F(StartOverASleepTest, OthersJoinTogetherAfterIt) {
    Open({0, 1, 2});
    for (const UINT stream : {0u, 1u, 2u}) {
        Start(stream);
    }
    Pause(1);
    Pause(2);
    Sleep();
    Wake();
    EXPECT_TRUE(Moves(0));
    Restart(1);
    EXPECT_FALSE(Moves(1)) << "waits for the third";
    Restart(2);
    EXPECT_TRUE(Moves(1));
    EXPECT_TRUE(Moves(0));
}

}  // namespace
