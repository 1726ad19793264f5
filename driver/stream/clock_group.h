// Which card's clock a stream runs on, and which streams are open on it, in the card table.
//
// The port's flag and the clock master's count change together, so that a process that dies leaves either
// both or neither behind.
//
// While a process lives the kernel gives its channels to nobody else. So a port that is marked open and whose
// channel can be had belonged to a process that died: whoever notices takes its flags and counts back.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// The link master that the card's `Master` setting names, when it is there, enabled, and does not itself
// follow a card that is there; else the card itself.
CardRecord& ClockMasterOf(CardRecord& card);

// The same for a stream that is about to open. The card's clock source setting and its working copy
// follow: the link for a follower; automatic for one that followed before.
CardRecord& ResolveClockMaster(CardRecord& card);

// Lowers a count of the card table, but never below zero: the counts of a card that was soft-reset meanwhile
// are zero already.
void CountDown(SharedCount& count);

// Initialises a card that was in use before. Its clock is back at its initial rate, so the first stream that
// is prepared on its group programs the clock in full; ports that were prepared before have to be prepared
// again.
void InitCardAgain(CardHandle* handle, CardRecord& card);

// The stream has its channel. What a dead process left of the port is forgotten first.
void CountOpen(StreamInstance* stream);

// The stream is about to give its channel back. Counts down only what its port's open flag still says.
void CountClosed(StreamInstance* stream);

// Looks at every port on the master's clock that is marked open by another process, and forgets those of dead
// ones. TRUE when there was one. It asks the kernel for channels, so it is for when a stream would otherwise
// be refused or wait. No lock is needed.
BOOL ForgetDeadStreams(CardRecord& master);

// Gives the clock up when no stream is left on it. Takes DriverMutex.
void ForgetIdleClock(CardRecord& master);

}  // namespace kestvox
