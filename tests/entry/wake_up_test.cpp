// What a sleep and a wake-up of the computer ask of linked cards, and what streams find after wake-ups of
// every kind.
#include <algorithm>
#include <map>

#include "tests/clock/clock_script.h"

namespace {

using simulator::OutputStatus;

constexpr DWORD Rate = 48000;
const WaveFormat Format = PcmFormat(Rate, 2, 16);

class WakeUpTest : public DriverTest {
protected:
    explicit WakeUpTest(unsigned cards = 2) : DriverTest(cards) {}

    void SleepForASecond() {
        FallAsleep();
        Cards().Advance(Second);
    }

    OutputStatus Status(unsigned card) { return Cards().Output(card, Port::Analog); }

    // Frames that each card's analog output plays in a tenth of a second.
    std::vector<double> PlayOn() {
        std::vector<double> played;
        for (unsigned card = 0; card < Cards().CardCount(); ++card) {
            played.push_back(-static_cast<double>(Status(card).FramesPlayed));
        }
        Cards().Advance(Second / 10);
        for (unsigned card = 0; card < Cards().CardCount(); ++card) {
            played[card] += static_cast<double>(Status(card).FramesPlayed);
        }
        return played;
    }

    // Opens the analog output of the cards in that order.
    void Open(const std::vector<unsigned>& cards) {
        for (const unsigned card : cards) {
            ASSERT_EQ(players_[card].Open(2 * card, Format), MMSYSERR_NOERROR);
        }
    }
    // So many milliseconds of sound for each that is open.
    void Write(unsigned milliseconds) {
        for (auto& [card, player] : players_) {
            ASSERT_EQ(player.Write(Pattern(Rate / 1000 * 4 * milliseconds)), MMSYSERR_NOERROR);
        }
    }

    std::map<unsigned, WavePlayer> players_;
};

// --- two linked cards ---------------------------------------------------------------------------

class LinkedWakeUpTest : public WakeUpTest {
protected:
    LinkedWakeUpTest() { Follow(1, 0); }

    Lines Asked(LPARAM event) {
        Cards().ClearTrace();
        SendPower(event);
        return TimedLines(Cards().Trace());
    }
};

// The stream that was opened last comes first; its card follows the other one. It programs the clock of both.
TEST_F(LinkedWakeUpTest, TheRequestsOfASleepAndOfAWakeUp) {
    ASSERT_EQ(waveOutGetNumDevs(), 4u);
    const Lines discovery = TimedLines(Cards().Trace());
    Open({0, 1});
    Write(500);
    Cards().Advance(Second / 10);

    EXPECT_EQ(
        Asked(PWR_SUSPENDREQUEST),
        (Lines{"0 write card 36 = 01 / 01", "1 DISARM_CHANNEL", "1 STOP_TRANSFER", "1 RELEASE_CHANNEL",
               "0 write card 36 = 01 / 01", "0 DISARM_CHANNEL", "0 STOP_TRANSFER", "0 RELEASE_CHANNEL"}));
    LosePower();

    const Lines lines = Asked(PWR_SUSPENDRESUME);
    const Lines before = InitialisationIn(discovery, 0) + InitialisationIn(discovery, 1) +
                         Lines{"1 ACQUIRE_CHANNEL", "0 write card 17 = 01 / 01"};
    ASSERT_GT(lines.size(), before.size());
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<long>(before.size())), before);
    const Lines prepared = {"write port 0 = 40 / C0", "write port 0 = 00 / 20", "write port 0 = 00 / 02",
                            "DISARM_CHANNEL",         "write card 3 = 02 / 07", "write card 2 = 80 / FF",
                            "START_TRANSFER"};
    const Lines armed = {"write port 0 = 02 / 02", "ARM_CHANNEL"};
    const auto released = std::find(lines.rbegin(), lines.rend(), "1 write card 17 = 00 / 01");
    EXPECT_EQ(Lines(released.base(), lines.end()),
              Lines{Wait(21917)} + LinesOf("1 ", prepared) + Lines{"0 write card 36 = 01 / 01"} +
                  LinesOf("1 ", armed) + Lines{"0 ACQUIRE_CHANNEL"} + LinesOf("0 ", prepared + armed) +
                  Lines{"0 write card 36 = 00 / 01"});
}

