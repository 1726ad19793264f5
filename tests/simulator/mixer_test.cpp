// What an output hears of both playbacks.
#include <gtest/gtest.h>

#include <limits>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr int32_t Top = std::numeric_limits<int32_t>::max();
constexpr int32_t Bottom = std::numeric_limits<int32_t>::min();

TEST(SimulatorMixer, AddsAtItsGainsAndSaturates) {
    Simulator sim({});
    sim.KeepAudio();
    Prepare(0);
    const CardFile analog(0, AnalogOut);
    const CardFile digital(0, DigitalOut);
    std::vector<Frame> loud(400, Frame{Top, Bottom});
    std::vector<Frame> quiet(400, Frame{1000, -129});
    analog.Run(loud);
    digital.Run(quiet);

    sim.Advance(2000);  // 88 ticks
    analog.SetGain(3, 128);
    sim.Advance(2000);  // 176
    analog.SetGain(2, 64);
    analog.SetGain(3, 1);
    sim.Advance(2000);  // 264
    analog.WriteCard(16, 0x03, 0x03);
    sim.Advance(10000);

    std::vector<Frame> expected(400, Frame{});
    std::fill_n(expected.begin(), 263,
                Frame{static_cast<int32_t>((int64_t{Top} * 64 + 1000) / 128), Bottom / 2 - 1});
    std::fill_n(expected.begin(), 175, Frame{Top, Bottom});
    EXPECT_EQ(sim.Heard(0, Port::Analog), expected);
    EXPECT_EQ(sim.Heard(0, Port::Digital), quiet);
    EXPECT_EQ(sim.Played(0, Port::Analog), loud);
}

}  // namespace
}  // namespace simulator_tests
