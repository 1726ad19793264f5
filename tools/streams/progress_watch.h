// Notices that a stream stands still, or does not come to its end.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestvox {

// How far one stream is.
struct StreamProgress {
    uint64_t Movement;  // grows with all that counts as progress
    bool IsFinished;
    std::optional<int64_t> Length;  // microseconds of sound in all
};

// Two clocks are looked at: that of the cards, and the real one. In stepped time the first may run as fast as
// it likes, and where other programs move it, too, it says nothing of whether this one has had its chance.
class ProgressWatch {
public:
    // `patience` is in microseconds of the cards' time; `alone`: nobody else moves their clock.
    ProgressWatch(int64_t patience, bool alone) : patience_(patience), alone_(alone) {}

    // All streams have started at that time of the cards.
    void Begin(int64_t now);

    // Nothing was asked of the streams since the last call, as the program itself was waiting for somebody
    // else.
    void Excuse(int64_t now);

    // One for each stream, always in the same order. Answers the number of a stream that has stood still for
    // too long, or has not ended in twice its length.
    struct Finding {
        size_t Stream;
        int64_t Microseconds;  // for how long; 0: it moves, but does not end
    };
    std::optional<Finding> Look(const std::vector<StreamProgress>& streams, int64_t now);

private:
    using RealTime = std::chrono::steady_clock::time_point;
    struct Last {
        uint64_t Movement = 0;
        int64_t Time = 0;  // of the cards, when it last moved
        RealTime Real;
    };

    const int64_t patience_;
    const bool alone_;
    int64_t begun_ = 0;
    RealTime begunReal_;
    int64_t looked_ = 0;
    RealTime clockMoved_;
    std::vector<Last> last_;
};

}  // namespace kestvox
