// Waits that the hardware needs.
#pragma once

#include "card/card_handle.h"

namespace kestvox {

// That many sample periods at `rate` Hz in microseconds, at least one. `periods` up to 4294.
constexpr DWORD PeriodsToMicroseconds(DWORD periods, DWORD rate) {
    return periods * 1000000u / rate + 1;
}

// Below 1000 the kernel waits; from 1000 on the calling thread spins on the millisecond timer for the
// rounded-up number of milliseconds and then to the next tick.
void DelayMicroseconds(CardHandle* handle, DWORD microseconds);

}  // namespace kestvox
