#include "card/requests.h"
#include "stream/driver_mutex.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "stream/synchronized_start.h"
#include "stream/wave_format.h"
#include "wavein/input_parts.h"
#include "wavein/wave_input.h"

namespace kestvox {

namespace {

constexpr DWORD TransferUnit = 32;  // bytes of card memory

SharedWord& Running(StreamInstance* stream) {
    return stream->PortFlag(&CardRecord::InputRunning);
}

SharedWord& ResumePending(StreamInstance* stream) {
    return stream->PortFlag(&CardRecord::InputResumePending);
}

// The position when nothing moves any more, or after a tenth of a second of audio.
DWORD SettledPosition(StreamInstance* stream) {
    const DWORD first = GetPosition(stream->Device);
    DWORD previous = first;
    for (;;) {
        const DWORD position = GetPosition(stream->Device);
        if (position == previous || previous - first >= stream->SampleRate / 10) {
            return position;
        }
        previous = position;
    }
}

// Only whole transfer units have reached memory.
DWORD WholeUnits(const StreamInstance* stream, DWORD frames) {
    constexpr DWORD cardSampleSize[] = {1, 2, 4, 4};  // bytes, by sample format code
    const DWORD unit = TransferUnit / cardSampleSize[stream->SampleFormat] / stream->Channels;
    return frames / unit * unit;
}

// What earlier runs and resets recorded belongs to the buffers that come back first.
void CarryOver(StreamInstance* stream) {
    const DWORD undelivered = UndeliveredBytes(stream, stream->StopPosition);
    stream->CarriedBytes = stream->InFlightCount != 0 ? stream->CarriedBytes + undelivered : 0;
}

void BeginRun(StreamInstance* stream) {
    DriverLock lock;
    CarryOver(stream);
    stream->StopPosition = 0;
    stream->PositionLatched = false;
    stream->BytesDelivered = 0;
}

void LatchPosition(StreamInstance* stream, DWORD frames) {
    DriverLock lock;
    if (frames == NoPosition) {
        // The card does not tell: nothing more is known to have been recorded.
        frames = stream->BytesDelivered / BytesOfFrames(stream, 1);
    }
    stream->StopPosition = WholeUnits(stream, frames);
    stream->PositionLatched = true;
}

void SetRecordedAside(StreamInstance* stream) {
    DriverLock lock;
    CarryOver(stream);
    stream->BytesDelivered = BytesOfFrames(stream, stream->StopPosition);
    stream->CarriedResets = stream->ResetCount;
    stream->CarriedDither = stream->Dither;
    stream->Dither = {};
}

}  // namespace

// Whoever turns the flag starts or stops the port.
MMRESULT StartInput(StreamInstance* stream) {
    if (stream->Closing != 0) {
        return MMSYSERR_NOERROR;
    }
    stream->JustReset = 0;
    if (stream->Suspended != 0) {
        ResumePending(stream) = 1;  // there is no channel to start before the resume
        return MMSYSERR_NOERROR;
    }
    if (Running(stream).exchange(1) == 0) {
        BeginRun(stream);
        if (StartTransfer(stream->Device)) {
            SynchronizedStart(stream);
        }
    }
    return MMSYSERR_NOERROR;
}

MMRESULT StopInput(StreamInstance* stream) {
    stream->JustReset = 0;
    if (stream->Suspended != 0) {
        ResumePending(stream) = 0;
    }
    if (Running(stream).exchange(0) != 0) {
        SynchronizedStop(stream);
        LatchPosition(stream, SettledPosition(stream));
        StopTransfer(stream->Device);
    }
    return MMSYSERR_NOERROR;
}

MMRESULT ResetInput(StreamInstance* stream) {
    BeginReset(stream);
    StopInput(stream);
    SetRecordedAside(stream);
    FlushBuffers(stream->Device);
    EmptyQueue(stream);
    ReturnIdleHeaders(stream);
    FreeShadowBuffers(stream);
    if (FinishReset(stream)) {
        HandOver(stream, TransferRule::WhileRunning, HandOverLimit::One);
    }
    return MMSYSERR_NOERROR;
}

void SuspendInput(StreamInstance* stream) {
    if (Running(stream) != 0) {
        StopInput(stream);
        ResumePending(stream) = 1;
    }
    GiveUpChannel(stream);
    stream->ClockMaster->RunningInputs = 0;
}

}  // namespace kestvox
