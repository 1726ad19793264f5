// The pieces of wave output that its source files share.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Mixer input of the port's playback in the mixer of its own output.
DWORD OwnPlaybackGain(DWORD port);

void InitializeOutputFields(StreamInstance* stream);
MMRESULT PrepareOutput(StreamInstance* stream, bool ignoreClockError);
void CleanUpOutput(StreamInstance* stream);
void StopOutputForSleep(StreamInstance* stream);

// Tells the card the volume that the client has set, if it has: of two that do so at once, the last one tells
// what is set by then. Takes the stream's control.
void ApplyVolume(StreamInstance* stream);

// The output form of taking the next header: walks loops. DriverMutex held.
WAVEHDR* TakeNextOutput(StreamInstance* stream);
void OutputBufferDone(StreamInstance* stream, HeldHeader* held);

// Converts the client's data into a shadow buffer.
MMRESULT FillOutputBuffer(StreamInstance* stream, HeldHeader* held);

// Stamps the passes that the header still has to play: it may begin a loop, be part of the one that is being
// written, or stand outside. One that a reset has overtaken is part of nothing. DriverMutex held.
void StampLoop(StreamInstance* stream, WAVEHDR* header, bool overtaken);

// Ends the active loop, if there is one, with the pass that is being handed over: shortens what its headers
// still expect by the passes that are given up, and marks those that expect nothing any more as spent.
// DriverMutex held.
void GiveUpPasses(StreamInstance* stream);

}  // namespace kestvox
