// Which card's clock a stream runs on, and which streams are open on it, in the card table.
//
// The port's flag and the clock master's count change side by side: only a process that dies between the two
// leaves one without the other.
//
// While a process lives the kernel gives its channels to nobody else. So a port that is marked open and whose
// channel can be had belonged to a process that died: whoever notices takes its flags and counts back.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// Lowers a count of the card table, but never below zero: the counts of a card that was soft-reset meanwhile
// are zero already.
void CountDown(SharedCount& count);

// The stream has its channel. What a dead process left of the port is forgotten first. Takes SequenceMutex.
void CountOpen(StreamInstance* stream);

// The stream is about to give its channel back. Counts down only what its port's open flag still says.
void CountClosed(StreamInstance* stream);

// Looks at every port on the master's clock that is marked open by another process, and forgets those of dead
// ones. TRUE when there was one. It asks the kernel for channels, so it is for when a stream would otherwise
// be refused or wait, or start in a run that only they are in. Takes SequenceMutex.
BOOL ForgetDeadStreams(CardRecord& master);

// Gives the clock up when no stream is left on it. Takes DriverMutex, and then SequenceMutex.
void ForgetIdleClock(CardRecord& master);

}  // namespace kestvox
