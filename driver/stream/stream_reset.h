// The frame of a reset, the same for both directions. A client may reset again from inside the callbacks
// of a reset: only the outermost one finishes.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// From now on nothing is handed to the card, and every header accepted so far belongs to the time before
// the reset.
void BeginReset(StreamInstance* stream);

// Unlinks the queued headers from before the reset; the ledger still has them.
void EmptyQueue(StreamInstance* stream);

// TRUE when the client has handed in more from inside the callbacks: that is still queued.
BOOL FinishReset(StreamInstance* stream);

}  // namespace kestvox
