// Measuring the rate of a digital signal.
#pragma once

#include "card/card_handle.h"
#include "card/protocol.h"
#include "card/rates.h"

namespace kestvox {

// Where a measurement is started (bit 7 of Control, pulsed) and read.
struct RateMeter {
    RegisterSpace Space;
    DWORD Control;
    DWORD Reading;
};

// Whether the signal has the rate, by the second of two measurements: the first one began before the receiver
// had settled. True also when the measurement cannot be read, and for a signal at a rate that is
// NotMeasurable.
bool MeasuredRateMatches(CardHandle* handle, const RateMeter& meter, const CardRate& rate);

}  // namespace kestvox
