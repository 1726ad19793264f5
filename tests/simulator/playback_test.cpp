// What the channels do with buffers: samples as the card reads them, running dry, mixing.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "simulator/buffer_queue.h"
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

TEST(SimulatorPlayback, ThePortRegisterSaysWhatMemoryMeans) {
    struct Case {
        uint8_t Control;
        std::vector<uint8_t> Memory;
        std::vector<Frame> Sound;
    };
    const Case cases[] = {
        {0x00, {0x00, 0x80, 0xFF, 0x7F}, {{Bottom, 0}, {0x7F000000, -0x1000000}}},
        {0x20, {0x01, 0x90}, {Both(-0x7F000000), Both(0x10000000)}},
        {0x40, {0x34, 0x12, 0xFF, 0xFF}, {{0x12340000, -0x10000}}},
        {0x60, {0x00, 0x80, 0x01, 0x00}, {Both(Bottom), Both(0x10000)}},
        {0x80, {0x56, 0x34, 0x12, 0x99, 0xFF, 0xFF, 0xFF, 0x00}, {{0x12345600, -0x100}}},
        {0xA0, {0x00, 0x00, 0x80, 0x00}, {Both(Bottom)}},
        {0xC0, {0x78, 0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0xFF}, {{0x12345678, -1}}},
        {0xE0, {0x01, 0x00, 0x00, 0x80}, {Both(Bottom + 1)}},
    };
    Simulator sim({});
    Prepare(0);
    for (const Case& test : cases) {
        SCOPED_TRACE(static_cast<unsigned>(test.Control));
        const CardFile file(0, AnalogOut);
        file.WritePort(0, test.Control, 0xE0);
        std::vector<uint8_t> memory = test.Memory;
        ASSERT_EQ(file.Queue(memory, 1), ERROR_SUCCESS);
        file.Start();
        sim.Advance(1000);
        EXPECT_EQ(sim.Played(0, Port::Analog), test.Sound);
        EXPECT_EQ(sim.Heard(0, Port::Analog), test.Sound);
        sim.ForgetAudio();
    }
}

// Buffers are one stream: however it is cut, the same frames come out, and each buffer when its last
// byte is taken.
TEST(SimulatorPlayback, TheCutBetweenBuffersIsNotHeard) {
    const std::vector<Frame> frames = Ramp(50);
    for (const unsigned format : {0u, 1u, 2u, 3u}) {
        for (const bool mono : {false, true}) {
            const SampleLayout layout{format, mono};
            std::vector<uint8_t> whole(frames.size() * layout.FrameBytes());
            EncodeFrames(layout, frames.data(), frames.size(), whole.data());
            std::vector<Frame> expected(frames.size());
            DecodeFrames(layout, whole.data(), frames.size(), expected.data());
            for (uint32_t cut = 1; cut <= 19; ++cut) {
                SCOPED_TRACE(testing::Message() << format << (mono ? " mono" : " stereo") << " cut " << cut);
                BufferQueue out;
                size_t buffers = 0;
                for (size_t at = 0; at < whole.size(); at += cut, ++buffers) {
                    const uint32_t length = std::min(cut, static_cast<uint32_t>(whole.size() - at));
                    out.Append({whole.data() + at, length, at});
                }
                std::vector<Frame> played(frames.size());
                std::vector<QueuedBuffer> finished;
                size_t done = 0;
                for (size_t step = 1; done < frames.size(); ++step) {
                    const size_t count = std::min(step, frames.size() - done);
                    const bool ends = out.FramesToFirst(layout) <= count;
                    const size_t before = finished.size();
                    ASSERT_EQ(out.Read(layout, count, played.data() + done, finished), count);
                    EXPECT_EQ(finished.size() > before, ends);
                    done += count;
                }
                EXPECT_EQ(played, expected);
                EXPECT_EQ(finished.size(), buffers);
                EXPECT_EQ(out.Read(layout, 1, played.data(), finished), 0u);
            }
        }
    }
}

TEST(SimulatorPlayback, ADryChannelIsSilentUntilItIsStartedAgain) {
    Simulator sim({});
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
