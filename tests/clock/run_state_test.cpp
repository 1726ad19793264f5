// What a clock run makes of what earlier ones have left, and of cards that it cannot open or that nobody
// uses.
#include <algorithm>

#include "tests/clock/clock_script.h"

namespace {

constexpr DWORD Rate = 44100;

class RunStateTest : public TwoGroupsTest {
protected:
    // What a run asks of a card outside its group: whether it drives the link, and to stop if it does.
    static Lines Asked(Lines lines, unsigned card) {
        const std::string number = std::to_string(card) + " ";
        std::erase_if(lines, [&number](const std::string& line) {
            return !line.starts_with(number + "read") && !line.starts_with(number + "write");
        });
        return lines;
    }
};

TEST_F(RunStateTest, ARunThatFailedLeavesNothingToAnotherGroup) {
    Cards().SetClockBroken(1, Link, true);
    Run(2, Rate, MMSYSERR_ERROR);
    const Lines lines = Run(4, Rate);
    EXPECT_EQ(Asked(lines, 0), (Lines{"0 read card 32", "0 write card 32 = 00 / 10"}));
    EXPECT_EQ(Asked(lines, 1), Lines{"1 read card 32"});
}

TEST_F(RunStateTest, ACardThatWasInitialisedHangsOnNoLink) {
    Run(4, Rate);
    WakeUp();
    EXPECT_EQ(Asked(Run(0, Rate), 3), Lines{"3 read card 32"});
}

TEST_F(RunStateTest, AFollowerThatWasRestoredIsOnTheLinkAgainWithTheNextStream) {
    const WavePlayer first(2, PcmFormat(Rate, 2, 16));
    for (const UINT message : {SavePci, RestorePci}) {
        EXPECT_EQ(waveOutMessage(first.Handle(), message, 0, 0), MMSYSERR_NOERROR);
    }
    EXPECT_EQ(Source(1), 0u);
    const WavePlayer second(3, PcmFormat(Rate, 2, 16));
    EXPECT_EQ(Source(1), Link);
}

TEST_F(RunStateTest, AFollowerThatLosesTheLinkIsHeardOnItsOwnClock) {
    StoreSetting(0, TEXT("CheckClocks"), 0);
    Run(2, Rate);
    Cards().SetClockBroken(1, Link, true);
    WavePlayer player(2, PcmFormat(Rate, 2, 16));
    const std::vector<BYTE> data = Pattern(4000);
    ASSERT_EQ(player.Write(data), MMSYSERR_NOERROR);
    Cards().Advance(Second / 10);
    EXPECT_EQ(Cards().Heard(1, Port::Analog), Sound(PcmFormat(Rate, 2, 16), data));
}

// Its first initialisation was refused, and so it is not listed.
TEST_F(RunStateTest, ADisabledCardFollowsAndIsNotInitialised) {
    Fail("BIND_HANDLE", 8);
    Fail("BIND_HANDLE", 9);
    EXPECT_EQ(waveOutGetNumDevs(), 6u);
    WavePlayer player(0, PcmFormat(Rate, 2, 16));
    EXPECT_EQ(Source(1), Link);
    const uint8_t muted = Cards().CardRegister(1, 16);
    WakeUp();
    EXPECT_EQ(Cards().CardRegister(1, 16), muted);
    EXPECT_NE(muted & 0x03, 0);
}

TEST_F(RunStateTest, ADisabledMasterLeadsNobody) {
    Fail("BIND_HANDLE", 4);
    Fail("BIND_HANDLE", 5);
    EXPECT_EQ(waveOutGetNumDevs(), 6u);
    const WavePlayer player(2, PcmFormat(Rate, 2, 16));
    EXPECT_EQ(Source(1), Internal);
}

// A sleep ends with what there is: the card's own clock, and no hold.
TEST_F(RunStateTest, AClockThatFailsDuringASleepStopsNobody) {
    StoreSetting(0, TEXT("ClockSource"), Pll);
    WavePlayer player(2, PcmFormat(Rate, 2, 16));
    ASSERT_EQ(player.Write(Pattern(40000)), MMSYSERR_NOERROR);
    for (const auto& [card, source] : {std::pair{0u, Pll}, {1u, Link}}) {
        SCOPED_TRACE(card);
        FallAsleep();
        Cards().SetClockBroken(card, source, true);
        WakeUp();
        EXPECT_EQ(Source(card), Internal);
        EXPECT_FALSE(Held(0) || Held(1));
        Cards().SetClockBroken(card, source, false);
    }
}

TEST_F(RunStateTest, ACardThatCannotBeOpenedEndsTheRunAtWhicheverStep) {
    const auto opens = [](const Lines& lines) {
        return std::count_if(lines.begin(), lines.end(),
                             [](const std::string& line) { return line.find("BIND_HANDLE") != line.npos; });
    };
    WavePlayer player;
    for (const UINT device : {0u, 2u}) {  // the master's, a follower's
        UnloadDriver();
        const auto count = static_cast<unsigned>(opens(Run(device, Rate)));
        for (unsigned nth = 1; nth <= count; ++nth) {
            SCOPED_TRACE(testing::Message() << "device " << device << ", open " << nth);
            UnloadDriver();
            Load();
            Fail("BIND_HANDLE", 1 + nth);  // after that of the stream
            EXPECT_EQ(player.Open(device, PcmFormat(Rate, 2, 16)), MMSYSERR_NODRIVER);
            EXPECT_EQ(Events(), std::vector<DWORD>{});
            ASSERT_EQ(player.Open(device, PcmFormat(48000, 2, 16)), MMSYSERR_NOERROR)
                << "nothing is in its way";
            EXPECT_EQ(Cards().SampleRate(1), 48000u);
            EXPECT_EQ(Cards().ClockFrame(1), Cards().ClockFrame(0));
            player.Shut();
        }
    }
}

}  // namespace
