// Clock runs, request by request.
#include <algorithm>

#include "tests/clock/clock_script.h"

namespace {

const Lines HoldCard = {"write card 17 = 01 / 01"};
const Lines ReleaseCard = {"write card 17 = 00 / 01"};
const Lines KeepRate = {"read card 32", "write card 17 = 00 / 08"};
const Lines KeepInternalClock = {
    "write card 9 = 02 / 02", "write card 9 = 01 / 01", "READ_CLOCK_FAULT", "read card 32", "stall 227",
    "READ_CLOCK_FAULT"};
const Lines Port16BitStereo = {"write port 0 = 40 / C0", "write port 0 = 00 / 20"};
const Lines Professional = {"write card 25 = 02 / 02"};
const Lines StatusRate44100 = Professional + StatusRate(0x41, 0);

const Lines DriveLink = {"write card 32 = 10 / 10"};
const Lines ReadClock = {"read card 32"};
const Lines StopDriving = {"read card 32", "write card 32 = 00 / 10"};
const Lines LeaveClock = {"write card 32 = 00 / 60"};
const Lines QuietFollower = {"write card 32 = 00 / 60", "write card 9 = 02 / 02", "write card 9 = 01 / 01"};
const Lines FollowerToLink = {"read card 32",    "write card 17 = 00 / 08", "READ_CLOCK_FAULT",
                              "read card 32",    "write card 32 = 20 / 60", "stall 227",
                              "READ_CLOCK_FAULT"};
using OneCardClock = ClockTest;

TEST_F(OneCardClock, EveryRateHasItsOwnCodeStatusAndWaits) {
    const struct {
        DWORD Rate;
        const char* Code;
        const char* Speed;
        unsigned Settle, Lock, Plain, Resync;  // microseconds: 1052, 10, 28 and 4100 periods
        unsigned Status0, Status4;
    } cases[] = {
        {96000, "00", "08", 10959, 105, 292, 42709, 0x01, 0x10},
        {88200, "01", "08", 11928, 114, 318, 46486, 0x01, 0x50},
        {48000, "02", "00", 21917, 209, 584, 85417, 0x81, 0x00},
        {44100, "03", "00", 23855, 227, 635, 92971, 0x41, 0x00},
        {32000, "04", "00", 32876, 313, 876, 128126, 0xC1, 0x00},
        {22050, "05", "00", 47710, 454, 1270, 185942, 0x01, 0x48},
        {8000, "06", "00", 131501, 1251, 3501, 512501, 0x01, 0x00},
        {11025, "07", "00", 95420, 908, 2540, 371883, 0x01, 0x00},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Rate);
        const Lines speed = {std::string("write card 17 = ") + c.Speed + " / 08"};
        const Lines lock = {"write card 9 = 02 / 02",
                            "write card 9 = 01 / 01",
                            "READ_CLOCK_FAULT",
                            "read card 32",
                            Wait(c.Lock),
                            "READ_CLOCK_FAULT"};
        const auto run = [&](const Lines& rate, const Lines& resync, const std::string& wait) {
            return LinesOf("0 ", HoldCard + Lines{Wait(c.Settle)} + ReadClock + rate + speed + lock + resync +
                                     Professional + StatusRate(c.Status0, c.Status4) + Lines{wait} +
                                     ReleaseCard + Lines{Wait(c.Settle)} + Port16BitStereo);
        };
        EXPECT_EQ(Run(0, c.Rate), run({std::string("write card 32 = ") + c.Code + " / 07"}, ResyncPulse(),
                                      Wait(c.Resync, 450000)));
        EXPECT_EQ(Cards().SampleRate(0), c.Rate);
        EXPECT_EQ(Run(0, c.Rate), run({}, {}, Wait(c.Plain))) << "unchanged";
        EXPECT_EQ(Cards().SampleRate(0), c.Rate);
    }
}

// Card 1 follows card 0.
class TwoCardClock : public ClockTest {
protected:
    TwoCardClock() : ClockTest(2) { Follow(1, 0); }
};

