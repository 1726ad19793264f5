// What input channels leave in buffers: samples as the card writes them, whole units of memory, parts
// given back by a stop, data that nobody has a buffer for.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "simulator/capture_queue.h"
#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogIn = 0;
constexpr uint32_t DigitalIn = 1;
constexpr uint32_t AnalogOut = 2;
constexpr uint32_t DigitalOut = 3;
constexpr int32_t Bottom = std::numeric_limits<int32_t>::min();
constexpr uint8_t Untouched = 0x55;

std::vector<Frame> Ramp(size_t frames) {
    std::vector<Frame> ramp(frames);
    for (size_t i = 0; i < frames; ++i) {
        ramp[i] = {static_cast<int32_t>(i + 1) << 8, -static_cast<int32_t>(i + 1) * 512};
    }
    return ramp;
}

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

// However the buffers are cut and the frames come in, memory gets the same bytes, and each buffer is given
// back with the frame that fills it.
TEST(SimulatorCapture, TheCutBetweenBuffersIsNotRecorded) {
    const std::vector<Frame> frames = Ramp(50);
    for (const unsigned format : {0u, 1u, 2u, 3u}) {
        for (const bool mono : {false, true}) {
            const SampleLayout layout{format, mono};
            std::vector<uint8_t> whole(frames.size() * layout.FrameBytes());
            EncodeFrames(layout, frames.data(), frames.size(), whole.data());
            for (uint32_t cut = 1; cut <= 70; cut += 3) {
                SCOPED_TRACE(testing::Message() << format << (mono ? " mono" : " stereo") << " cut " << cut);
                CaptureQueue queue;
                std::vector<uint8_t> recorded(whole.size(), Untouched);
                size_t buffers = 0;
                for (size_t at = 0; at < whole.size(); at += cut, ++buffers) {
                    const uint32_t length = std::min(cut, static_cast<uint32_t>(whole.size() - at));
                    queue.Append({recorded.data() + at, length, at});
                }
                std::vector<QueuedBuffer> finished;
                size_t done = 0;
                for (size_t step = 1; done < frames.size(); ++step) {
                    const size_t count = std::min(step, frames.size() - done);
                    const bool ends = queue.FramesToFirst(layout) <= count;
                    const size_t before = finished.size();
                    ASSERT_EQ(queue.Write(layout, frames.data() + done, count, finished), count);
                    ASSERT_EQ(finished.size() > before, ends);
                    done += count;
                }
                EXPECT_EQ(recorded, whole);
                EXPECT_EQ(finished.size(), buffers);
                EXPECT_FALSE(queue.HasRoom());
                EXPECT_EQ(queue.Write(layout, frames.data(), 1, finished), 0u);
            }
        }
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

TEST(SimulatorCapture, APowerLossBeginsTheBufferAnew) {
    Simulator sim({});
    Prepare(0);
    const Recorder recorder(sim);
    const CardFile& file = recorder.File;
    std::vector<Frame> memory(100);
    ASSERT_EQ(file.Queue(memory, 1), ERROR_SUCCESS);
    file.Start();
    sim.Advance(1000);
    sim.PowerCycle(0);
    EXPECT_EQ(file.Request(StartTransfer), ERROR_NOT_READY);
    Prepare(0);
    sim.PlugIn(0, Port::Analog, InputSignal::Run(Ramp(1000)));
    ASSERT_EQ(file.Request(AcquireChannel), ERROR_SUCCESS);
    file.WritePort(0, 0xC0);
    file.Start();
    sim.Advance(10000);
    EXPECT_EQ(memory, Ramp(100));
    EXPECT_EQ(file.Ask(GetPosition), 100u);
    EXPECT_EQ(sim.Input(0, Port::Analog).FramesRecorded, 100u);
}

TEST(SimulatorCapture, DataWithoutABufferIsDropped) {
    Simulator sim({});
    Prepare(0);
    const Recorder recorder(sim);
    const CardFile& file = recorder.File;
    std::vector<Frame> first(100);
    std::vector<Frame> second(50);
    ASSERT_EQ(file.Queue(first, 1), ERROR_SUCCESS);
    file.Start();
    sim.Advance(10000);  // 441 ticks; the room ended at tick 101
    EXPECT_EQ(file.Ask(GetPosition), 100u);
    ASSERT_EQ(file.Queue(second, 2), ERROR_SUCCESS);
    sim.Advance(10000);
    EXPECT_EQ(file.Ask(GetPosition), 100u) << "the transfer is off";
    EXPECT_EQ(sim.Input(0, Port::Analog).FramesDropped, 0u) << "nothing has followed yet";
    ASSERT_EQ(file.Request(StartTransfer), ERROR_SUCCESS);
    sim.Advance(10000);
    EXPECT_EQ(file.Ask(GetPosition), 150u);
    EXPECT_EQ(sim.Input(0, Port::Analog).FramesDropped, 883u - 101u);
    const std::vector<Frame> ramp = Ramp(1000);
    EXPECT_EQ(first, Ramp(100));
    EXPECT_EQ(second, std::vector(ramp.begin() + 882, ramp.begin() + 932)) << "the sound went on meanwhile";

    // What passes after a stop belongs to no recording.
    ASSERT_EQ(file.Request(StopTransfer), ERROR_SUCCESS);
    sim.Advance(10000);
    ASSERT_EQ(file.Queue(first, 3), ERROR_SUCCESS);
    ASSERT_EQ(file.Request(StartTransfer), ERROR_SUCCESS);
    sim.Advance(10000);
    EXPECT_EQ(sim.Input(0, Port::Analog).FramesRecorded, 250u);
    EXPECT_EQ(sim.Input(0, Port::Analog).FramesDropped, 883u - 101u);
}

TEST(SimulatorCapture, ABufferHandedOverAtAnothersEndFollowsWithoutAGap) {
    Simulator sim({});
    Prepare(0);
    const Recorder recorder(sim);
    const CardFile& file = recorder.File;
    std::vector<Frame> frames(4410);
    size_t next = 441;
    const auto hand = [&](size_t at) { return file.Queue(&frames[at], 441 * sizeof(Frame), at); };
    CompletionThread thread(file, [&](ULONG_PTR) {
        if (next < frames.size()) {
            hand(next);
            file.Request(StartTransfer);
            next += 441;
        }
    });
    ASSERT_EQ(hand(0), ERROR_SUCCESS);
    file.Start();
    sim.Advance(110000);
    EXPECT_EQ(frames, Ramp(4410));
    const InputStatus status = sim.Input(0, Port::Analog);
    EXPECT_EQ(status.StartFrame, 1u);
    EXPECT_EQ(status.FramesRecorded, 4410u);
    EXPECT_EQ(status.FramesDropped, 0u);
    EXPECT_EQ(status.MostInFlight, 1u);
    EXPECT_EQ(status.BuffersFinished, 10u);
}

TEST(SimulatorCapture, OneReleaseOfBothHoldsStartsInputsAndOutputsTogether) {
    Simulator sim({.Cards = 2});
    Prepare(0);
    Prepare(1);
    const CardFile card0(0, ControlChannel);
    const CardFile card1(1, ControlChannel);
    card0.WriteCard(32, 0x10, 0x10);
    card1.WriteCard(32, 0x20, 0x60);
    card1.WriteCard(17, 0, 0x80);
    ASSERT_EQ(card1.Send(Stall, 1), ERROR_SUCCESS);
    card1.WriteCard(17, 0x80, 0x80);
    card0.WriteCard(36, 3);

    std::vector<std::unique_ptr<CardFile>> files;
    std::vector<std::vector<Frame>> memory(8, std::vector<Frame>(10000));
    for (unsigned card = 0; card < 2; ++card) {
        for (const uint32_t channel : {AnalogIn, DigitalIn, AnalogOut, DigitalOut}) {
            files.push_back(std::make_unique<CardFile>(card, channel));
            files.back()->WritePort(0, 0xC2);
            ASSERT_EQ(files.back()->Queue(memory[files.size() - 1], 1), ERROR_SUCCESS);
            files.back()->Start();
            sim.Advance(777);
        }
    }
    for (const Port port : {Port::Analog, Port::Digital}) {
        EXPECT_FALSE(sim.Input(1, port).Started);
        EXPECT_FALSE(sim.Output(0, port).Started);
    }
    const uint64_t now = sim.ClockFrame(0);
    card0.WriteCard(36, 0, 3);
    sim.Advance(10000);
    for (unsigned card = 0; card < 2; ++card) {
        for (const Port port : {Port::Analog, Port::Digital}) {
            EXPECT_EQ(sim.Input(card, port).StartFrame, now + 1);
            EXPECT_EQ(sim.Output(card, port).StartFrame, now + 1);
            EXPECT_EQ(sim.Input(card, port).FramesRecorded, sim.Output(card, port).FramesPlayed);
        }
    }
}

}  // namespace
}  // namespace simulator_tests
