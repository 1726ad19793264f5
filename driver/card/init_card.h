// Brings a card's registers into the state that every other routine starts from.
#pragma once

#include "card/card_handle.h"

namespace kestvox {

// Runs every step whatever the single accesses answer; takes about 0.2 s, under ClockMutex. Leaves the mixer
// silent and the clock internal at 44100 Hz.
void InitCard(CardHandle* handle, CardRecord& card);

}  // namespace kestvox
