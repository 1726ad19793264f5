// Whose sample clock a card runs on.
#pragma once

#include "card/card_handle.h"

namespace kestvox {

// The link master that the card's `Master` setting names, when it is there, enabled, and does not itself
// follow a card that is there; else the card itself.
CardRecord& ClockMasterOf(CardRecord& card);

// The same for a stream that is about to open. The card's clock source setting and its working copy
// follow: the link for a follower; automatic for one that followed before.
CardRecord& ResolveClockMaster(CardRecord& card);

// Initialises a card that was in use before. Its clock is back at its initial rate: the first stream that is
// prepared on its group programs the clock in full, and ports that were prepared before have to be prepared
// again.
void InitCardAgain(CardHandle* handle, CardRecord& card);

}  // namespace kestvox
