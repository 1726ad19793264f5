#include "card/registers.h"
#include "card/requests.h"
#include "stream/driver_mutex.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "stream/synchronized_start.h"
#include "waveout/output_parts.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

constexpr DWORD FullGain = 128;
constexpr DWORD FullVolume = 65535;

class ControlGuard {
public:
    explicit ControlGuard(StreamInstance* stream) : lock_(&stream->ControlLock) {
        EnterCriticalSection(lock_);
    }
    ~ControlGuard() { LeaveCriticalSection(lock_); }
    ControlGuard(const ControlGuard&) = delete;
    ControlGuard& operator=(const ControlGuard&) = delete;

private:
    CRITICAL_SECTION* lock_;
};

SharedWord& Running(StreamInstance* stream) {
    return stream->PortFlag(&CardRecord::OutputRunning);
}

SharedWord& Paused(StreamInstance* stream) {
    return stream->PortFlag(&CardRecord::OutputPaused);
}

SharedWord& ResumePending(StreamInstance* stream) {
    return stream->PortFlag(&CardRecord::OutputResumePending);
}

bool IsPlaying(StreamInstance* stream) {
    return Running(stream) != 0 && Paused(stream) == 0;
}

// Whatever the client did from inside the callbacks of a reset, the port does not run after it.
void StopPort(StreamInstance* stream) {
    ControlGuard guard(stream);
    if (IsPlaying(stream)) {
        SynchronizedStop(stream);
    }
    Paused(stream) = 0;
    Running(stream) = 0;
}

// What is written from now on is in no loop that was begun before.
void ForgetUnwrittenLoop(StreamInstance* stream) {
    DriverLock lock;
    stream->QueuedLoopCount = 0;
}

void ForgetLoops(StreamInstance* stream) {
    DriverLock lock;
    stream->LoopPassesLeft = 0;
    stream->LoopStart = nullptr;
}

}  // namespace

MMRESULT RestartOutput(StreamInstance* stream) {
    ControlGuard guard(stream);
    if (stream->Closing != 0) {
        return MMSYSERR_NOERROR;
    }
    stream->JustReset = 0;
    if (stream->Suspended != 0) {
        ResumePending(stream) = 1;  // there is no channel to start before the resume
        return MMSYSERR_NOERROR;
    }
    if (!IsPlaying(stream) && StartTransfer(stream->Device)) {
        SynchronizedStart(stream);
    }
    Paused(stream) = 0;
    Running(stream) = 1;
    return MMSYSERR_NOERROR;
}

MMRESULT PauseOutput(StreamInstance* stream) {
    ControlGuard guard(stream);
    stream->JustReset = 0;
    if (IsPlaying(stream)) {
        SynchronizedStop(stream);
    }
    Paused(stream) = 1;
    if (stream->Suspended != 0) {
        ResumePending(stream) = 0;
    }
    return MMSYSERR_NOERROR;
}

MMRESULT ResetOutput(StreamInstance* stream) {
    BeginReset(stream);
    ForgetUnwrittenLoop(stream);
    LeaveLoop(stream);
    PauseOutput(stream);
    FlushBuffers(stream->Device);
    EmptyQueue(stream);
    ForgetLoops(stream);
    ReturnIdleHeaders(stream);
    FreeShadowBuffers(stream);
    StopPort(stream);
    if (FinishReset(stream)) {
        HandOver(stream, TransferRule::WhileRunning);
        RestartOutput(stream);
    }
    return MMSYSERR_NOERROR;
}

void SuspendOutput(StreamInstance* stream) {
    if (Paused(stream) == 0) {
        PauseOutput(stream);
        if (Running(stream) != 0) {
            StopTransfer(stream->Device);
        }
        ResumePending(stream) = 1;
    }
    GiveUpChannel(stream);
    stream->ClockMaster->RunningOutputs = 0;
}

void InitializeOutputFields(StreamInstance* stream) {
    stream->Volume = WorkingGain(*stream->Card, OwnPlaybackGain(stream->Port)) * FullVolume / FullGain;
}

MMRESULT GetOutputVolume(StreamInstance* stream, DWORD* volume) {
    if (volume == nullptr) {
        return MMSYSERR_INVALPARAM;
    }
    *volume = stream->Volume;
    return MMSYSERR_NOERROR;
}

MMRESULT SetOutputVolume(StreamInstance* stream, DWORD volume) {
    const DWORD left = LOWORD(volume);
    stream->Volume = left;
    SetMixerGain(stream->Device, OwnPlaybackGain(stream->Port), left * FullGain / FullVolume);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
