// What a kernel driver refuses: buffers of a wrong size, a file in the wrong state, what the card does not
// have.
#include <gtest/gtest.h>

#include "simulator/requests/requests.h"
#include "tests/simulator/card_file.h"

namespace simulator_tests {
namespace {

using namespace simulator;

TEST(SimulatorRequest, BuffersOfAnyOtherSizeAreRefused) {
    Simulator sim({});
    const CardFile unbound(0);
    const CardFile acquired(0, AnalogOut);
    for (const RequestDefinition& row : RequestTable()) {
        SCOPED_TRACE(row.Name);
        const CardFile& file = row.Needs == FileState::Unbound ? unbound : acquired;
        const auto request = [&](size_t input, size_t output) {
            std::vector<uint8_t> out(output);
            return file.Request(row.Code, std::vector<uint8_t>(input), out);
        };
        const size_t output = row.OutputLength == AnyLength ? 0 : row.OutputLength;
        EXPECT_EQ(request(row.InputLength + 1, output), ERROR_INVALID_PARAMETER);
        if (row.InputLength != 0) {
            EXPECT_EQ(request(row.InputLength - 1, output), ERROR_INVALID_PARAMETER);
        }
        if (row.OutputLength != AnyLength) {
            EXPECT_EQ(request(row.InputLength, output + 1), ERROR_INVALID_PARAMETER);
        }
        if (output != 0) {
            EXPECT_EQ(request(row.InputLength, output - 1), ERROR_INSUFFICIENT_BUFFER);
        }
    }
    std::vector<uint8_t> path(20);
    EXPECT_EQ(acquired.Request(GetRegistryPath, {}, path), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(acquired.Request(0x80002028), ERROR_INVALID_FUNCTION);
}

TEST(SimulatorRequest, NeedsAFileInTheRightStateAndWhatTheCardHas) {
    Simulator sim({});
    const CardFile unbound(0);
    const CardFile control(0, ControlChannel);
    const CardFile digitalIn(0, DigitalIn);
    const CardFile released(0, AnalogOut);
    ASSERT_EQ(released.Request(ReleaseChannel), ERROR_SUCCESS);

    EXPECT_EQ(unbound.Request(ReleaseChannel), ERROR_BAD_COMMAND);
    EXPECT_EQ(unbound.ReadRegister(0, 32), ERROR_BAD_COMMAND);

    EXPECT_EQ(control.Request(ReleaseChannel), ERROR_SUCCESS);
    EXPECT_EQ(control.ReadRegister(1, 0), ERROR_BAD_COMMAND);
    EXPECT_EQ(control.Bind(0, ControlChannel), ERROR_BAD_COMMAND);
    for (const uint32_t code : {AcquireChannel, StartTransfer, ArmChannel, FlushBuffers, BeginBuffer}) {
        EXPECT_EQ(control.Request(code), ERROR_BAD_COMMAND) << RequestName(code);
    }
    for (const uint32_t code : {StartTransfer, StopTransfer, ArmChannel, DisarmChannel, BeginBuffer}) {
        EXPECT_EQ(released.Request(code), ERROR_NOT_READY) << RequestName(code);
    }
    EXPECT_EQ(released.ReadRegister(1, 0), ERROR_NOT_READY);

    EXPECT_EQ(digitalIn.Request(AcquireChannel), ERROR_BUSY) << "it has the channel";
    EXPECT_EQ(digitalIn.ReadRegister(0, 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(digitalIn.WriteRegister(0, 200, 0, 0xFF), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(digitalIn.ReadRegister(2, 0), ERROR_INVALID_PARAMETER);
    uint8_t data[16] = {};
    EXPECT_EQ(digitalIn.Request(MapBuffer, {}, data), ERROR_INVALID_PARAMETER) << "no buffer has been begun";
}

}  // namespace
}  // namespace simulator_tests
