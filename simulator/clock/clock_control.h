// The cards' sample clocks as their registers and the scene make them: source, rate, link, resync,
// fault latch, and the rate measurement of the digital input. The machine's lock is held by the
// caller of everything here.
#pragma once

#include <cstdint>

#include "simulator/card/register_file.h"
#include "simulator/machine/machine_state.h"

namespace simulator {

inline constexpr uint8_t SourceInternal = 0x00;
inline constexpr uint8_t SourceLink = 0x20;
inline constexpr uint8_t SourceDigital = 0x40;
inline constexpr uint8_t SourcePll = 0x60;

// Works out every card's clock anew, as of `now`. Frames due before `now` must have been moved.
void ResolveClocks(MachineState& machine, int64_t now);

// Clocks also change by themselves, when a digital receiver has settled. The next such instant after
// `now` (Never when none is under way), and the change itself once it has passed.
int64_t NextClockEvent(const MachineState& machine, int64_t now);
void SettleReceivers(MachineState& machine, int64_t now);

// What READ_CLOCK_FAULT answers: whether the card's clock has been without a valid source for eight
// sample periods or more since the last read.
bool TakeClockFault(CardState& card, int64_t now);

// Frames a second of the signal on the card's digital input; 0 when there is none.
uint32_t DigitalInputRate(const MachineState& machine, unsigned card, int64_t now);

// Whether the card's digital output sends a signal.
bool TransmitterRuns(const CardState& card);

uint8_t MeasuredByCard(CardState& card, int64_t now);
uint8_t MeasuredByPort(CardState& card, int64_t now);

// A measurement as the card powers up: none valid. `receiverOn` as the registers have it.
void ResetMeasurements(CardState& card);

// Register handlers
void ReceiverControlWritten(const RegisterChange& change);  // card 9
void PortReceiverWritten(const RegisterChange& change);     // digital input port 1
void ClockControlWritten(const RegisterChange& change);     // card 17
void TransmitterWritten(const RegisterChange& change);      // card 25
void ClockSelectWritten(const RegisterChange& change);      // card 32
void StartHoldWritten(const RegisterChange& change);        // card 36

}  // namespace simulator
