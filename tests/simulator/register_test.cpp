// The register files: masks, windows, what is where.
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace simulator_tests
