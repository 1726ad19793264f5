// Which card's clock a new stream runs on.
#pragma once

#include "card/card_record.h"

namespace kestvox {

// The link master that the card's `Master` setting names, when it is there, enabled, and does not itself
// follow a card that is there; else the card itself.
CardRecord& ClockMasterOf(CardRecord& card);

// The same for a stream that is about to open. The card's clock source setting and its working copy
// follow: the link for a follower; automatic for one that followed before.
CardRecord& ResolveClockMaster(CardRecord& card);

}  // namespace kestvox
