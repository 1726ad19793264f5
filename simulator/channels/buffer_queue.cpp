#include "simulator/channels/buffer_queue.h"

#include <algorithm>
#include <cstring>

namespace simulator {

size_t BufferQueue::WholeFrames(size_t frameBytes, size_t count) const {
    return buffers_.empty() ? 0 : std::min(count, (buffers_.front().Length - offset_) / frameBytes);
}

void BufferQueue::Skip(size_t bytes, std::vector<QueuedBuffer>& finished) {
    offset_ += bytes;
    if (offset_ == buffers_.front().Length) {
        finished.push_back(buffers_.front());
        buffers_.pop_front();
        offset_ = 0;
    }
}

size_t BufferQueue::Read(SampleLayout layout, size_t count, Frame* out, std::vector<QueuedBuffer>& finished) {
    const size_t frameBytes = layout.FrameBytes();
    size_t done = 0;
    while (done < count) {
        if (const size_t whole = WholeFrames(frameBytes, count - done); partBytes_ == 0 && whole > 0) {
            DecodeFrames(layout, Here(), whole, out + done);
            Skip(whole * frameBytes, finished);
            done += whole;
            continue;
        }
        while (partBytes_ < frameBytes && !buffers_.empty()) {
            part_[partBytes_++] = *Here();
            Skip(1, finished);
        }
        if (partBytes_ < frameBytes) {
            break;
        }
        DecodeFrames(layout, part_, 1, out + done);
        // More than one frame is kept only when the layout has just become a smaller one.
        partBytes_ -= frameBytes;
        std::memmove(part_, part_ + frameBytes, partBytes_);
        ++done;
    }
    return done;
}

uint64_t BufferQueue::FramesToFirst(SampleLayout layout) const {
    if (buffers_.empty()) {
        return 0;
    }
    const size_t frameBytes = layout.FrameBytes();
    return (partBytes_ + buffers_.front().Length - offset_ + frameBytes - 1) / frameBytes;
}

std::vector<QueuedBuffer> BufferQueue::TakeAll() {
    std::vector<QueuedBuffer> all(buffers_.begin(), buffers_.end());
    buffers_.clear();
    offset_ = 0;
    partBytes_ = 0;
    return all;
}

}  // namespace simulator
