#include "stream/header_queue.h"

#include "card/requests.h"
#include "stream/driver_mutex.h"
#include "stream/service_thread.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr ULONG_PTR CardAlignment = 4;
constexpr LONG LeastBuffersInFlight = 4;

MMRESULT CheckHeader(StreamInstance* stream, const WAVEHDR* header, DWORD size) {
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

// Links a header into the queue and, when there is one, behind the last held header. DriverMutex held.
void AppendPendingHeader(StreamInstance* stream, WAVEHDR* header, WAVEHDR* behind) {
    header->lpNext = nullptr;
    if (behind != nullptr) {
        behind->lpNext = header;
    }
    if (stream->PendingHeaders == nullptr) {
        stream->PendingHeaders = header;
    }
}

// FALSE when there is no memory for its place, or the stream is closing.
BOOL EnterLedgerAndQueue(StreamInstance* stream, WAVEHDR* header) {
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

struct CardBuffer {
    void* Data;
    DWORD Length;
};

CardBuffer CardBufferOf(StreamInstance* stream, const WAVEHDR* header) {
    CardBuffer buffer = {header->lpData, header->dwBufferLength};
    if (const ShadowBuffer* shadow = LookupShadowBuffer(stream, header)) {
        buffer = {shadow->Data, shadow->Size};
    }
    if (stream->Direction->WholeWords) {
        buffer.Length &= ~static_cast<DWORD>(3);
    }
    return buffer;
}

// Hands one header, counted in flight already, to the kernel. TRUE only when all four requests worked.
BOOL SubmitBuffer(StreamInstance* stream, WAVEHDR* header) {
    const CardBuffer buffer = CardBufferOf(stream, header);
    CardHandle* device = stream->Device;
    return BeginBuffer(device) && MapBuffer(device, buffer.Data, buffer.Length) &&
           SetBufferCookie(device, reinterpret_cast<ULONG_PTR>(header)) &&
           QueueBuffer(device, stream->DirectMode);
}

struct TakenHeader {
    WAVEHDR* Header;  // null: none
    DWORD Resets;     // of the stream when it was taken
};

// Takes the next header, if the rule allows one, and counts it in flight.
TakenHeader TakeForHandOver(StreamInstance* stream) {
    DriverLock lock;
    if (stream->Closing != 0 || stream->Resetting != 0 || stream->Suspended != 0 || !MayHandOver(stream)) {
        return {};
    }
    WAVEHDR* header = stream->Direction->TakeNext(stream);
    HeldHeader* held = header != nullptr ? stream->Held.Find(header) : nullptr;
    if (held == nullptr) {
        return {};
    }
    ++held->InFlight;
    ++stream->InFlightCount;
    stream->InFlightBytes += static_cast<LONG>(held->Bytes);
    return {header, stream->ResetCount};
}

void RefuseHeader(StreamInstance* stream, WAVEHDR* header) {
    {
        DriverLock lock;
        if (HeldHeader* held = stream->Held.Find(header)) {
            held->Refused = true;
        }
    }
    CompleteRefusedHeader(stream, header);
}

void HandOverSome(StreamInstance* stream, TransferRule rule, HandOverLimit limit) {
    for (TakenHeader taken = TakeForHandOver(stream); taken.Header != nullptr;
         taken = TakeForHandOver(stream)) {
        if (!SubmitBuffer(stream, taken.Header)) {
            RefuseHeader(stream, taken.Header);
        }
        if (stream->ResetCount != taken.Resets) {
            FlushBuffers(stream->Device);  // a reset came in between and flushed without this buffer
        }
        if (rule == TransferRule::Always || stream->PortFlag(stream->Direction->PortRunning) != 0) {
            StartTransfer(stream->Device);
        }
        if (limit == HandOverLimit::One) {
            return;
        }
    }
}

// Whether the stream holds the header since before its last reset began; false for null. DriverMutex held.
bool HeldBeforeReset(StreamInstance* stream, const WAVEHDR* header) {
    const HeldHeader* held = header != nullptr ? stream->Held.Find(header) : nullptr;
    return held != nullptr && held->Resets < stream->ResetCount;
}

}  // namespace

bool IsCardAligned(const WAVEHDR* header) {
    return reinterpret_cast<ULONG_PTR>(header->lpData) % CardAlignment == 0;
}

MMRESULT AcceptHeader(StreamInstance* stream, WAVEHDR* header, DWORD size) {
    if (stream->Closing != 0) {
        return MMSYSERR_INVALHANDLE;
    }
    stream->JustReset = 0;
    const MMRESULT result = CheckHeader(stream, header, size);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    header->reserved = reinterpret_cast<DWORD_PTR>(stream);
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_DONE)) | WHDR_INQUEUE;
    return MMSYSERR_NOERROR;
}

MMRESULT QueueHeader(StreamInstance* stream, WAVEHDR* header) {
    if (!EnterLedgerAndQueue(stream, header)) {
        ReleaseShadowBuffer(stream, header);
        return MMSYSERR_NOMEM;
    }
    return MMSYSERR_NOERROR;
}

bool MayHandOver(const StreamInstance* stream) {
    const LONG quarterSecond = static_cast<LONG>(stream->AvgBytesPerSec >> 2);
    return stream->InFlightCount < LeastBuffersInFlight || stream->InFlightBytes < quarterSecond;
}

WAVEHDR* TakePendingHeader(StreamInstance* stream) {
    WAVEHDR* header = stream->PendingHeaders;
    if (header != nullptr) {
        stream->PendingHeaders = header->lpNext;
    }
    return header;
}

void HandOver(StreamInstance* stream, TransferRule rule, HandOverLimit limit) {
    if (stream->HandOverCalls++ != 0) {
        return;
    }
    LONG served = 0;
    do {
        served = stream->HandOverCalls;
        HandOverSome(stream, rule, limit);
    } while (stream->HandOverCalls.fetch_sub(served) != served);
}

void GiveUpChannel(StreamInstance* stream) {
    {
        DriverLock lock;
        stream->Suspended = 1;
    }
    ReleaseChannel(stream->Device);
}

void TakeChannelBack(StreamInstance* stream) {
    AcquireChannel(stream->Device);
    stream->Suspended = 0;
}

void BeginReset(StreamInstance* stream) {
    DriverLock lock;
    ++stream->Resetting;
    ++stream->ResetCount;
}

void EmptyQueue(StreamInstance* stream) {
    DriverLock lock;
    while (HeldBeforeReset(stream, stream->PendingHeaders)) {
        stream->Direction->TakeNext(stream);
    }
}

BOOL FinishReset(StreamInstance* stream) {
    DriverLock lock;
    if (--stream->Resetting != 0) {
        return FALSE;
    }
    const bool handedInSince = stream->PendingHeaders != nullptr;
    stream->JustReset = !handedInSince;
    return handedInSince;
}

}  // namespace kestvox
