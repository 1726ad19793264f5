#include "simulator/channels/channel_run.h"

#include <algorithm>

#include "simulator/card/register_map.h"

namespace simulator {
namespace {

uint8_t DirectionBit(unsigned channel) {
    return channel >= FirstOutput ? HoldOutputs : HoldInputs;
}

// An input that was told to stop misses nothing; an output is silent whatever the reason.
bool MayMiss(const ChannelState& channel, bool input) {
    return channel.Tally.Started && !(input && channel.CountsFromZero);
}

// Brings Moving and Missing in line with the run state, as of `tick`; a channel that may move now
// begins with the frame at `next`.
void Follow(CardState& card, unsigned index, uint64_t tick, uint64_t next) {
    ChannelState& channel = card.Channels[index];
    const bool ready = channel.Acquired && channel.Armed && !channel.Waiting && !card.Held();
    const bool moving = ready && channel.TransferOn;
    const bool missing = ready && !channel.TransferOn && MayMiss(channel, index < FirstOutput);
    if (channel.Missing && !missing) {
        channel.MissingPending += (moving ? next : tick) - channel.MissingFrom;
    } else if (!channel.Missing && missing) {
        channel.MissingFrom = tick;
    }
    if (moving && !channel.Moving) {
        channel.MoveFrom = next;
        channel.MoveFromFrame = next - static_cast<uint64_t>(card.TickOffset);
    } else if (!moving && channel.Moving) {
        channel.MoveUntil = tick;
    }
    channel.Moving = moving;
    channel.Missing = missing;
}

void CountGap(ChannelTally& tally, uint64_t frames) {
    if (frames == 0) {
        return;
    }
    if (tally.Gaps.Count++ == 0) {
        tally.Gaps.First = tally.FramesMoved;
    }
    tally.Gaps.Longest = std::max(tally.Gaps.Longest, frames);
    tally.FramesMissed += frames;
}

void FollowAtNextFrame(CardState& card, unsigned channel, int64_t now) {
    const uint64_t tick = card.TickAt(now);
    Follow(card, channel, tick, tick + 1 + card.Lag);
}

}  // namespace

bool AcquireChannelHardware(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    if (state.Acquired || state.PowerLost) {
        return false;
    }
    state.Acquired = true;
    const unsigned inFlight = state.Tally.BuffersInFlight;
    state.Tally = ChannelTally{};
    state.Tally.BuffersInFlight = inFlight;
    state.Tally.MostInFlight = inFlight;
    state.MissingPending = 0;
    FollowAtNextFrame(machine.Cards[card], channel, now);
    return true;
}

void ReleaseChannelHardware(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.CountsFromZero = state.CountsFromZero || state.TransferOn;
    state.Acquired = false;
    state.PowerLost = false;
    state.TransferOn = false;
    state.Armed = false;
    state.Waiting = false;
    FollowAtNextFrame(machine.Cards[card], channel, now);
}

void StartChannelTransfer(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    if (state.CountsFromZero) {
        state.Position = 0;
        state.CountsFromZero = false;
    }
    state.TransferOn = true;
    state.TransferAsked = true;
    FollowAtNextFrame(machine.Cards[card], channel, now);
}

void StopChannelTransfer(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.TransferOn = false;
    state.CountsFromZero = true;
    FollowAtNextFrame(machine.Cards[card], channel, now);
    if (channel < FirstOutput) {
        state.MissingPending = 0;  // nothing of this recording will follow any more
    }
}

void ArmChannelRun(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    CardState& cardState = machine.Cards[card];
    ChannelState& state = cardState.Channels[channel];
    if (state.Armed) {
        return;
    }
    const uint8_t hold = machine.Cards[cardState.Supplier].CardFile[card_register::StartHold];
    state.Armed = true;
    state.Waiting = (cardState.PortFiles[channel][port_register::Control] & StartWithHold) != 0 &&
                    (hold & DirectionBit(channel)) != 0;
    FollowAtNextFrame(cardState, channel, now);
}

void DisarmChannelRun(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.Armed = false;
    state.Waiting = false;
    FollowAtNextFrame(machine.Cards[card], channel, now);
}

void RunDry(CardState& card, unsigned channel, uint64_t tick) {
    card.Channels[channel].TransferOn = false;
    Follow(card, channel, tick, tick);
}

void CountMoved(CardState& card, unsigned channel, uint64_t from, uint64_t frames) {
    ChannelState& state = card.Channels[channel];
    if (frames == 0) {
        return;
    }
    if (!state.Tally.Started) {
        state.Tally.Started = true;
        state.Tally.StartFrame = state.MoveFromFrame + (from - state.MoveFrom);
    }
    CountGap(state.Tally, state.MissingPending);
    state.MissingPending = 0;
    state.Position += static_cast<uint32_t>(frames);
    state.Tally.FramesMoved += frames;
}

void ApplyHold(CardState& card, int64_t now) {
    for (unsigned channel = 0; channel < ChannelCount; ++channel) {
        FollowAtNextFrame(card, channel, now);
    }
}

void ReleaseWaiting(MachineState& machine, unsigned supplier, uint8_t directions, int64_t now) {
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        CardState& state = machine.Cards[card];
        if (state.Supplier != supplier) {
            continue;
        }
        for (unsigned channel = 0; channel < ChannelCount; ++channel) {
            if ((directions & DirectionBit(channel)) != 0 && state.Channels[channel].Waiting) {
                state.Channels[channel].Waiting = false;
                FollowAtNextFrame(state, channel, now);
            }
        }
    }
}

}  // namespace simulator
