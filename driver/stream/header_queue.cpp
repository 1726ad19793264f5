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

const SharedMutex HeldAlready = nullptr;

bool NeedsShadowBuffer(const StreamInstance* stream, const WAVEHDR* header) {
    return stream->Format.Conversion != NoConversion ||
           reinterpret_cast<ULONG_PTR>(header->lpData) % CardAlignment != 0;
}

MMRESULT CheckHeader(const WAVEHDR* header, DWORD size) {
    if (header == nullptr || size != sizeof(WAVEHDR)) {
        return MMSYSERR_INVALPARAM;
    }
    if ((header->dwFlags & WHDR_PREPARED) == 0) {
        return WAVERR_UNPREPARED;
    }
    return header->lpData != nullptr && header->dwBufferLength != 0 ? MMSYSERR_NOERROR : MMSYSERR_INVALPARAM;
}

// Marks the header and enters it into the ledger, where it is not queued yet.
MMRESULT AcceptHeader(StreamInstance* stream, WAVEHDR* header, DWORD resets, HeldHeader** accepted) {
    DriverLock lock;
    if (stream->Held.Find(header) != nullptr) {
        return WAVERR_STILLPLAYING;
    }
    header->reserved = reinterpret_cast<DWORD_PTR>(stream);
    header->dwFlags = (header->dwFlags & ~static_cast<DWORD>(WHDR_DONE)) | WHDR_INQUEUE;
    stream->Direction->MarkHeader(stream, header, stream->ResetCount != resets);
    HeldHeader* held = stream->Held.Accept(header, header->dwBufferLength, resets);
    if (held == nullptr) {
        return MMSYSERR_NOMEM;
    }
    if (NeedsShadowBuffer(stream, header)) {
        TakeFreeBuffer(stream, held);
    }
    *accepted = held;
    return MMSYSERR_NOERROR;
}

// Links an accepted header into the queue and behind the last queued one. DriverMutex held.
void AppendPendingHeader(StreamInstance* stream, HeldHeader* held) {
    // While a loop is active its last header leads on to what comes after it.
    const bool chained = stream->PendingHeaders != nullptr || stream->LoopStart != nullptr;
    held->Header->lpNext = nullptr;
    if (HeldHeader* last = stream->Held.Newest(); last != nullptr && chained) {
        last->Header->lpNext = held->Header;
    }
    if (stream->PendingHeaders == nullptr) {
        stream->PendingHeaders = held->Header;
    }
    stream->Held.Queue(held);
}

struct TakenHeader {
    WAVEHDR* Header;  // null: none
    void* Data;       // what the card is to use
    DWORD Length;
    DWORD Resets;      // of the stream when it was taken
    DWORD Sleeps;      // likewise
    LONG Calls;        // of the turn when it was taken
    bool Last;         // ... which had no further header for them
    bool StartAlways;  // a transfer is started whether the port runs or not
};

// Hands one header, counted in flight already, to the kernel. TRUE only when all four requests worked.
BOOL SubmitBuffer(StreamInstance* stream, const TakenHeader& taken) {
    CardHandle* device = stream->Device;
    return BeginBuffer(device) && MapBuffer(device, taken.Data, taken.Length) &&
           SetBufferCookie(device, reinterpret_cast<ULONG_PTR>(taken.Header)) &&
           QueueBuffer(device, stream->DirectMode);
}

// The in-flight rule: at least four buffers and at least a quarter of a second at the client's byte rate.
bool MayHandOver(const StreamInstance* stream) {
    const LONG quarterSecond = static_cast<LONG>(stream->Format.AvgBytesPerSec >> 2);
    return stream->InFlightCount < LeastBuffersInFlight || stream->InFlightBytes < quarterSecond;
}

bool TakesHeaders(const StreamInstance* stream) {
    return stream->Closing == 0 && stream->Resetting == 0 &&
           (stream->Power == Awake || stream->Power == Prepared);
}

bool Any(const HandOverWork& work) {
    return work.Completed || work.Written || work.Added != 0;
}

// The header that a sleep kept from the kernel is counted in flight already. DriverMutex held.
HeldHeader* NextToSubmit(StreamInstance* stream) {
    if (WAVEHDR* header = stream->HandOver.NotSubmitted) {
        stream->HandOver.NotSubmitted = nullptr;
        return stream->Held.Find(header);
    }
    WAVEHDR* header = MayHandOver(stream) ? stream->Direction->TakeNext(stream) : nullptr;
    HeldHeader* held = stream->Held.Find(header);
    if (held != nullptr) {
        ++held->InFlight;
        ++stream->InFlightCount;
        stream->InFlightBytes += static_cast<LONG>(held->Bytes);
    }
    return held;
}

// The next header for the work that is noted; none ends the turn. DriverMutex held.
TakenHeader TakeForCalls(StreamInstance* stream) {
    HandOverTurn& turn = stream->HandOver;
    const HandOverWork work = turn.Work;
    const DWORD sleeps = stream->Sleeps;  // before it is seen to be awake
    const HeldHeader* held = Any(work) && TakesHeaders(stream) ? NextToSubmit(stream) : nullptr;
    if (held == nullptr) {
        turn.Work = {};
        turn.Calls = 0;
        return {};
    }
    if (!work.Completed && !work.Written) {
        --turn.Work.Added;
    }
    const bool last = !Any(turn.Work) || stream->PendingHeaders == nullptr || !MayHandOver(stream);
    if (last) {
        turn.Work = {};
    }
    const DWORD length = held->Shadow != nullptr ? held->Shadow->Size : held->Bytes;
    return {.Header = held->Header,
            .Data = held->Shadow != nullptr ? held->Shadow->Data : held->Header->lpData,
            .Length = stream->Direction->WholeWords ? length & ~static_cast<DWORD>(3) : length,
            .Resets = stream->ResetCount,
            .Sleeps = sleeps,
            .Calls = turn.Calls,
            .Last = last,
            .StartAlways = work.Completed};
}

