// The sample clocks: rates, drift, and sources that fail.
#include <gtest/gtest.h>

#include "simulator/clock/sample_clock.h"
#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

TEST(SimulatorClock, FramesAndTimesAgreeToTheNanosecondForDays) {
    for (const uint32_t rate : {8000u, 11025u, 44100u, 96000u, 192000u}) {
        for (const int32_t drift : {0, 1, -1, 37, -250, 100000, -100000}) {
            const SampleClock clock{12345, 678, rate, drift};
            for (uint64_t frame = 679; frame < uint64_t{rate} * 1000000; frame = frame * 3 + 1) {
                const int64_t time = clock.TimeOf(frame);
                ASSERT_EQ(clock.FramesAt(time), frame) << rate << " " << drift;
                ASSERT_EQ(clock.FramesAt(time - 1), frame - 1) << rate << " " << drift;
            }
        }
    }
    const SampleClock fast{0, 0, 48000, 100};
    EXPECT_EQ(fast.FramesAt(100 * int64_t{1000000000}), 4800480u);
}

TEST(SimulatorClock, AnInvalidSourceLatchesTheFaultAndStandsStill) {
    Simulator sim({.Cards = 2});
    Prepare(0);
    Prepare(1);
    const CardFile card0(0, ControlChannel);
    const CardFile card1(1, ControlChannel);
    const auto faultAfterTenPeriods = [&](uint32_t source) {
        card0.WriteCard(32, source, 0x60);
        card0.Send(Stall, 10000000 / 44100 + 1);
        return card0.ReadClockFault();
    };
    sim.SetClockBroken(0, 0x60, true);
    EXPECT_TRUE(faultAfterTenPeriods(0x60));
    EXPECT_EQ(sim.SampleRate(0), 0u);
    EXPECT_FALSE(card0.ReadClockFault()) << "the read clears it";
    sim.Advance(1000);
    sim.SetClockBroken(0, 0x60, false);
    EXPECT_TRUE(card0.ReadClockFault()) << "it failed since the last read";

    card1.WriteCard(32, 0x10, 0x10);
    EXPECT_FALSE(faultAfterTenPeriods(0x20));
    card0.WriteCard(32, 0x10, 0x10);
    EXPECT_TRUE(faultAfterTenPeriods(0x20)) << "two cards drive it";

    sim.SetDigitalInputRate(0, 48000);
    EXPECT_TRUE(faultAfterTenPeriods(0x40)) << "the receiver is off";
    card0.WriteCard(9, 0, 1);
    sim.Advance(40000);
    card0.WriteCard(9, 0, 2);
    EXPECT_TRUE(faultAfterTenPeriods(0x40)) << "it has not settled";
    sim.Advance(10000);
    card0.ReadClockFault();
    EXPECT_FALSE(faultAfterTenPeriods(0x40));
    EXPECT_EQ(sim.SampleRate(0), 48000u);
}

}  // namespace
}  // namespace simulator_tests
