#include "stream/service_thread.h"

#include <cstring>

#include "card/heap.h"
#include "card/locks.h"
#include "card/requests.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr LONG FirstCapacity = 1000;
constexpr DWORD LongestWait = 5000;  // milliseconds
constexpr DWORD MutexPatience = 50;  // milliseconds between looks at StopEvent
constexpr DWORD ExitPatience = 100;  // milliseconds

// The stream whose service thread the calling thread is: the kernel's completion call brings only the
// header, which the client may have freed by then.
DWORD StreamSlot = TLS_OUT_OF_INDEXES;

// Service threads of this process that may still run the library's code.
SharedCount LiveThreads = 0;

// Auto-reset event: one of them has gone.
HANDLE ThreadGone = nullptr;

bool StopRequested(const StreamInstance* stream) {
    return WaitForSingleObject(stream->StopEvent, 0) == WAIT_OBJECT_0;
}

// DriverMutex held.
void CompleteHeader(StreamInstance* stream, WAVEHDR* header) {
    HeldHeader* held = stream->Held.Find(header);
    if (held == nullptr || held->InFlight == 0 || stream->IsOpen == 0) {
        return;
    }
    stream->RefusedCompleted = stream->RefusedCompleted || held->Refused;
    if (!IsBadReadPtr(header, sizeof *header)) {
        stream->Direction->OnBufferDone(stream, held);
        return;
    }
    CountCompleted(stream, held);
    if (held->InFlight == 0) {
        ReleaseShadowBuffer(stream, held);
        stream->Held.Forget(held);
    }
}

// FALSE: a thread that is being stopped does not wait for a mutex that its stopper may hold. What it leaves
// is returned by the close.
bool DispatchOne(StreamInstance* stream, WAVEHDR* header) {
    for (;;) {
        DriverLock lock(MutexPatience);
        if (!lock.TimedOut()) {
            CompleteHeader(stream, header);
            break;
        }
        if (StopRequested(stream)) {
            return false;
        }
    }
    if (stream->Resetting != 0 && stream->InFlightCount == 0) {
        SetEvent(stream->Progress);
    }
    return true;
}

void DispatchCollected(StreamInstance* stream) {
    // A client that waits alertably inside its callback lets more come in meanwhile.
    while (stream->CompletionsDispatched < stream->CompletionCount &&
           DispatchOne(stream, stream->Completions[stream->CompletionsDispatched++])) {
    }
    stream->CompletionsDispatched = 0;
    stream->CompletionCount = 0;
}

bool GrowCompletions(StreamInstance* stream) {
    const LONG capacity = stream->CompletionCapacity * 2;
    WAVEHDR** grown = NewHeapArray<WAVEHDR*>(static_cast<DWORD>(capacity));
    if (grown == nullptr) {
        return false;
    }
    memcpy(grown, stream->Completions, static_cast<size_t>(stream->CompletionCount) * sizeof *grown);
    FreeHeapArray(stream->Completions);
    stream->Completions = grown;
    stream->CompletionCapacity = capacity;
    return true;
}

void Collect(WAVEHDR* header) {
    StreamInstance* stream = static_cast<StreamInstance*>(TlsGetValue(StreamSlot));
    if (stream == nullptr || stream->IsOpen == 0) {
        return;
    }
    if (stream->CompletionCount == stream->CompletionCapacity && !GrowCompletions(stream)) {
        DispatchCollected(stream);  // no memory: make room the slow way rather than lose one
    }
    stream->Completions[stream->CompletionCount] = header;
    ++stream->CompletionCount;
}

void CALLBACK BufferFinished(ULONG_PTR cookie, ULONG_PTR, ULONG_PTR) {
    Collect(reinterpret_cast<WAVEHDR*>(cookie));
}

void CALLBACK SubmissionFailed(ULONG_PTR cookie) {
    Collect(reinterpret_cast<WAVEHDR*>(cookie));
}

// A client that hands every refused buffer in again must not keep a time-critical thread turning.
void NapAfterRefusal(StreamInstance* stream) {
    if (stream->RefusedCompleted) {
        stream->RefusedCompleted = false;
        Sleep(1);
    }
}

// Room for the next wake-up is made between waits rather than in the middle of one; what counts is how
// many this one brought.
void KeepRoom(StreamInstance* stream, LONG collected) {
    if (stream->CompletionCapacity * 3 / 4 < collected) {
        GrowCompletions(stream);
    }
}

void Serve(StreamInstance* stream) {
    DWORD reason = WAIT_IO_COMPLETION;
    while (reason == WAIT_IO_COMPLETION) {
        reason = WaitForSingleObjectEx(stream->StopEvent, INFINITE, TRUE);
        const LONG collected = stream->CompletionCount;
        DispatchCollected(stream);
        KeepRoom(stream, collected);
        NapAfterRefusal(stream);
    }
    // The signalled event wins over calls that are queued already: fetch those too.
    while (SleepEx(0, TRUE) == WAIT_IO_COMPLETION) {
        DispatchCollected(stream);
    }
}

