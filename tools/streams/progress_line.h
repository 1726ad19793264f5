// How far playback is, on one line that is written over again and again.
#pragma once

#include <cstdint>

namespace kestvox {

// Silent unless standard error is a terminal.
class ProgressLine {
public:
    explicit ProgressLine(bool wanted);
    ~ProgressLine() { Wipe(); }
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void Show(uint64_t frames, uint64_t totalFrames, uint32_t rate, unsigned buffersInFlight);

    // Leaves the line as it was before the first Show.
    void Wipe();

private:
    bool wanted_;
    bool shown_ = false;
};

}  // namespace kestvox
