#include "tools/progress_line.h"

#include <algorithm>
#include <cstdio>

#include "tools/host.h"

namespace kestvox {

ProgressLine::ProgressLine(bool wanted) : wanted_(wanted && StandardErrorIsTerminal()) {}

void ProgressLine::Wipe() {
    if (shown_) {
        std::fputs("\r\033[K", stderr);
        shown_ = false;
    }
}

void ProgressLine::Show(uint64_t frames, uint64_t totalFrames, uint32_t rate, unsigned buffersInFlight) {
    if (wanted_) {
        shown_ = true;
        std::fprintf(stderr, "\r%.1f of %.1f s, %u buffers in flight\033[K",
                     static_cast<double>(std::min(frames, totalFrames)) / rate,
                     static_cast<double>(totalFrames) / rate, buffersInFlight);
        std::fflush(stderr);
    }
}

}  // namespace kestvox
