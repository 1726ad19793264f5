// The register files: masks, windows, what is where, resets, names.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

TEST(SimulatorRegister, AWriteChangesTheBitsUnderItsMaskThatTheRegisterHas) {
    Simulator sim({});
    const CardFile file(0, ControlChannel);
    file.WriteCard(32, 0x00);
    file.WriteCard(32, 0xFF, 0x11);
    EXPECT_EQ(sim.CardRegister(0, 32), 0x11);
    file.WriteCard(32, 0x60, 0x70);
    EXPECT_EQ(sim.CardRegister(0, 32), 0x61);
    file.WriteCard(32, 0xFF);
    EXPECT_EQ(sim.CardRegister(0, 32), 0x77);
    file.WriteCard(10, 0xFF);
    EXPECT_EQ(sim.CardRegister(0, 10), 0x07);
}

TEST(SimulatorRegister, DataRegistersAreWindowsOnWhatTheIndexSelects) {
    Simulator sim({});
    const CardFile file(0, ControlChannel);
    file.SetGain(5, 100);
    file.SetGain(6, 33);
    file.WriteCard(3, 5);
    uint32_t value = 0;
    ASSERT_EQ(file.ReadRegister(0, 2, &value), ERROR_SUCCESS);
    EXPECT_EQ(value, 100u);
    EXPECT_EQ(sim.MixerGain(0, 5), 100u);
    EXPECT_EQ(sim.MixerGain(0, 6), 33u);

    file.WriteCard(27, 4);
    file.WriteCard(26, 0x00);
    file.WriteCard(26, 0xFF, 0x50);
    EXPECT_EQ(sim.IndirectRegister(0, 4), 0x50);
    EXPECT_EQ(sim.IndirectRegister(0, 3), 0xFF);
}

TEST(SimulatorRegister, WhatTheCardDoesNotHaveIsRefused) {
    Simulator sim({});
    const CardFile digitalIn(0, 1);
    const CardFile analogOut(0, 2);
    uint32_t value = 0;
    EXPECT_EQ(analogOut.ReadRegister(0, 1, &value), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(analogOut.WriteRegister(0, 200, 0, 0xFF), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(analogOut.ReadRegister(2, 0, &value), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(digitalIn.ReadRegister(1, 2, &value), ERROR_SUCCESS);
    EXPECT_EQ(analogOut.ReadRegister(1, 2, &value), ERROR_INVALID_PARAMETER);
    const uint8_t wide[20] = {32, 0, 0, 0, 16};
    uint8_t answer[4];
    EXPECT_EQ(analogOut.Request(simulator::ReadRegister, wide, answer), ERROR_INVALID_PARAMETER);
}

TEST(SimulatorRegister, EachPortHasItsOwn) {
    Simulator sim({});
    const CardFile analogOut(0, 2);
    const CardFile digitalOut(0, 3);
    analogOut.WritePort(0, 0x60);
    digitalOut.WritePort(0, 0xC0);
    EXPECT_EQ(sim.OutputRegister(0, Port::Analog, 0), 0x60);
    EXPECT_EQ(sim.OutputRegister(0, Port::Digital, 0), 0xC0);
    EXPECT_EQ(sim.InputRegister(0, Port::Digital, 0), 0x00);
}

TEST(SimulatorRegister, PowerUpForgetsAllAndASoftResetTheChannels) {
    Simulator sim({});
    Prepare(0);
    const uint8_t prepared = sim.CardRegister(0, 17);
    const CardFile file(0, 2);
    file.WritePort(0, 0xE0);
    file.WriteCard(36, 3);
    ASSERT_EQ(file.Request(SoftReset), ERROR_SUCCESS);
    EXPECT_EQ(sim.OutputRegister(0, Port::Analog, 0), 0);
    EXPECT_EQ(sim.CardRegister(0, 36), 0);
    EXPECT_EQ(sim.CardRegister(0, 17), prepared);
    EXPECT_EQ(sim.MixerGain(0, 0), 0u);

    sim.PowerCycle(0);
    EXPECT_EQ(sim.CardRegister(0, 17), 0x0D);
    EXPECT_EQ(sim.MixerGain(0, 0), 128u);
    EXPECT_EQ(file.Request(StartTransfer), ERROR_NOT_READY);
    EXPECT_TRUE(sim.ChannelClaimed(0, 2));
}

TEST(SimulatorRegister, ViewsNameEveryField) {
    Simulator sim({});
    const CardFile file(0, 3);
    file.WriteCard(32, 0x53);
    file.WritePort(0, 0xA0);
    const std::vector<RegisterView> views = sim.Registers(0);
    const auto field = [&](const std::string& registerFile, unsigned index, const std::string& name) {
        for (const RegisterView& view : views) {
            for (const RegisterField& part : view.Fields) {
                if (view.File == registerFile && view.Index == index && part.Name == name) {
                    return static_cast<int>(part.Value);
                }
            }
        }
        return -1;
    };
    EXPECT_EQ(field("card", 32, "rate code"), 3);
    EXPECT_EQ(field("card", 32, "drive link"), 1);
    EXPECT_EQ(field("card", 32, "source"), 2);
    EXPECT_EQ(field("digital out", 0, "sample format"), 2);
    EXPECT_EQ(field("digital out", 0, "mono"), 1);
    EXPECT_EQ(field("analog out", 0, "mono"), 0);
    const auto indirect = std::count_if(views.begin(), views.end(),
                                        [](const RegisterView& view) { return view.File == "indirect"; });
    EXPECT_EQ(indirect, 16);
}

}  // namespace
}  // namespace simulator_tests
