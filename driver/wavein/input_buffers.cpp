#include "stream/header_queue.h"
#include "stream/shadow_buffer.h"
#include "wavein/input_parts.h"
#include "wavein/wave_input.h"

namespace kestvox {

namespace {

// The shadow buffer that a client buffer needs, in bytes: none when it does not hold a word or sample.
//   MMSYSERR_INVALPARAM   the client's buffer does not suit the conversion
//   MMSYSERR_NOMEM        it would be too large
MMRESULT ShadowSize(const StreamInstance* stream, DWORD length, DWORD* size) {
    const WORD conversion = stream->Format.Conversion;
    if (conversion == NoConversion) {
        *size = WholeWords(length);
        return MMSYSERR_NOERROR;
    }
    const DWORD sampleSize = stream->SampleSize();
    if (conversion == Dithered && sampleSize == SlotSize) {
        return MMSYSERR_INVALPARAM;  // direct mode left nothing to dither to
    }
    if (conversion == Packed24 && length % sampleSize != 0) {
        return MMSYSERR_INVALPARAM;
    }
    const DWORD samples = length / sampleSize;
    *size = samples * SlotSize;
    return samples <= 0xFFFFFFFF / SlotSize ? MMSYSERR_NOERROR : MMSYSERR_NOMEM;
}

}  // namespace

MMRESULT FillInputBuffer(StreamInstance* stream, HeldHeader* held) {
    DWORD size = 0;
    const MMRESULT result = ShadowSize(stream, held->Bytes, &size);
    if (result == MMSYSERR_NOERROR && AcquireShadowBuffer(held, size) == nullptr) {
        return MMSYSERR_NOMEM;
    }
    return result;
}

MMRESULT AddInputBuffer(StreamInstance* stream, WAVEHDR* header, DWORD size) {
    return SendHeader(stream, header, size, stream->ResetCount, HandOverCall::Added);
}

}  // namespace kestvox
