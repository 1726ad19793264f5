#include "stream/header_queue.h"
#include "stream/shadow_buffer.h"
#include "stream/wave_format.h"
#include "wavein/input_parts.h"
#include "wavein/wave_input.h"

namespace kestvox {

namespace {

constexpr DWORD WholeWordMask = ~static_cast<DWORD>(3);

// The shadow buffer that a client buffer needs, in bytes; 0: the card writes into the client's memory.
// MMSYSERR_INVALPARAM: the client's buffer does not suit the conversion.
MMRESULT ShadowSize(const StreamInstance* stream, const WAVEHDR* header, DWORD* size) {
    const DWORD length = header->dwBufferLength;
    if (stream->Conversion == NoConversion) {
        *size = IsCardAligned(header) ? 0 : length & WholeWordMask;
        return MMSYSERR_NOERROR;
    }
    const DWORD sampleSize = ClientSampleSize(stream->SampleFormat, stream->Conversion);
    if (stream->Conversion == Dithered && sampleSize == SlotSize) {
        return MMSYSERR_INVALPARAM;  // direct mode left nothing to dither to
    }
    if (stream->Conversion == Packed24 && length % sampleSize != 0) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD samples = length / sampleSize;
    if (samples > 0xFFFFFFFF / SlotSize) {
        return MMSYSERR_NOMEM;
    }
    *size = samples * SlotSize;
    return MMSYSERR_NOERROR;
}

MMRESULT AcquireCardBuffer(StreamInstance* stream, WAVEHDR* header) {
    DWORD size = 0;
    const MMRESULT result = ShadowSize(stream, header, &size);
    if (result == MMSYSERR_NOERROR && size != 0 && AcquireShadowBuffer(stream, header, size) == nullptr) {
        return MMSYSERR_NOMEM;
    }
    return result;
}

}  // namespace

MMRESULT AddInputBuffer(StreamInstance* stream, WAVEHDR* header, DWORD size) {
    DWORD resets = 0;
    MMRESULT result = AcceptHeader(stream, header, size, &resets);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    header->dwBytesRecorded = 0;
    result = AcquireCardBuffer(stream, header);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    result = QueueHeader(stream, header, resets);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    HandOver(stream, HandOverCall::Added);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
