// The receivers of the digital input, the card's own and the port's, and the measurement of the rate that
// each can make. The machine's lock is held by the caller of everything here.
#pragma once

#include <cstdint>

#include "simulator/card/register_file.h"

namespace simulator {

// Frames a second of the signal on the card's digital input; 0 when there is none.
uint32_t DigitalInputRate(const MachineState& machine, unsigned card, int64_t now);

// The measured-rate register: the last result that is ready.
uint8_t MeasuredByCard(CardState& card, int64_t now);
uint8_t MeasuredByPort(CardState& card, int64_t now);

// As the card powers up: both receivers off, and no valid result.
void ResetMeasurements(CardState& card);

// The receiver's control register has changed: the receiver goes on or off, and a pulse of the measure bit
// starts a measurement. Not followed by ResolveClocks.
void ControlCardReceiver(const RegisterChange& change);
void ControlPortReceiver(const RegisterChange& change);

}  // namespace simulator
