// The client's headers on their way back, each exactly once, and the client's callback. header_queue.h has
// the verbs.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Takes a completed buffer out of the counts of what is in flight. DriverMutex held.
void CountCompleted(StreamInstance* stream, HeldHeader* held);

// Takes a header out of the ledger and lets its shadow buffer go, without a word. DriverMutex held.
void ForgetHeader(StreamInstance* stream, HeldHeader* held);

// Marks a header that is forgotten done, and calls the client.
void ReturnHeader(StreamInstance* stream, WAVEHDR* header);

// Return several, in the order of acceptance: the queued headers that are not in the card and were accepted
// before the reset that is under way; those that a broken loop left without a pass to come; all of them, at a
// close.
void ReturnIdleHeaders(StreamInstance* stream);
void ReturnSpentHeaders(StreamInstance* stream);
void ReturnAllHeaders(StreamInstance* stream);

// Calls the client in the way that it asked for at the open, if it did: `message` is one of the direction's,
// `param` its first parameter. On the calling thread.
void NotifyClient(StreamInstance* stream, UINT message, DWORD_PTR param);

}  // namespace kestvox
