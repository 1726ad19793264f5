#include <cstring>

#include "card/requests.h"
#include "convert/capture.h"
#include "stream/driver_mutex.h"
#include "stream/header_queue.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"
#include "stream/wave_format.h"
#include "wavein/input_parts.h"

namespace kestvox {

namespace {

constexpr DWORD WholeWordMask = ~static_cast<DWORD>(3);

// Until a reset has latched the position, its buffers count like any other's.
bool IsFromBeforeReset(const StreamInstance* stream, const HeldHeader& held) {
    return held.Resets < stream->CarriedResets;
}

// How many bytes of the client's layout this buffer holds: its share of what was recorded and not yet
// given back, of earlier runs first. A buffer that the kernel refused has none, nor has one that a reset
// took back empty. DriverMutex held.
DWORD RecordedBytes(StreamInstance* stream, const HeldHeader& held) {
    if (held.Refused) {
        return 0;
    }
    const DWORD room = stream->Conversion == Packed24 ? held.Bytes : held.Bytes & WholeWordMask;
    if (stream->CarriedBytes != 0 || IsFromBeforeReset(stream, held)) {
        const DWORD count = room < stream->CarriedBytes ? room : stream->CarriedBytes;
        stream->CarriedBytes -= count;
        return count;
    }
    const DWORD frames = stream->PositionLatched ? stream->StopPosition : GetPosition(stream->Device);
    // The card has given the buffer back: when it does not tell how far it is, the buffer counts as full.
    const DWORD available = frames == NoPosition ? room : UndeliveredBytes(stream, frames);
    const DWORD count = room < available ? room : available;
    stream->BytesDelivered += count;
    return count;
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

DWORD UndeliveredBytes(const StreamInstance* stream, DWORD frames) {
    const LONG difference = static_cast<LONG>(BytesOfFrames(stream, frames) - stream->BytesDelivered);
    return difference > 0 ? static_cast<DWORD>(difference) : 0;
}

void CaptureBufferDone(StreamInstance* stream, WAVEHDR* header) {
    HeldHeader* held = stream->Held.FindInFlight(header);
    DitherState& state = IsFromBeforeReset(stream, *held) ? stream->CarriedDither : stream->Dither;
    const DWORD count = RecordedBytes(stream, *held);
    header->dwBytesRecorded = FillClientBuffer(stream, header, count, state);
    CountCompleted(stream, held);
    ReturnHeader(stream, header);
    if (stream->IsOpen != 0 && stream->Resetting == 0) {
        HandOver(stream, TransferRule::Always);
    }
}

}  // namespace kestvox
