// Streams of one clock start on one frame of it.
#include <algorithm>

#include "tests/clock/clock_script.h"

namespace {

using simulator::OutputStatus;
using simulator::Port;

constexpr UINT CardOf(UINT device) {
    return device / 2;
}
constexpr Port PortOf(UINT device) {
    return device % 2 == 0 ? Port::Analog : Port::Digital;
}

class SynchronizedStartTest : public DriverTest {
protected:
    // Each request takes more than a frame: what is not behind a hold starts apart.
    explicit SynchronizedStartTest(unsigned cards = 1) : DriverTest(cards) { Cards().SetRequestTime(30); }

    // Half a second of sound.
    static void Write(WavePlayer& player) {
        ASSERT_EQ(player.Write(std::vector<BYTE>(44100 * 4 / 2)), MMSYSERR_NOERROR);
    }
    static void Open(WavePlayer& player, UINT device) {
        ASSERT_EQ(player.Open(device, PcmFormat(44100, 2, 16)), MMSYSERR_NOERROR);
    }

    OutputStatus Status(UINT device) { return Cards().Output(CardOf(device), PortOf(device)); }
    uint64_t Played(UINT device) { return Status(device).FramesPlayed; }

    // Frames that the device plays in a tenth of a second.
    double PlaysOn(UINT device) {
        const uint64_t before = Played(device);
        Cards().Advance(100000);
        return static_cast<double>(Played(device) - before);
    }

    // What was asked since the last call that has to do with starting and stopping, with the card.
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
};

constexpr unsigned TenthOfASecond = 4410;  // frames

TEST_F(SynchronizedStartTest, TwoPortsOfACardStartTogether) {
    for (const UINT first : {0u, 1u}) {
        SCOPED_TRACE(first);
        const UINT second = 1 - first;
        WavePlayer players[2];
        Open(players[0], 0);
        Open(players[1], 1);
        StartLines();
        Write(players[first]);
        Cards().Advance(30000);
        EXPECT_FALSE(Status(first).Started) << "waits for the other one";
        Write(players[second]);
        Cards().Advance(30000);
        ASSERT_TRUE(Status(0).Started && Status(1).Started);
        EXPECT_EQ(Status(0).StartFrame, Status(1).StartFrame);
        EXPECT_EQ(Played(0), Played(1));

        // The card is reached through the stream that was opened last.
        const std::string a = std::string("0.") + (first == 0 ? "2 " : "3 ");
        const std::string b = std::string("0.") + (first == 0 ? "3 " : "2 ");
        EXPECT_EQ(StartLines(),
                  (Lines{a + "START_TRANSFER", "0.3 write card 36 = 01 / 01", a + "write port 0 = 02 / 02",
                         a + "ARM_CHANNEL", b + "START_TRANSFER", b + "write port 0 = 02 / 02",
                         b + "ARM_CHANNEL", "0.3 write card 36 = 00 / 01"}));
    }
}

TEST_F(SynchronizedStartTest, OneOfSeveralPausesAndJoinsAgain) {
    WavePlayer players[2];
    Open(players[0], 0);
    Open(players[1], 1);
    Write(players[0]);
    Write(players[1]);
    Cards().Advance(10000);
    StartLines();

    waveOutPause(players[0].Handle());
    EXPECT_EQ(StartLines(), (Lines{"0.3 write card 36 = 01 / 01", "0.2 DISARM_CHANNEL"}));
    const uint64_t before = Played(1);
    EXPECT_EQ(PlaysOn(0), 0.0);
    EXPECT_NEAR(static_cast<double>(Played(1) - before), TenthOfASecond, 1) << "a hold stops nobody";
    waveOutRestart(players[0].Handle());
    EXPECT_EQ(StartLines(), (Lines{"0.2 START_TRANSFER", "0.2 write port 0 = 02 / 02", "0.2 ARM_CHANNEL",
                                   "0.3 write card 36 = 00 / 01"}));
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1);
}

