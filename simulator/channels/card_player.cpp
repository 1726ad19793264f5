#include "simulator/channels/card_player.h"

#include <algorithm>

#include "simulator/channels/channel_run.h"

namespace simulator {
namespace {

SampleLayout LayoutOf(const CardState& card, unsigned channel) {
    return SampleLayout::FromPortControl(card.PortFiles[channel][port_register::Control]);
}

}  // namespace

void CardPlayer::Release(unsigned channel) {
    ours_[channel] = false;
    if (channel >= FirstOutput) {
        playbacks_[channel - FirstOutput].TakeAll();
        outputs_[channel - FirstOutput].Pause();
    } else {
        captures_[channel].TakeAll();
    }
}

void CardPlayer::Queue(CardState& card, unsigned channel, const QueuedBuffer& buffer) {
    if (channel >= FirstOutput) {
        playbacks_[channel - FirstOutput].Append(buffer);
    } else {
        captures_[channel].Append(buffer);
    }
    ChannelTally& tally = card.Channels[channel].Tally;
    ++tally.BuffersInFlight;
    tally.MostInFlight = std::max(tally.MostInFlight, tally.BuffersInFlight);
}

void CardPlayer::Flush(CardState& card, unsigned channel, std::vector<FinishedBuffer>& finished) {
    const bool output = channel >= FirstOutput;
    const std::vector<QueuedBuffer> buffers =
        output ? playbacks_[channel - FirstOutput].TakeAll() : captures_[channel].TakeAll();
    card.Channels[channel].Tally.BuffersFlushed += buffers.size();
    Finish(card, channel, buffers, finished);
}

void CardPlayer::GiveBackPartFilled(CardState& card, unsigned channel,
                                    std::vector<FinishedBuffer>& finished) {
    const std::vector<QueuedBuffer> buffers = captures_[channel].TakePartFilled();
    card.Channels[channel].Tally.BuffersFlushed += buffers.size();
    Finish(card, channel, buffers, finished);
}

void CardPlayer::Finish(CardState& card, unsigned channel, const std::vector<QueuedBuffer>& buffers,
                        std::vector<FinishedBuffer>& finished) {
    ChannelTally& tally = card.Channels[channel].Tally;
    for (const QueuedBuffer& buffer : buffers) {
        finished.push_back({channel, buffer.Cookie});
        --tally.BuffersInFlight;
        ++tally.BuffersFinished;
    }
}

// Of the frames from the block's first to `until`.
CardPlayer::Part CardPlayer::DuePart(const CardState& card, unsigned channel, uint64_t until) const {
    const ChannelState& state = card.Channels[channel];
    const uint64_t begin = std::max(block_.From, state.MoveFrom);
    const uint64_t end = state.Moving ? until : std::min(until, state.MoveUntil);
    if (!ours_[channel] || begin >= end) {
        return {};
    }
    return {static_cast<size_t>(begin - block_.From), static_cast<size_t>(end - block_.From)};
}

bool CardPlayer::AnyDue(const CardState& card, uint64_t until) const {
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        if (!DuePart(card, channel, until).IsEmpty()) {
            return true;
        }
    }
    return false;
}

void CardPlayer::BeginBlock(const CardState& card, int64_t until) {
    const uint64_t end = std::max(card.TickAt(until), block_.From);
    block_.Frames = static_cast<size_t>(std::min<uint64_t>(end - block_.From, Block::MostFrames));
    playedPart_ = {};
}

void CardPlayer::EndBlock() {
    block_.From += block_.Frames;
    previousFrames_ = block_.Frames;
    block_.Frames = 0;
    playedPart_ = {};
}

void CardPlayer::SkipTo(uint64_t tick) {
    block_.From = std::max(block_.From, tick);
}

