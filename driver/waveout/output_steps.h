// The pieces of wave output that its source files share.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Mixer input of the port's playback in the mixer of its own output.
DWORD OwnPlaybackGain(DWORD port);

void InitializeOutputFields(StreamInstance* stream);
MMRESULT PrepareOutput(StreamInstance* stream, bool ignoreClockError);
void CleanUpOutput(StreamInstance* stream);
void SuspendOutput(StreamInstance* stream);

// The output form of taking a header: walks loops. DriverMutex held.
WAVEHDR* TakePendingOutput(StreamInstance* stream);
void OutputBufferDone(StreamInstance* stream, WAVEHDR* header);

// Takes the header into the loop that is being written, if one is.
void StampLoop(StreamInstance* stream, WAVEHDR* header);

// Ends the active loop with the current pass and returns the headers that have no pass left.
void LeaveLoop(StreamInstance* stream);

}  // namespace kestvox
