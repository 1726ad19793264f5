// Buffers in the card's sample format, for headers whose own memory the card cannot use.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// On exactly one of a stream's two lists: BusyBuffers while it serves a header, FreeBuffers while it
// waits to be used again. Its memory stays locked all that time.
struct ShadowBuffer {
    WAVEHDR* Header;
    HGLOBAL Memory;
    void* Data;
    DWORD Size;  // as asked for; the allocation is rounded up to whole words
    ShadowBuffer* Next;
};

// Gives the header a buffer of exactly `size` bytes, taken from FreeBuffers when there is one. The
// buffer's address; null when there is no memory.
void* AcquireShadowBuffer(StreamInstance* stream, WAVEHDR* header, DWORD size);

// Null when the header has none.
ShadowBuffer* LookupShadowBuffer(StreamInstance* stream, const WAVEHDR* header);

// Puts the header's buffer, if it has one, back onto FreeBuffers.
void ReleaseShadowBuffer(StreamInstance* stream, const WAVEHDR* header);

// Gives the memory of FreeBuffers back to the system; busy buffers return there as their headers
// complete.
void FreeShadowBuffers(StreamInstance* stream);

// The same for both lists, without a lock, when nobody else can reach the stream any more.
void FreeAllShadowBuffers(StreamInstance* stream);

}  // namespace kestvox
