#include "simulator/clock/sample_clock.h"

namespace simulator {
namespace {

constexpr int64_t Million = 1000000;

// Nanoseconds that an oscillator `drift` off counts in `elapsed` true ones, rounded down.
int64_t Drifted(int64_t elapsed, int64_t drift) {
    const int64_t product = elapsed % Million * drift;
    const int64_t fraction = product >= 0 ? product / Million : -((-product + Million - 1) / Million);
    return elapsed + elapsed / Million * drift + fraction;
}

}  // namespace

uint64_t SampleClock::FramesAt(int64_t time) const {
    if (time <= AnchorTime) {
        return AnchorFrames;
    }
    const int64_t own = Drifted(time - AnchorTime, Drift);
    return AnchorFrames + static_cast<uint64_t>(own / Second * Rate + own % Second * Rate / Second);
}

int64_t SampleClock::TimeOf(uint64_t frame) const {
    if (frame <= AnchorFrames) {
        return AnchorTime;
    }
    if (Rate == 0) {
        return Never;
    }
    const int64_t frames = static_cast<int64_t>(frame - AnchorFrames);
    const int64_t own = frames / Rate * Second + (frames % Rate * Second + Rate - 1) / Rate;
    // The division leaves at most a few nanoseconds to correct.
    const int64_t scale = Million + Drift;
    int64_t elapsed = own / scale * Million + own % scale * Million / scale;
    while (Drifted(elapsed, Drift) < own) {
        ++elapsed;
    }
    while (elapsed > 0 && Drifted(elapsed - 1, Drift) >= own) {
        --elapsed;
    }
    return AnchorTime + elapsed;
}

}  // namespace simulator
