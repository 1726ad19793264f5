// The pieces of wave input that its source files share.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

MMRESULT PrepareInput(StreamInstance* stream, bool ignoreClockError);
void CleanUpInput(StreamInstance* stream);
void SuspendInput(StreamInstance* stream);
void ResumeInput(StreamInstance* stream);
void CaptureBufferDone(StreamInstance* stream, WAVEHDR* header);

}  // namespace kestvox
