// The pieces of wave input that its source files share.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

MMRESULT PrepareInput(StreamInstance* stream, bool ignoreClockError);
void CleanUpInput(StreamInstance* stream);
void SuspendInput(StreamInstance* stream);

// The card's 32-bit slot, in bytes.
inline constexpr DWORD SlotSize = 4;

// Bytes of the client's layout recorded up to `frames` and not given back. None when more was given back:
// a stop counts whole transfer units, a full buffer every byte. DriverMutex held.
DWORD UndeliveredBytes(const StreamInstance* stream, DWORD frames);

void CaptureBufferDone(StreamInstance* stream, WAVEHDR* header);

}  // namespace kestvox
