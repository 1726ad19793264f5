// This process's part of one card: the buffers of the channels it has, and the moving of samples
// between them and the card's converters, in blocks. The machine's lock guards all of it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "simulator/card/port.h"
#include "simulator/channels/audio_log.h"
#include "simulator/channels/block.h"
#include "simulator/channels/buffer_queue.h"
#include "simulator/channels/capture_queue.h"
#include "simulator/machine/machine_state.h"

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

    void Queue(CardState& card, unsigned channel, const QueuedBuffer& buffer);
    // Gives back every buffer of the channel, in order.
    void Flush(CardState& card, unsigned channel, std::vector<FinishedBuffer>& finished);
    // The input channel has been stopped: gives back the buffer under way if there is anything in it.
    void GiveBackPartFilled(CardState& card, unsigned channel, std::vector<FinishedBuffer>& finished);
    // The input channel begins anew, in the first buffer from its start.
    void RestartCapture(unsigned channel) { captures_[channel].Restart(); }

    // One block: BeginBlock on every card with the same time, then Play on every card, then Record and
    // Listen, then EndBlock.
    void BeginBlock(const CardState& card, int64_t until);
    void Play(CardState& card, std::vector<FinishedBuffer>& finished);
    // `signal` is what arrives at the input; null is silence.
    void Record(CardState& card, unsigned port, const Frame* signal, std::vector<FinishedBuffer>& finished);
    // `signal` is what leaves the output connector; null is silence. For ports whose channel has begun.
    void Listen(unsigned port, const Frame* signal);
    void EndBlock();

    const Block& CurrentBlock() const { return block_; }
    size_t PreviousFrames() const { return previousFrames_; }  // length of the block before
    // What the output channel itself plays in the block; null when it has no data.
    const Frame* Playback(unsigned port) const;
    // Tick of the first frame of the block that the input channel takes into a buffer.
    std::optional<uint64_t> FirstRecorded(const CardState& card, unsigned port) const;
    bool IsListening(unsigned port) const;
    bool WantsHeard(unsigned port) const { return outputs_[port].WantsHeard(); }

    // The tick up to which everything has been moved. SkipTo moves it on over ticks with nothing to move.
    uint64_t DoneTo() const { return block_.From; }
    void SkipTo(uint64_t tick);

    // Whether a channel of ours has frames to move before `until`.
    bool AnyDue(const CardState& card, uint64_t until) const;

    // When a buffer of ours ends next if nothing changes; Never when none is under way.
    int64_t NextEnd(const CardState& card) const;
    bool AnyUnderWay(const CardState& card) const;  // a channel of ours moves or waits to

    AudioLog& Output(Port port) { return outputs_[static_cast<unsigned>(port)]; }
    void KeepAudio();
    void ForgetAudio();

private:
    // Where in the block a channel's data lies.
    struct Part {
        size_t Begin = 0;
        size_t End = 0;
        bool IsEmpty() const { return Begin >= End; }
    };

    Part DuePart(const CardState& card, unsigned channel, uint64_t until) const;
    void Moved(CardState& card, unsigned channel, const Part& due, size_t frames,
               const std::vector<QueuedBuffer>& through, std::vector<FinishedBuffer>& finished);
    void Finish(CardState& card, unsigned channel, const std::vector<QueuedBuffer>& buffers,
                std::vector<FinishedBuffer>& finished);

    std::array<bool, ChannelCount> ours_{};
    std::array<CaptureQueue, 2> captures_;
    std::array<BufferQueue, 2> playbacks_;
    std::array<AudioLog, 2> outputs_;
    Block block_;  // under way, or the next one, which has no frames yet
    size_t previousFrames_ = 0;
    std::array<std::array<Frame, Block::MostFrames>, 2> played_{};  // silence where a channel had no data
    std::array<Part, 2> playedPart_{};
};

}  // namespace simulator
