// Hears what other programs play on one of the machine's outputs, as it leaves the connector.
#pragma once

#include <cstdint>
#include <vector>

#include "simulator/card/port.h"
#include "simulator/channels/frame.h"

namespace simulator {

struct Tap;

class Listener {
public:
    // From now on. The process has a Simulator for as long as this is there.
    Listener(unsigned card, Port port);
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    // False: as many listen as the machine has room for.
    bool IsConnected() const { return tap_ != nullptr; }

    struct Heard {
        std::vector<Frame> Frames;  // in order. What comes between two runs of a stream is not among them
        uint64_t Lost = 0;          // frames before them that were not taken in time
        unsigned Rate = 0;          // Hz at which the card runs
        bool InUse = false;         // some program has the output open
    };
    // Since the last call. The card goes on in real time: it is to be asked again within half a second.
    Heard Take();

private:
    Tap* tap_ = nullptr;
    uint64_t taken_ = 0;
};

}  // namespace simulator
