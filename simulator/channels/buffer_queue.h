// The buffers that wait on an output channel, as one continuous stream of bytes: a frame may begin in one
// buffer and end in the next. The memory is the client's; it is read only while its buffer is here.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "simulator/channels/samples.h"

namespace simulator {

struct QueuedBuffer {
    uint8_t* Data;
    uint32_t Length;  // bytes, not 0
    ULONG_PTR Cookie;
};

class BufferQueue {
public:
    void Append(const QueuedBuffer& buffer) { buffers_.push_back(buffer); }

    // Takes up to `count` frames out of the buffers and answers how many. Fewer than asked for: the data
    // has run out; bytes that do not make a frame are then kept for the frame that the next buffer
    // completes. Buffers that are through are added to `finished`.
    size_t Read(SampleLayout layout, size_t count, Frame* out, std::vector<QueuedBuffer>& finished);

    // Frames until the first buffer is through; 0 when there is none.
    uint64_t FramesToFirst(SampleLayout layout) const;

    // Gives up every buffer, in order, and the part of a frame that was kept.
    std::vector<QueuedBuffer> TakeAll();

private:
    // The largest number of whole frames that lie in the first buffer from here.
    size_t WholeFrames(size_t frameBytes, size_t count) const;
    void Skip(size_t bytes, std::vector<QueuedBuffer>& finished);
    const uint8_t* Here() const { return buffers_.front().Data + offset_; }

    std::deque<QueuedBuffer> buffers_;
    size_t offset_ = 0;  // into the first buffer
    uint8_t part_[MostFrameBytes] = {};
    size_t partBytes_ = 0;  // of a frame's beginning
};

}  // namespace simulator