// The stopper goes on as soon as the word is set: after it the thread only lets its reference go. Once it is
// counted out the library may be unloaded, and the event closed: nothing comes after that.
void Finish(StreamInstance* stream) {
    stream->ServiceFinished = 1;
    SetEvent(stream->Progress);
    ReleaseStream(stream);
    SetEvent(ThreadGone);
    --LiveThreads;
}

DWORD WINAPI ServiceThread(void* parameter) {
    StreamInstance* stream = static_cast<StreamInstance*>(parameter);
    stream->CompletionCount = 0;
    stream->CompletionCapacity = FirstCapacity;
    stream->Completions = NewHeapArray<WAVEHDR*>(FirstCapacity);
    if (stream->Completions == nullptr) {
        Finish(stream);
        return 1;
    }
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    TlsSetValue(StreamSlot, stream);
    SetCompletionRoutine(stream->Device, BufferFinished);
    stream->ServiceRunning = 1;
    SetEvent(stream->Progress);

    Serve(stream);

    stream->ServiceRunning = 0;
    SetCompletionRoutine(stream->Device, nullptr);
    TlsSetValue(StreamSlot, nullptr);
    stream->CompletionCapacity = 0;
    FreeHeapArray(stream->Completions);
    stream->Completions = nullptr;
    Finish(stream);
    return 0;
}

bool ThreadEnded(const StreamInstance* stream, DWORD milliseconds) {
    return WaitForSingleObject(stream->ServiceThread, milliseconds) == WAIT_OBJECT_0;
}

bool HasStarted(StreamInstance* stream) {
    return stream->ServiceRunning != 0 || ThreadEnded(stream, 0);
}

bool HasFinished(StreamInstance* stream) {
    return stream->ServiceFinished != 0 || ThreadEnded(stream, 0);
}

}  // namespace

void InitializeServiceThreads() {
    StreamSlot = TlsAlloc();
    ThreadGone = CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

BOOL AwaitServiceThreads() {
    const DWORD patience = PatienceFor(LongestWait);
    for (DWORD waited = 0; LiveThreads > 0 || LibraryInUse() || LocksAreInUse(); ++waited) {
        if (waited >= patience) {
            return FALSE;
        }
        WaitForSingleObject(ThreadGone, 1);
        SpendPatience(1);
    }
    return TRUE;
}

bool OnServiceThread() {
    return StreamSlot != TLS_OUT_OF_INDEXES && TlsGetValue(StreamSlot) != nullptr;
}

void DeleteServiceThreads() {
    TlsFree(StreamSlot);
    StreamSlot = TLS_OUT_OF_INDEXES;
    if (ThreadGone != nullptr) {
        CloseHandle(ThreadGone);
        ThreadGone = nullptr;
    }
}

BOOL StartServiceThread(StreamInstance* stream) {
    if (StreamSlot == TLS_OUT_OF_INDEXES) {
        return FALSE;
    }
    stream->StopEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (stream->StopEvent == nullptr) {
        return FALSE;
    }
    stream->ServiceRunning = 0;
    ++stream->References;
    ++LiveThreads;
    stream->ServiceThread = CreateThread(nullptr, 0, ServiceThread, stream, 0, &stream->ServiceThreadId);
    if (stream->ServiceThread == nullptr) {
        --stream->References;
        --LiveThreads;
        CloseHandle(stream->StopEvent);
        stream->StopEvent = nullptr;
        return FALSE;
    }
    AwaitProgress(stream, LongestWait, HasStarted);
    return stream->ServiceRunning != 0;
}

BOOL StopServiceThread(StreamInstance* stream) {
    if (stream->ServiceThread == nullptr) {
        return TRUE;
    }
    SetEvent(stream->StopEvent);
    bool finished = false;
    if (GetCurrentThreadId() != stream->ServiceThreadId) {
        finished = AwaitProgress(stream, LongestWait, HasFinished);
        if (finished && stream->ServiceFinished == 0) {
            --LiveThreads;  // it was ended from outside, as at the end of a process
        }
    }
    if (finished) {
        // Lets it leave the library's code, which may be unloaded next. Only for a moment: while the
        // library is being unloaded no thread can end.
        ThreadEnded(stream, ExitPatience);
    } else {
        SetCompletionRoutine(stream->Device, nullptr);
    }
    CloseHandle(stream->ServiceThread);
    stream->ServiceThread = nullptr;
    return finished;
}

void CompleteRefusedHeader(StreamInstance* stream, WAVEHDR* header) {
    if (stream->ServiceRunning != 0 &&
        QueueUserAPC(SubmissionFailed, stream->ServiceThread, reinterpret_cast<ULONG_PTR>(header))) {
        return;
    }
    DriverLock lock;
    CompleteHeader(stream, header);
}

}  // namespace kestvox
