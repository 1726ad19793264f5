#include "tools/streams/loopback_comparison.h"

#include <algorithm>
#include <cstring>

#include "tools/command_error.h"

namespace kestvox {
namespace {

constexpr uint64_t MostPartFrames = 65536;

}  // namespace

void LoopbackComparison::Take(std::span<const char> recorded, std::optional<int64_t> offset) {
    const auto first = static_cast<int64_t>(framesTaken_);
    const auto frames = static_cast<int64_t>(recorded.size() / FrameSize());
    framesTaken_ += static_cast<uint64_t>(frames);
    if (!offset_ && offset) {
        offset_ = offset;
        Drop(static_cast<uint64_t>(std::max<int64_t>(-*offset, 0)));  // played before the recording began
    }
    if (offset_) {
        const int64_t before = std::clamp<int64_t>(*offset_ - first, 0, frames);
        Compare(recorded.subspan(static_cast<size_t>(before) * FrameSize()));
    }
}

// Fewer bytes at the file's end, and none when it cannot be read.
std::span<const char> LoopbackComparison::NextPlayed(size_t bytes) {
    part_.resize(bytes);
    size_t count = 0;
    try {
        count = problem_.empty() ? played_.Read(part_) : 0;
    } catch (const CommandError& error) {
        problem_ = error.what();
    }
    return std::span(part_).first(count);
}

void LoopbackComparison::Compare(std::span<const char> recorded) {
    const std::span<const char> played = NextPlayed(recorded.size());
    const size_t size = FrameSize() / played_.Format().nChannels;
    if (observer_) {
        observer_(played, recorded.first(played.size()));
    }
    for (size_t at = 0; at < played.size(); at += size) {
        samplesLost_ += std::memcmp(&recorded[at], &played[at], size) == 0 ? 0 : 1;
    }
}

void LoopbackComparison::Drop(uint64_t frames) {
    while (frames > 0 && !played_.AtEnd()) {
        const std::span<const char> played =
            NextPlayed(static_cast<size_t>(std::min(frames, MostPartFrames)) * FrameSize());
        const uint64_t dropped = played.size() / FrameSize();
        if (dropped == 0) {
            return;
        }
        if (observer_) {
            observer_(played, {});
        }
        samplesLost_ += dropped * played_.Format().nChannels;
        frames -= dropped;
    }
}

void LoopbackComparison::Finish() {
    Drop(UINT64_MAX);
}

}  // namespace kestvox
