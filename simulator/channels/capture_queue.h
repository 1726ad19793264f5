// The buffers that wait on an input channel, filled one after another as one continuous stream of
// bytes: a frame may begin in one buffer and end in the next.
//
// The card writes memory in whole units of 32 bytes, counted from the start of the stream, and what
// completes a buffer; the rest of what it has taken stays on the card. The memory is the client's; it is
// touched only while its buffer is here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "simulator/channels/buffer_queue.h"
#include "simulator/channels/samples.h"

namespace simulator {

class CaptureQueue {
public:
    static constexpr size_t UnitBytes = 32;

    void Append(const QueuedBuffer& buffer);
    bool HasRoom() const { return room_ > held_.size(); }

    // Takes up to `count` frames and answers how many: fewer than asked for when the room has run out.
    // Bytes of the last frame that find no room are kept for the next buffer. Buffers that are full are
    // added to `finished`.
    size_t Write(SampleLayout layout, const Frame* frames, size_t count, std::vector<QueuedBuffer>& finished);

    // Frames until the first buffer is full; 0 when there is none.
    uint64_t FramesToFirst(SampleLayout layout) const;

    // A new stream: what is still on the card is lost, and the first buffer is filled from its beginning.
    void Restart();

    // Gives up the first buffer if anything is in it, and ends the stream.
    std::vector<QueuedBuffer> TakePartFilled();
    // Gives up every buffer, in order, and ends the stream.
    std::vector<QueuedBuffer> TakeAll();

private:
    void Store(size_t bytes);

    std::deque<QueuedBuffer> buffers_;
    size_t offset_ = 0;          // into the first buffer
    size_t room_ = 0;            // bytes of all buffers that are not filled
    std::vector<uint8_t> held_;  // taken, not in memory yet
    size_t stored_ = 0;          // bytes of the stream that are in memory
};

}  // namespace simulator
