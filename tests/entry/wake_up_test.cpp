// What the computer's waking up asks of linked cards, and what streams find after wake-ups of every kind.
#include <algorithm>

#include "tests/clock/clock_script.h"
#include "tests/support/power_test.h"
#include "tests/support/system.h"
#include "tests/support/wave_player.h"
#include "tests/support/wave_recorder.h"
#include "tests/support/wave_sound.h"

namespace {

using simulator::OutputStatus;
using simulator::Port;

constexpr DWORD Rate = 48000;
const WaveFormat Format = PcmFormat(Rate, 2, 16);

class WakeUpTest : public PowerTest {
protected:
    void TearDown() override {
        for (WavePlayer& player : players_) {
            player.Shut();
        }
        PowerTest::TearDown();
    }

    OutputStatus Status(unsigned card, Port port = Port::Analog) { return Cards().Output(card, port); }

    // Frames that the card's output plays in a tenth of a second.
    uint64_t PlaysOn(unsigned card) {
        const uint64_t before = Cards().Played(card, Port::Analog).size();
        Cards().Advance(Second / 10);
        return Cards().Played(card, Port::Analog).size() - before;
    }

    // Opens the analog output of both cards.
    void OpenBoth() {
        for (UINT card = 0; card < 2; ++card) {
            ASSERT_EQ(players_[card].Open(2 * card, Format), MMSYSERR_NOERROR);
        }
    }
    // So many milliseconds of sound for each.
    void WriteBoth(unsigned milliseconds) {
        for (WavePlayer& player : players_) {
            ASSERT_EQ(player.Write(Pattern(Rate / 1000 * 4 * milliseconds)), MMSYSERR_NOERROR);
        }
    }

    WavePlayer players_[2];
};

// --- two linked cards ---------------------------------------------------------------------------

class LinkedWakeUpTest : public WakeUpTest {
protected:
    void SetUp() override {
        Follow(1, 0);
        ASSERT_EQ(waveOutGetNumDevs(), 4u);
        discovery_ = TimedLines(Cards().Trace());
    }

    Lines Asked(LPARAM event) {
        Cards().ClearTrace();
        EXPECT_EQ(SendPower(event), 1);
        return TimedLines(Cards().Trace());
    }
    // What initialised the card at its discovery.
    Lines Initialisation(unsigned card) const {
        const std::string number = std::to_string(card);
        const auto last = [](const Lines& lines, const std::string& line) {
            return std::find(lines.rbegin(), lines.rend(), line).base();
        };
        return {last(discovery_, number + " BIND_HANDLE " + number + " control"),
                last(discovery_, number + " RELEASE_CHANNEL") - 1};
    }

