// The cards' sample clocks as their registers and the scene make them: rate, link, resync, fault latch. The
// machine's lock is held by the caller of everything here.
#pragma once

#include <cstdint>

#include "simulator/card/register_file.h"
#include "simulator/machine/machine_state.h"

namespace simulator {

// Works out every card's clock anew, as of `now`. Frames due before `now` must have been moved.
void ResolveClocks(MachineState& machine, int64_t now);

// Clocks also change by themselves, when a digital receiver has settled. The next such instant after
// `now` (Never when none is under way), and the change itself once it has passed.
int64_t NextClockEvent(const MachineState& machine, int64_t now);
void SettleReceivers(MachineState& machine, int64_t now);

// What READ_CLOCK_FAULT answers: whether the card's clock has been without a valid source for eight
// sample periods or more since the last read.
bool TakeClockFault(CardState& card, int64_t now);

// What a write to a register sets off.
void DigitalReceiverWritten(const RegisterChange& change);
void PortReceiverWritten(const RegisterChange& change);
void ClockControlWritten(const RegisterChange& change);
void DigitalTransmitterWritten(const RegisterChange& change);
void ClockSelectWritten(const RegisterChange& change);
void StartHoldWritten(const RegisterChange& change);

}  // namespace simulator