TEST_F(SynchronizedStartTest, AllPausedRestartTogether) {
    WavePlayer players[2];
    Open(players[0], 0);
    Open(players[1], 1);
    Write(players[0]);
    Write(players[1]);
    Cards().Advance(10000);
    waveOutPause(players[0].Handle());
    Cards().Advance(5000);
    waveOutPause(players[1].Handle());
    const uint64_t lead = Played(1) - Played(0);
    EXPECT_NEAR(static_cast<double>(lead), 220, 5) << "requests take time, too";
    StartLines();
    waveOutRestart(players[1].Handle());
    EXPECT_EQ(PlaysOn(1), 0.0) << "the first one waits again";
    waveOutRestart(players[0].Handle());
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1);
    EXPECT_EQ(Played(1) - Played(0), lead) << "and both went on at the same frame";
    const Lines lines = StartLines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "0.3 write card 36 = 01 / 01"), 1);
    EXPECT_EQ(lines.back(), "0.3 write card 36 = 00 / 01");
}

TEST_F(SynchronizedStartTest, TheOthersPlayOnWhenOneIsClosed) {
    WavePlayer stays;
    Open(stays, 0);
    {
        WavePlayer leaves;
        Open(leaves, 1);
        Write(stays);
        Write(leaves);
        Cards().Advance(10000);
        EXPECT_EQ(leaves.Close(), WAVERR_STILLPLAYING);
        EXPECT_EQ(waveOutReset(leaves.Handle()), MMSYSERR_NOERROR);
        EXPECT_EQ(leaves.Close(), MMSYSERR_NOERROR);
    }
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1);
    EXPECT_EQ(Status(0).FramesSilent, 0u);
    waveOutPause(stays.Handle());
    waveOutRestart(stays.Handle());
    EXPECT_NEAR(PlaysOn(0), TenthOfASecond, 1) << "there is nobody to wait for";

    WavePlayer joins;
    Open(joins, 1);
    Write(joins);
    Cards().Advance(10000);
    EXPECT_TRUE(Status(1).Started) << "the only one missing";
}

// Card 1 follows card 0.
class GroupStartTest : public SynchronizedStartTest {
protected:
    GroupStartTest() : SynchronizedStartTest(2) {
        Follow(1, 0);
        StoreSetting(1, TEXT("ClockSource"), 32);
    }
};

TEST_F(GroupStartTest, TwoCardsStartOnOneFrameOfTheirClock) {
    for (const UINT first : {0u, 2u}) {
        for (const UINT openedFirst : {0u, 2u}) {
            SCOPED_TRACE(testing::Message() << openedFirst << " opened first, " << first << " started first");
            WavePlayer master;
            WavePlayer follower;
            if (openedFirst == 0) {
                Open(master, 0);
            }
            Open(follower, 2);
            if (openedFirst != 0) {
                Open(master, 0);
            }
            StartLines();
            Write(first == 0 ? master : follower);
            Cards().Advance(30000);
            EXPECT_FALSE(Status(first).Started);
            Write(first == 0 ? follower : master);
            Cards().Advance(30000);
            ASSERT_TRUE(Status(0).Started && Status(2).Started);
            EXPECT_EQ(Status(0).StartFrame, Status(2).StartFrame);
            EXPECT_EQ(Played(0), Played(2));
            const Lines lines = StartLines();
            EXPECT_EQ(lines.back(), "0.2 write card 36 = 00 / 01") << "the hold is the master's";
        }
    }
}

TEST_F(GroupStartTest, AFollowerAloneStartsThroughTheMastersHold) {
    WavePlayer follower;
    Open(follower, 2);
    StartLines();
    Write(follower);
    EXPECT_EQ(StartLines(),
              (Lines{"1.2 START_TRANSFER", "0.- BIND_HANDLE 0 control", "0.- write card 36 = 01 / 01",
                     "0.- RELEASE_CHANNEL", "1.2 write port 0 = 02 / 02", "1.2 ARM_CHANNEL",
                     "0.- BIND_HANDLE 0 control", "0.- write card 36 = 00 / 01", "0.- RELEASE_CHANNEL"}));
    EXPECT_NEAR(PlaysOn(2), TenthOfASecond, 1);
    // The group stays synchronized although one stream is all there is.
    waveOutPause(follower.Handle());
    waveOutRestart(follower.Handle());
    EXPECT_NEAR(PlaysOn(2), TenthOfASecond, 1);
}

}  // namespace