void CardPlayer::Play(CardState& card, std::vector<FinishedBuffer>& finished) {
    for (unsigned port = 0; port < 2; ++port) {
        const unsigned channel = FirstOutput + port;
        const Part due = DuePart(card, channel, block_.From + block_.Frames);
        if (due.IsEmpty()) {
            continue;
        }
        Frame* samples = played_[port].data();
        std::vector<QueuedBuffer> through;
        const size_t frames =
            playbacks_[port].Read(LayoutOf(card, channel), due.End - due.Begin, samples + due.Begin, through);
        const Part played{due.Begin, due.Begin + frames};
        std::fill(samples, samples + played.Begin, Frame{});
        std::fill(samples + played.End, samples + block_.Frames, Frame{});
        outputs_[port].AddPlayed({samples + played.Begin, samples + played.End});
        playedPart_[port] = played;
        Moved(card, channel, due, frames, through, finished);
    }
}

void CardPlayer::Record(CardState& card, unsigned port, const Frame* signal,
                        std::vector<FinishedBuffer>& finished) {
    const Part due = DuePart(card, port, block_.From + block_.Frames);
    if (due.IsEmpty()) {
        return;
    }
    std::vector<QueuedBuffer> through;
    const Frame* samples = signal ? signal : SilentFrames.data();
    const size_t frames =
        captures_[port].Write(LayoutOf(card, port), samples + due.Begin, due.End - due.Begin, through);
    Moved(card, port, due, frames, through, finished);
}

void CardPlayer::Moved(CardState& card, unsigned channel, const Part& due, size_t frames,
                       const std::vector<QueuedBuffer>& through, std::vector<FinishedBuffer>& finished) {
    const uint64_t from = block_.From + due.Begin;
    CountMoved(card, channel, from, frames);
    Finish(card, channel, through, finished);
    if (frames < due.End - due.Begin) {
        RunDry(card, channel, from + frames);
    }
}

bool CardPlayer::IsListening(unsigned port) const {
    return ours_[FirstOutput + port] && (outputs_[port].Listening() || !playedPart_[port].IsEmpty());
}

void CardPlayer::Listen(unsigned port, const Frame* signal) {
    if (!IsListening(port)) {
        return;
    }
    AudioLog& log = outputs_[port];
    const Part& own = playedPart_[port];
    const size_t begin = log.Listening() ? 0 : own.Begin;
    const Frame* samples = signal ? signal : SilentFrames.data();
    log.AddHeard(block_.From + begin, {samples + begin, samples + block_.Frames},
                 own.IsEmpty() ? 0 : own.End - begin);
}

const Frame* CardPlayer::Playback(unsigned port) const {
    return playedPart_[port].IsEmpty() ? nullptr : played_[port].data();
}

std::optional<uint64_t> CardPlayer::FirstRecorded(const CardState& card, unsigned port) const {
    const Part due = DuePart(card, port, block_.From + block_.Frames);
    return due.IsEmpty() || !captures_[port].HasRoom() ? std::nullopt
                                                       : std::optional(block_.From + due.Begin);
}

int64_t CardPlayer::NextEnd(const CardState& card) const {
    int64_t next = Never;
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        const ChannelState& state = card.Channels[channel];
        if (!ours_[channel] || !state.Moving) {
            continue;
        }
        const SampleLayout layout = LayoutOf(card, channel);
        const uint64_t frames = channel >= FirstOutput
                                    ? playbacks_[channel - FirstOutput].FramesToFirst(layout)
                                    : captures_[channel].FramesToFirst(layout);
        if (frames > 0) {
            next = std::min(next, card.TimeOfTick(std::max(block_.From, state.MoveFrom) + frames));
        }
    }
    return next;
}

bool CardPlayer::AnyUnderWay(const CardState& card) const {
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        if (ours_[channel] && card.Channels[channel].TransferOn) {
            return true;
        }
    }
    return false;
}

void CardPlayer::KeepAudio() {
    for (AudioLog& log : outputs_) {
        log.Keep();
    }
}

void CardPlayer::ForgetAudio() {
    for (AudioLog& log : outputs_) {
        log.Clear();
    }
}

}  // namespace simulator
