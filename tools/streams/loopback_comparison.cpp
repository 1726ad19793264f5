#include "tools/streams/loopback_comparison.h"

#include <algorithm>
#include <cstring>

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

void LoopbackComparison::Compare(std::span<const char> recorded) {
    part_.resize(recorded.size());
    const size_t count = played_.Read(part_);
    const size_t size = FrameSize() / played_.Format().nChannels;
    if (observer_) {
        observer_(std::span(part_).first(count), recorded.first(count));
    }
    for (size_t at = 0; at < count; at += size) {
        samplesLost_ += std::memcmp(&recorded[at], &part_[at], size) == 0 ? 0 : 1;
    }
}

void LoopbackComparison::Drop(uint64_t frames) {
    while (frames > 0 && !played_.AtEnd()) {
        part_.resize(static_cast<size_t>(std::min(frames, MostPartFrames)) * FrameSize());
        const size_t bytes = played_.Read(part_);
        const uint64_t dropped = bytes / FrameSize();
        if (dropped == 0) {
            return;
        }
        if (observer_) {
            observer_(std::span(part_).first(bytes), {});
        }
        samplesLost_ += dropped * played_.Format().nChannels;
        frames -= dropped;
    }
}

void LoopbackComparison::Finish() {
    Drop(UINT64_MAX);
}

}  // namespace kestvox