TEST_F(TwoCardClock, OnlyWhatChangedIsResynchronised) {
    const auto expectPulses = [&](DWORD rate, int master, int follower, const char* why) {
        SCOPED_TRACE(why);
        const Lines lines = Run(0, rate);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "0 write card 17 = 80 / 80"), master);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "1 write card 17 = 80 / 80"), follower);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "0 write port 0 = 04 / 04"), master + follower);
        EXPECT_EQ(std::count(lines.begin(), lines.end(), "stall 635"), follower == 0) << "the short wait";
        EXPECT_EQ(Cards().CardRegister(0, 32) & 0x70, 0x10);
        EXPECT_EQ(Source(1), Link);
        EXPECT_EQ(Cards().SampleRate(1), rate);
        EXPECT_EQ(Cards().ClockFrame(0), Cards().ClockFrame(1));
    };
    Run(2, 44100);
    expectPulses(44100, 0, 0, "nothing has changed");
    Cards().PowerCycle(1);
    expectPulses(44100, 0, 1, "the follower");
    expectPulses(48000, 1, 1, "the master's rate");
    // With a master that loses its source, although none of the follower's own settings changes.
    UnloadDriver();
    StoreSetting(0, TEXT("ClockSource"), 96);
    StoreSetting(0, TEXT("CheckClocks"), 0);
    Run(0, 48000);
    Cards().SetClockBroken(0, 96, true);
    expectPulses(48000, 1, 1, "the master's source");
}

TEST_F(TwoCardClock, AFollowerWithAnotherSourceIsGivenThatCode) {
    StoreSetting(1, TEXT("ClockSource"), 97);  // as long as it was never opened itself
    for (int run = 0; run < 2; ++run) {
        const Lines lines = Run(0, 44100);
        for (const char* line : {"1 write card 32 = 00 / 60", "1 write card 32 = 61 / 60"}) {
            EXPECT_EQ(std::count(lines.begin(), lines.end(), line), 1) << line << ", run " << run;
        }
        EXPECT_EQ(Source(1), Pll);
    }
    Run(2, 44100);
    EXPECT_EQ(Source(1), Link) << "opening the follower itself puts it on the link";
}

using TwoLinkClock = TwoGroupsTest;

// One step of a run, for a stream on card 1: on its own card through its own handle, on another one through a
// handle for the step. What is for a port goes to the stream's card.
Lines Step(unsigned card, const Lines& requests) {
    const std::string number = std::to_string(card) + " ";
    Lines lines;
    for (const std::string& request : requests) {
        lines = lines + LinesOf(request.starts_with("write port") ? "1 " : number, {request});
    }
    const Lines bind = {number + "BIND_HANDLE " + number + "control"};
    return card == 1 ? lines : bind + lines + Lines{number + "RELEASE_CHANNEL"};
}

TEST_F(TwoLinkClock, AGroupTakesTheLinkFromAnother) {
    Run(6, 44100);
    EXPECT_EQ(Cards().CardRegister(2, 32), 0x13);
    const Lines hold = Step(0, HoldCard) + Step(1, HoldCard) + Step(3, HoldCard);
    const Lines leave = Step(0, ReadClock) + Step(1, ReadClock) + Step(2, StopDriving) +
                        Step(3, ReadClock + LeaveClock) + Step(0, LeaveClock) + Step(1, QuietFollower);
    const Lines program =
        Step(0, KeepRate) + Step(0, KeepInternalClock) + Step(0, DriveLink) + Step(1, FollowerToLink);
    const Lines resync = Step(0, ResyncPulse() + StatusRate44100) + Step(1, ResyncPulse() + StatusRate44100) +
                         Step(3, ResyncPulse());
    const Lines release = Step(0, ReleaseCard) + Step(1, ReleaseCard) + Step(3, ReleaseCard);
    const Lines settle = {Wait(23855)};
    EXPECT_EQ(Run(2, 44100), hold + settle + leave + program + resync + Lines{Wait(92971, 450000)} + release +
                                 settle + Step(1, Port16BitStereo));

    // The card that has lost its link is left alone from now on.
    const Lines next = Run(2, 48000);
    EXPECT_EQ(std::find(next.begin(), next.end(), "3 " + HoldCard.front()), next.end());
}

}  // namespace
