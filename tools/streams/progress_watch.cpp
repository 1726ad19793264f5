#include "tools/streams/progress_watch.h"

#include <algorithm>

namespace kestvox {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto RealPatience = std::chrono::seconds(5);

}  // namespace

void ProgressWatch::Begin(int64_t now) {
    begun_ = now;
    looked_ = now;
    begunReal_ = Clock::now();
    clockMoved_ = begunReal_;
    last_.clear();
}

void ProgressWatch::Excuse(int64_t now) {
    begun_ += now - looked_;
    looked_ = now;
    clockMoved_ = Clock::now();
    for (Last& last : last_) {
        last.Time = now;
        last.Real = clockMoved_;
    }
}

std::optional<ProgressWatch::Finding> ProgressWatch::Look(const std::vector<StreamProgress>& streams,
                                                          int64_t now) {
    const RealTime real = Clock::now();
    if (now != looked_) {
        looked_ = now;
        clockMoved_ = real;
    }
    last_.resize(streams.size(), {.Movement = 0, .Time = begun_, .Real = real});
    for (size_t i = 0; i < streams.size(); ++i) {
        const StreamProgress& stream = streams[i];
        Last& last = last_[i];
        if (stream.Movement != last.Movement || stream.IsFinished) {
            last = {.Movement = stream.Movement, .Time = now, .Real = real};
        }
        if (stream.IsFinished) {
            continue;
        }
        const bool waitedLong = alone_ || real - last.Real >= RealPatience;
        const bool clockStands = real - std::max(clockMoved_, last.Real) >= RealPatience;
        if ((now - last.Time >= patience_ && waitedLong) || clockStands) {
            return Finding{i, std::max<int64_t>(now - last.Time, 1)};
        }
        const bool hadTime = alone_ || real - begunReal_ >= RealPatience;
        if (stream.Length && now - begun_ > 2 * *stream.Length + patience_ && hadTime) {
            return Finding{i, 0};
        }
    }
    return std::nullopt;
}

}  // namespace kestvox