// Nothing has run before: what comes with the wake-up is the first that is heard of either card. Requests
// take time: a port that starts before it has been fed is silent for a while.
TEST_F(LinkedWakeUpTest, WhatIsWrittenDuringTheSleepStartsOnOneFrame) {
    Cards().SetRequestTime(30);
    Open({0, 1});
    SleepForASecond();
    Write(200);
    WakeUp();
    Cards().Advance(Second);
    for (unsigned card = 0; card < 2; ++card) {
        EXPECT_EQ(Status(card).FramesPlayed, Rate / 5) << card;
        EXPECT_EQ(Cards().Heard(card, Port::Analog).size(), Rate / 5) << card;
        EXPECT_EQ(Status(card).StartFrame, Status(0).StartFrame);
        players_[card].ExpectEachReturnedOnce();
    }
}

// Nothing tells the follower's stream but the master, which runs at its initial rate again and drives no
// link.
TEST_F(LinkedWakeUpTest, AFollowersStreamGoesOnWhenTheMasterAloneHasLostItsPower) {
    Open({1});
    Write(1000);
    Cards().PowerCycle(0);
    SendPower(PWR_CRITICALRESUME);
    EXPECT_NEAR(PlayOn()[1], Rate / 10, 1);
    EXPECT_EQ(Cards().SampleRate(0), Rate);
    EXPECT_EQ(Cards().ClockFrame(0), Cards().ClockFrame(1));
}

// One of three is gone when the computer wakes up, and there again after the next sleep.
class MissingCardTest : public WakeUpTest {
protected:
    MissingCardTest() : WakeUpTest(3) {
        Follow(1, 0);
        Follow(2, 0);
    }

    // The cards but `silent` do, at their rate.
    void ExpectPlaying(unsigned silent) {
        const std::vector<double> played = PlayOn();
        for (unsigned card = 0; card < 3; ++card) {
            EXPECT_NEAR(played[card], card != silent ? Rate / 10 : 0, 1) << card;
        }
    }
};

// Streams are woken up in the order of their opens, from the last on. Whether the card has one of this
// program makes a difference: then its device is open already.
TEST_F(MissingCardTest, TheOthersGoOnWithoutIt) {
    for (const unsigned missing : {0u, 1u, 2u}) {
        const unsigned next = (missing + 1) % 3;
        const unsigned last = (missing + 2) % 3;
        for (const auto& order :
             {std::vector{missing, next, last}, {last, next, missing}, {next, last}, {last, next}}) {
            SCOPED_TRACE(testing::Message() << missing << " of " << testing::PrintToString(order));
            const unsigned unused = order.size() == 2 ? missing : 3;
            Open(order);
            Write(1000);
            ExpectPlaying(unused);
            SleepForASecond();
            Cards().SetPresent(missing, false);
            WakeUp();
            ExpectPlaying(missing);
            Cards().SetPresent(missing, true);
            SleepForASecond();
            WakeUp();
            ExpectPlaying(unused);
            players_.clear();
        }
    }
}

// --- wake-ups of every kind ----------------------------------------------------------------------

