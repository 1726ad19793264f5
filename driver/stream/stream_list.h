// The streams that this process has open, newest first. Guarded by a lock of its own, which is held
// only while the list is looked at, never while a request is sent or a client called.
#pragma once

#include "card/layers_above.h"
#include "stream/stream_instance.h"

namespace kestvox {

// Once each, at process attach and detach.
void InitializeStreamList();
void DeleteStreamList();

// At the head. The stream's device can be borrowed from now on (FindStreamByCard).
void AddStream(StreamInstance* stream);

// A stream that is not on the list leaves it unchanged.
void RemoveStream(StreamInstance* stream);

// Whether a stream of this process has the port open.
bool IsOpenHere(const CardRecord& card, const Direction& direction, DWORD port);

// Ends the lending of the stream's device and waits until those who have it have given it back: at most five
// seconds, and on a service thread, which others may be waiting for, not at all. FALSE when somebody still
// has it.
BOOL WithdrawDevice(StreamInstance* stream);

// Resets and closes every stream of a process (0: any) on a card (NoCard: any), without telling the
// clients. A stream that is being closed already, or opened, is left to whoever does that.
void CloseStreams(DWORD processId, DWORD ordinal);

// Suspends or resumes every stream, in list order (stream_control.h).
void SuspendStreams();
void ResumeStreams();

}  // namespace kestvox
