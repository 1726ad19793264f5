#include <cstring>

#include "convert/expand.h"
#include "stream/header_queue.h"
#include "stream/shadow_buffer.h"
#include "stream/stream_control.h"
#include "waveout/output_parts.h"
#include "waveout/wave_output.h"

namespace kestvox {

namespace {

// From the client's samples to the card's, by conversion code.
struct OutputConversion {
    DWORD SourceSize;  // bytes a sample
    DWORD CardSize;
    void (*Expand)(void* destination, const BYTE* source, DWORD samples);
};

void Copy(void* destination, const BYTE* source, DWORD samples) {
    memcpy(destination, source, samples);
}

void ExpandALaw(void* destination, const BYTE* source, DWORD samples) {
    ExpandCompanded(static_cast<int16_t*>(destination), source, ALawTable, samples);
}

void ExpandMuLaw(void* destination, const BYTE* source, DWORD samples) {
    ExpandCompanded(static_cast<int16_t*>(destination), source, MuLawTable, samples);
}

void ExpandPacked(void* destination, const BYTE* source, DWORD samples) {
    ExpandPacked24(static_cast<uint32_t*>(destination), source, samples);
}

constexpr OutputConversion Conversions[] = {
    {1, 1, Copy},          // NoConversion: any layout, byte by byte
    {1, 2, ExpandALaw},    // FromALaw
    {1, 2, ExpandMuLaw},   // FromMuLaw
    {3, 4, ExpandPacked},  // Packed24
};

// Converts the client's data into a shadow buffer, where the card cannot read it as it is.
MMRESULT FillCardBuffer(StreamInstance* stream, WAVEHDR* header) {
    if (stream->Conversion == NoConversion && IsCardAligned(header)) {
        return MMSYSERR_NOERROR;
    }
    const OutputConversion& conversion = Conversions[stream->Conversion];
    const DWORD samples = header->dwBufferLength / conversion.SourceSize;
    if (samples * conversion.SourceSize != header->dwBufferLength) {
        return MMSYSERR_INVALPARAM;
    }
    if (samples > 0xFFFFFFFF / conversion.CardSize) {
        return MMSYSERR_NOMEM;
    }
    void* data = AcquireShadowBuffer(stream, header, samples * conversion.CardSize);
    if (data == nullptr) {
        return MMSYSERR_NOMEM;
    }
    conversion.Expand(data, reinterpret_cast<const BYTE*>(header->lpData), samples);
    return MMSYSERR_NOERROR;
}

}  // namespace

MMRESULT WriteOutput(StreamInstance* stream, WAVEHDR* header, DWORD size) {
    DWORD resets = 0;
    MMRESULT result = AcceptHeader(stream, header, size, &resets);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    StampLoop(stream, header);
    result = FillCardBuffer(stream, header);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    result = QueueHeader(stream, header, resets);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    HandOver(stream, HandOverCall::Written);
    StartPort(stream, resets, StartCause::Headers);
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
