// What cables bring to the inputs: sound, and a clock.
#include <gtest/gtest.h>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogIn = 0;
constexpr uint32_t DigitalIn = 1;
constexpr uint32_t AnalogOut = 2;
constexpr uint32_t DigitalOut = 3;

std::vector<Frame> Slice(const std::vector<Frame>& frames, uint64_t from, uint64_t count) {
    const auto begin = frames.begin() + static_cast<std::ptrdiff_t>(from);
    return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

// A channel with one buffer of 32-bit stereo frames.
struct Channel {
    Channel(unsigned card, uint32_t channel, std::vector<Frame> frames)
        : File(card, channel), Samples(std::move(frames)) {
        File.WritePort(0, 0xC0);
        EXPECT_EQ(File.Queue(Samples, 1), ERROR_SUCCESS);
    }
    CardFile File;
    std::vector<Frame> Samples;
};

// The card's digital input passes on what arrives, and its digital output sends.
void OpenDigital(Simulator& sim, const CardFile& port) {
    port.WritePort(1, 0, 1);
    port.WriteCard(25, 1, 1);
    sim.Advance(50000);
}

void FollowDigitalInput(const CardFile& port) {
    port.WriteCard(9, 0, 3);
    port.WriteCard(32, 0x40, 0x60);
}

TEST(SimulatorInput, ACableCarriesWhatTheOutputHearsAtThatFrame) {
    for (const unsigned receiver : {0u, 1u}) {
        SCOPED_TRACE(receiver);
        Simulator sim({.Cards = 2});
        sim.KeepAudio();
        Prepare(0);
        Prepare(1);
        const CardFile card0(0, ControlChannel);
        card0.WriteCard(32, 0x10, 0x10);
        CardFile(1, ControlChannel).WriteCard(32, 0x20, 0x60);
        Resynchronise(1);
        sim.PlugIn(receiver, Port::Analog, InputSignal::Cable(0, Port::Analog));
        Channel input(receiver, AnalogIn, std::vector<Frame>(4000));
        Channel output(0, AnalogOut, Ramp(2000));
        input.File.Start();
        sim.Advance(7777);
        output.File.Start();
        sim.Advance(15000);
        card0.SetGain(2, 64);
        const auto halved = static_cast<size_t>(sim.Output(0, Port::Analog).FramesPlayed);
        sim.Advance(100000);

        // A follower whose clock has changed while it was not held counts late.
        const uint64_t lag = sim.ClockFrame(0) - sim.ClockFrame(receiver);
        const auto apart = static_cast<size_t>(sim.Output(0, Port::Analog).StartFrame -
                                               sim.Input(receiver, Port::Analog).StartFrame);
        EXPECT_EQ(lag != 0, receiver == 1);
        EXPECT_EQ(Slice(input.Samples, 0, apart), std::vector<Frame>(apart));
        EXPECT_EQ(Slice(input.Samples, apart, 2000), sim.Heard(0, Port::Analog));
        EXPECT_EQ(input.Samples[apart + halved - 1], output.Samples[halved - 1]);
        EXPECT_EQ(input.Samples[apart + halved].Left, output.Samples[halved].Left / 2);
        EXPECT_EQ(Slice(input.Samples, apart + 2000, 1000), std::vector<Frame>(1000));
    }
}

TEST(SimulatorInput, ACableBetweenClocksGoesByTime) {
    Simulator sim({.Cards = 2});
    Prepare(0, 2);  // 48000 Hz
    Prepare(1, 6);  // 8000 Hz
    sim.PlugIn(1, Port::Analog, InputSignal::Cable(0, Port::Analog));
    sim.PlugIn(0, Port::Analog, InputSignal::Cable(1, Port::Analog));
    Channel inputs[] = {{0, AnalogIn, std::vector<Frame>(8000)}, {1, AnalogIn, std::vector<Frame>(2000)}};
    Channel outputs[] = {{0, AnalogOut, Ramp(8000)}, {1, AnalogOut, Ramp(2000)}};
    for (const Channel* channel : {&inputs[0], &inputs[1], &outputs[0], &outputs[1]}) {
        channel->File.Start();
    }
    sim.Advance(150000);
    for (size_t i = 20; i < 1000; ++i) {
        ASSERT_NEAR(inputs[1].Samples[i].Left / 256.0, static_cast<double>(i) * 6, 14) << i;
        ASSERT_NEAR(inputs[0].Samples[6 * i].Left / 256.0, static_cast<double>(i), 2.4) << i;
    }
}

TEST(SimulatorInput, CablesPassThroughMonitorsButNotInCircles) {
    Simulator sim({.Cards = 3});
    sim.KeepAudio();
    for (unsigned card = 0; card < 3; ++card) {
        Prepare(card);
        CardFile(card, ControlChannel).SetGain(0, 128);
    }
    sim.PlugIn(0, Port::Analog, InputSignal::Cable(2, Port::Analog));
    sim.PlugIn(1, Port::Analog, InputSignal::Cable(0, Port::Analog));
    sim.PlugIn(2, Port::Analog, InputSignal::Cable(1, Port::Analog));
    Channel input(2, AnalogIn, std::vector<Frame>(800));
    Channel output(0, AnalogOut, Ramp(400));
    input.File.Start();
    output.File.Start();
    sim.Advance(30000);
    std::vector<Frame> once = Ramp(400);
    once.resize(800);
    EXPECT_EQ(input.Samples, once);
    EXPECT_EQ(sim.Heard(0, Port::Analog), Ramp(400));
}

TEST(SimulatorInput, ACardRunsOnTheClockThatADigitalCableBrings) {
    Simulator sim({.Cards = 2});
    Prepare(0);
    Prepare(1, 2);
    sim.SetDrift(0, 123);
    sim.PlugIn(1, Port::Digital, InputSignal::Cable(0, Port::Digital));
    CardFile(0, ControlChannel).WriteCard(25, 1, 1);
    Channel input(1, DigitalIn, std::vector<Frame>(10000));
    OpenDigital(sim, input.File);
    FollowDigitalInput(input.File);
    sim.Advance(60000);
    EXPECT_EQ(sim.SampleRate(1), 44100u);
    Channel output(0, DigitalOut, Ramp(5000));
    input.File.Start();
    sim.Advance(3333);
    output.File.Start();
    sim.Advance(200000);
    const uint64_t apart = sim.Output(0, Port::Digital).StartFrame - sim.Input(1, Port::Digital).StartFrame;
    EXPECT_EQ(Slice(input.Samples, apart, 5000), Ramp(5000)) << "no frame slips";

    // The signal is lost with the transmitter, and the clock with it.
    CardFile(0, ControlChannel).WriteCard(25, 0, 1);
    EXPECT_EQ(sim.SampleRate(1), 0u);
    const uint32_t position = input.File.Ask(GetPosition);
    sim.Advance(10000);
    EXPECT_EQ(input.File.Ask(GetPosition), position);
    EXPECT_EQ(input.File.Ask(ReadClockFault), 1u);
    CardFile(0, ControlChannel).WriteCard(25, 1, 1);
    EXPECT_EQ(sim.SampleRate(1), 44100u);

    // Two cards that run on each other's clock have none.
    sim.PlugIn(0, Port::Digital, InputSignal::Cable(1, Port::Digital));
    const CardFile port(0, DigitalIn);
    OpenDigital(sim, port);
    FollowDigitalInput(port);
    sim.Advance(60000);
    EXPECT_EQ(sim.SampleRate(0), 0u);
    EXPECT_EQ(sim.SampleRate(1), 0u);
}

}  // namespace
}  // namespace simulator_tests
