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

void FrameStore::Shrink(size_t size) {
    size_ = std::min(size_, size);
    chunks_.resize((size_ + ChunkFrames - 1) / ChunkFrames);
}

std::vector<Frame> FrameStore::First(size_t count) const {
    std::vector<Frame> frames;
    frames.reserve(count);
    for (size_t at = 0; at < count; at += ChunkFrames) {
        const Frame* chunk = chunks_[at / ChunkFrames].get();
        frames.insert(frames.end(), chunk, chunk + std::min(ChunkFrames, count - at));
    }
    return frames;
}

}  // namespace simulator
