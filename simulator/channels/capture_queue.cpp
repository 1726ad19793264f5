#include "simulator/channels/capture_queue.h"

#include <algorithm>

namespace simulator {

void CaptureQueue::Append(const QueuedBuffer& buffer) {
    buffers_.push_back(buffer);
    room_ += buffer.Length;
}

// The first `bytes` of what is held, which the first buffer has room for.
void CaptureQueue::Store(size_t bytes) {
    const auto end = held_.begin() + static_cast<std::ptrdiff_t>(bytes);
    std::copy(held_.begin(), end, buffers_.front().Data + offset_);
    held_.erase(held_.begin(), end);
    offset_ += bytes;
    room_ -= bytes;
    stored_ += bytes;
}

size_t CaptureQueue::Write(SampleLayout layout, const Frame* frames, size_t count,
                           std::vector<QueuedBuffer>& finished) {
    const size_t frameBytes = layout.FrameBytes();
    const size_t room = HasRoom() ? room_ - held_.size() : 0;
    const size_t taken = std::min(count, (room + frameBytes - 1) / frameBytes);
    const size_t before = held_.size();
    held_.resize(before + taken * frameBytes);
    EncodeFrames(layout, frames, taken, held_.data() + before);

    while (!buffers_.empty() && held_.size() >= buffers_.front().Length - offset_) {
        Store(buffers_.front().Length - offset_);
        finished.push_back(buffers_.front());
        buffers_.pop_front();
        offset_ = 0;
    }
    const size_t unfinished = (stored_ + held_.size()) % UnitBytes;
    if (!buffers_.empty() && held_.size() > unfinished) {
        Store(held_.size() - unfinished);
    }
    return taken;
}

uint64_t CaptureQueue::FramesToFirst(SampleLayout layout) const {
    if (buffers_.empty()) {
        return 0;
    }
    // What is kept of the frame before comes along with the next one.
    const size_t room = buffers_.front().Length - offset_;
    const size_t frameBytes = layout.FrameBytes();
    return room <= held_.size() ? 1 : (room - held_.size() + frameBytes - 1) / frameBytes;
}

void CaptureQueue::Restart() {
    room_ += offset_;
    offset_ = 0;
    stored_ = 0;
    held_.clear();
}

std::vector<QueuedBuffer> CaptureQueue::TakePartFilled() {
    std::vector<QueuedBuffer> taken;
    if (offset_ > 0) {
        taken.push_back(buffers_.front());
        room_ -= buffers_.front().Length - offset_;
        buffers_.pop_front();
        offset_ = 0;
    }
    Restart();
    return taken;
}

std::vector<QueuedBuffer> CaptureQueue::TakeAll() {
    std::vector<QueuedBuffer> all(buffers_.begin(), buffers_.end());
    buffers_.clear();
    offset_ = 0;
    room_ = 0;
    Restart();
    return all;
}

}  // namespace simulator
