// The request protocol: sizes, states, claims, the order of a hand-over, faults.
#include <gtest/gtest.h>

#include <numeric>

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

TEST(SimulatorRequest, AChannelBelongsToOneFileUntilItCloses) {
    Simulator sim({.Cards = 2});
    CardFile first(0, AnalogOut);
    CardFile second(0);
    EXPECT_EQ(second.Bind(1, AnalogOut), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(second.Bind(0, 4), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(second.Bind(0, AnalogOut), ERROR_BUSY);
    EXPECT_TRUE(sim.ChannelClaimed(0, AnalogOut));
    EXPECT_FALSE(sim.ChannelClaimed(1, AnalogOut));

    ASSERT_EQ(first.Request(ReleaseChannel), ERROR_SUCCESS);
    EXPECT_EQ(second.Bind(0, AnalogOut), ERROR_BUSY);
    first.Close();
    EXPECT_FALSE(sim.ChannelClaimed(0, AnalogOut));
    EXPECT_EQ(second.Bind(0, AnalogOut), ERROR_SUCCESS);
    EXPECT_EQ(sim.OpenFiles(), 1u);
}

TEST(SimulatorRequest, OnlyCardsThatAreThereCanBeOpened) {
    Simulator sim({.Cards = 2});
    EXPECT_FALSE(CardFile(2).IsOpen());
    const CardFile open(1, ControlChannel);
    sim.SetPresent(1, false);
    EXPECT_FALSE(CardFile(1).IsOpen());
    uint32_t value = 0;
    EXPECT_EQ(open.ReadRegister(0, 32, &value), ERROR_DEV_NOT_EXIST);
    sim.SetPresent(1, true);
    EXPECT_EQ(open.ReadRegister(0, 32, &value), ERROR_SUCCESS);
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

TEST(SimulatorRequest, IdentityIsReadFromTheCard) {
    Simulator sim({.Cards = 2});
    const CardFile file(1, ControlChannel);
    std::vector<uint8_t> page(128);
    const uint8_t identity[4] = {0x80, 0xFF};
    const uint8_t version[4] = {0x00, 0xFF};
    ASSERT_EQ(file.Request(ReadNvramPage, identity, page), ERROR_SUCCESS);
    const auto word = [&](size_t k) { return static_cast<unsigned>(page[2 * k] << 8 | page[2 * k + 1]); };
    unsigned sum = 0;
    for (size_t k = 0; k < 64; ++k) {
        sum += word(k);
    }
    EXPECT_EQ(sum % 0x10000, 0xFFFFu);
    EXPECT_EQ(page[5], 'B');
    EXPECT_EQ(word(3), 3u);
    EXPECT_EQ(word(4), 7u);
    EXPECT_EQ(word(5), 12346u);

    ASSERT_EQ(file.Request(ReadNvramPage, version, page), ERROR_SUCCESS);
    EXPECT_EQ(std::vector(page.begin() + 122, page.begin() + 126), (std::vector<uint8_t>{1, 2, 0, 37}));

    std::vector<uint8_t> path(512);
    DWORD returned = 0;
    ASSERT_EQ(file.Request(GetRegistryPath, {}, path, &returned), ERROR_SUCCESS);
    const auto* text = reinterpret_cast<const char16_t*>(path.data());
    EXPECT_EQ(std::u16string(text), u"System\\CurrentControlSet\\Services\\Kestrelvox\\Device1");
    EXPECT_EQ(returned, 2 * (std::u16string(text).size() + 1));
}

TEST(SimulatorRequest, OnlyWhatADeviceLetsBeWrittenChangesInConfigurationSpace) {
    Simulator sim({});
    const CardFile file(0, ControlChannel);
    const auto read = [&](uint8_t offset, size_t size) {
        std::vector<uint8_t> bytes(size);
        const uint8_t input[4] = {offset};
        EXPECT_EQ(file.Request(ReadPciConfig, input, bytes), ERROR_SUCCESS);
        return bytes;
    };
    const auto write = [&](uint8_t offset, std::vector<uint8_t> bytes) {
        const uint8_t input[4] = {offset};
        return file.Request(WritePciConfig, input, bytes);
    };
    const std::vector<uint8_t> ids = read(0x00, 4);
    EXPECT_EQ(write(0x00, {1, 2, 3, 4}), ERROR_SUCCESS);
    EXPECT_EQ(read(0x00, 4), ids);
    EXPECT_EQ(write(0x0D, {0x20}), ERROR_SUCCESS);
    EXPECT_EQ(read(0x0D, 1), std::vector<uint8_t>{0x20});
    EXPECT_EQ(write(0x10, {0xFF, 0xFF, 0xFF, 0xFF}), ERROR_SUCCESS);
    EXPECT_EQ(read(0x10, 4), (std::vector<uint8_t>{0, 0, 0xFF, 0xFF}));
    EXPECT_EQ(read(0x08, 1), std::vector<uint8_t>{1});
    std::vector<uint8_t> three(3);
    const uint8_t start[4] = {};
    EXPECT_EQ(file.Request(ReadPciConfig, start, three), ERROR_INVALID_PARAMETER);
    const uint8_t last[4] = {0xFF};
    EXPECT_EQ(file.Request(ReadPciConfig, last, {three.data(), 2}), ERROR_INVALID_PARAMETER);
}

TEST(SimulatorRequest, FaultsStrikeTheRequestTheyCountTo) {
    Simulator sim({});
    const CardFile file(0, ControlChannel);
    uint32_t value = 0;

    sim.AddFault({.What = Fault::Kind::Fail, .Code = simulator::WriteRegister, .Nth = 2, .Error = 23});
    EXPECT_EQ(file.WriteRegister(0, 3, 1, 7), ERROR_SUCCESS);
    EXPECT_EQ(file.ReadRegister(0, 3, &value), ERROR_SUCCESS);
    EXPECT_EQ(file.WriteRegister(0, 3, 2, 7), ERROR_CRC);
    EXPECT_EQ(sim.CardRegister(0, 3), 1);
    EXPECT_EQ(file.WriteRegister(0, 3, 3, 7), ERROR_SUCCESS);

    sim.AddFault({.What = Fault::Kind::Pend, .Code = simulator::WriteRegister});
    EXPECT_EQ(file.WriteRegister(0, 3, 4, 7), ERROR_IO_PENDING);
    EXPECT_EQ(sim.CardRegister(0, 3), 4);

    sim.AddFault({.What = Fault::Kind::Short, .Code = ReadClockFault, .Nth = 0});
    uint8_t word[4];
    for (int i = 0; i < 2; ++i) {
        DWORD returned = 0;
        EXPECT_EQ(file.Request(ReadClockFault, {}, word, &returned), ERROR_SUCCESS);
        EXPECT_EQ(returned, 3u);
    }
    sim.ClearFaults();
    EXPECT_EQ(file.Ask(ReadClockFault), 0u);
}

}  // namespace
}  // namespace simulator_tests
