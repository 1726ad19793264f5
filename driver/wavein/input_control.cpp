#include "card/requests.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "stream/stream_control.h"
#include "stream/synchronized_start.h"
#include "wavein/input_parts.h"
#include "wavein/wave_input.h"

namespace kestvox {

namespace {

constexpr DWORD TransferUnit = 32;  // bytes of card memory

// The position when nothing moves any more, or after a tenth of a second of audio.
DWORD SettledPosition(StreamInstance* stream) {
    const DWORD first = GetPosition(stream->Device);
    DWORD previous = first;
    for (;;) {
        const DWORD position = GetPosition(stream->Device);
        if (position == previous || previous - first >= stream->Format.SampleRate / 10) {
            return position;
        }
        previous = position;
    }
}

// Only whole transfer units have reached memory.
DWORD WholeUnits(const StreamInstance* stream, DWORD frames) {
    constexpr DWORD CardSampleSize[] = {1, 2, 4, 4};  // bytes, by sample format code
    const DWORD unit = TransferUnit / CardSampleSize[stream->SampleFormat()] / stream->Format.Channels;
    return frames / unit * unit;
}

// Under the stream's control. The run is over for the buffers before the kernel gives back the one under way,
// and the port does not count as running any more: a client that adds a buffer again from inside its callback
// would start the transfer anew.
void StopRunningPort(StreamInstance* stream, StopCause cause) {
    SynchronizedStop(stream, cause);
    const DWORD frames = SettledPosition(stream);
    stream->Recorded.End(frames != NoPosition ? WholeUnits(stream, frames) : NoPosition);
    stream->Running() = 0;
    StopTransfer(stream->Device);
}

void StopPort(StreamInstance* stream) {
    ControlLock control(stream);
    if (IsRunning(stream)) {
        StopRunningPort(stream, StopCause::Message);
    }
    if (stream->Power != Awake) {
        ForgetStart(stream);
    }
}

}  // namespace

void BeginRecording(StreamInstance* stream) {
    stream->Recorded.Begin(stream->ResetCount);
}

void StopInputForSleep(StreamInstance* stream) {
    if (IsRunning(stream)) {
        StopRunningPort(stream, StopCause::Sleep);
    }
}

MMRESULT StopInput(StreamInstance* stream) {
    stream->JustReset = 0;
    StopPort(stream);
    return MMSYSERR_NOERROR;
}

MMRESULT ResetInput(StreamInstance* stream) {
    DWORD resets = 0;
    BeginReset(stream);
    StopPort(stream);
    FlushBuffers(stream->Device);
    EmptyQueue(stream);
    ReturnIdleHeaders(stream);
    AwaitFlushedHeaders(stream);
    FreeShadowBuffers(stream);
    if (FinishReset(stream, &resets)) {
        HandOver(stream, HandOverCall::Written);  // what was added meanwhile was not handed over then
    }
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
