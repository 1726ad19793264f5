#include "format/conversion.h"
#include "stream/header_queue.h"
#include "stream/shadow_buffer.h"
#include "stream/stream_control.h"
#include "waveout/output_parts.h"
#include "waveout/wave_output.h"

namespace kestvox {

MMRESULT FillOutputBuffer(StreamInstance* stream, HeldHeader* held) {
    const OutputConversion& conversion = OutputConversions[stream->Format.Conversion];
    const DWORD samples = held->Bytes / conversion.ClientSize;
    if (samples * conversion.ClientSize != held->Bytes) {
        return MMSYSERR_INVALPARAM;
    }
    if (samples > 0xFFFFFFFF / conversion.CardSize) {
        return MMSYSERR_NOMEM;
    }
    void* data = AcquireShadowBuffer(held, samples * conversion.CardSize);
    if (data == nullptr) {
        return MMSYSERR_NOMEM;
    }
    conversion.Convert(data, held->Header->lpData, samples);
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
