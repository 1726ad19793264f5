// Which clock a recording runs on, and when it starts beside a playback.
#include <algorithm>
#include <map>
#include <optional>

#include "tests/clock/clock_script.h"
#include "tests/support/driver_library.h"
#include "tests/support/system.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::Port;

constexpr unsigned Internal = 0;
constexpr unsigned Digital = 0x40;
constexpr UINT AnalogIn = 0;
constexpr UINT DigitalIn = 1;
constexpr DWORD Rate = 44100;
constexpr DWORD DirectMode = 0x4002;

WaveFormat Stereo() {
    return PcmFormat(Rate, 2, 16);
}

// --- the automatic source ----------------------------------------------------------------------

class RecordingClockTest : public ClockTest {};

TEST_F(RecordingClockTest, ADigitalRecordingAloneTakesItsSignalsClock) {
    WaveRecorder recorder;
    for (const DWORD rate : {44100u, 96000u, 32000u}) {
        Cards().SetDigitalInputRate(0, rate);
        ASSERT_EQ(recorder.Open(DigitalIn, PcmFormat(rate, 2, 16)), MMSYSERR_NOERROR);
        EXPECT_EQ(Source(0), Digital);
        EXPECT_EQ(Cards().SampleRate(0), rate);
        // What else is opened meanwhile changes nothing.
        WavePlayer player;
        ASSERT_EQ(player.Open(0, PcmFormat(rate, 2, 16)), MMSYSERR_NOERROR);
        EXPECT_EQ(Source(0), Digital);
        player.Shut();
        recorder.Shut();
    }
    EXPECT_EQ(Events(), std::vector<DWORD>{});
}

TEST_F(RecordingClockTest, AnybodyElseRunsOnTheCardsOwnClock) {
    Cards().SetDigitalInputRate(0, Rate);
    WavePlayer player;
    WaveRecorder analog;
    WaveRecorder digital;
    ASSERT_EQ(analog.Open(AnalogIn, Stereo()), MMSYSERR_NOERROR);
    EXPECT_EQ(Source(0), Internal);
    ASSERT_EQ(digital.Open(DigitalIn, Stereo()), MMSYSERR_NOERROR);
    EXPECT_EQ(Source(0), Internal) << "it came second";
    const DriverLibrary driver;
    const auto sleepAndWakeUp = [&driver] {
        driver.DriverProc(DRV_POWER, PWR_SUSPENDREQUEST);
        driver.DriverProc(DRV_POWER, PWR_SUSPENDRESUME);
    };
    sleepAndWakeUp();
    EXPECT_EQ(Source(0), Internal) << "but it is the first to wake up";
    digital.Shut();
    analog.Shut();
    ASSERT_EQ(player.Open(0, Stereo()), MMSYSERR_NOERROR);
    ASSERT_EQ(digital.Open(DigitalIn, Stereo()), MMSYSERR_NOERROR);
    EXPECT_EQ(Source(0), Internal) << "it is not alone";
    sleepAndWakeUp();
    EXPECT_EQ(Source(0), Internal) << "nor when it is the first to wake up";
}

TEST_F(RecordingClockTest, AReceiverIsSwitchedOffUnlessTheCardRunsOnIt) {
    Cards().SetDigitalInputRate(0, Rate);
    WaveRecorder digital;
    WavePlayer player;
    for (const unsigned off : {0u, 1u}) {
        ASSERT_EQ(digital.Open(DigitalIn, Stereo()), MMSYSERR_NOERROR);
        digital.Shut();
        EXPECT_EQ(Cards().InputRegister(0, Port::Digital, 1) & 1u, off);
        player.Open(0, Stereo());
    }
}

TEST_F(RecordingClockTest, WithoutASignalTheSettingDecides) {
    for (const DWORD checkClocks : {1u, 0u}) {
        UnloadDriver();
        StoreSetting(0, TEXT("CheckClocks"), checkClocks);
        WaveRecorder recorder;
        EXPECT_EQ(recorder.Open(DigitalIn, Stereo()),
                  static_cast<MMRESULT>(checkClocks != 0 ? MMSYSERR_ERROR : MMSYSERR_NOERROR));
        EXPECT_EQ(Events().back(), ClockNotValidEvent);
        EXPECT_EQ(Source(0), Internal);
    }
    EXPECT_EQ(Events().size(), 2u);
}

class LinkedRecordingClockTest : public ClockTest {
protected:
    LinkedRecordingClockTest() : ClockTest(2) { Follow(1, 0); }
};

TEST_F(LinkedRecordingClockTest, InAGroupNobodyIsAlone) {
    Cards().SetDigitalInputRate(1, Rate);
    WaveRecorder recorder;
    ASSERT_EQ(recorder.Open(2 + DigitalIn, Stereo()), MMSYSERR_NOERROR);
    EXPECT_EQ(Source(0), Internal);
    EXPECT_EQ(Source(1), 0x20u);
}

// --- starting beside a playback ----------------------------------------------------------------

