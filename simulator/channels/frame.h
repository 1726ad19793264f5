// Sound as the simulator's own parts and its users hand it to each other.
#pragma once

#include <cstdint>

namespace simulator {

// One frame of sound, full scale at 32 bits whatever the stream's sample width.
struct Frame {
    int32_t Left;
    int32_t Right;
    bool operator==(const Frame&) const = default;
};

}  // namespace simulator
