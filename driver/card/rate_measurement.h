// Measuring the rate of a digital signal.
#pragma once

#include "card/card_handle.h"
#include "card/protocol.h"

namespace kestvox {

// Where a measurement is started (bit 7 of Control, pulsed) and read.
struct RateMeter {
    RegisterSpace Space;
    DWORD Control;
    DWORD Reading;
};

// Measures twice, as the first measurement began before the receiver had settled, and compares the
// second one with a rate code. TRUE also when it cannot be read, and for rates that have no class.
bool MeasuredRateMatches(CardHandle* handle, const RateMeter& meter, DWORD rate, WORD rateCode);

}  // namespace kestvox