// Card 1 follows card 0. Outputs are numbered 0 to 3, inputs 4 to 7, as devices of the two cards.
class RecordStartTest : public ClockTest {
protected:
    RecordStartTest() : ClockTest(2) {
        Follow(1, 0);
        for (const unsigned card : {0u, 1u}) {
            StoreSetting(card, TEXT("CheckClocks"), 0);
        }
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

    void Open(UINT stream) {
        if (IsInput(stream)) {
            ASSERT_EQ(recorders_[stream].Open(stream - 4, Stereo()), MMSYSERR_NOERROR);
            ASSERT_EQ(recorders_[stream].Add(40000), MMSYSERR_NOERROR);
        } else {
            ASSERT_EQ(players_[stream].Open(stream, Stereo()), MMSYSERR_NOERROR);
        }
    }
    void Start(UINT stream) {
        if (IsInput(stream)) {
            EXPECT_EQ(recorders_[stream].Start(), MMSYSERR_NOERROR);
        } else {
            EXPECT_EQ(players_[stream].Write(Pattern(40000)), MMSYSERR_NOERROR);
        }
        Cards().Advance(3000);
    }
    void Shut(UINT stream) {
        if (IsInput(stream)) {
            recorders_[stream].Shut();
        } else {
            players_[stream].Shut();
        }
    }
    // Nothing until it has started.
    std::optional<uint64_t> StartFrame(UINT stream) {
        const auto of = [](const auto& status) {
            return status.Started ? std::optional(status.StartFrame) : std::nullopt;
        };
        const unsigned card = stream % 4 / 2;
        const Port port = static_cast<Port>(stream % 2);
        return IsInput(stream) ? of(Cards().Input(card, port)) : of(Cards().Output(card, port));
    }
    bool Started(UINT stream) { return StartFrame(stream).has_value(); }

    // Opens in ascending order, starts in the given one: nobody before the last one, then all on one frame.
    void ExpectTogether(const std::vector<UINT>& order) {
        SCOPED_TRACE(testing::PrintToString(order));
        std::vector<UINT> streams = order;
        std::sort(streams.begin(), streams.end());
        for (const UINT stream : streams) {
            Open(stream);
        }
        for (const UINT stream : order) {
            for (const UINT any : order) {
                EXPECT_FALSE(Started(any)) << any << " before " << stream;
            }
            Start(stream);
        }
        for (const UINT any : order) {
            EXPECT_TRUE(Started(any)) << any;
            EXPECT_EQ(StartFrame(any), StartFrame(order.front())) << any;
        }
        for (const UINT stream : streams) {
            Shut(stream);
        }
    }

    std::map<UINT, WavePlayer> players_;
    std::map<UINT, WaveRecorder> recorders_;
};

TEST_F(RecordStartTest, LockedToPlaybackAllBeginOnOneFrame) {
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

TEST_F(RecordStartTest, InputsOfAGroupBeginTogether) {
    ExpectTogether({4, 5});
    ExpectTogether({6, 4, 7});
}

TEST_F(RecordStartTest, PunchInDoesNotWait) {
    Open(0);
    Open(4);
    Start(4);
    EXPECT_TRUE(Started(4));
    EXPECT_FALSE(Started(0));
    Start(0);
    EXPECT_TRUE(Started(0));
    EXPECT_GT(StartFrame(0), StartFrame(4));
}

TEST_F(RecordStartTest, DirectModeWaitsInAnyRecordMode) {
    Open(0);
    Open(4);
    EXPECT_EQ(waveInMessage(Recorder(4).Handle(), DirectMode, 0, 0), MMSYSERR_NOERROR);
    Start(4);
    EXPECT_FALSE(Started(4));
    Start(0);
    ASSERT_TRUE(Started(0) && Started(4));
    EXPECT_EQ(StartFrame(0), StartFrame(4));
}

// Meanwhile one of two outputs leaves, which concerns the outputs alone.
TEST_F(RecordStartTest, AWaitingRecordingIsNotForgotten) {
    for (const UINT stream : {0u, 1u, 4u, 5u}) {
        Open(stream);
    }
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

TEST_F(RecordStartTest, ARecordingStopsAndJoinsAPlaybackAgain) {
    LockToPlayback();
    Open(0);
    Open(4);
    Start(0);
    Start(4);
    Recorder(4).Stop();
    Cards().Advance(3000);
    const uint64_t before = Cards().Input(0, Port::Analog).FramesRecorded;
    ASSERT_EQ(Recorder(4).Add(4000), MMSYSERR_NOERROR);
    Recorder(4).Start();
    Cards().Advance(100000);
    EXPECT_EQ(Cards().Input(0, Port::Analog).FramesRecorded - before, 1000u);
    EXPECT_EQ(Cards().Output(0, Port::Analog).FramesSilent, 0u);
}

// The hold of both directions is the master's.
TEST_F(RecordStartTest, TheRequestsOfALockedStart) {
    LockToPlayback();
    UnloadDriver();
    StoreText(1, TEXT("Master"), u"");
    const auto startLines = [this](UINT stream) {
        Cards().ClearTrace();
        Start(stream);
        Lines lines;
        for (const std::string& line : TraceText()) {
            if (line.starts_with("write") || line.ends_with("_TRANSFER") || line.ends_with("_CHANNEL")) {
                lines.push_back(line);
            }
        }
        return lines;
    };
    Open(0);
    Open(4);
    EXPECT_EQ(startLines(4),
              (Lines{"START_TRANSFER", "write card 36 = 02 / 02", "write port 0 = 02 / 02", "ARM_CHANNEL"}));
    EXPECT_EQ(startLines(0), (Lines{"START_TRANSFER", "write card 36 = 01 / 01", "write port 0 = 02 / 02",
                                    "ARM_CHANNEL", "write card 36 = 00 / 03"}));
    Cards().ClearTrace();
    Recorder(4).Stop();
    EXPECT_EQ(TraceText({"GET"}), (Lines{"write card 36 = 03 / 03", "DISARM_CHANNEL", "STOP_TRANSFER"}));
}

}  // namespace
