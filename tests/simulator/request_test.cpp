// What a kernel driver refuses: buffers of a wrong size, a file in the wrong state, what the card does not
// have.
#include <gtest/gtest.h>

#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

constexpr uint32_t DigitalIn = 1;
constexpr uint32_t AnalogOut = 2;

TEST(SimulatorRequest, BuffersOfAnyOtherSizeAreRefused) {
    Simulator sim({});
    const CardFile file(0, AnalogOut);
    const std::vector<uint8_t> access = {32, 0, 0, 0, 8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    const struct {
        uint32_t Code;
        std::vector<uint8_t> Input;
        size_t Output;
    } shapes[] = {
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
        {simulator::ReadRegister, access, 4},
        {simulator::WriteRegister, access, 0},
        {SoftReset, {}, 0},
        {ReleaseChannel, {}, 0},
    };
    for (const auto& shape : shapes) {
        SCOPED_TRACE(RequestName(shape.Code));
        const auto request = [&](size_t input, size_t output) {
            std::vector<uint8_t> in = shape.Input;
            std::vector<uint8_t> out(output);
            in.resize(input);
            return file.Request(shape.Code, in, out);
        };
        EXPECT_EQ(request(shape.Input.size() + 1, shape.Output), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(request(shape.Input.size(), shape.Output + 1), ERROR_INVALID_PARAMETER);
        if (!shape.Input.empty()) {
            EXPECT_EQ(request(shape.Input.size() - 1, shape.Output), ERROR_INVALID_PARAMETER);
        }
        if (shape.Output != 0) {
            EXPECT_EQ(request(shape.Input.size(), shape.Output - 1), ERROR_INSUFFICIENT_BUFFER);
        }
    }
    std::vector<uint8_t> path(20);
    EXPECT_EQ(file.Request(GetRegistryPath, {}, path), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(file.Request(0x80002028), ERROR_INVALID_FUNCTION);
}

TEST(SimulatorRequest, NeedsAFileInTheRightStateAndWhatTheCardHas) {
    Simulator sim({});
    const CardFile unbound(0);
    const CardFile control(0, ControlChannel);
    const CardFile digitalIn(0, DigitalIn);
    const CardFile released(0, AnalogOut);
    ASSERT_EQ(released.Request(ReleaseChannel), ERROR_SUCCESS);
    uint32_t value = 0;

    EXPECT_EQ(unbound.Request(ReleaseChannel), ERROR_BAD_COMMAND);
    EXPECT_EQ(unbound.ReadRegister(0, 32, &value), ERROR_BAD_COMMAND);

    EXPECT_EQ(control.Request(ReleaseChannel), ERROR_SUCCESS);
    EXPECT_EQ(control.ReadRegister(1, 0, &value), ERROR_BAD_COMMAND);
    EXPECT_EQ(control.Bind(0, ControlChannel), ERROR_BAD_COMMAND);
    for (const uint32_t code : {AcquireChannel, StartTransfer, ArmChannel, FlushBuffers, BeginBuffer}) {
        EXPECT_EQ(control.Request(code), ERROR_BAD_COMMAND) << RequestName(code);
    }
    for (const uint32_t code : {StartTransfer, StopTransfer, ArmChannel, DisarmChannel, BeginBuffer}) {
        EXPECT_EQ(released.Request(code), ERROR_NOT_READY) << RequestName(code);
    }
    EXPECT_EQ(released.ReadRegister(1, 0, &value), ERROR_NOT_READY);

    EXPECT_EQ(digitalIn.Request(AcquireChannel), ERROR_BUSY) << "it has the channel";
    EXPECT_EQ(digitalIn.ReadRegister(0, 1, &value), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(digitalIn.WriteRegister(0, 200, 0, 0xFF), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(digitalIn.ReadRegister(2, 0, &value), ERROR_INVALID_PARAMETER);
    uint8_t data[16] = {};
    EXPECT_EQ(digitalIn.Request(MapBuffer, {}, data), ERROR_INVALID_PARAMETER) << "no buffer has been begun";
}

}  // namespace
}  // namespace simulator_tests
