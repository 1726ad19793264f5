// Where a stream had to do without a buffer.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kestvox {

// By looking at the stream again and again, above all when buffers come back: a gap begins where the card had
// none left.
class GapList {
public:
    // `frames` have been moved since the card began to count, `idle` have passed without a buffer, and so
    // many buffers are in flight.
    void Look(uint64_t frames, uint64_t idle, unsigned inFlight);

    // A JSON list of the first hundred, an object for each: "frame", the frames moved before it, and "length"
    // in frames.
    std::string Json() const;

private:
    struct Gap {
        uint64_t Frame;
        uint64_t Length;
    };

    uint64_t before_ = 0;  // frames moved before the card began to count anew, after a sleep
    uint64_t frames_ = 0;  // and since
    uint64_t idle_ = 0;
    uint64_t ranDry_ = 0;
    std::vector<Gap> gaps_;
};

}  // namespace kestvox
