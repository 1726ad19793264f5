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

}  // namespace

MMRESULT FillOutputBuffer(StreamInstance* stream, HeldHeader* held) {
    const OutputConversion& conversion = Conversions[stream->Format.Conversion];
    const DWORD samples = held->Bytes / conversion.SourceSize;
    if (samples * conversion.SourceSize != held->Bytes) {
        return MMSYSERR_INVALPARAM;
    }
    if (samples > 0xFFFFFFFF / conversion.CardSize) {
        return MMSYSERR_NOMEM;
    }
    void* data = AcquireShadowBuffer(held, samples * conversion.CardSize);
    if (data == nullptr) {
        return MMSYSERR_NOMEM;
    }
    conversion.Expand(data, reinterpret_cast<const BYTE*>(held->Header->lpData), samples);
    return MMSYSERR_NOERROR;
}

MMRESULT WriteOutput(StreamInstance* stream, WAVEHDR* header, DWORD size) {
    const DWORD resets = stream->ResetCount;
    const MMRESULT result = SendHeader(stream, header, size, resets, HandOverCall::Written);
    if (result == MMSYSERR_NOERROR) {
        StartPort(stream, resets, StartCause::Headers);
    }
    return result;
}

}  // namespace kestvox