    Lines discovery_;
};

// The stream that was opened last comes first; its card follows the other one.
TEST_F(LinkedWakeUpTest, TheRequestsOfASleepAndOfAWakeUp) {
    OpenBoth();
    WriteBoth(500);
    Cards().Advance(Second / 10);

    EXPECT_EQ(
        Asked(PWR_SUSPENDREQUEST),
        (Lines{"0 write card 36 = 01 / 01", "1 DISARM_CHANNEL", "1 STOP_TRANSFER", "1 RELEASE_CHANNEL",
               "0 write card 36 = 01 / 01", "0 DISARM_CHANNEL", "0 STOP_TRANSFER", "0 RELEASE_CHANNEL"}));
    LosePower();

    const Lines hold = {"write card 17 = 01 / 01"};
    const Lines release = {"write card 17 = 00 / 01"};
    const Lines internal = {"write card 32 = 00 / 60"};
    const Lines receiver = {"write card 9 = 02 / 02", "write card 9 = 01 / 01"};
    const Lines rate = {"read card 32", "write card 32 = 02 / 07", "write card 17 = 00 / 08"};
    const Lines settled = {"stall 209", "READ_CLOCK_FAULT"};
    const Lines format = {"write port 0 = 40 / C0", "write port 0 = 00 / 20"};
    const Lines unarmed = {"write port 0 = 00 / 02", "DISARM_CHANNEL"};
    const Lines gain = {"write card 3 = 02 / 07", "write card 2 = 80 / FF"};
    const Lines armed = {"write port 0 = 02 / 02", "ARM_CHANNEL"};
    ClockScript clock(1);
    clock.Borrowed(0, hold).Borrowed(1, hold).Pass(Wait(21917));
    clock.Borrowed(0, {"read card 32"}).Borrowed(1, {"read card 32"});
    clock.Borrowed(0, internal).Borrowed(1, internal + receiver);
    clock.Borrowed(0, rate + receiver + Lines{"READ_CLOCK_FAULT", "read card 32"} + settled);
    clock.Borrowed(0, {"write card 32 = 10 / 10"});
    clock.Borrowed(1, rate + Lines{"READ_CLOCK_FAULT", "read card 32", "write card 32 = 20 / 60"} + settled);
    clock.Borrowed(0, ResyncPulse() + StatusRate("81", "00"));
    clock.Borrowed(1, ResyncPulse() + StatusRate("81", "00")).Pass(Wait(85417, 450000));
    clock.Borrowed(0, release).Borrowed(1, release).Pass(Wait(21917));
    ClockScript follower(1);
    follower.Borrowed(1, format + unarmed + gain + Lines{"START_TRANSFER"});
    follower.Borrowed(0, {"write card 36 = 01 / 01"}).Borrowed(1, armed);
    ClockScript master(0);
    master.Borrowed(0, Lines{"ACQUIRE_CHANNEL"} + format + unarmed + gain + Lines{"START_TRANSFER"} + armed);
    master.Borrowed(0, {"write card 36 = 00 / 01"});
    EXPECT_EQ(Asked(PWR_SUSPENDRESUME), Initialisation(0) + Initialisation(1) + Lines{"1 ACQUIRE_CHANNEL"} +
                                            clock.Expected() + follower.Expected() + master.Expected());
}

// Nothing has run before: what comes with the wake-up is the first that is heard of either card.
TEST_F(LinkedWakeUpTest, WhatIsWrittenDuringTheSleepStartsOnOneFrame) {
    OpenBoth();
    Sleep();
    WriteBoth(200);
    Cards().ClearTrace();
    Wake();
    const Lines lines = TraceText();
    const auto last = [&lines](const std::string& line) {
        return std::find(lines.rbegin(), lines.rend(), line).base();
    };
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "QUEUE_BUFFER 0"), 2);
    EXPECT_LT(last("QUEUE_BUFFER 0"), last("write card 36 = 00 / 01")) << "both are fed before they start";
    EXPECT_LT(std::find(lines.begin(), lines.end(), "QUEUE_BUFFER 0"),
              std::find(lines.begin(), lines.end(), "ARM_CHANNEL"));
    Cards().Advance(Second);
    for (unsigned card = 0; card < 2; ++card) {
        EXPECT_EQ(Status(card).FramesPlayed, Rate / 5) << card;
        EXPECT_EQ(Status(card).StartFrame, Status(0).StartFrame);
        players_[card].ExpectEachReturnedOnce();
    }
}

// One of three is gone when the computer wakes up, and there again after the next sleep. The streams are
// opened, and so woken up, in either order.
class MissingCardTest : public PowerTest {
protected:
    static constexpr unsigned CardCount = 3;

    MissingCardTest() : PowerTest(CardCount) {}

    void SetUp() override {
        Follow(1, 0);
        Follow(2, 0);
        ASSERT_EQ(waveOutGetNumDevs(), 2 * CardCount);
    }

    // What the clock programming leaves in the card.
    std::vector<unsigned> Clock(unsigned card) {
        std::vector<unsigned> registers = {Cards().CardRegister(card, 17), Cards().CardRegister(card, 32)};
        for (unsigned index = 0; index < 5; ++index) {
            registers.push_back(Cards().IndirectRegister(card, index));
        }
        return registers;
    }

    // Every card is in use but `unused`.
    void ExpectGoingOn(unsigned missing, bool ascending, unsigned unused) {
        SCOPED_TRACE(testing::Message() << missing << " is missing, ascending " << ascending << ", " << unused
                                        << " has no stream");
        WavePlayer players[CardCount];
        for (unsigned i = 0; i < CardCount; ++i) {
            const unsigned card = ascending ? i : CardCount - 1 - i;
            if (card != unused) {
                ASSERT_EQ(players[card].Open(2 * card, Format), MMSYSERR_NOERROR);
            }
        }
        for (unsigned card = 0; card < CardCount; ++card) {
            if (card != unused) {
                ASSERT_EQ(players[card].Write(std::vector<BYTE>(Rate * 4)), MMSYSERR_NOERROR);
            }
        }
        ExpectPlaying(unused);
        const std::vector<unsigned> clocks[] = {Clock(0), Clock(1), Clock(2)};
        Sleep();
        Cards().SetPresent(missing, false);
        Wake();
        ExpectPlaying(missing);
        for (unsigned card = 0; missing != 0 && card < CardCount; ++card) {
            if (card != missing) {
                EXPECT_EQ(Clock(card), clocks[card]) << card;
            }
        }
        Cards().SetPresent(missing, true);
        Sleep();
        Wake();
        ExpectPlaying(unused);
        for (WavePlayer& player : players) {
            player.Shut();
            player.ExpectEachReturnedOnce();
        }
    }

