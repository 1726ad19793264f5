#include "stream/buffer_transport.h"

#include "card/requests.h"
#include "stream/driver_mutex.h"
#include "stream/notify_client.h"
#include "stream/service_thread.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr LONG LeastBuffersInFlight = 4;

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
    WAVEHDR* header = stream->Direction->TakePendingHeader(stream);
    HeldHeader* held = header != nullptr ? stream->Held.Find(header) : nullptr;
    if (held == nullptr) {
        return {};
    }
    ++held->InFlight;
    ++stream->InFlightCount;
    stream->InFlightBytes += static_cast<LONG>(held->Bytes);
    return {header, stream->ResetCount};
}

// The kernel did not take the header: it goes back to the client like one that is done.
void GiveUp(StreamInstance* stream, WAVEHDR* header) {
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
            GiveUp(stream, taken.Header);
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

// Takes the header that is chosen out of the ledger; null when none is.
template <typename Choose>
WAVEHDR* TakeOutOfLedger(StreamInstance* stream, Choose choose) {
    DriverLock lock;
    HeldHeader* held = choose(stream->Held);
    if (held == nullptr) {
        return nullptr;
    }
    WAVEHDR* header = held->Header;
    while (held->InFlight != 0) {
        CountDone(stream, held);
    }
    stream->Held.Forget(held);
    return header;
}

void GiveBack(StreamInstance* stream, WAVEHDR* header) {
    ReleaseShadowBuffer(stream, header);
    if (IsBadReadPtr(header, sizeof *header)) {
        return;
    }
    header->lpNext = nullptr;
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_INQUEUE)) | WHDR_DONE;
    NotifyClient(stream, stream->Direction->DoneMessage, reinterpret_cast<DWORD_PTR>(header));
}

template <typename Choose>
void ReturnHeaders(StreamInstance* stream, Choose choose) {
    while (WAVEHDR* header = TakeOutOfLedger(stream, choose)) {
        GiveBack(stream, header);
    }
}

}  // namespace

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

void AppendPendingHeader(StreamInstance* stream, WAVEHDR* header, WAVEHDR* behind) {
    header->lpNext = nullptr;
    if (behind != nullptr) {
        behind->lpNext = header;
    }
    if (stream->PendingHeaders == nullptr) {
        stream->PendingHeaders = header;
    }
}

BOOL SubmitBuffer(StreamInstance* stream, WAVEHDR* header) {
    const CardBuffer buffer = CardBufferOf(stream, header);
    CardHandle* device = stream->Device;
    return BeginBuffer(device) && MapBuffer(device, buffer.Data, buffer.Length) &&
           SetBufferCookie(device, reinterpret_cast<ULONG_PTR>(header)) &&
           QueueBuffer(device, stream->DirectMode);
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

bool HeldBeforeReset(StreamInstance* stream, const WAVEHDR* header) {
    const HeldHeader* held = header != nullptr ? stream->Held.Find(header) : nullptr;
    return held != nullptr && held->Resets < stream->ResetCount;
}

void CountDone(StreamInstance* stream, HeldHeader* held) {
    --held->InFlight;
    --stream->InFlightCount;
    stream->InFlightBytes -= static_cast<LONG>(held->Bytes);
}

void ReturnHeader(StreamInstance* stream, WAVEHDR* header) {
    {
        DriverLock lock;
        HeldHeader* held = stream->Held.Find(header);
        if (held == nullptr) {
            return;
        }
        stream->Held.Forget(held);
    }
    GiveBack(stream, header);
}

void ReturnIdleHeaders(StreamInstance* stream) {
    const DWORD resets = stream->ResetCount;
    ReturnHeaders(stream, [resets](HeaderLedger& ledger) { return ledger.FirstIdle(resets); });
}

void ReturnSpentHeaders(StreamInstance* stream) {
    ReturnHeaders(stream, [](HeaderLedger& ledger) { return ledger.FirstSpent(); });
}

void ReturnAllHeaders(StreamInstance* stream) {
    {
        DriverLock lock;
        stream->PendingHeaders = nullptr;
    }
    ReturnHeaders(stream, [](HeaderLedger& ledger) { return ledger.First(); });
}

}  // namespace kestvox
