// Starting the streams of one clock on one sample.
//
// A channel that is armed while its direction's hold bit is set on the clock master waits; clearing the
// bit starts every waiting channel of the group at once. The first stream to start on an idle clock
// decides whether the run is synchronized; the last one that has to take part releases the hold. Starts and
// stops of all processes take turns, under SequenceMutex.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// For a port that is not running yet, after its transfer was started. Failures change nothing else.
void SynchronizedStart(StreamInstance* stream);

// For a running port that stops or pauses: takes it out of the run and puts the hold back.
void SynchronizedStop(StreamInstance* stream);

// A stream of the direction has left the clock without having started: lets those go that waited for it
// alone.
void ReleaseWaitingStarts(const Direction& direction, CardRecord& master);

}  // namespace kestvox
