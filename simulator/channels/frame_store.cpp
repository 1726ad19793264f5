#include "simulator/channels/frame_store.h"

#include <algorithm>

namespace simulator {

std::span<Frame> FrameStore::Grow(size_t count) {
    const size_t used = size_ % ChunkFrames;
    if (size_ == chunks_.size() * ChunkFrames) {
        chunks_.push_back(std::make_unique_for_overwrite<Frame[]>(ChunkFrames));
    }
    const size_t room = std::min(count, ChunkFrames - used);
    Frame* begin = chunks_[size_ / ChunkFrames].get() + used;
    size_ += room;
    return {begin, room};
}

void FrameStore::Append(std::span<const Frame> frames) {
    while (!frames.empty()) {
        const std::span<Frame> room = Grow(frames.size());
        std::copy_n(frames.begin(), room.size(), room.begin());
        frames = frames.subspan(room.size());
    }
}

void FrameStore::AppendSilence(size_t count) {
    while (count > 0) {
        const std::span<Frame> room = Grow(count);
        std::fill(room.begin(), room.end(), Frame{});
        count -= room.size();
    }
}

void FrameStore::Clear() {
    size_ = 0;
    chunks_.clear();
}

void FrameStore::GiveTo(const FrameSink& sink) const {
    for (size_t at = 0; at < size_; at += ChunkFrames) {
        sink({chunks_[at / ChunkFrames].get(), std::min(ChunkFrames, size_ - at)});
    }
}

std::vector<Frame> FrameStore::All() const {
    std::vector<Frame> frames;
    frames.reserve(size_);
    GiveTo([&](std::span<const Frame> part) { frames.insert(frames.end(), part.begin(), part.end()); });
    return frames;
}

}  // namespace simulator
