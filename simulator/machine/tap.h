// The way of an output's sound from the process that plays it to one that listens. Lives in the machine's
// memory (machine_state.h), and is read and written under its lock.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include "simulator/channels/frame.h"
#include "simulator/machine/host.h"

namespace simulator {

struct Tap {
    static constexpr uint64_t Room = 1 << 16;  // frames; a listener that falls further behind loses some

    host::Process Listener;  // Id 0: free
    uint32_t Card;
    uint32_t Port;
    uint64_t Given;  // frames so far
    std::array<Frame, Room> Ring;

    void Give(std::span<const Frame> frames) {
        for (const Frame& frame : frames) {
            Ring[Given++ % Room] = frame;
        }
    }
};

}  // namespace simulator
