// Frames without end: grows in chunks, so that hours of sound are never moved about in memory.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "simulator/channels/frame_sink.h"

namespace simulator {

class FrameStore {
public:
    size_t Size() const { return size_; }
    void Append(std::span<const Frame> frames);
    void AppendSilence(size_t count);
    void Clear();
    void GiveTo(const FrameSink& sink) const;
    std::vector<Frame> All() const;

private:
    static constexpr size_t ChunkFrames = 8192;

    // Room for some of `count` further frames, in one piece.
    std::span<Frame> Grow(size_t count);

    std::vector<std::unique_ptr<Frame[]>> chunks_;
    size_t size_ = 0;
};

}  // namespace simulator