    // Whether the cards but `silent` play at their rate.
    void ExpectPlaying(unsigned silent) {
        uint64_t before[CardCount];
        for (unsigned card = 0; card < CardCount; ++card) {
            before[card] = Cards().Played(card, Port::Analog).size();
        }
        Cards().Advance(Second / 10);
        for (unsigned card = 0; card < CardCount; ++card) {
            const uint64_t played = Cards().Played(card, Port::Analog).size() - before[card];
            EXPECT_NEAR(static_cast<double>(played), card != silent ? Rate / 10 : 0, 1) << card;
        }
    }
};

// Whether it has a stream of this program makes a difference: then its device is open already.
TEST_F(MissingCardTest, TheOthersGoOnWithoutIt) {
    for (unsigned missing = 0; missing < CardCount; ++missing) {
        for (const bool ascending : {false, true}) {
            ExpectGoingOn(missing, ascending, CardCount);
            ExpectGoingOn(missing, ascending, missing);
        }
    }
}

// --- wake-ups of every kind ----------------------------------------------------------------------

class WakeUpKindTest : public WakeUpTest {
protected:
    void TearDown() override {
        for (WaveRecorder& recorder : recorders_) {
            recorder.Shut();
        }
        WakeUpTest::TearDown();
    }

    // Both cards play and record.
    void Begin() {
        OpenBoth();
        WriteBoth(8000);
        for (UINT card = 0; card < 2; ++card) {
            WaveRecorder& recorder = recorders_[card];
            ASSERT_EQ(recorder.Open(2 * card, Format), MMSYSERR_NOERROR);
            for (int i = 0; i < Recordings; ++i) {
                ASSERT_EQ(recorder.Add(RecordedBytes), MMSYSERR_NOERROR);
            }
            ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
        }
        Cards().Advance(Second / 4);
    }
    void ExpectRunning() {
        for (unsigned card = 0; card < 2; ++card) {
            SCOPED_TRACE(card);
            const size_t recorded = recorders_[card].Recorded().size();
            EXPECT_NEAR(static_cast<double>(PlaysOn(card)), Rate / 10.0, 1);
            EXPECT_NEAR(static_cast<double>(recorders_[card].Recorded().size() - recorded), Rate * 4 / 10.0,
                        2 * RecordedBytes);
            EXPECT_EQ(Cards().SampleRate(card), Rate);
            EXPECT_EQ(Cards().MixerGain(card, 2), 128u);
        }
    }
    // Every frame is heard, in order, and every header comes back.
    void ExpectComplete() {
        Cards().Advance(9 * Second);
        for (unsigned card = 0; card < 2; ++card) {
            EXPECT_TRUE(Cards().Played(card, Port::Analog) == Sound(Format, Pattern(Rate * 8 * 4)));
            players_[card].ExpectEachReturnedOnce();
            recorders_[card].ExpectEachReturnedOnce();
        }
    }

    static constexpr int Recordings = 800;
    static constexpr DWORD RecordedBytes = Rate / 100 * 4;  // of each buffer

    WaveRecorder recorders_[2];
};

TEST_F(WakeUpKindTest, CriticalWithoutASleepLeavesRunningPortsAlone) {
    Begin();
    Cards().ClearTrace();
    Wake(PWR_CRITICALRESUME);
    EXPECT_EQ(TraceText(), (Lines{"read card 17", "read card 17"}));
    ExpectRunning();
    ExpectComplete();
    for (unsigned card = 0; card < 2; ++card) {
        EXPECT_EQ(Status(card).FramesSilent, 0u);
        EXPECT_EQ(Cards().Input(card, Port::Analog).FramesDropped, 0u);
        EXPECT_EQ(recorders_[card].Recorded().size(), Recordings * RecordedBytes);
    }
}

