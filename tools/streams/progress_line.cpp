#include "tools/streams/progress_line.h"

#include <algorithm>
#include <cstdio>

#include "tools/machine/host.h"

namespace kestvox {
namespace {

constexpr int Width = 78;

}  // namespace

ProgressLine::ProgressLine(bool wanted) : wanted_(wanted && StandardErrorIsTerminal()) {}

void ProgressLine::Wipe() {
    if (shown_) {
        std::fprintf(stderr, "\r%*s\r", Width, "");
        shown_ = false;
    }
}

void ProgressLine::Show(uint64_t frames, uint64_t totalFrames, uint32_t rate, unsigned buffersInFlight) {
    if (wanted_) {
        shown_ = true;
        char text[Width];
        std::snprintf(text, sizeof text, "%.1f of %.1f s, %u buffers in flight",
                      static_cast<double>(std::min(frames, totalFrames)) / rate,
                      static_cast<double>(totalFrames) / rate, buffersInFlight);
        std::fprintf(stderr, "\r%-*s", Width, text);
        std::fflush(stderr);
    }
}

}  // namespace kestvox
