// The pieces of wave input that its source files share.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

MMRESULT PrepareInput(StreamInstance* stream, bool ignoreClockError);
void CleanUpInput(StreamInstance* stream);
void BeginRecording(StreamInstance* stream);
void StopInputForSleep(StreamInstance* stream);

// Bytes in whole 32-bit words: the card writes nothing less.
constexpr DWORD WholeWords(DWORD bytes) {
    return bytes & ~static_cast<DWORD>(3);
}

// Gives a header the shadow buffer that the card records into.
MMRESULT FillInputBuffer(StreamInstance* stream, HeldHeader* held);
void CaptureBufferDone(StreamInstance* stream, HeldHeader* held);

}  // namespace kestvox
