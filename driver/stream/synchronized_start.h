// Starting the streams of one clock on one sample.
//
// A channel that is armed while its direction's hold bit is set on the clock master waits; clearing the
// bit starts every waiting channel of the group at once. The first stream to start on an idle clock
// decides whether the run is synchronized; the last one that has to take part releases the hold. Starts and
// stops of all processes take turns, under SequenceMutex.
//
// A run outlasts a sleep. A stream that sleeps and is to run after it (ResumePending) is a started one, and
// its wake-up no new start: it waits for the others that are to wake up, so that all go on together. Once
// every open stream has been started the run has begun, and those that wake up in it wait for nobody else:
// whoever has been paused, stopped, reset or closed since does not keep them silent, as it would not without
// the sleep.
#pragma once

#include "stream/stream_instance.h"

namespace kestvox {

// All but ReleaseWaitingStarts for a stream whose control is held.

// For a port that is not running yet, after its transfer was started: a start, or the wake-up of a port that
// ResumePending says is to run, which is cleared. Failures change nothing else.
void SynchronizedStart(StreamInstance* stream);

enum class StopCause {
    Message,
    Sleep,  // the stream goes on after it: ResumePending is set
};

// For a running port that stops, pauses or falls asleep: it does not count as running any more, and the hold
// is put back.
void SynchronizedStop(StreamInstance* stream, StopCause cause);

// For a port that is not awake: sets ResumePending, or clears it and lets those go that waited for it alone.
void NoteStart(StreamInstance* stream);
void ForgetStart(StreamInstance* stream);

// A stream of the direction has left the clock without having started: lets those go that waited for it
// alone.
void ReleaseWaitingStarts(const Direction& direction, CardRecord& master);

}  // namespace kestvox
