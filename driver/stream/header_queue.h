// The client's headers on their way to the card: accepted, queued, handed to the kernel.
//
// One verb for each step of a header's life, here and in header_return.h:
//   accept     it is checked, marked and becomes the stream's
//   hand over  the four requests give it to the kernel; from then on it is in flight
//   refuse     the kernel did not take it
//   complete   the card has finished with it, or the kernel has refused it
//   return     it goes back to the client, once
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Checks what the client hands in and marks it as the stream's own. It is not queued yet: a direction may
// give it a buffer that the card can use first, and when that fails the header keeps its marks.
//   MMSYSERR_INVALPARAM   null, another size than WAVEHDR's, no data
//   WAVERR_UNPREPARED
//   WAVERR_STILLPLAYING   the stream has it already
//   MMSYSERR_INVALHANDLE  the stream is closing
MMRESULT AcceptHeader(StreamInstance* stream, WAVEHDR* header, DWORD size);

// Enters an accepted header into the ledger and, behind the last one, into the queue. When that fails, its
// shadow buffer is released.
//   MMSYSERR_NOMEM   no memory for its place, or the stream has begun to close
MMRESULT QueueHeader(StreamInstance* stream, WAVEHDR* header);

// Whether the card can use the header's own memory.
bool IsCardAligned(const WAVEHDR* header);

// Whether another header may be handed to the card: until at least four are in flight and at least a
// quarter of a second at the client's byte rate. DriverMutex held.
bool MayHandOver(const StreamInstance* stream);

// Takes the head of the queue off it; null when it is empty. DriverMutex held.
WAVEHDR* TakePendingHeader(StreamInstance* stream);

enum class TransferRule {
    WhileRunning,  // IOCTL_START_TRANSFER follows a buffer only while the port runs
    Always,
};

enum class HandOverLimit { None, One };

// Hands headers over until the in-flight rule refuses or none is left. One thread at a time does so for
// a stream: who comes second leaves its part to the first, so buffers reach the kernel in order and a
// client that writes from inside a callback does not nest. A header that the kernel refuses goes back to the
// client by way of the service thread, like one that the card has played. A buffer that reaches the kernel
// after a reset has flushed it is flushed again.
void HandOver(StreamInstance* stream, TransferRule rule, HandOverLimit limit = HandOverLimit::None);

// Gives the stream's channel up while the computer sleeps, and takes it back. In between no header is handed
// over: the kernel would not take it, and it would go back to the client unplayed or empty. Who takes the
// channel back prepares the port and hands over what has waited.
void GiveUpChannel(StreamInstance* stream);
void TakeChannelBack(StreamInstance* stream);

// The frame of a reset. From its begin on nothing is handed over, and every header accepted so far belongs to
// the time before it; EmptyQueue unlinks those that are queued, and the ledger still has them. A client may
// reset again from inside the callbacks of a reset: only the outermost one finishes. FinishReset answers TRUE
// when the client has handed in more meanwhile: that is still queued.
void BeginReset(StreamInstance* stream);
void EmptyQueue(StreamInstance* stream);
BOOL FinishReset(StreamInstance* stream);

}  // namespace kestvox
