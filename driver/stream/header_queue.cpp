#include "stream/header_queue.h"

#include "card/locks.h"
#include "card/requests.h"
#include "stream/header_return.h"
#include "stream/service_thread.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr ULONG_PTR CardAlignment = 4;
constexpr LONG LeastBuffersInFlight = 4;
constexpr DWORD LongestFlush = 200;  // milliseconds

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

enum class Queued { Yes, Overtaken, No };

// No: there is no memory for its place, or the stream is closing.
Queued EnterLedgerAndQueue(StreamInstance* stream, WAVEHDR* header, DWORD resets) {
    DriverLock lock;
    if (stream->Closing != 0) {
        return Queued::No;
    }
    // While a loop is active its last header leads on to what comes after it.
    const bool chained = stream->PendingHeaders != nullptr || stream->LoopStart != nullptr;
    const HeldHeader* newest = stream->Held.Newest();
    WAVEHDR* behind = chained && newest != nullptr ? newest->Header : nullptr;
    if (stream->ResetCount != resets) {
        return Queued::Overtaken;
    }
    if (!stream->Held.Accept(header, header->dwBufferLength, resets)) {
        return Queued::No;
    }
    AppendPendingHeader(stream, header, behind);
    return Queued::Yes;
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
    WAVEHDR* Header;   // null: none
    DWORD Resets;      // of the stream when it was taken
    DWORD Sleeps;      // likewise
    bool StartAlways;  // a transfer is started whether the port runs or not
};

bool TakesHeaders(const StreamInstance* stream) {
    return stream->Closing == 0 && stream->Resetting == 0 &&
           (stream->Power == Awake || stream->Power == Prepared);
}

// The header that a sleep kept from the kernel is counted in flight already.
WAVEHDR* NextToSubmit(StreamInstance* stream) {
    if (WAVEHDR* header = stream->HandOver.NotSubmitted) {
        stream->HandOver.NotSubmitted = nullptr;
        return header;
    }
    WAVEHDR* header = MayHandOver(stream) ? stream->Direction->TakeNext(stream) : nullptr;
    HeldHeader* held = header != nullptr ? stream->Held.Find(header) : nullptr;
    if (held == nullptr) {
        return nullptr;
    }
    ++held->InFlight;
    ++stream->InFlightCount;
    stream->InFlightBytes += static_cast<LONG>(held->Bytes);
    return header;
}

void NoteCall(HandOverTurn& turn, HandOverCall call) {
    turn.Added += call == HandOverCall::Added ? 1 : 0;
    turn.Written = turn.Written || call == HandOverCall::Written;
    turn.Completed = turn.Completed || call == HandOverCall::Completed;
}

// The next header for the calls that are noted; null ends the turn. DriverMutex held.
TakenHeader TakeForCalls(StreamInstance* stream) {
    HandOverTurn& turn = stream->HandOver;
    const bool called = turn.Completed || turn.Written || turn.Added != 0;
    WAVEHDR* header = called && TakesHeaders(stream) ? NextToSubmit(stream) : nullptr;
    if (header == nullptr) {
        turn = {.Taken = false,
                .Added = 0,
                .Written = false,
                .Completed = false,
                .NotSubmitted = turn.NotSubmitted};
        return {};
    }
    if (!turn.Completed && !turn.Written) {
        --turn.Added;
    }
    return {header, stream->ResetCount, stream->Sleeps, turn.Completed};
}

// A thread that finds another at it leaves its call there.
TakenHeader BeginTurn(StreamInstance* stream, HandOverCall call) {
    DriverLock lock;
    NoteCall(stream->HandOver, call);
    if (stream->HandOver.Taken) {
        return {};
    }
    stream->HandOver.Taken = true;
    return TakeForCalls(stream);
}

TakenHeader ContinueTurn(StreamInstance* stream) {
    DriverLock lock;
    return TakeForCalls(stream);
}

// The kernel did not take the header. When the port has fallen asleep meanwhile that is why, and it is kept.
void RefuseHeader(StreamInstance* stream, const TakenHeader& taken) {
    {
        DriverLock lock;
        HeldHeader* held = stream->Held.Find(taken.Header);
        if (held != nullptr && stream->Sleeps != taken.Sleeps && stream->ResetCount == taken.Resets) {
            stream->HandOver.NotSubmitted = taken.Header;
            return;
        }
        if (held != nullptr) {
            held->Refused = true;
        }
    }
    CompleteRefusedHeader(stream, taken.Header);
}

void SubmitTaken(StreamInstance* stream, const TakenHeader& taken) {
    if (!SubmitBuffer(stream, taken.Header)) {
        RefuseHeader(stream, taken);
    }
    if (stream->ResetCount != taken.Resets) {
        FlushBuffers(stream->Device);  // a reset came in between and flushed without this buffer
    }
    if (taken.StartAlways || stream->PortFlag(stream->Direction->PortRunning) != 0) {
        StartTransfer(stream->Device);
    }
}

// A header that a sleep kept from the kernel is not in the card after all. DriverMutex held.
void UncountNotSubmitted(StreamInstance* stream) {
    WAVEHDR* header = stream->HandOver.NotSubmitted;
    stream->HandOver.NotSubmitted = nullptr;
    if (HeldHeader* held = header != nullptr ? stream->Held.Find(header) : nullptr) {
        CountCompleted(stream, held);
    }
}

// Once the last completion is over: it holds DriverMutex to its end.
bool IsFlushed(StreamInstance* stream) {
    if (stream->InFlightCount != 0) {
        return false;
    }
    DriverLock lock(LongestFlush);
    return !lock.TimedOut() && stream->InFlightCount == 0;
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

MMRESULT AcceptHeader(StreamInstance* stream, WAVEHDR* header, DWORD size, DWORD* resets) {
    if (stream->Closing != 0) {
        return MMSYSERR_INVALHANDLE;
    }
    stream->JustReset = 0;
    *resets = stream->ResetCount;
    const MMRESULT result = CheckHeader(stream, header, size);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    header->reserved = reinterpret_cast<DWORD_PTR>(stream);
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_DONE)) | WHDR_INQUEUE;
    return MMSYSERR_NOERROR;
}

MMRESULT QueueHeader(StreamInstance* stream, WAVEHDR* header, DWORD resets) {
    const Queued queued = EnterLedgerAndQueue(stream, header, resets);
    if (queued == Queued::No) {
        ReleaseShadowBuffer(stream, header);
        return MMSYSERR_NOMEM;
    }
    if (queued == Queued::Overtaken) {
        ReturnUnheldHeader(stream, header);
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

void HandOver(StreamInstance* stream, HandOverCall call) {
    for (TakenHeader taken = BeginTurn(stream, call); taken.Header != nullptr; taken = ContinueTurn(stream)) {
        SubmitTaken(stream, taken);
    }
}

void BeginReset(StreamInstance* stream) {
    DriverLock lock;
    ++stream->Resetting;
    ++stream->ResetCount;
    UncountNotSubmitted(stream);
}

void EmptyQueue(StreamInstance* stream) {
    DriverLock lock;
    while (HeldBeforeReset(stream, stream->PendingHeaders)) {
        stream->Direction->TakeNext(stream);
    }
}

void AwaitFlushedHeaders(StreamInstance* stream) {
    if (stream->ServiceRunning != 0 && !OnServiceThread()) {
        AwaitProgress(stream, LongestFlush, IsFlushed);
    }
}

BOOL FinishReset(StreamInstance* stream) {
    DriverLock lock;
    stream->JustReset = 1;
    return --stream->Resetting == 0 && stream->PendingHeaders != nullptr;
}

}  // namespace kestvox
