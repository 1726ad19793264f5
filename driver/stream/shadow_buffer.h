// Buffers in the card's sample format, for headers whose own memory the card cannot use. A buffer hangs on
// the header that it serves, or waits on the stream's FreeBuffers to be used again; its memory stays locked
// all that time.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

struct ShadowBuffer {
    HGLOBAL Memory;
    void* Data;
    DWORD Size;  // as asked for; the allocation is rounded up to whole words
    ShadowBuffer* Next;
};

// Hangs the head of FreeBuffers, when there is one, on a header that is going to need it. DriverMutex held.
void TakeFreeBuffer(StreamInstance* stream, HeldHeader* held);

// Makes the header's buffer exactly `size` bytes long, or gives it one. The buffer's address; null when there
// is no memory. The header is not queued yet, so no lock is needed.
void* AcquireShadowBuffer(HeldHeader* held, DWORD size);

// Puts the header's buffer, if it has one, onto FreeBuffers. DriverMutex held.
void ReleaseShadowBuffer(StreamInstance* stream, HeldHeader* held);

// Gives the memory of FreeBuffers back to the system; the buffers of headers return there later.
void FreeShadowBuffers(StreamInstance* stream);

// The same without a lock, when nobody else can reach the stream any more.
void FreeLastShadowBuffers(StreamInstance* stream);

}  // namespace kestvox
