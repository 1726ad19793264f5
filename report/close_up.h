// The frames around the first one that is not as it was asked for, each by itself.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/channels/frame.h"

namespace kestvox {

class CloseUp {
public:
    // The next frames, until there are enough after the first that differs. Either span may be empty;
    // otherwise they are equally long. The first `same` of them do not differ.
    void Add(uint64_t position, std::span<const simulator::Frame> asked,
             std::span<const simulator::Frame> came, size_t same);

    // A JSON object: "first", the frame that it begins with, and "asked" and "came", a list of samples at the
    // top of 32 bits for each channel, null where there is none. null: nothing differs.
    std::string Json(unsigned channels) const;

private:
    struct Pair {
        uint64_t Position;  // of the frame
        std::optional<simulator::Frame> Asked;
        std::optional<simulator::Frame> Came;
    };

    std::vector<Pair> pairs_;
    size_t after_ = 0;  // frames from the first that differs on
};

}  // namespace kestvox
