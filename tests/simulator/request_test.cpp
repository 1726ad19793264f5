// The request protocol: sizes, states, the order of a hand-over, registers and their masks.
#include <gtest/gtest.h>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t AnalogOut = 2;

struct Shape {
    uint32_t Code;
    std::vector<uint8_t> Input;
    size_t Output;
};

const std::vector<Shape>& SizedRequests() {
    static const std::vector<Shape> shapes = {
        {StartTransfer, {}, 0},
        {StopTransfer, {}, 0},
        {FlushBuffers, {}, 0},
        {GetPosition, {}, 4},
        {DisarmChannel, {}, 0},
        {ArmChannel, {}, 0},
        {SetCompletionRoutine, std::vector<uint8_t>(sizeof(ULONG_PTR)), 0},
        {Stall, {1, 0, 0, 0}, 0},
        {ReadClockFault, {}, 4},
        {ReadNvramPage, {0x80, 0xFF, 0, 0}, 128},
        {AcquireChannel, {}, 0},
        {simulator::ReadRegister, {32, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 4},
        {simulator::WriteRegister, {32, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 0},
        {SoftReset, {}, 0},
        {ReleaseChannel, {}, 0},
    };
    return shapes;
}

TEST(SimulatorRequest, BuffersOfAnyOtherSizeAreRefused) {
    Simulator sim({});
    CardFile file(0, AnalogOut);
    std::vector<uint8_t> output(256);
    for (const Shape& shape : SizedRequests()) {
        SCOPED_TRACE(RequestName(shape.Code));
        std::vector<uint8_t> longer = shape.Input;
        longer.push_back(0);
        EXPECT_EQ(file.Request(shape.Code, longer, {output.data(), shape.Output}), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(file.Request(shape.Code, shape.Input, {output.data(), shape.Output + 1}),
                  ERROR_INVALID_PARAMETER);
        if (!shape.Input.empty()) {
            longer.resize(shape.Input.size() - 1);
            EXPECT_EQ(file.Request(shape.Code, longer, {output.data(), shape.Output}),
                      ERROR_INVALID_PARAMETER);
        }
        if (shape.Output != 0) {
            EXPECT_EQ(file.Request(shape.Code, shape.Input, {output.data(), shape.Output - 1}),
                      ERROR_INSUFFICIENT_BUFFER);
        }
        DWORD returned = 0;
        if (shape.Code == AcquireChannel) {
            EXPECT_EQ(file.Request(AcquireChannel), ERROR_BUSY) << "it has the channel";
            EXPECT_EQ(file.Request(ReleaseChannel), ERROR_SUCCESS);
        }
        EXPECT_EQ(file.Request(shape.Code, shape.Input, {output.data(), shape.Output}, &returned),
                  ERROR_SUCCESS);
        EXPECT_EQ(returned, shape.Output);
    }
    EXPECT_EQ(file.Request(0x80002028), ERROR_INVALID_FUNCTION);
    EXPECT_EQ(file.Request(GetRegistryPath, {}, {output.data(), 20}), ERROR_INSUFFICIENT_BUFFER);
}

TEST(SimulatorRequest, NeedsAFileInTheRightState) {
    Simulator sim({});
    const CardFile unbound(0);
    const CardFile control(0, ControlChannel);
    const CardFile released(0, AnalogOut);
    ASSERT_EQ(released.Request(ReleaseChannel), ERROR_SUCCESS);
    uint32_t value = 0;

    EXPECT_EQ(unbound.Request(ReleaseChannel), ERROR_BAD_COMMAND);
    EXPECT_EQ(unbound.ReadRegister(0, 32, &value), ERROR_BAD_COMMAND);

    EXPECT_EQ(control.Request(ReleaseChannel), ERROR_SUCCESS);
    EXPECT_EQ(control.ReadRegister(0, 32, &value), ERROR_SUCCESS);
    EXPECT_EQ(control.ReadRegister(1, 0, &value), ERROR_BAD_COMMAND);
    EXPECT_EQ(control.Bind(0, ControlChannel), ERROR_BAD_COMMAND);
    for (const uint32_t code : {AcquireChannel, StartTransfer, ArmChannel, FlushBuffers, BeginBuffer}) {
        EXPECT_EQ(control.Request(code), ERROR_BAD_COMMAND) << RequestName(code);
    }

    for (const uint32_t code : {StartTransfer, StopTransfer, ArmChannel, DisarmChannel, BeginBuffer}) {
        EXPECT_EQ(released.Request(code), ERROR_NOT_READY) << RequestName(code);
    }
    EXPECT_EQ(released.ReadRegister(1, 0, &value), ERROR_NOT_READY);
    EXPECT_EQ(released.Ask(GetPosition), 0u);
    EXPECT_EQ(released.Request(AcquireChannel), ERROR_SUCCESS);
    EXPECT_EQ(released.ReadRegister(1, 0, &value), ERROR_SUCCESS);
}

TEST(SimulatorRequest, AHandOverIsFourRequestsInOrder) {
    Simulator sim({});
    const CardFile file(0, AnalogOut);
    uint8_t data[16] = {};
    const uint8_t cookie[sizeof(ULONG_PTR)] = {1};
    const auto send = [&](char step) {
        switch (step) {
        case 'b':
            return file.Request(BeginBuffer);
        case 'm':
            return file.Request(MapBuffer, {}, data);
        case 'c':
            return file.Request(SetBufferCookie, cookie);
        default:
            return file.Send(QueueBuffer, 0);
        }
    };
    // Each sequence queues a buffer exactly when it ends in the four in their order.
    const std::pair<std::string, unsigned> sequences[] = {{"bmcq", 1},  {"mcq", 0},   {"bcmq", 0},
                                                          {"bmq", 0},   {"bmqcq", 0}, {"bmbmcq", 1},
                                                          {"bmcqq", 1}, {"bmmcq", 0}};
    for (const auto& [sequence, queued] : sequences) {
        const unsigned before = sim.Output(0, Port::Analog).BuffersInFlight;
        for (const char step : sequence) {
            send(step);
        }
        EXPECT_EQ(sim.Output(0, Port::Analog).BuffersInFlight - before, queued) << sequence;
    }
    ASSERT_EQ(file.Request(BeginBuffer), ERROR_SUCCESS);
    EXPECT_EQ(file.Request(MapBuffer), ERROR_INVALID_PARAMETER);
}

// --- registers ---------------------------------------------------------------------------------

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