class WakeUpKindTest : public WakeUpTest {
protected:
    // Both cards play and record.
    void Begin() {
        Open({0, 1});
        Write(8000);
        PlugInAnotherSignal();
        for (UINT card = 0; card < 2; ++card) {
            WaveRecorder& recorder = recorders_[card];
            ASSERT_EQ(recorder.Open(2 * card, Recorded), MMSYSERR_NOERROR);
            for (int i = 0; i < Recordings; ++i) {
                ASSERT_EQ(recorder.Add(RecordedBytes), MMSYSERR_NOERROR);
            }
            ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
        }
        Cards().Advance(Second / 4);
    }
    // From now on card 1 records it.
    void PlugInAnotherSignal() {
        const std::vector<simulator::Frame> signal = NoiseFrames(4 * Rate, ++signals_);
        Cards().PlugIn(1, Port::Analog, simulator::InputSignal::Run(signal));
        const std::vector<BYTE> bytes = ClientBytes(Recorded, signal);
        recording_.resize(recorders_[1].Recorded().size());
        recording_.insert(recording_.end(), bytes.begin(), bytes.end());
    }
    void ExpectRunning() {
        const size_t before[] = {recorders_[0].Recorded().size(), recorders_[1].Recorded().size()};
        const std::vector<double> played = PlayOn();
        for (unsigned card = 0; card < 2; ++card) {
            SCOPED_TRACE(card);
            EXPECT_NEAR(played[card], Rate / 10.0, 1);
            EXPECT_NEAR(static_cast<double>(recorders_[card].Recorded().size() - before[card]),
                        Rate * 3 / 10.0, 2 * RecordedBytes);
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
    static constexpr DWORD RecordedBytes = Rate / 100 * 3;  // of each buffer
    const WaveFormat Recorded = PcmFormat(Rate, 1, 24);

    WaveRecorder recorders_[2];
    std::vector<BYTE> recording_;  // of card 1, when nothing is lost on the way
    unsigned signals_ = 0;
};

// Without a sleep; then one card has lost its power; then both after a sleep that is over.
TEST_F(WakeUpKindTest, ACriticalOneLooksAtEachCard) {
    Begin();
    Cards().ClearTrace();
    SendPower(PWR_CRITICALRESUME);
    EXPECT_EQ(TraceText(), (Lines{"read card 17", "read card 17"}));
    ExpectRunning();
    for (unsigned card = 0; card < 2; ++card) {
        EXPECT_EQ(Status(card).FramesSilent, 0u);
        EXPECT_EQ(Cards().Input(card, Port::Analog).FramesDropped, 0u);
    }
    Cards().PowerCycle(1);
    SendPower(PWR_CRITICALRESUME);
    ExpectRunning();
    EXPECT_EQ(Status(0).FramesSilent, 0u);
    EXPECT_EQ(Cards().Input(0, Port::Analog).FramesDropped, 0u);
    SleepForASecond();
    WakeUp();
    LosePower();
    SendPower(PWR_CRITICALRESUME);
    ExpectRunning();
    ExpectComplete();
}

// A port that its client has paused, or has stopped, before a sleep or during it, is as it was after all of
// that, even though it was woken up running before. The others go on where they were.
TEST_F(WakeUpKindTest, OneAfterTheOtherStartsNobody) {
    Begin();
    SleepForASecond();
    PlugInAnotherSignal();
    recorders_[0].Stop();
    WakeUp();
    waveOutPause(players_[0].Handle());
    Cards().Advance(Second / 10);
    const size_t recorded = recorders_[0].Recorded().size();
    SleepForASecond();
    const std::vector<BYTE> all = recorders_[1].Recorded();
    ASSERT_LE(all.size(), recording_.size());
    EXPECT_TRUE(std::equal(all.begin(), all.end(), recording_.begin()));
    for (int i = 0; i < 2; ++i) {
        WakeUp();
        SendPower(PWR_CRITICALRESUME);
        const std::vector<double> played = PlayOn();
        EXPECT_EQ(played[0], 0);
        EXPECT_NEAR(played[1], Rate / 10.0, 1);
        EXPECT_EQ(recorders_[0].Recorded().size(), recorded);
    }
    waveOutRestart(players_[0].Handle());
    recorders_[0].Start();
    ExpectRunning();
    ExpectComplete();
}

// An open would be refused for it, for the clock's sake and for the input's, and a user told.
TEST_F(WakeUpTest, WrongIncomingRateIsIgnored) {
    Cards().SetDigitalInputRate(0, Rate);
    WaveRecorder recorder(1, Format);
    ASSERT_EQ(recorder.Add(4000), MMSYSERR_NOERROR);
    ASSERT_EQ(recorder.Start(), MMSYSERR_NOERROR);
    SleepForASecond();
    Cards().SetDigitalInputRate(0, 44100);
    WakeUp();
    EXPECT_TRUE(test_system::EventLog().empty());
    EXPECT_EQ(Cards().SampleRate(0), 44100u) << "the card runs at what arrives";
    Cards().Advance(Second / 10);
    EXPECT_EQ(recorder.Counts(), std::vector<DWORD>{4000});
}

}  // namespace
