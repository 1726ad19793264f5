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

}  // namespace simulator
