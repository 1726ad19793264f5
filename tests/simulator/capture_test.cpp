// What input channels leave in buffers: samples as the card writes them, whole units of memory, parts
// given back by a stop.
#include <gtest/gtest.h>

#include <limits>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogIn = 0;
constexpr int32_t Bottom = std::numeric_limits<int32_t>::min();
constexpr uint8_t Untouched = 0x55;

// An analog input that records a ramp in 32-bit stereo frames.
struct Recorder {
    explicit Recorder(Simulator& sim) : File(0, AnalogIn) {
        sim.PlugIn(0, Port::Analog, InputSignal::Run(Ramp(100000)));
        File.WritePort(0, 0xC0);
    }
    CardFile File;
};

TEST(SimulatorCapture, ThePortRegisterSaysWhatIsWritten) {
    struct Case {
        uint8_t Control;
        std::vector<Frame> Sound;
        std::vector<uint8_t> Memory;
    };
    const Case cases[] = {
        {0x00, {{Bottom, 0}, {0x7FFFFFFF, -1}}, {0x00, 0x80, 0xFF, 0x7F}},
        {0x20, {{0x10000000, Bottom}, {-1, 0}}, {0x90, 0x7F}},
        {0x40, {{0x1234FFFF, -0x10000}}, {0x34, 0x12, 0xFF, 0xFF}},
        {0x60, {{Bottom, 1}, {0x10000, 1}}, {0x00, 0x80, 0x01, 0x00}},
        {0x80, {{0x123456FF, -0x100}}, {0x56, 0x34, 0x12, 0x00, 0xFF, 0xFF, 0xFF, 0xFF}},
        {0xA0, {{Bottom, 1}}, {0x00, 0x00, 0x80, 0xFF}},
        {0xC0, {{0x12345678, -2}}, {0x78, 0x56, 0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF}},
        {0xE0, {{Bottom + 1, 7}}, {0x01, 0x00, 0x00, 0x80}},
    };
    Simulator sim({});
    Prepare(0);
    for (const Case& test : cases) {
        SCOPED_TRACE(static_cast<unsigned>(test.Control));
        sim.PlugIn(0, Port::Analog, InputSignal::Run(test.Sound));
        const CardFile file(0, AnalogIn);
        file.WritePort(0, test.Control, 0xE0);
        std::vector<uint8_t> memory(test.Memory.size(), Untouched);
        ASSERT_EQ(file.Queue(memory, 1), ERROR_SUCCESS);
        file.Start();
        sim.Advance(1000);
        EXPECT_EQ(memory, test.Memory);
        EXPECT_EQ(file.Ask(GetPosition), test.Sound.size());
    }
}

TEST(SimulatorCapture, AStopGivesBackThePartFilledBufferInWholeUnits) {
    Simulator sim({});
    Prepare(0);
    const Recorder recorder(sim);
    const CardFile& file = recorder.File;
    CompletionThread thread(file);
    std::vector<Frame> first(100, Both(9));
    std::vector<Frame> second(100, Both(9));
    std::vector<Frame> third(100, Both(9));
    ASSERT_EQ(file.Queue(first, 1), ERROR_SUCCESS);
    ASSERT_EQ(file.Queue(second, 2), ERROR_SUCCESS);
    ASSERT_EQ(file.Queue(third, 3), ERROR_SUCCESS);
    file.Start();
    sim.Advance(1000);
    ASSERT_EQ(file.Request(DisarmChannel), ERROR_SUCCESS);
    ASSERT_EQ(file.Ask(GetPosition), 43u);
    EXPECT_TRUE(thread.Cookies().empty());
    ASSERT_EQ(file.Request(StopTransfer), ERROR_SUCCESS);
    thread.WaitFor(1);
    EXPECT_EQ(thread.Cookies(), std::vector<ULONG_PTR>{1});
    EXPECT_EQ(file.Ask(GetPosition), 43u) << "until the next start";
    std::vector<Frame> expected = Ramp(40);  // 43 frames are 10 units of 32 bytes and 24 bytes more
    expected.resize(100, Both(9));
    EXPECT_EQ(first, expected);

    // The next start counts from 0, in the next buffer; a stop with nothing in memory gives back nothing.
    file.Start();
    sim.Advance(45);
    ASSERT_EQ(file.Ask(GetPosition), 1u);
    ASSERT_EQ(file.Request(StopTransfer), ERROR_SUCCESS);
    EXPECT_EQ(sim.Input(0, Port::Analog).BuffersFinished, 1u);
    EXPECT_EQ(second, std::vector<Frame>(100, Both(9)));

    ASSERT_EQ(file.Request(StartTransfer), ERROR_SUCCESS);
    sim.Advance(1000);
    ASSERT_EQ(file.Request(FlushBuffers), ERROR_SUCCESS);
    thread.WaitFor(3);
    EXPECT_EQ(thread.Cookies(), (std::vector<ULONG_PTR>{1, 2, 3})) << "the part-filled one first";
    EXPECT_EQ(file.Ask(GetPosition), 0u);
    EXPECT_NE(second[39], Both(9));
    EXPECT_EQ(sim.Input(0, Port::Analog).BuffersInFlight, 0u);
}

}  // namespace
}  // namespace simulator_tests
