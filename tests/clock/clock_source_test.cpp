// Clock sources: which one a run selects, what it makes of one that fails, what a failed run leaves.
#include <algorithm>

#include "tests/clock/clock_script.h"

namespace {

constexpr DWORD ClockNotValidEvent = 0x40070001;
constexpr DWORD RateMismatchEvent = 0x40070002;

bool Contains(const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

class ClockSourceTest : public ClockTest {
protected:
    using ClockTest::ClockTest;

    void LoadWithSource(DWORD source, DWORD checkClocks = 1, unsigned card = 0) {
        UnloadDriver();
        StoreSetting(card, TEXT("ClockSource"), source);
        StoreSetting(card, TEXT("CheckClocks"), checkClocks);
        Load();
    }

    void ExpectPlaying(WavePlayer& player, unsigned card) {
        const uint64_t before = Cards().Output(card, Port::Analog).FramesPlayed;
        ASSERT_EQ(player.Write(std::vector<BYTE>(44100)), MMSYSERR_NOERROR);
        Cards().Advance(100000);
        EXPECT_NEAR(static_cast<double>(Cards().Output(card, Port::Analog).FramesPlayed - before), 4410, 2);
    }
};

TEST_F(ClockSourceTest, TheStoredSourceIsSelected) {
    Cards().SetDigitalInputRate(0, 44100);
    const struct {
        DWORD Stored;
        unsigned Source;
        bool Resynchronised;  // unless the register holds the source already
    } cases[] = {
        {0, 0, false},  {64, Digital, true}, {96, Pll, true},
        {97, 0, false}, {32, 0, false},  // a follower once, automatic since it has no master
        {5, 0, true},                    // no source at all: never what the register holds
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.Stored);
        LoadWithSource(test.Stored);
        WavePlayer player;
        const Lines lines = Run(player, 0, 44100);
        EXPECT_EQ(Source(0), test.Source);
        EXPECT_EQ(Contains(lines, "0 " + ResyncPulse()[3]), test.Resynchronised);
        EXPECT_EQ(Cards().SampleRate(0), 44100u);
        ExpectPlaying(player, 0);
    }
    EXPECT_EQ(Events(), std::vector<DWORD>{});
}

TEST_F(ClockSourceTest, TheDigitalInputIsSwitchedOnInTwoStepsAndMeasuredTwice) {
    Cards().SetDigitalInputRate(0, 44100);
    LoadWithSource(64);
    const Lines measurement = {"write card 9 = 80 / 80", "stall 23", "write card 9 = 00 / 80", Wait(4354),
                               "read card 10"};
    const Lines select = {
        "write card 9 = 00 / 01",  Wait(50000), "write card 9 = 00 / 02", "READ_CLOCK_FAULT", "read card 32",
        "write card 32 = 40 / 60", "stall 227", "READ_CLOCK_FAULT"};
    const Lines expected = LinesOf("0 ", select + measurement + measurement + ResyncPulse());
    const Lines lines = Run(0, 44100);
    EXPECT_NE(std::search(lines.begin(), lines.end(), expected.begin(), expected.end()), lines.end())
        << testing::PrintToString(lines);
    LoadWithSource(64, 0);
    EXPECT_FALSE(Contains(Run(0, 44100), "0 read card 10")) << "nobody asked for a check";
}

TEST_F(ClockSourceTest, AnInvalidSourceIsReportedAndTheCardGoesOnAlone) {
    size_t events = 0;
    Cards().SetDigitalInputRate(0, 44100);
    for (const unsigned source : {Digital, Pll}) {
        Cards().SetClockBroken(0, source, true);
        for (const DWORD checkClocks : {1u, 0u}) {
            SCOPED_TRACE(testing::Message() << source << ", checked " << checkClocks);
            LoadWithSource(source, checkClocks);
            WavePlayer player;
            Run(player, 0, 44100, checkClocks != 0 ? MMSYSERR_ERROR : MMSYSERR_NOERROR);
            EXPECT_EQ(Events(), std::vector<DWORD>(++events, ClockNotValidEvent));
            EXPECT_EQ(Source(0), 0u);
            EXPECT_EQ(Cards().CardRegister(0, 9) & 0x03, 0x03) << "the receiver is off";
            EXPECT_EQ(Held(0), checkClocks != 0) << "the run ends there";
            if (checkClocks == 0) {
                ExpectPlaying(player, 0);
            }
        }
    }
}

TEST_F(ClockSourceTest, TheIncomingRateMustBeTheStreams) {
    const struct {
        DWORD Rate;
        unsigned Incoming;
        bool Accepted;
    } cases[] = {
        {96000, 96000, true},  {96000, 48000, false}, {88200, 88200, true}, {88200, 44100, false},
        {48000, 48000, true},  {48000, 96000, false}, {44100, 44100, true}, {44100, 48000, false},
        {32000, 32000, true},  {32000, 44100, false}, {22050, 44100, true}, {11025, 48000, true},
        {8000, 32000, true},   {44100, 60000, false},  // of no known class
        {96000, 32000, false},  // the pulse is too short for such a slow clock: nothing is measured
        {22050, 8000, false},
    };
    LoadWithSource(64);
    size_t mismatches = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.Rate << " with " << c.Incoming << " coming in");
        Cards().PowerCycle(0);  // forgets the last measurement
        Cards().SetDigitalInputRate(0, c.Incoming);
        Run(0, c.Rate, c.Accepted ? MMSYSERR_NOERROR : MMSYSERR_ERROR);
        mismatches += c.Accepted ? 0 : 1;
        EXPECT_EQ(Events(), std::vector<DWORD>(mismatches, RateMismatchEvent));
        EXPECT_EQ(Source(0), Digital) << "the source itself was valid";
    }
}

