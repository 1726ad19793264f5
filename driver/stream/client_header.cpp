#include "stream/client_header.h"

#include "stream/buffer_transport.h"
#include "stream/driver_mutex.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr ULONG_PTR CardAlignment = 4;

MMRESULT CheckClientHeader(StreamInstance* stream, const WAVEHDR* header, DWORD size) {
    if (header == nullptr || size != sizeof(WAVEHDR)) {
        return MMSYSERR_INVALPARAM;
    }
    if ((header->dwFlags & WHDR_PREPARED) == 0) {
        return WAVERR_UNPREPARED;
    }
    if (header->lpData == nullptr || header->dwBufferLength == 0) {
        return MMSYSERR_INVALPARAM;
    }
    DriverLock lock;
    return stream->Held.Find(header) != nullptr ? WAVERR_STILLPLAYING : MMSYSERR_NOERROR;
}

void MarkAccepted(StreamInstance* stream, WAVEHDR* header) {
    header->reserved = reinterpret_cast<DWORD_PTR>(stream);
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_DONE)) | WHDR_INQUEUE;
}

// FALSE when there is no memory for its place, or the stream is closing.
BOOL QueueClientHeader(StreamInstance* stream, WAVEHDR* header) {
    DriverLock lock;
    if (stream->Closing != 0) {
        return FALSE;
    }
    // While a loop is active its last header leads on to what comes after it.
    const bool chained = stream->PendingHeaders != nullptr || stream->LoopStart != nullptr;
    const HeldHeader* newest = stream->Held.Newest();
    WAVEHDR* behind = chained && newest != nullptr ? newest->Header : nullptr;
    if (!stream->Held.Accept(header, header->dwBufferLength, stream->ResetCount)) {
        return FALSE;
    }
    AppendPendingHeader(stream, header, behind);
    return TRUE;
}

}  // namespace

bool IsCardAligned(const WAVEHDR* header) {
    return reinterpret_cast<ULONG_PTR>(header->lpData) % CardAlignment == 0;
}

MMRESULT AcceptClientHeader(StreamInstance* stream, WAVEHDR* header, DWORD size, PrepareHeader prepare) {
    if (stream->Closing != 0) {
        return MMSYSERR_INVALHANDLE;
    }
    stream->JustReset = 0;
    MMRESULT result = CheckClientHeader(stream, header, size);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    MarkAccepted(stream, header);
    result = prepare(stream, header);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    if (!QueueClientHeader(stream, header)) {
        ReleaseShadowBuffer(stream, header);
        return MMSYSERR_NOMEM;
    }
    return MMSYSERR_NOERROR;
}

}  // namespace kestvox
