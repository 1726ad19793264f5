// The converters, the transmitter and their pulses: each takes what its registers say only when it is told
// to, in order and for long enough. Until then it gives silence. The machine's lock is held by the caller of
// everything here.
#pragma once

#include <cstdint>

#include "simulator/card/register_file.h"
#include "simulator/machine/machine_state.h"

namespace simulator {

// Whether the analog input, the analog output and the transmitter work with the clock as it is now.
bool AnalogInputWorks(const CardState& card, int64_t now);
bool AnalogOutputWorks(const CardState& card, int64_t now);
bool DigitalOutputWorks(const CardState& card, int64_t now);

// As the card powers up: nothing is calibrated, started or in step with the clock.
void ResetConverters(CardState& card);

// What a write to a register sets off. ResyncPulse is for a resync bit that has changed.
void AnalogInputControlWritten(const RegisterChange& change);
void PortControlWritten(const RegisterChange& change);
void FollowTransmitPulse(const RegisterChange& change);
void FollowResyncPulse(const RegisterChange& change);

}  // namespace simulator
