#include "simulator/channel_run.h"

namespace simulator {
namespace {

constexpr unsigned StartHoldRegister = 36;
constexpr uint8_t ArmBit = 0x02;  // port register 0

uint8_t DirectionBit(unsigned channel) {
    return channel >= FirstOutput ? 0x01 : 0x02;
}

// Brings Moving and Silent in line with the run state, as of `tick`; a channel that may move now
// begins with the frame at `next`.
void Follow(CardState& card, ChannelState& channel, uint64_t tick, uint64_t next) {
    const bool ready = channel.Acquired && channel.Armed && !channel.Waiting && !card.Held();
    const bool moving = ready && channel.TransferOn;
    const bool silent = ready && !channel.TransferOn && channel.Status.Started;
    if (channel.Silent && !silent) {
        channel.SilentPending += (moving ? next : tick) - channel.SilentFrom;
    } else if (!channel.Silent && silent) {
        channel.SilentFrom = tick;
    }
    if (moving && !channel.Moving) {
        channel.MoveFrom = next;
        channel.MoveFromFrame = next - static_cast<uint64_t>(card.TickOffset);
    } else if (!moving && channel.Moving) {
        channel.MoveUntil = tick;
    }
    channel.Moving = moving;
    channel.Silent = silent;
}

void FollowAtNextFrame(CardState& card, ChannelState& channel, int64_t now) {
    const uint64_t tick = card.TickAt(now);
    Follow(card, channel, tick, tick + 1 + card.Lag);
}

}  // namespace

void AcquireChannelHardware(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    if (state.Acquired) {
        return;
    }
    state.Acquired = true;
    const unsigned inFlight = state.Status.BuffersInFlight;
    state.Status = OutputStatus{};
    state.Status.BuffersInFlight = inFlight;
    state.Status.MostInFlight = inFlight;
    state.SilentPending = 0;
    FollowAtNextFrame(machine.Cards[card], state, now);
}

void ReleaseChannelHardware(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.CountsFromZero = state.CountsFromZero || state.TransferOn;
    state.Acquired = false;
    state.TransferOn = false;
    state.Armed = false;
    state.Waiting = false;
    FollowAtNextFrame(machine.Cards[card], state, now);
}

void StartChannelTransfer(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    if (state.CountsFromZero) {
        state.Position = 0;
        state.CountsFromZero = false;
    }
    state.TransferOn = true;
    FollowAtNextFrame(machine.Cards[card], state, now);
}

void StopChannelTransfer(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.TransferOn = false;
    state.CountsFromZero = true;
    FollowAtNextFrame(machine.Cards[card], state, now);
}

void ArmChannelRun(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    CardState& cardState = machine.Cards[card];
    ChannelState& state = cardState.Channels[channel];
    if (state.Armed) {
        return;
    }
    const uint8_t hold = machine.Cards[cardState.Supplier].CardFile[StartHoldRegister];
    state.Armed = true;
    state.Waiting = (cardState.PortFiles[channel][0] & ArmBit) != 0 && (hold & DirectionBit(channel)) != 0;
    FollowAtNextFrame(cardState, state, now);
}

void DisarmChannelRun(MachineState& machine, unsigned card, unsigned channel, int64_t now) {
    ChannelState& state = machine.Cards[card].Channels[channel];
    state.Armed = false;
    state.Waiting = false;
    FollowAtNextFrame(machine.Cards[card], state, now);
}

void RunDry(CardState& card, unsigned channel, uint64_t tick) {
    card.Channels[channel].TransferOn = false;
    Follow(card, card.Channels[channel], tick, tick);
}

void CountMoved(CardState& card, unsigned channel, uint64_t from, uint64_t frames) {
    ChannelState& state = card.Channels[channel];
    if (frames == 0) {
        return;
    }
    if (!state.Status.Started) {
        state.Status.Started = true;
        state.Status.StartFrame = state.MoveFromFrame + (from - state.MoveFrom);
    }
    state.Position += static_cast<uint32_t>(frames);
    state.Status.FramesPlayed += frames;
    state.Status.FramesSilent += state.SilentPending;
    state.SilentPending = 0;
}

void ApplyHold(CardState& card, int64_t now) {
    for (ChannelState& channel : card.Channels) {
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
                FollowAtNextFrame(state, state.Channels[channel], now);
            }
        }
    }
}

}  // namespace simulator