// A thread that finds another at it leaves its call there. DriverMutex held.
TakenHeader BeginTurn(StreamInstance* stream, HandOverCall call) {
    HandOverWork& work = stream->HandOver.Work;
    work.Added += call == HandOverCall::Added ? 1 : 0;
    work.Written = work.Written || call == HandOverCall::Written;
    work.Completed = work.Completed || call == HandOverCall::Completed;
    return stream->HandOver.Calls++ == 0 ? TakeForCalls(stream) : TakenHeader{};
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
    if (!SubmitBuffer(stream, taken)) {
        RefuseHeader(stream, taken);
    }
    if (stream->ResetCount != taken.Resets) {
        FlushBuffers(stream->Device);  // a reset came in between and flushed without this buffer
    }
    if (taken.StartAlways || stream->Running() != 0) {
        StartTransfer(stream->Device);
    }
}

// After a last header the turn ends without a look at the queue, unless a call has come since.
TakenHeader ContinueTurn(StreamInstance* stream, const TakenHeader& taken, const SharedMutex& mutex) {
    LONG calls = taken.Calls;
    if (taken.Last && stream->HandOver.Calls.compare_exchange_strong(calls, 0)) {
        return {};
    }
    MutexLock lock(mutex);
    return TakeForCalls(stream);
}

// `mutex`: DriverMutex, or HeldAlready when the caller holds it.
void RunTurn(StreamInstance* stream, TakenHeader taken, const SharedMutex& mutex) {
    for (; taken.Header != nullptr; taken = ContinueTurn(stream, taken, mutex)) {
        SubmitTaken(stream, taken);
    }
}

// Queues an accepted header and hands over what the call says.
MMRESULT QueueHeader(StreamInstance* stream, HeldHeader* held, HandOverCall call) {
    WAVEHDR* header = held->Header;
    TakenHeader taken = {};
    bool closing = false;
    bool overtaken = false;
    {
        DriverLock lock;
        closing = stream->Closing != 0;
        overtaken = stream->ResetCount != held->Resets;
        if (closing || overtaken) {
            ForgetHeader(stream, held);
        } else {
            AppendPendingHeader(stream, held);
            taken = BeginTurn(stream, call);
        }
    }
    if (overtaken && !closing) {
        ReturnHeader(stream, header);
    }
    RunTurn(stream, taken, DriverMutex);
    return closing ? MMSYSERR_NOMEM : MMSYSERR_NOERROR;
}

// A header that a sleep kept from the kernel is not in the card after all. DriverMutex held.
void UncountNotSubmitted(StreamInstance* stream) {
    if (HeldHeader* held = stream->Held.Find(stream->HandOver.NotSubmitted)) {
        CountCompleted(stream, held);
    }
    stream->HandOver.NotSubmitted = nullptr;
}

// Once the last completion is over: it holds DriverMutex to its end.
bool IsFlushed(StreamInstance* stream) {
    if (stream->InFlightCount != 0) {
        return false;
    }
    DriverLock lock(LongestFlush);
    return !lock.TimedOut() && stream->InFlightCount == 0;
}

// Whether the stream holds the header since before its last reset began. DriverMutex held.
bool HeldBeforeReset(StreamInstance* stream, const WAVEHDR* header) {
    const HeldHeader* held = stream->Held.Find(header);
    return held != nullptr && held->Resets < stream->ResetCount;
}

}  // namespace

MMRESULT SendHeader(StreamInstance* stream, WAVEHDR* header, DWORD size, DWORD resets, HandOverCall call) {
    if (stream->Closing != 0) {
        return MMSYSERR_INVALHANDLE;
    }
    stream->JustReset = 0;
    MMRESULT result = CheckHeader(header, size);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    HeldHeader* held = nullptr;
    result = AcceptHeader(stream, header, resets, &held);
    if (result != MMSYSERR_NOERROR) {
        return result;
    }
    result = NeedsShadowBuffer(stream, header) ? stream->Direction->FillShadowBuffer(stream, held)
                                               : MMSYSERR_NOERROR;
    if (result != MMSYSERR_NOERROR) {
        DriverLock lock;
        ForgetHeader(stream, held);
        return result;
    }
    return QueueHeader(stream, held, call);
}

WAVEHDR* TakePendingHeader(StreamInstance* stream) {
    WAVEHDR* header = stream->PendingHeaders;
    if (header != nullptr) {
        stream->PendingHeaders = header->lpNext;
    }
    return header;
}

void HandOver(StreamInstance* stream, HandOverCall call) {
    const SharedMutex& mutex = call == HandOverCall::Completed ? HeldAlready : DriverMutex;
    TakenHeader taken = {};
    {
        MutexLock lock(mutex);
        taken = BeginTurn(stream, call);
    }
    RunTurn(stream, taken, mutex);
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

BOOL FinishReset(StreamInstance* stream, DWORD* resets) {
    DriverLock lock;
    *resets = stream->ResetCount;
    stream->JustReset = 1;
    return --stream->Resetting == 0 && stream->PendingHeaders != nullptr;
}

}  // namespace kestvox
