#include "tests/simulator/card_file.h"

#include <gtest/gtest.h>

#include <cstring>

namespace simulator_tests {

using namespace simulator;

namespace {

template <typename T>
std::span<const uint8_t> BytesOf(const T& value) {
    return {reinterpret_cast<const uint8_t*>(&value), sizeof value};
}

}  // namespace

CardFile::CardFile(unsigned card) {
    std::u16string path = u"\\\\.\\Kestrelvox";
    for (const char digit : std::to_string(card)) {
        path.push_back(static_cast<char16_t>(digit));
    }
    handle_ = CreateFileW(reinterpret_cast<const WCHAR*>(path.c_str()), 0, FILE_SHARE_READ | FILE_SHARE_WRITE,
                          nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
}

CardFile::CardFile(unsigned card, uint32_t channel) : CardFile(card) {
    EXPECT_EQ(Bind(card, channel), ERROR_SUCCESS);
    if (channel != ControlChannel) {
        EXPECT_EQ(Request(AcquireChannel), ERROR_SUCCESS);
    }
}

DWORD CardFile::Request(uint32_t code, std::span<const uint8_t> input, std::span<uint8_t> output,
                        DWORD* returned) const {
    DWORD bytes = 0;
    const BOOL done =
        DeviceIoControl(handle_, code, const_cast<uint8_t*>(input.data()), static_cast<DWORD>(input.size()),
                        output.data(), static_cast<DWORD>(output.size()), &bytes, nullptr);
    if (returned) {
        *returned = bytes;
    }
    return done ? ERROR_SUCCESS : GetLastError();
}

DWORD CardFile::Send(uint32_t code, uint32_t word) const {
    return Request(code, BytesOf(word));
}

uint32_t CardFile::Ask(uint32_t code) const {
    uint8_t bytes[4] = {};
    DWORD returned = 0;
    EXPECT_EQ(Request(code, {}, bytes, &returned), ERROR_SUCCESS);
    EXPECT_EQ(returned, 4u);
    uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

DWORD CardFile::Bind(uint32_t ordinal, uint32_t channel) const {
    return Request(BindHandle, BytesOf(BindRequest{ordinal, channel}));
}

DWORD CardFile::WriteRegister(uint32_t space, uint32_t index, uint32_t value, uint32_t mask) const {
    return Request(simulator::WriteRegister, BytesOf(RegisterRequest{index, 8, space, value, mask}));
}

DWORD CardFile::ReadRegister(uint32_t space, uint32_t index, uint32_t* value) const {
    uint8_t bytes[4] = {};
    const DWORD result =
        Request(simulator::ReadRegister, BytesOf(RegisterRequest{index, 8, space, 0, 0}), bytes);
    std::memcpy(value, bytes, sizeof *value);
    return result;
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

DWORD CardFile::Queue(void* data, size_t length, ULONG_PTR cookie) const {
    DWORD result = Request(BeginBuffer);
    if (result == ERROR_SUCCESS) {
        result = Request(MapBuffer, {}, {static_cast<uint8_t*>(data), length});
    }
    if (result == ERROR_SUCCESS) {
        result = Request(SetBufferCookie, BytesOf(cookie));
    }
    return result == ERROR_SUCCESS ? Send(QueueBuffer, 0) : result;
}

void CardFile::Start() const {
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
