#include "simulator/card_player.h"

#include <algorithm>

#include "simulator/channel_run.h"
#include "simulator/mixer.h"

namespace simulator {
namespace {

// A connector is silent while its output is muted, the digital one also while its transmitter stands.
bool IsAudible(const CardState& card, unsigned port) {
    const bool analog = port == 0;
    const bool muted = (card.CardFile[analog ? 16 : 24] & 0x03) != 0;
    return !muted && (analog || (card.CardFile[25] & 0x01) != 0);
}

// The signals on the input connectors; null is silence, and nothing can be plugged in yet.
constexpr std::array<const Frame*, 2> InputSignals = {nullptr, nullptr};

SampleLayout LayoutOf(const CardState& card, unsigned channel) {
    return SampleLayout::FromPortControl(card.PortFiles[channel][0]);
}

}  // namespace

void CardPlayer::Release(unsigned channel) {
    ours_[channel] = false;
    queues_[channel].TakeAll();
    if (channel >= FirstOutput) {
        outputs_[channel - FirstOutput].Pause();
    }
}

bool CardPlayer::HasChannels() const {
    return std::find(ours_.begin(), ours_.end(), true) != ours_.end();
}

void CardPlayer::Queue(CardState& card, unsigned channel, const QueuedBuffer& buffer) {
    queues_[channel].Append(buffer);
    OutputStatus& status = card.Channels[channel].Status;
    ++status.BuffersInFlight;
    status.MostInFlight = std::max(status.MostInFlight, status.BuffersInFlight);
}

void CardPlayer::Flush(CardState& card, unsigned channel, std::vector<FinishedBuffer>& finished) {
    Finish(card, channel, queues_[channel].TakeAll(), finished);
}

void CardPlayer::Finish(CardState& card, unsigned channel, const std::vector<QueuedBuffer>& buffers,
                        std::vector<FinishedBuffer>& finished) {
    OutputStatus& status = card.Channels[channel].Status;
    for (const QueuedBuffer& buffer : buffers) {
        finished.push_back({channel, buffer.Cookie});
        --status.BuffersInFlight;
        ++status.BuffersFinished;
    }
}

bool CardPlayer::Due(const CardState& card, unsigned channel, uint64_t until) const {
    const ChannelState& state = card.Channels[channel];
    const uint64_t end = state.Moving ? until : std::min(until, state.MoveUntil);
    return ours_[channel] && std::max(doneTo_, state.MoveFrom) < end;
}

void CardPlayer::CatchUp(CardState& card, int64_t now, std::vector<FinishedBuffer>& finished) {
    const uint64_t target = card.TickAt(now);
    while (doneTo_ < target) {
        const bool due =
            Due(card, 0, target) || Due(card, 1, target) || Due(card, 2, target) || Due(card, 3, target);
        if (!due) {
            doneTo_ = target;
            return;
        }
        MoveBlock(card, static_cast<size_t>(std::min<uint64_t>(BlockFrames, target - doneTo_)), finished);
    }
}

void CardPlayer::MoveBlock(CardState& card, size_t frames, std::vector<FinishedBuffer>& finished) {
    for (unsigned channel = 0; channel < FirstOutput; ++channel) {
        MoveChannel(card, channel, frames, nullptr, finished);
    }
    std::array<Part, 2> played;
    for (unsigned port = 0; port < 2; ++port) {
        Frame* samples = playback_[port].data();
        played[port] = MoveChannel(card, FirstOutput + port, frames, samples, finished);
        playing_[port] = played[port].Begin < played[port].End;
        if (playing_[port]) {
            std::fill(samples, samples + played[port].Begin, Frame{});
            std::fill(samples + played[port].End, samples + frames, Frame{});
        }
        outputs_[port].AddPlayed({samples + played[port].Begin, samples + played[port].End});
    }
    Listen(card, frames, played);
    doneTo_ += frames;
}

CardPlayer::Part CardPlayer::MoveChannel(CardState& card, unsigned channel, size_t frames, Frame* samples,
                                         std::vector<FinishedBuffer>& finished) {
    if (!Due(card, channel, doneTo_ + frames)) {
        return {};
    }
    const ChannelState& state = card.Channels[channel];
    const uint64_t from = std::max(doneTo_, state.MoveFrom);
    const uint64_t until = state.Moving ? doneTo_ + frames : std::min(doneTo_ + frames, state.MoveUntil);
    const size_t begin = static_cast<size_t>(from - doneTo_);
    const size_t wanted = static_cast<size_t>(until - from);
    const SampleLayout layout = LayoutOf(card, channel);

    std::vector<QueuedBuffer> through;
    size_t moved = 0;
    if (channel >= FirstOutput) {
        moved = queues_[channel].Read(layout, wanted, samples + begin, through);
    } else {
        static constexpr Block silence{};
        const Frame* signal = InputSignals[channel] ? InputSignals[channel] : silence.data();
        moved = queues_[channel].Write(layout, signal, wanted, through);
    }
    CountMoved(card, channel, from, moved);
    Finish(card, channel, through, finished);
    if (moved < wanted) {
        RunDry(card, channel, from + moved);
    }
    return {begin, begin + moved};
}

// What leaves the connectors during the block, for the ports whose channel has begun.
void CardPlayer::Listen(const CardState& card, size_t frames, const std::array<Part, 2>& played) {
    for (unsigned port = 0; port < 2; ++port) {
        AudioLog& log = outputs_[port];
        const Part& own = played[port];
        if (!ours_[FirstOutput + port] || (!log.Listening() && own.Begin == own.End)) {
            continue;
        }
        const size_t begin = log.Listening() ? 0 : own.Begin;
        std::array<const Frame*, MixerSources> sources = {InputSignals[0], InputSignals[1], nullptr, nullptr};
        for (unsigned source = 0; source < 2; ++source) {
            sources[2 + source] = playing_[source] ? playback_[source].data() + begin : nullptr;
        }
        std::array<uint8_t, MixerSources> gains{};
        if (IsAudible(card, port)) {
            std::copy_n(card.MixerFile.begin() + port * MixerSources, MixerSources, gains.begin());
        }
        Block heard;
        MixFrames(sources, gains, frames - begin, heard.data());
        log.AddHeard(doneTo_ + begin, {heard.data(), frames - begin},
                     own.Begin < own.End ? own.End - begin : 0);
    }
}

int64_t CardPlayer::NextEnd(const CardState& card) const {
    int64_t next = Never;
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        const ChannelState& state = card.Channels[channel];
        if (!ours_[channel] || !state.Moving) {
            continue;
        }
        const SampleLayout layout = LayoutOf(card, channel);
        const uint64_t frames = channel >= FirstOutput ? queues_[channel].FramesToFirstRead(layout)
                                                       : queues_[channel].FramesToFirstWritten(layout);
        if (frames > 0) {
            next = std::min(next, card.TimeOfTick(std::max(doneTo_, state.MoveFrom) + frames));
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

void CardPlayer::ForgetAudio() {
    for (AudioLog& log : outputs_) {
        log.Clear();
    }
}

}  // namespace simulator
