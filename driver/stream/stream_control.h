// What both directions do with a stream's port: start it, put it to sleep, wake it up, and the messages that
// they answer alike.
//
// A port is stopped, running or paused (flags in the card table), and awake or not (PortPower). All of these
// change under the stream's control, which is held over requests only. What takes longer, preparing a port at
// a resume, runs without it: the port counts as asleep until the end, so whatever the client asks for
// meanwhile is noted in ResumePending, and decides how the port goes on.
#pragma once

#include "card/locks.h"
#include "stream/stream_instance.h"

namespace kestvox {

// Holds a stream's control for a scope.
class ControlLock : public MutexLock {
public:
    explicit ControlLock(StreamInstance* stream) : MutexLock(stream->Control) {}
};

// Whether the port runs and is not paused.
bool IsRunning(StreamInstance* stream);

enum class StartCause {
    Message,  // a paused port goes on
    Headers,  // ... stays paused
    WakeUp,   // the port has run before the sleep, or its client has asked for it since
};

// Starts the port, unless a reset has begun since the stream's number of resets was `resets`: that stops it
// again anyway. While the port is not awake the start is noted.
void StartPort(StreamInstance* stream, DWORD resets, StartCause cause);

// The client's start or restart. Always MMSYSERR_NOERROR.
MMRESULT StartStream(StreamInstance* stream);

// Prepares the port of a stream that is opening; what the direction's preparation answers.
MMRESULT PrepareOpening(StreamInstance* stream);

// Stops the port and gives its channel up while the computer sleeps. Headers stay queued.
void SuspendStream(StreamInstance* stream);

// The same for a port that is awake although its card, or the master of its clock, has been initialised since
// it was prepared. All such ports fall asleep before the first one wakes, so that they start together again.
void SuspendUnprepared(StreamInstance* stream);

// Takes the channel back, prepares the port whatever its clock says, hands over what has waited, and starts
// the port when it ran before or its client has asked for it since. When another thread is preparing the
// port, as its open, that one does all of it.
void ResumeStream(StreamInstance* stream);

// Where the stream is. Fills `*time` with bytes of the client's layout when it asks for TIME_BYTES (modulo
// 2^32), else with sample frames.
//   MMSYSERR_INVALPARAM   no structure, or one that is too small
//   MMSYSERR_ERROR        the card does not tell
MMRESULT GetStreamPosition(StreamInstance* stream, MMTIME* time, DWORD size);

// Direct mode, until the close: the card's own 32-bit slots pass through unconverted. Always answers
// MMSYSERR_NOERROR, as the message does.
MMRESULT SetDirectMode(StreamInstance* stream);

}  // namespace kestvox
