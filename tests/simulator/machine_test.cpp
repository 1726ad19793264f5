// A named machine, which other processes could use as well.
#include <gtest/gtest.h>

#include "tests/processes/companion.h"
#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogOut = 2;

// The thread that looks for other processes delivers completions, too: the mover waits all the same.
TEST(SimulatorMachine, SteppedTimeIsExactForAProcessAloneOnANamedMachine) {
    const SharedMachine machine;
    Simulator sim({});
    Prepare(0);
    const CardFile file(0, AnalogOut);
    file.WritePort(0, 0xC0);
    std::vector<Frame> frames(44, Both(1));
    CompletionThread thread(file, [&](ULONG_PTR cookie) {
        file.Queue(frames, cookie + 1);
        file.Request(StartTransfer);
    });
    ASSERT_EQ(file.Queue(frames, 1), ERROR_SUCCESS);
    file.Start();
    sim.Advance(2000000);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesSilent, 0u);
    EXPECT_EQ(sim.Output(0, Port::Analog).FramesPlayed, 2u * 44100 - 1);
}

}  // namespace
}  // namespace simulator_tests
