#include <cstring>

#include "card/requests.h"
#include "format/conversion.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "wavein/input_parts.h"

namespace kestvox {

namespace {

// What the card puts into the buffer, in bytes of the client's layout: whole 32-bit words of its own, whole
// samples of the client's.
DWORD CapacityOf(const StreamInstance* stream, DWORD bytes) {
    switch (stream->Format.Conversion) {
    case Packed24:
        return bytes;
    case Dithered:
        return bytes - bytes % stream->SampleSize();
    default:
        return WholeWords(bytes);
    }
}

// How many bytes of the client's layout this buffer gets. A buffer that the kernel refused has none. Of a
// dithered one only whole words are delivered: the rest of what the card put into it is dropped.
DWORD RecordedBytes(StreamInstance* stream, const HeldHeader& held) {
    if (held.Refused) {
        return 0;
    }
    const DWORD share = stream->Recorded.TakeShare(stream, held, CapacityOf(stream, held.Bytes));
    const DWORD most = stream->Format.Conversion == Packed24 ? held.Bytes : WholeWords(held.Bytes);
    return share < most ? share : most;
}

// The dither begins anew with the first buffer from after a reset.
DitherState& DitherFor(StreamInstance* stream, const HeldHeader& held) {
    if (stream->DitherResets != held.Resets) {
        stream->DitherResets = held.Resets;
        stream->Dither = {};
    }
    return stream->Dither;
}

// Brings `count` recorded bytes from the shadow buffer into the client's memory; how many are there then.
DWORD FillClientBuffer(StreamInstance* stream, const HeldHeader& held, DWORD count) {
    const WORD conversion = stream->Format.Conversion;
    const ShadowBuffer* shadow = held.Shadow;
    if (shadow == nullptr) {
        return conversion == NoConversion ? count : 0;  // the card has written it there itself
    }
    if (conversion == NoConversion) {
        const DWORD copied = count <= shadow->Size ? count : 0;
        memcpy(held.Header->lpData, shadow->Data, copied);
        return copied;
    }
    const DWORD slots = shadow->Size / SlotSize;
    const DWORD recorded = count / stream->SampleSize();
    ConvertCapture(stream->Format, stream->Card->Settings.DitherADC, held.Header->lpData, shadow->Data,
                   recorded < slots ? recorded : slots, DitherFor(stream, held));
    return count;
}

}  // namespace

void CaptureBufferDone(StreamInstance* stream, HeldHeader* held) {
    WAVEHDR* header = held->Header;
    header->dwBytesRecorded = FillClientBuffer(stream, *held, RecordedBytes(stream, *held));
    CountCompleted(stream, held);
    ForgetHeader(stream, held);
    ReturnHeader(stream, header);
    if (stream->IsOpen != 0 && stream->Resetting == 0) {
        HandOver(stream, HandOverCall::Completed);
    }
}

}  // namespace kestvox
