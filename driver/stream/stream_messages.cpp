#include "stream/stream_messages.h"

#include "card/registers.h"
#include "card/requests.h"
#include "stream/wave_format.h"

namespace kestvox {

MMRESULT GetStreamPosition(StreamInstance* stream, MMTIME* time, DWORD size) {
    if (time == nullptr || size < sizeof(MMTIME)) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD frames = GetPosition(stream->Device);
    if (frames == NoPosition) {
        return MMSYSERR_ERROR;
    }
    if (time->wType == TIME_BYTES) {
        time->u.cb = BytesOfFrames(stream, frames);
    } else {
        time->wType = TIME_SAMPLES;
        time->u.sample = frames;
    }
    return MMSYSERR_NOERROR;
}

MMRESULT SetDirectMode(StreamInstance* stream) {
    stream->DirectMode = 1;
    stream->SampleFormat = SlotLeft;
    WritePort(stream->Device, port_register::Control, SlotLeft << PortFormatShift, PortFormatMask);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
