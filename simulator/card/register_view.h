// The registers of a card for people to read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

// A register as the card holds it, with the name of each of its fields.
struct RegisterField {
    std::string Name;
    unsigned Value;
};
struct RegisterView {
    // "card", "analog in", "digital in", "analog out", "digital out", "indirect" (the channel status
    // of the digital output), "mixer" (the eight gains)
    std::string File;
    unsigned Index;
    std::string Name;
    uint8_t Value;
    std::vector<RegisterField> Fields;
};

// What a write with that mask says, for example "clock select: rate code=2, source=0": the fields in the
// mask, or the value of a register that has none. `channel` is that of a port's register, ControlChannel for
// the card's. Empty when there is no such register.
std::string DescribeWrite(uint32_t channel, uint32_t index, uint8_t value, uint8_t mask);

}  // namespace simulator
