#include "stream/stream_control.h"

#include <utility>

#include "card/registers.h"
#include "card/requests.h"
#include "stream/header_queue.h"
#include "stream/synchronized_start.h"

namespace kestvox {

namespace {

bool IsPaused(StreamInstance* stream) {
    const auto paused = stream->Direction->PortPaused;
    return paused != nullptr && stream->PortFlag(paused) != 0;
}

// The stream's control is held. The port counts as running before its transfer is started: what that brings
// may be complete before the last request is. A port whose transfer cannot be started is left out of its
// group's start, but for a wake-up: others of the group would wait for a card that is missing.
void StartAwakePort(StreamInstance* stream, StartCause cause) {
    const Direction& direction = *stream->Direction;
    const bool running = IsRunning(stream);
    if (!running) {
        direction.BeginRun(stream);
    }
    stream->Running() = 1;
    if (direction.PortPaused != nullptr) {
        stream->PortFlag(direction.PortPaused) = 0;
    }
    if (!running && (StartTransfer(stream->Device) || cause == StartCause::WakeUp)) {
        SynchronizedStart(stream);
    }
}

// The stream's control is held. First the word, so that nobody takes the port for running any more.
void FallAsleep(StreamInstance* stream) {
    stream->Power = Asleep;
    ++stream->Sleeps;
    stream->Direction->StopForSleep(stream);
    ReleaseChannel(stream->Device);
}

// How often the card and the master of its clock have been initialised, together.
DWORD InitsOf(const StreamInstance* stream) {
    return static_cast<DWORD>(stream->Card->InitCount) + static_cast<DWORD>(stream->ClockMaster->InitCount);
}

// Whether neither of them has been since.
bool IsPreparedForCards(const StreamInstance* stream) {
    return stream->PreparedInits == InitsOf(stream);
}

// TRUE: the calling thread is to prepare the port, in the sleep of that number. A thread that is at it
// already begins anew for this sleep, too.
bool BeginWakingUp(StreamInstance* stream, DWORD* sleeps) {
    ControlLock control(stream);
    if (stream->Closing != 0) {
        return false;
    }
    if (stream->Power == Awake && !IsPreparedForCards(stream)) {
        FallAsleep(stream);
    }
    if (stream->Power != Asleep) {
        return false;
    }
    stream->Power = Preparing;
    AcquireChannel(stream->Device);
    *sleeps = stream->Sleeps;
    return !std::exchange(stream->BeingPrepared, true);
}

// The port is prepared. FALSE: it has fallen asleep again, or its stream is closing and gave up what the
// preparation has just set.
bool TakeHeadersAgain(StreamInstance* stream, DWORD sleeps) {
    ControlLock control(stream);
    if (stream->Closing != 0) {
        stream->Direction->CleanUp(stream);
    }
    if (stream->Closing != 0 || stream->Sleeps != sleeps) {
        return false;
    }
    stream->Power = Prepared;
    return true;
}

// FALSE: the port is to be prepared anew. It has slept meanwhile, and `*sleeps` becomes that sleep's number,
// or a card has been initialised.
bool FinishWakingUp(StreamInstance* stream, DWORD* sleeps) {
    ControlLock control(stream);
    if (stream->Closing != 0 || stream->Power == Asleep) {
        stream->BeingPrepared = false;
        return true;
    }
    if (stream->Sleeps != *sleeps || !IsPreparedForCards(stream)) {
        *sleeps = stream->Sleeps;
        stream->Power = Preparing;
        return false;
    }
    stream->Power = Awake;
    stream->BeingPrepared = false;
    if (stream->ResumePending() != 0) {
        StartAwakePort(stream, StartCause::WakeUp);
    }
    return true;
}

// From the port's preparation to its being awake, or asleep once more: again and again while its cards are
// initialised or it sleeps meanwhile. One that fails is an open's.
MMRESULT WakeUp(StreamInstance* stream, DWORD sleeps, bool ignoreClockError) {
    for (;;) {
        stream->PreparedInits = InitsOf(stream);
        const MMRESULT result = stream->Direction->Prepare(stream, ignoreClockError);
        if (result != MMSYSERR_NOERROR) {
            return result;
        }
        if (TakeHeadersAgain(stream, sleeps)) {
            HandOver(stream, HandOverCall::Written);
        }
        if (FinishWakingUp(stream, &sleeps)) {
            return MMSYSERR_NOERROR;
        }
    }
}

}  // namespace

bool IsRunning(StreamInstance* stream) {
    return stream->Running() != 0 && !IsPaused(stream);
}

void StartPort(StreamInstance* stream, DWORD resets, StartCause cause) {
    if (IsRunning(stream) && stream->Power == Awake) {
        return;
    }
    ControlLock control(stream);
    const bool waits = cause == StartCause::Headers && (IsPaused(stream) || stream->Resetting != 0);
    if (stream->Closing != 0 || stream->ResetCount != resets || waits) {
        return;
    }
    if (stream->Power == Awake) {
        StartAwakePort(stream, cause);
    } else {
        NoteStart(stream);
    }
}

MMRESULT StartStream(StreamInstance* stream) {
    const DWORD resets = stream->ResetCount;
    stream->JustReset = 0;
    StartPort(stream, resets, StartCause::Message);
    return MMSYSERR_NOERROR;
}

MMRESULT PrepareOpening(StreamInstance* stream) {
    return WakeUp(stream, 0, false);  // a new stream has not slept; a suspend may have come already
}

void SuspendStream(StreamInstance* stream) {
    ControlLock control(stream);
    if (stream->Closing == 0 && stream->Power != Asleep) {
        FallAsleep(stream);
    }
}

void SuspendUnprepared(StreamInstance* stream) {
    ControlLock control(stream);
    if (stream->Closing == 0 && stream->Power == Awake && !IsPreparedForCards(stream)) {
        FallAsleep(stream);
    }
}

void ResumeStream(StreamInstance* stream) {
    DWORD sleeps = 0;
    if (BeginWakingUp(stream, &sleeps)) {
        WakeUp(stream, sleeps, true);
    }
}

MMRESULT GetStreamPosition(StreamInstance* stream, MMTIME* time, DWORD size) {
    if (time == nullptr || size < sizeof(MMTIME)) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD frames = GetPosition(stream->Device);
    if (frames == NoPosition) {
        return MMSYSERR_ERROR;
    }
    if (time->wType == TIME_BYTES) {
        time->u.cb = stream->BytesOf(frames);
    } else {
        time->wType = TIME_SAMPLES;
        time->u.sample = frames;
    }
    return MMSYSERR_NOERROR;
}

MMRESULT SetDirectMode(StreamInstance* stream) {
    ControlLock control(stream);
    stream->DirectMode = 1;
    WritePort(stream->Device, port_register::Control, SlotLeft << PortFormatShift, PortFormatMask);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