TEST_F(ClockSourceTest, AFailedReadOfTheMeasurementPasses) {
    LoadWithSource(64);
    Cards().SetDigitalInputRate(0, 48000);
    // Reads of one run: rate code, source, the discarded measurement, the one that counts.
    AddFault("READ_REGISTER:3");
    Run(0, 44100, MMSYSERR_ERROR);
    AddFault("READ_REGISTER:4:short");
    Run(0, 44100);
    EXPECT_EQ(Events(), std::vector<DWORD>{RateMismatchEvent});
}

// What holds the wanted value already is left alone, but only when it could be read in full.
TEST_F(ClockSourceTest, ARegisterThatCannotBeReadIsWritten) {
    Load();
    for (const char* fault :
         {"", "READ_REGISTER:all", "READ_REGISTER:all:short", "READ_REGISTER:all:pending"}) {
        SCOPED_TRACE(fault);
        if (*fault != 0) {
            AddFault(fault);
        }
        const Lines lines = Run(0, 44100);
        EXPECT_EQ(Contains(lines, "0 write card 32 = 03 / 07"), *fault != 0);
        EXPECT_EQ(Contains(lines, "0 write card 32 = 00 / 60"), *fault != 0);
        Cards().ClearFaults();
    }
}

// Card 1 and card 2 follow card 0.
class FollowerClockTest : public ClockSourceTest {
protected:
    FollowerClockTest() : ClockSourceTest(3) {
        Follow(1, 0);
        Follow(2, 0);
    }
};

TEST_F(FollowerClockTest, AFailingFollowerIsJudgedByTheMaster) {
    Cards().SetClockBroken(1, Link, true);
    for (const DWORD checkClocks : {1u, 0u}) {
        SCOPED_TRACE(checkClocks);
        LoadWithSource(0, checkClocks, 0);
        LoadWithSource(32, 1 - checkClocks, 1);
        const size_t eventsBefore = Events().size();
        WavePlayer player;
        const Lines lines = Run(player, 2, 44100, checkClocks != 0 ? MMSYSERR_ERROR : MMSYSERR_NOERROR);
        ASSERT_EQ(Events().size(), eventsBefore + 1);
        EXPECT_EQ(Events().back(), ClockNotValidEvent);
        EXPECT_EQ(Source(0), 0u);
        EXPECT_EQ(Source(1), 0u);
        EXPECT_EQ(Cards().CardRegister(0, 32) & 0x10, 0x10);
        EXPECT_EQ(Contains(lines, "2 write card 32 = 20 / 60"), checkClocks == 0) << "the next member";
        for (unsigned card = 0; card < 3; ++card) {
            EXPECT_EQ(Held(card), checkClocks != 0) << card;
        }
        if (checkClocks == 0) {
            EXPECT_EQ(Cards().ClockFrame(2), Cards().ClockFrame(0));
            ExpectPlaying(player, 1);
        }
    }
}

TEST_F(FollowerClockTest, AFollowerPlaysAtTheMastersPace) {
    Cards().SetDrift(0, 500);
    Cards().SetDrift(1, -500);
    WavePlayer follower(2, PcmFormat(48000, 2, 16));
    WavePlayer master(0, PcmFormat(48000, 2, 16));
    for (WavePlayer* player : {&follower, &master}) {
        ASSERT_EQ(player->Write(std::vector<BYTE>(48000 * 4 * 3)), MMSYSERR_NOERROR);
    }
    Cards().Advance(2000000);
    const uint64_t played = Cards().Output(1, Port::Analog).FramesPlayed;
    EXPECT_NEAR(static_cast<double>(played), 96048, 2);
    EXPECT_EQ(Cards().Output(0, Port::Analog).FramesPlayed, played);
    EXPECT_EQ(Cards().ClockFrame(1), Cards().ClockFrame(0));
}

using ClockMasterTest = WithCards<ClockTest, 3>;

// Who is nobody's follower runs alone and, if it followed before, on the automatic source.
TEST_F(ClockMasterTest, OnlyAPresentCardThatFollowsNobodyIsAMaster) {
    const auto path = [](unsigned card) { return simulator::Simulator::RegistryPath(card); };
    const std::pair<std::u16string, unsigned> cases[] = {
        // of card 0, and of card 1
        {path(0), 2},         // itself
        {path(7), 2},         // absent
        {path(1), 2},         // a follower
        {path(1), 1},         // a card that follows itself
        {path(2) + u"x", 2},  // nearly card 2
    };
    for (const auto& [master, masterOfCard1] : cases) {
        SCOPED_TRACE(testing::PrintToString(master));
        UnloadDriver();
        Follow(1, masterOfCard1);
        StoreText(0, TEXT("Master"), master);
        StoreSetting(0, TEXT("ClockSource"), 32);
        Run(0, 44100);
        EXPECT_EQ(Cards().CardRegister(0, 32), 0x03) << "on its own clock, not driving the link";
        EXPECT_EQ(Cards().CardRegister(2, 32) & 0x70, 0);
    }
    EXPECT_EQ(Events(), std::vector<DWORD>{});
}

}  // namespace
