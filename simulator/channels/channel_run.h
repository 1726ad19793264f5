// When a channel's frames move: while it is acquired, its transfer is on, it is armed and not behind a start
// hold, and the card's clock is not held. A channel that begins to move does so at the next frame.
//
// These change the run state only; the frames themselves are moved by the process that has the
// channel (CardPlayer). The machine's lock is held by the caller of everything here, and the calling process
// has moved everything that was due before `now`.
#pragma once

#include <cstdint>

#include "simulator/machine/machine_state.h"

namespace simulator {

bool AcquireChannelHardware(MachineState& machine, unsigned card, unsigned channel, int64_t now);
void ReleaseChannelHardware(MachineState& machine, unsigned card, unsigned channel, int64_t now);
void StartChannelTransfer(MachineState& machine, unsigned card, unsigned channel, int64_t now);
void StopChannelTransfer(MachineState& machine, unsigned card, unsigned channel, int64_t now);

// Behind the start hold when the port's "start with hold" bit and the hold bit of the card that supplies the
// clock are set; else the channel sets off.
void ArmChannelRun(MachineState& machine, unsigned card, unsigned channel, int64_t now);
void DisarmChannelRun(MachineState& machine, unsigned card, unsigned channel, int64_t now);

// The channel found no buffer for the frame of that tick: its transfer is off from there.
void RunDry(CardState& card, unsigned channel, uint64_t tick);

// The channel moved `frames`, the first of them at tick `from`.
void CountMoved(CardState& card, unsigned channel, uint64_t from, uint64_t frames);

// The card's hold bit has changed.
void ApplyHold(CardState& card, int64_t now);

// Start hold bits (HoldOutputs, HoldInputs) of the card that supplies a group's clock have been cleared:
// every waiting channel of that direction on every card of the group sets off on the same frame.
void ReleaseWaiting(MachineState& machine, unsigned supplier, uint8_t directions, int64_t now);

}  // namespace simulator
