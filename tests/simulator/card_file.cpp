#include "tests/simulator/card_file.h"

#include <gtest/gtest.h>

namespace simulator_tests {

using namespace simulator;

namespace {

template <typename T>
std::span<const uint8_t> BytesOf(const T& value) {
    return {reinterpret_cast<const uint8_t*>(&value), sizeof value};
}

}  // namespace

CardFile::CardFile(unsigned card) {
    WCHAR path[32];
    wsprintfW(path, TEXT("\\\\.\\Kestrelvox%u"), card);
    handle_ = CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
}

CardFile::CardFile(unsigned card, uint32_t channel) : CardFile(card) {
    EXPECT_EQ(Bind(card, channel), ERROR_SUCCESS);
    if (channel != ControlChannel) {
        EXPECT_EQ(Request(AcquireChannel), ERROR_SUCCESS);
    }
}

DWORD CardFile::Request(uint32_t code, std::span<const uint8_t> input, std::span<uint8_t> output) const {
    DWORD returned = 0;
    const BOOL done =
        DeviceIoControl(handle_, code, const_cast<uint8_t*>(input.data()), static_cast<DWORD>(input.size()),
                        output.data(), static_cast<DWORD>(output.size()), &returned, nullptr);
    return done ? ERROR_SUCCESS : GetLastError();
}

DWORD CardFile::Send(uint32_t code, uint32_t word) const {
    return Request(code, BytesOf(word));
}

bool CardFile::ReadClockFault() const {
    uint8_t fault[4] = {};
    EXPECT_EQ(Request(simulator::ReadClockFault, {}, fault), ERROR_SUCCESS);
    return fault[0] != 0;
}

DWORD CardFile::Bind(uint32_t ordinal, uint32_t channel) const {
    return Request(BindHandle, BytesOf(BindRequest{ordinal, channel}));
}

DWORD CardFile::WriteRegister(uint32_t space, uint32_t index, uint32_t value, uint32_t mask) const {
    return Request(simulator::WriteRegister, BytesOf(RegisterRequest{index, 8, space, value, mask}));
}

DWORD CardFile::ReadRegister(uint32_t space, uint32_t index) const {
    uint8_t value[4] = {};
    return Request(simulator::ReadRegister, BytesOf(RegisterRequest{index, 8, space, 0, 0}), value);
}

void CardFile::WriteCard(uint32_t index, uint32_t value, uint32_t mask) const {
    EXPECT_EQ(WriteRegister(0, index, value, mask), ERROR_SUCCESS) << "card register " << index;
}

void CardFile::WritePort(uint32_t index, uint32_t value, uint32_t mask) const {
    EXPECT_EQ(WriteRegister(1, index, value, mask), ERROR_SUCCESS) << "port register " << index;
}

void CardFile::SetGain(uint32_t index, uint32_t gain) const {
    WriteCard(3, index);
    WriteCard(2, gain);
}

void CardFile::Run(std::vector<Frame>& frames) const {
    constexpr ULONG_PTR Cookie = 1;
    const std::span<Frame> all(frames);
    WritePort(0, 0xC0);
    EXPECT_EQ(Request(BeginBuffer), ERROR_SUCCESS);
    EXPECT_EQ(Request(MapBuffer, {}, {reinterpret_cast<uint8_t*>(all.data()), all.size_bytes()}),
              ERROR_SUCCESS);
    EXPECT_EQ(Request(SetBufferCookie, BytesOf(Cookie)), ERROR_SUCCESS);
    EXPECT_EQ(Send(QueueBuffer, 0), ERROR_SUCCESS);
    EXPECT_EQ(Request(StartTransfer), ERROR_SUCCESS);
    EXPECT_EQ(Request(ArmChannel), ERROR_SUCCESS);
}

std::vector<Step> Initialisation() {
    return {{32, 0x03, 0x77, 0},    {0, 0x10, 0x13, 10000}, {0, 0x00, 0x10, 100000}, {0, 0x04, 0x04, 1000},
            {0, 0x00, 0x04, 92971}, {25, 0x00, 0x01, 1},    {25, 0x01, 0x01, 0},     {17, 0x02, 0x0E, 0},
            {17, 0x00, 0x80, 1},    {17, 0x80, 0x80, 0},    {16, 0x00, 0x03, 0},     {24, 0x00, 0x03, 0},
            {17, 0x00, 0x01, 0}};
}

void Take(unsigned card, const std::vector<Step>& steps) {
    const CardFile control(card, ControlChannel);
    for (const Step& step : steps) {
        control.WriteCard(step.Index, step.Value, step.Mask);
        EXPECT_EQ(control.Send(Stall, step.Wait), ERROR_SUCCESS);
    }
}

void Prepare(unsigned card) {
    Take(card, Initialisation());
    const CardFile control(card, ControlChannel);
    for (uint32_t gain = 0; gain < 8; ++gain) {
        control.SetGain(gain, gain == 2 || gain == 7 ? 128 : 0);
    }
}

std::vector<Frame> Ramp(size_t frames) {
    std::vector<Frame> ramp(frames);
    for (size_t i = 0; i < frames; ++i) {
        ramp[i] = {static_cast<int32_t>(i + 1) * 256, -static_cast<int32_t>(i + 1) * 512};
    }
    return ramp;
}

}  // namespace simulator_tests
