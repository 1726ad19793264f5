// The road of a header through a stream: queued, handed to the kernel while the in-flight rule allows,
// and returned to the client.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Whether another header may be handed to the card: until at least four are in flight and at least a
// quarter of a second at the client's byte rate. DriverMutex held.
bool MayHandOver(const StreamInstance* stream);

// The plain form: takes the head of the queue off it. DriverMutex held.
WAVEHDR* TakePendingHeader(StreamInstance* stream);

// Queues a header and, when there is one, links it behind the last held header. DriverMutex held.
void AppendPendingHeader(StreamInstance* stream, WAVEHDR* header, WAVEHDR* behind);

// Hands one header, counted in flight already, to the kernel. TRUE only when all four requests worked.
BOOL SubmitBuffer(StreamInstance* stream, WAVEHDR* header);

enum class TransferRule {
    WhileRunning,  // IOCTL_START_TRANSFER follows a buffer only while the port runs
    Always,
};

enum class HandOverLimit { None, One };

// Hands headers over until the in-flight rule refuses or none is left. One thread at a time does so for
// a stream: who comes second leaves its part to the first, so buffers reach the kernel in order and a
// client that writes from inside a callback does not nest. A header that the kernel does not take goes
// back to the client by way of the service thread, like one that is done. A buffer that reaches the kernel
// after a reset has flushed it is flushed again.
void HandOver(StreamInstance* stream, TransferRule rule, HandOverLimit limit = HandOverLimit::None);

// Gives the stream's channel up while the computer sleeps, and takes it back. In between no header is handed
// over: the kernel would not take it, and it would go back to the client unplayed or empty. Who takes the
// channel back prepares the port and hands over what has waited.
void GiveUpChannel(StreamInstance* stream);
void TakeChannelBack(StreamInstance* stream);

// Whether the stream holds the header since before its last reset began; false for null. DriverMutex held.
bool HeldBeforeReset(StreamInstance* stream, const WAVEHDR* header);

// Takes a finished buffer out of the counts. DriverMutex held.
void CountDone(StreamInstance* stream, HeldHeader* held);

// Gives a header that the ledger holds back to the client: shadow buffer released, marked done, client
// called. DriverMutex need not be held; it is taken around the stream's own lists only.
void ReturnHeader(StreamInstance* stream, WAVEHDR* header);

// Returns, in the order of acceptance, the held headers that are not in the card and were accepted before
// the reset that is under way, those that a broken loop left without a pass to come, or all of them (at a
// close).
void ReturnIdleHeaders(StreamInstance* stream);
void ReturnSpentHeaders(StreamInstance* stream);
void ReturnAllHeaders(StreamInstance* stream);

}  // namespace kestvox
