#include <cstring>

#include "card/locks.h"
#include "card/requests.h"
#include "convert/capture.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "stream/wave_format.h"
#include "wavein/input_parts.h"

namespace kestvox {

namespace {

constexpr DWORD WholeWordMask = ~static_cast<DWORD>(3);

// What the card puts into the buffer, in bytes of the client's layout: whole 32-bit words of its own, whole
// samples of the client's.
DWORD CapacityOf(const StreamInstance* stream, const HeldHeader& held) {
    if (stream->Conversion != Dithered) {
        return stream->Conversion == Packed24 ? held.Bytes : held.Bytes & WholeWordMask;
    }
    return held.Bytes - held.Bytes % ClientSampleSize(stream->SampleFormat, stream->Conversion);
}

// How many bytes of the client's layout this buffer gets. A buffer that the kernel refused has none. Of a
// dithered one only whole words are delivered: the rest of what the card put into it is dropped. DriverMutex
// held.
DWORD RecordedBytes(StreamInstance* stream, const HeldHeader& held) {
    if (held.Refused) {
        return 0;
    }
    const DWORD share = stream->Recorded.TakeShare(stream, held, CapacityOf(stream, held));
    const DWORD deliverable = stream->Conversion == Packed24 ? held.Bytes : held.Bytes & WholeWordMask;
    return share < deliverable ? share : deliverable;
}

// The dither begins anew with the first buffer from after a reset.
DitherState& DitherFor(StreamInstance* stream, const HeldHeader& held) {
    if (stream->DitherResets != held.Resets) {
        stream->DitherResets = held.Resets;
        stream->Dither = {};
    }
    return stream->Dither;
}

void Dither(StreamInstance* stream, WAVEHDR* header, const void* source, DWORD samples, DitherState& state) {
    const DWORD type = stream->Card->Settings.DitherADC;
    const auto* slots = static_cast<const int32_t*>(source);
    if (stream->SampleFormat == Sample8) {
        DitherCapture8(reinterpret_cast<uint8_t*>(header->lpData), slots, samples, type, stream->Channels,
                       state);
    } else {
        DitherCapture16(reinterpret_cast<int16_t*>(header->lpData), slots, samples, type, stream->Channels,
                        state);
    }
}

// Brings `count` recorded bytes from the shadow buffer into the client's memory; how many are there then.
DWORD FillClientBuffer(StreamInstance* stream, WAVEHDR* header, DWORD count, DitherState& state) {
    const ShadowBuffer* shadow = LookupShadowBuffer(stream, header);
    if (shadow == nullptr) {
        return stream->Conversion == NoConversion ? count : 0;  // the card has written it there itself
    }
    if (stream->Conversion == NoConversion) {
        if (count > shadow->Size) {
            return 0;
        }
        memcpy(header->lpData, shadow->Data, count);
        return count;
    }
    const DWORD sampleSize = ClientSampleSize(stream->SampleFormat, stream->Conversion);
    const DWORD slots = shadow->Size / SlotSize;
    const DWORD samples = count / sampleSize < slots ? count / sampleSize : slots;
    if (stream->Conversion == Packed24) {
        PackCapture24(reinterpret_cast<uint8_t*>(header->lpData), static_cast<const uint32_t*>(shadow->Data),
                      samples);
    } else {
        Dither(stream, header, shadow->Data, samples, state);
    }
    return count;
}

}  // namespace

void CaptureBufferDone(StreamInstance* stream, WAVEHDR* header) {
    HeldHeader* held = stream->Held.FindInFlight(header);
    const DWORD count = RecordedBytes(stream, *held);
    header->dwBytesRecorded = FillClientBuffer(stream, header, count, DitherFor(stream, *held));
    CountCompleted(stream, held);
    ReturnHeader(stream, header);
    if (stream->IsOpen != 0 && stream->Resetting == 0) {
        HandOver(stream, HandOverCall::Completed);
    }
}

}  // namespace kestvox
