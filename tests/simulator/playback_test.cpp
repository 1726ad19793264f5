// What the channels do with buffers: samples as the card reads them, running dry, mixing.
#include <gtest/gtest.h>

#include <limits>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogOut = 2;
constexpr uint32_t DigitalOut = 3;
constexpr int32_t Top = std::numeric_limits<int32_t>::max();
constexpr int32_t Bottom = std::numeric_limits<int32_t>::min();

// 32-bit slots, left-justified: frames in memory as they are heard.
void UsePlainFrames(const CardFile& file) {
    file.WritePort(0, 0xC0);
}

TEST(SimulatorPlayback, ADryChannelIsSilentUntilItIsStartedAgain) {
    Simulator sim({});
    sim.KeepAudio();
    Prepare(0);
    const CardFile file(0, AnalogOut);
    UsePlainFrames(file);
    std::vector<Frame> first = Ramp(100);
    std::vector<Frame> second = Ramp(50);
    ASSERT_EQ(file.Queue(first, 1), ERROR_SUCCESS);
    file.Start();
    sim.Advance(10000);  // 441 ticks; the data ended at tick 101
    EXPECT_EQ(file.Ask(GetPosition), 100u);
    ASSERT_EQ(file.Queue(second, 2), ERROR_SUCCESS);
    sim.Advance(10000);
    EXPECT_EQ(file.Ask(GetPosition), 100u);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesSilent, 0u) << "nothing has followed yet";

    ASSERT_EQ(file.Request(StartTransfer), ERROR_SUCCESS);
    sim.Advance(10000);
    EXPECT_EQ(file.Ask(GetPosition), 150u);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesSilent, 883u - 101u);
    std::vector<Frame> expected = first;
    expected.resize(883 - 1);
    expected.insert(expected.end(), second.begin(), second.end());
    EXPECT_EQ(sim.Heard(0, Port::Analog), expected);
}

TEST(SimulatorPlayback, TheMixerAddsAtItsGainsAndSaturates) {
    Simulator sim({});
    sim.KeepAudio();
    Prepare(0);
    const CardFile analog(0, AnalogOut);
    const CardFile digital(0, DigitalOut);
    UsePlainFrames(analog);
    UsePlainFrames(digital);
    std::vector<Frame> loud(400, Frame{Top, Bottom});
    std::vector<Frame> quiet(400, Frame{1000, -129});
    ASSERT_EQ(analog.Queue(loud, 1), ERROR_SUCCESS);
    ASSERT_EQ(digital.Queue(quiet, 2), ERROR_SUCCESS);
    analog.Start();
    digital.Start();

    sim.Advance(2000);  // 88 ticks
    analog.SetGain(3, 128);
    sim.Advance(2000);  // 176
    analog.SetGain(2, 64);
    analog.SetGain(3, 1);
    sim.Advance(2000);  // 264
    analog.WriteCard(16, 0x03, 0x03);
    sim.Advance(10000);

    const std::vector<Frame> heard = sim.Heard(0, Port::Analog);
    ASSERT_EQ(heard.size(), 400u);
    const auto expect = [&](size_t from, size_t to, Frame frame) {
        EXPECT_EQ(std::vector(heard.begin() + static_cast<long>(from), heard.begin() + static_cast<long>(to)),
                  std::vector<Frame>(to - from, frame));
    };
    expect(0, 87, {Top, Bottom});
    expect(87, 175, {Top, Bottom});
    expect(175, 263, {static_cast<int32_t>((int64_t{Top} * 64 + 1000) / 128), Bottom / 2 - 1});
    expect(263, 400, {0, 0});
    EXPECT_EQ(sim.Heard(0, Port::Digital), quiet);
    EXPECT_EQ(sim.Played(0, Port::Analog), loud);
}

}  // namespace
}  // namespace simulator_tests
