// Sample frames as a function of time, in whole numbers: no rounding that adds up, no overflow
// within a year's run.
#pragma once

#include <cstdint>
#include <limits>

namespace simulator {

inline constexpr int64_t Second = 1000000000;  // in nanoseconds, the unit of all times
inline constexpr int64_t Never = std::numeric_limits<int64_t>::max();

struct SampleClock {
    int64_t AnchorTime;     // nanoseconds
    uint64_t AnchorFrames;  // count at AnchorTime
    uint32_t Rate;          // Hz; 0: stands still
    int32_t Drift;          // parts per million, within ±MaxDrift

    static constexpr int32_t MaxDrift = 500000;

    // The count at `time`; AnchorFrames for any time before the anchor.
    uint64_t FramesAt(int64_t time) const;

    // The first instant at which FramesAt answers `frame` or more; Never when the clock stands still.
    int64_t TimeOf(uint64_t frame) const;

    bool operator==(const SampleClock&) const = default;
};

}  // namespace simulator
