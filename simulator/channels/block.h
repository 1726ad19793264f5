// The unit in which samples are moved.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "simulator/channels/frame.h"

namespace simulator {

// Frames of one card that are moved together.
struct Block {
    static constexpr size_t MostFrames = 512;
    uint64_t From = 0;  // tick
    size_t Frames = 0;
};

inline constexpr std::array<Frame, Block::MostFrames> SilentFrames{};

}  // namespace simulator
