// Playback: what an open output stream does with the messages of its client.
//
// Every written header joins one chain, linked through lpNext in the order written; PendingHeaders is
// the next one for the card. Loops are played by walking the chain again from the loop's first header,
// and a header goes back to the client when its last pass has been played. Playback starts by itself
// with the first write, unless the port was paused before.
//
// Handlers run on the client's threads and answer a result of the multimedia interface.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Answers as SendHeader does (stream/header_queue.h).
MMRESULT WriteOutput(StreamInstance* stream, WAVEHDR* header, DWORD size);

MMRESULT PauseOutput(StreamInstance* stream);

// Stops the port and returns every header; those in the card come back as the kernel gives them up. What
// the client writes from inside its callbacks meanwhile is played afterwards.
MMRESULT ResetOutput(StreamInstance* stream);

// Leaves the loop that is being played after the pass that is being handed over.
MMRESULT BreakOutputLoop(StreamInstance* stream);

MMRESULT GetOutputVolume(StreamInstance* stream, DWORD* volume);

// Low word: 0 to 0xFFFF = 0 dB; the high word is ignored. Sets the gain of the port's playback in its own
// output's mixer, until the next open.
MMRESULT SetOutputVolume(StreamInstance* stream, DWORD volume);

// Private messages around a power-down of the card by another component: save the PCI configuration and
// release the channel; check that the card is the same one, write the configuration back, initialise the
// card and take the channel again. MMSYSERR_ERROR at the first step that fails.
MMRESULT SaveCard(StreamInstance* stream);
MMRESULT RestoreCard(StreamInstance* stream);

}  // namespace kestvox
