// Recording: what an open input stream does with the messages of its client.
//
// The card fills buffers in the order in which they were handed over and counts frames since its transfer
// was started. It does not tell how much of a buffer was filled: that follows from its position and from
// the bytes given back since the start.
//
// Handlers run on the client's threads and answer a result of the multimedia interface.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Answers as SendHeader does (stream/header_queue.h).
MMRESULT AddInputBuffer(StreamInstance* stream, WAVEHDR* header, DWORD size);

// Stops once the position has settled. What has been filled comes back; other buffers in the card stay
// there for the next start.
MMRESULT StopInput(StreamInstance* stream);

// Stops and returns every header; those in the card come back as the kernel gives them up, with what
// they hold. What the client adds from inside its callbacks meanwhile stays queued.
MMRESULT ResetInput(StreamInstance* stream);

}  // namespace kestvox
