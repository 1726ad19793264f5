// This process's part of one card: the buffers of the channels it has, and the moving of samples
// between them and the card's converters, in blocks. The machine's lock guards all of it.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/audio_log.h"
#include "simulator/buffer_queue.h"
#include "simulator/machine_state.h"

namespace simulator {

// A buffer that a channel is through with.
struct FinishedBuffer {
    unsigned Channel;
    ULONG_PTR Cookie;
};

class CardPlayer {
public:
    // From Take to Release this process moves the channel's frames.
    void Take(unsigned channel) { ours_[channel] = true; }
    void Release(unsigned channel);
    bool HasChannels() const;

    void Queue(CardState& card, unsigned channel, const QueuedBuffer& buffer);
    // Gives back every buffer of the channel, in order.
    void Flush(CardState& card, unsigned channel, std::vector<FinishedBuffer>& finished);

    // Moves every frame due up to `now`.
    void CatchUp(CardState& card, int64_t now, std::vector<FinishedBuffer>& finished);

    // When a buffer of ours ends next if nothing changes; Never when none is under way.
    int64_t NextEnd(const CardState& card) const;
    bool AnyUnderWay(const CardState& card) const;  // a channel of ours moves or waits to

    const AudioLog& Output(Port port) const { return outputs_[static_cast<unsigned>(port)]; }
    void ForgetAudio();

private:
    // A block's worth of one channel: where in the block its data lies.
    struct Part {
        size_t Begin = 0;
        size_t End = 0;
    };
    static constexpr size_t BlockFrames = 512;
    using Block = std::array<Frame, BlockFrames>;

    bool Due(const CardState& card, unsigned channel, uint64_t until) const;
    void MoveBlock(CardState& card, size_t frames, std::vector<FinishedBuffer>& finished);
    Part MoveChannel(CardState& card, unsigned channel, size_t frames, Frame* samples,
                     std::vector<FinishedBuffer>& finished);
    void Listen(const CardState& card, size_t frames, const std::array<Part, 2>& played);
    void Finish(CardState& card, unsigned channel, const std::vector<QueuedBuffer>& buffers,
                std::vector<FinishedBuffer>& finished);

    std::array<bool, ChannelCount> ours_{};
    std::array<BufferQueue, ChannelCount> queues_;
    std::array<AudioLog, 2> outputs_;
    std::array<Block, 2> playback_{};  // the block under way
    std::array<bool, 2> playing_{};    // whether it has any data; silence where it has none
    uint64_t doneTo_ = 0;              // tick up to which everything has been moved
};

}  // namespace simulator
