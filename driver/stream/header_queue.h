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

enum class HandOverCall {
    Added,      // an input buffer was added: one header; a transfer is started while the port runs
    Written,    // headers were written, or have waited: all that the rule allows; likewise
    Completed,  // a buffer was completed, DriverMutex held: all that the rule allows, and a transfer is
                // started in any case
};

// The whole of a write or of adding a buffer: checks what the client hands in, marks it as the stream's own,
// gives it a buffer that the card can use, queues it behind the last one and hands over what `call` says.
// `resets` is what the stream's ResetCount was when the message came: a header that a reset has overtaken
// since is returned at once.
//   MMSYSERR_INVALHANDLE  the stream is closing
//   MMSYSERR_INVALPARAM   null, another size than WAVEHDR's, no data; data that does not suit the conversion
//   WAVERR_UNPREPARED
//   WAVERR_STILLPLAYING   the stream has it already
//   MMSYSERR_NOMEM        no memory for its place or its buffer, or the stream has begun to close
// After the last one, and after data that does not suit, the header keeps its marks.
MMRESULT SendHeader(StreamInstance* stream, WAVEHDR* header, DWORD size, DWORD resets, HandOverCall call);

// Takes the head of the queue off it; null when it is empty. DriverMutex held.
WAVEHDR* TakePendingHeader(StreamInstance* stream);

// Hands headers over until the in-flight rule refuses, none is left, or the call's own limit is reached. One
// thread at a time does so for a stream: who comes second leaves its call to the first, which serves it as if
// it had come alone. So the four requests of two buffers are never mixed, buffers reach the kernel in order,
// and a client that writes from inside a callback does not nest. A header that the kernel refuses goes back
// to the client by way of the service thread, like one that the card has played. A buffer that reaches the
// kernel after a reset has flushed it is flushed again; one that does not because the port has fallen asleep
// waits for the resume. Not under the stream's control.
void HandOver(StreamInstance* stream, HandOverCall call);

// The frame of a reset. From its begin on nothing is handed over, and every header accepted so far belongs to
// the time before it. EmptyQueue unlinks those that are queued, and the ledger still has them.
// AwaitFlushedHeaders waits until those in the card are back with the client, at most 200 ms; no lock may be
// held, and on a service thread, which others may be waiting for, it does nothing. FinishReset answers TRUE
// when the client has handed in more meanwhile, which is still queued, and the stream's number of resets by
// then. A client may reset again from inside the callbacks of a reset: only the outermost one finishes.
void BeginReset(StreamInstance* stream);
void EmptyQueue(StreamInstance* stream);
void AwaitFlushedHeaders(StreamInstance* stream);
BOOL FinishReset(StreamInstance* stream, DWORD* resets);

}  // namespace kestvox