// One card has kept its power.
TEST_F(WakeUpKindTest, ACriticalOneLooksAtEachCard) {
    Begin();
    Cards().PowerCycle(1);
    Wake(PWR_CRITICALRESUME);
    ExpectRunning();
    EXPECT_EQ(Status(0).FramesSilent, 0u);
    ExpectComplete();
}

TEST_F(WakeUpKindTest, TwoInARowLeavePortsRunning) {
    constexpr LPARAM Events[] = {PWR_SUSPENDRESUME, PWR_CRITICALRESUME};
    Begin();
    for (const LPARAM first : Events) {
        for (const LPARAM second : Events) {
            SCOPED_TRACE(testing::Message() << first << ", then " << second);
            Sleep();
            Wake(first);
            Wake(second);
            ExpectRunning();
        }
    }
    ExpectComplete();
}

// A port that its client has paused, or has stopped, is as it was after all of that, even though it was woken
// up running before.
TEST_F(WakeUpKindTest, OneAfterTheOtherStartsNobody) {
    Begin();
    Sleep();
    Wake();
    waveOutPause(players_[0].Handle());
    recorders_[0].Stop();
    Cards().Advance(Second / 100);
    const size_t recorded = recorders_[0].Recorded().size();
    Sleep();
    for (int i = 0; i < 2; ++i) {
        Wake();
        Wake(PWR_CRITICALRESUME);
        EXPECT_EQ(PlaysOn(0), 0u);
        EXPECT_EQ(recorders_[0].Recorded().size(), recorded);
        EXPECT_NEAR(static_cast<double>(PlaysOn(1)), Rate / 10.0, 1);
    }
    waveOutRestart(players_[0].Handle());
    recorders_[0].Start();
    ExpectRunning();
}

// --- what a client has set, and what the clock does ---------------------------------------------

TEST_F(WakeUpTest, AVolumeOutlastsTheSleep) {
    OpenBoth();
    waveOutSetVolume(players_[0].Handle(), 0x4000);
    Sleep();
    waveOutSetVolume(players_[1].Handle(), 0x2000);
    Wake();
    EXPECT_EQ(Cards().MixerGain(0, 2), 32u);
    EXPECT_EQ(Cards().MixerGain(1, 2), 16u) << "set during the sleep";
    DWORD volume = 0;
    EXPECT_EQ(waveOutGetVolume(players_[0].Handle(), &volume), MMSYSERR_NOERROR);
    EXPECT_EQ(volume, 0x4000u);
    WavePlayer& player = players_[0];
    EXPECT_EQ(player.Close(), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Open(0, Format), MMSYSERR_NOERROR);
    EXPECT_EQ(Cards().MixerGain(0, 2), 128u) << "the next stream has the stored gain";
}

// An open would be refused for it, and a user told.
TEST_F(WakeUpTest, WrongIncomingRateIsIgnored) {
    StoreSetting(0, TEXT("ClockSource"), 64);
    Cards().SetDigitalInputRate(0, Rate);
    WavePlayer& player = players_[0];
    ASSERT_EQ(player.Open(0, Format), MMSYSERR_NOERROR);
    ASSERT_EQ(player.Write(Pattern(Rate * 4)), MMSYSERR_NOERROR);
    Cards().Advance(Second / 10);
    Sleep();
    Cards().SetDigitalInputRate(0, 44100);
    Wake();
    EXPECT_TRUE(test_system::EventLog().empty());
    EXPECT_EQ(Cards().SampleRate(0), 44100u) << "the card runs at what arrives";
    EXPECT_NEAR(static_cast<double>(PlaysOn(0)), 4410, 1);
    Cards().SetDigitalInputRate(0, Rate);
    EXPECT_NEAR(static_cast<double>(PlaysOn(0)), 4800, 1);
}

TEST_F(WakeUpTest, AWrongIncomingRateStopsNoRecordingEither) {
    StoreSetting(0, TEXT("ClockSource"), 0);
    Cards().SetDigitalInputRate(0, Rate);
    WaveRecorder recorder;
    ASSERT_EQ(recorder.Open(1, Format), MMSYSERR_NOERROR);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(recorder.Add(Rate / 10 * 4), MMSYSERR_NOERROR);
    }
    recorder.Start();
    Sleep();
    Cards().SetDigitalInputRate(0, 44100);
    Wake();
    Cards().Advance(Second / 4);
    EXPECT_TRUE(test_system::EventLog().empty());
    EXPECT_EQ(recorder.Counts(), (std::vector<DWORD>{Rate / 10 * 4, Rate / 10 * 4}));
}

}  // namespace
