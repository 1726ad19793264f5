// What a card does not forgive: a pulse that is left out, too short or out of order leaves a connector
// silent.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

// Of an initialisation.
enum StepNumber {
    CalibrateOn = 1,
    CalibrateOff,
    RestartOn,
    RestartOff,
    TransmitOff,
    TransmitOn,
    Mode,
    ResyncOn,
    ResyncOff
};

// Which connectors sound: analog input, analog output, digital output.
std::string Sounding(Simulator& sim) {
    for (uint32_t gain = 0; gain < 8; ++gain) {
        CardFile(0, ControlChannel).SetGain(gain, gain == 2 || gain == 7 ? 128 : 0);
    }
    sim.PlugIn(0, Port::Analog, InputSignal::Run(Ramp(200)));
    const CardFile in(0, AnalogIn);
    const CardFile analog(0, AnalogOut);
    const CardFile digital(0, DigitalOut);
    std::vector<Frame> recorded(400);
    std::vector<Frame> played = Ramp(200);
    in.Run(recorded);
    analog.Run(played);
    digital.Run(played);
    sim.Advance(20000);
    const auto letter = [](char connector, const std::vector<Frame>& frames) {
        return std::ranges::any_of(frames, [](const Frame& f) { return f.Left != 0; }) ? connector : '-';
    };
    return {letter('i', recorded), letter('a', sim.Heard(0, Port::Analog)),
            letter('d', sim.Heard(0, Port::Digital))};
}

std::string SoundingAfter(const std::vector<Step>& steps) {
    Simulator sim({});
    sim.KeepAudio();
    Take(0, steps);
    return Sounding(sim);
}

TEST(SimulatorPulse, LeftOutShortOrOutOfOrderLeavesAConnectorSilent) {
    EXPECT_EQ(SoundingAfter(Initialisation()), "iad");
    const struct {
        StepNumber Step;
        const char* LeftOut;
        const char* WithoutItsWait;
    } cases[] = {
        {CalibrateOn, "-ad", "-ad"}, {CalibrateOff, "-ad", "-ad"}, {RestartOn, "---", "---"},
        {RestartOff, "---", "-ad"},  {TransmitOff, "ia-", "ia-"},  {TransmitOn, "ia-", "iad"},
        {Mode, "i-d", "iad"},        {ResyncOn, "---", "---"},     {ResyncOff, "---", "iad"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.Step);
        std::vector<Step> steps = Initialisation();
        steps[test.Step].Wait = 0;
        EXPECT_EQ(SoundingAfter(steps), test.WithoutItsWait);
        steps = Initialisation();
        steps.erase(steps.begin() + test.Step);
        EXPECT_EQ(SoundingAfter(steps), test.LeftOut);
    }
    std::vector<Step> steps = Initialisation();
    std::rotate(steps.begin() + CalibrateOn, steps.begin() + RestartOn, steps.begin() + TransmitOff);
    EXPECT_EQ(SoundingAfter(steps), "-ad") << "restarted before it is calibrated";
}

TEST(SimulatorPulse, AClockThatHasChangedSoundsAfterTheNextOnes) {
    Simulator sim({});
    sim.KeepAudio();
    Prepare(0);
    CardFile(0, ControlChannel).WriteCard(32, 0x02, 0x07);
    EXPECT_EQ(Sounding(sim), "---");
    Take(0, {{0, 0x04, 0x04, 1000}, {0, 0x00, 0x04, 92971}, {17, 0x00, 0x80, 1}, {17, 0x80, 0x80, 0}});
    EXPECT_EQ(Sounding(sim), "iad");
}

TEST(SimulatorPulse, ConvertersThatAPortHasRestartedHaveToSettle) {
    Simulator sim({});
    sim.KeepAudio();
    Prepare(0);
    {
        const CardFile file(0, AnalogOut);
        file.WritePort(0, 0x04, 0x04);
        file.Send(Stall, 1000);
        file.WritePort(0, 0x00, 0x04);
        file.WriteCard(17, 0x00, 0x80);
        file.Send(Stall, 1);
        file.WriteCard(17, 0x80, 0x80);
    }
    constexpr int64_t Settle = 4100LL * 1000000 / 44100 + 450000;
    sim.Advance(Settle - 20000);
    EXPECT_EQ(Sounding(sim), "---");
    sim.Advance(20000);
    EXPECT_EQ(Sounding(sim), "iad");
}

// What no correct driver does ends the program, in a strict simulator.
TEST(SimulatorRuleDeathTest, EachIsNamed) {
    Simulator sim({.Strict = true});
    Prepare(0);
    const CardFile file(0, AnalogOut);
    EXPECT_DEATH(file.Request(ArmChannel), "arms a channel whose transfer it has not started");
    EXPECT_DEATH(file.WriteCard(36, 0, 0x01), "releases a start hold that was never set");
    file.WriteCard(9, 0x80, 0x80);
    sim.Advance(100);
    file.WriteCard(9, 0x00, 0x80);
    EXPECT_DEATH(file.ReadRegister(0, 10), "reads a measurement that is not finished");
    std::vector<Frame> samples = Ramp(4000);
    file.Run(samples);
    sim.Advance(10000);
    EXPECT_DEATH(file.WriteCard(32, 0x02, 0x07), "changes the clock while samples move");
}

TEST(SimulatorRuleDeathTest, AFailureIsAnExcuseUntilEveryChannelIsFree) {
    Simulator sim({.Cards = 2, .Strict = true});
    sim.AddFault({.Code = Stall});
    {
        const CardFile other(1, AnalogOut);
        {
            const CardFile file(0, AnalogOut);
            EXPECT_NE(file.Send(Stall, 1), DWORD{ERROR_SUCCESS});
        }
        const CardFile file(0, AnalogOut);
        file.Request(ArmChannel);
    }
    const CardFile file(0, AnalogOut);
    EXPECT_DEATH(file.Request(ArmChannel), "arms a channel whose transfer it has not started");
}

}  // namespace
}  // namespace simulator_tests
