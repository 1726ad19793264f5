#include "card/card_identity.h"
#include "card/clock_master.h"
#include "card/locks.h"
#include "card/registers.h"
#include "card/requests.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "stream/stream_control.h"
#include "stream/synchronized_start.h"
#include "waveout/output_parts.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

constexpr DWORD FullGain = 128;
constexpr DWORD FullVolume = 65535;

SharedWord& Paused(StreamInstance* stream) {
    return stream->PortFlag(&CardRecord::OutputPaused);
}

// Whatever the client did from inside the callbacks of a reset, the port does not run after it.
void StopPort(StreamInstance* stream) {
    ControlLock control(stream);
    if (IsRunning(stream)) {
        SynchronizedStop(stream, StopCause::Message);
    }
    Paused(stream) = 0;
    stream->Running() = 0;
    if (stream->Closing != 0) {
        ForgetStart(stream);
    } else if (stream->Power != Awake) {
        NoteStart(stream);  // as a suspend leaves a port that is not paused
    }
}

// What is written from now on is in no loop that was begun before.
void BeginOutputReset(StreamInstance* stream) {
    DriverLock lock;
    BeginReset(stream);
    GiveUpPasses(stream);
    stream->QueuedLoopCount = 0;
}

void ForgetLoops(StreamInstance* stream) {
    DriverLock lock;
    stream->LoopPassesLeft = 0;
    stream->LoopStart = nullptr;
}

}  // namespace

MMRESULT PauseOutput(StreamInstance* stream) {
    stream->JustReset = 0;
    ControlLock control(stream);
    if (IsRunning(stream)) {
        SynchronizedStop(stream, StopCause::Message);
    }
    Paused(stream) = 1;
    if (stream->Power != Awake) {
        ForgetStart(stream);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT ResetOutput(StreamInstance* stream) {
    DWORD resets = 0;
    BeginOutputReset(stream);
    StopPort(stream);
    FlushBuffers(stream->Device);
    EmptyQueue(stream);
    ForgetLoops(stream);
    ReturnIdleHeaders(stream);
    AwaitFlushedHeaders(stream);
    FreeShadowBuffers(stream);
    StopPort(stream);
    if (FinishReset(stream, &resets)) {
        HandOver(stream, HandOverCall::Written);
        StartPort(stream, resets, StartCause::Headers);
    }
    return MMSYSERR_NOERROR;
}

void StopOutputForSleep(StreamInstance* stream) {
    if (Paused(stream) != 0) {
        return;
    }
    if (stream->Running() != 0) {
        SynchronizedStop(stream, StopCause::Sleep);
        StopTransfer(stream->Device);
    } else {
        NoteStart(stream);
    }
    Paused(stream) = 1;
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

void ApplyVolume(StreamInstance* stream) {
    ControlLock control(stream);
    if (stream->VolumeIsSet != 0) {
        SetMixerGain(stream->Device, OwnPlaybackGain(stream->Port), stream->Volume * FullGain / FullVolume);
    }
}

MMRESULT SetOutputVolume(StreamInstance* stream, DWORD volume) {
    stream->Volume = LOWORD(volume);
    stream->VolumeIsSet = 1;
    ApplyVolume(stream);
    return MMSYSERR_NOERROR;
}

MMRESULT SaveCard(StreamInstance* stream) {
    stream->JustReset = 0;
    const BOOL saved = SavePciConfiguration(stream->Device, &stream->SavedPciConfig);
    return saved && ReleaseChannel(stream->Device) ? MMSYSERR_NOERROR : MMSYSERR_ERROR;
}

MMRESULT RestoreCard(StreamInstance* stream) {
    stream->JustReset = 0;
    if (!RestorePciConfiguration(stream->Device, &stream->SavedPciConfig)) {
        return MMSYSERR_ERROR;
    }
    ReadCardIdentity(stream->Device, *stream->Card);
    InitCardAgain(stream->Device, *stream->Card);
    return AcquireChannel(stream->Device) ? MMSYSERR_NOERROR : MMSYSERR_ERROR;
}

}  // namespace kestvox
