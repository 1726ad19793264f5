// The pieces of wave input that its source files share.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

MMRESULT PrepareInput(StreamInstance* stream, bool ignoreClockError);
void CleanUpInput(StreamInstance* stream);
void BeginRecording(StreamInstance* stream);
bool StopInputForSleep(StreamInstance* stream);

// The card's 32-bit slot, in bytes.
inline constexpr DWORD SlotSize = 4;

void CaptureBufferDone(StreamInstance* stream, WAVEHDR* header);

}  // namespace kestvox
