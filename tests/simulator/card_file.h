// The kernel driver's client in its plainest form: requests on an open device file.
#pragma once

#include <windows.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "simulator/requests/protocol.h"
#include "simulator/simulator.h"

namespace simulator_tests {

// Channels of a card besides simulator::ControlChannel.
enum Channel : uint32_t { AnalogIn, DigitalIn, AnalogOut, DigitalOut };

class CardFile {
public:
    // Opens the card without binding the file.
    explicit CardFile(unsigned card);
    // Opens, binds, and acquires the channel unless it is the control channel.
    CardFile(unsigned card, uint32_t channel);
    ~CardFile() { CloseHandle(handle_); }
    CardFile(const CardFile&) = delete;
    CardFile& operator=(const CardFile&) = delete;

    // The request's result as a system error code.
    DWORD Request(uint32_t code, std::span<const uint8_t> input = {}, std::span<uint8_t> output = {}) const;
    DWORD Send(uint32_t code, uint32_t word) const;
    DWORD Bind(uint32_t ordinal, uint32_t channel) const;
    DWORD WriteRegister(uint32_t space, uint32_t index, uint32_t value, uint32_t mask) const;
    DWORD ReadRegister(uint32_t space, uint32_t index) const;

    // These must succeed.
    void WriteCard(uint32_t index, uint32_t value, uint32_t mask = 0xFF) const;
    void WritePort(uint32_t index, uint32_t value, uint32_t mask = 0xFF) const;
    void SetGain(uint32_t index, uint32_t gain) const;
    bool ReadClockFault() const;
    void Run(std::vector<simulator::Frame>& frames) const;  // plays them, or records into them

private:
    HANDLE handle_;
};

// A write to a card register, and the wait after it in microseconds.
struct Step {
    uint32_t Index, Value, Mask, Wait;
};
void Take(unsigned card, const std::vector<Step>& steps);

// Makes a card audible, on the internal clock at 44100 Hz, but for its gains.
std::vector<Step> Initialisation();
// The same, with every gain 0 but those of each playback into its own connector.
void Prepare(unsigned card);

// Frames that all differ, and their two samples.
std::vector<simulator::Frame> Ramp(size_t frames);

}  // namespace simulator_tests
