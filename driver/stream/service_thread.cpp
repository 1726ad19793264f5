#include "stream/service_thread.h"

#include <cstring>

#include "card/heap.h"
#include "card/requests.h"
#include "stream/driver_mutex.h"
#include "stream/header_return.h"
#include "stream/shadow_buffer.h"

namespace kestvox {

namespace {

constexpr LONG FirstCapacity = 1000;
constexpr DWORD PollInterval = 10;   // milliseconds
constexpr DWORD LongestWait = 5000;  // milliseconds
constexpr DWORD MutexPatience = 50;  // milliseconds between looks at StopEvent
constexpr DWORD ExitPatience = 100;  // milliseconds

// The stream whose service thread the calling thread is: the kernel's completion call brings only the
// header, which the client may have freed by then.
DWORD StreamSlot = TLS_OUT_OF_INDEXES;

// Service threads of this process that may still run the library's code.
SharedCount LiveThreads = 0;

bool StopRequested(const StreamInstance* stream) {
    return WaitForSingleObject(stream->StopEvent, 0) == WAIT_OBJECT_0;
}

// DriverMutex held.
void CompleteHeader(StreamInstance* stream, WAVEHDR* header) {
    HeldHeader* held = stream->Held.FindInFlight(header);
    if (held == nullptr || stream->IsOpen == 0) {
        return;
    }
    if (IsBadReadPtr(header, sizeof *header)) {
        CountCompleted(stream, held);
        if (held->InFlight == 0) {
            stream->Held.Forget(held);
            ReleaseShadowBuffer(stream, header);
        }
        return;
    }
    stream->Direction->OnBufferDone(stream, header);
}

// A thread that is being stopped does not wait for a mutex that its stopper may hold: what it leaves is
// returned by the close.
void DispatchOne(StreamInstance* stream, WAVEHDR* header) {
    for (;;) {
        DriverLock lock(MutexPatience);
        if (!lock.TimedOut()) {
            CompleteHeader(stream, header);
            return;
        }
        if (StopRequested(stream)) {
            return;
        }
    }
}

void DispatchCollected(StreamInstance* stream) {
    // A client that waits alertably inside its callback lets more come in meanwhile.
    while (stream->CompletionsDispatched < stream->CompletionCount) {
        DispatchOne(stream, stream->Completions[stream->CompletionsDispatched++]);
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
    if (StreamInstance* stream = static_cast<StreamInstance*>(TlsGetValue(StreamSlot))) {
        stream->RefusedCollected = true;
    }
    Collect(reinterpret_cast<WAVEHDR*>(cookie));
}

// A client that hands every refused buffer in again must not keep a time-critical thread turning.
void NapAfterRefusal(StreamInstance* stream) {
    if (stream->RefusedCollected) {
        stream->RefusedCollected = false;
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

DWORD WINAPI ServiceThread(void* parameter) {
    StreamInstance* stream = static_cast<StreamInstance*>(parameter);
    stream->CompletionCount = 0;
    stream->CompletionCapacity = FirstCapacity;
    stream->Completions = NewHeapArray<WAVEHDR*>(FirstCapacity);
    if (stream->Completions == nullptr) {
        stream->ServiceFinished = 1;
        ReleaseStream(stream);
        --LiveThreads;
        return 1;
    }
    SetThreadPriority(GetCurrentThread(), THREAD_PRIORITY_TIME_CRITICAL);
    TlsSetValue(StreamSlot, stream);
    SetCompletionRoutine(stream->Device, BufferFinished);
    stream->ServiceRunning = 1;

    Serve(stream);

    stream->ServiceRunning = 0;
    SetCompletionRoutine(stream->Device, nullptr);
    TlsSetValue(StreamSlot, nullptr);
    stream->CompletionCapacity = 0;
    FreeHeapArray(stream->Completions);
    stream->Completions = nullptr;
    // The stopper goes on as soon as this is set: after it the thread only lets its reference go.
    stream->ServiceFinished = 1;
    ReleaseStream(stream);
    --LiveThreads;
    return 0;
}

bool ThreadEnded(const StreamInstance* stream, DWORD milliseconds) {
    return WaitForSingleObject(stream->ServiceThread, milliseconds) == WAIT_OBJECT_0;
}

// Polls until the word is set, the thread has ended, or five seconds have passed.
void AwaitService(StreamInstance* stream, const SharedWord& word) {
    const DWORD start = timeGetTime();
    DWORD interval = 1;
    while (word == 0 && !ThreadEnded(stream, 0)) {
        Sleep(interval);
        interval = interval * 2 < PollInterval ? interval * 2 : PollInterval;
        if (timeGetTime() - start >= LongestWait) {
            return;
        }
    }
}

}  // namespace

void InitializeServiceThreads() {
    StreamSlot = TlsAlloc();
}

void AwaitServiceThreads() {
    const DWORD start = timeGetTime();
    while (LiveThreads > 0 && timeGetTime() - start < LongestWait) {
        Sleep(1);
    }
}

void DeleteServiceThreads() {
    TlsFree(StreamSlot);
    StreamSlot = TLS_OUT_OF_INDEXES;
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
    AwaitService(stream, stream->ServiceRunning);
    return stream->ServiceRunning != 0;
}

BOOL StopServiceThread(StreamInstance* stream) {
    if (stream->ServiceThread == nullptr) {
        return TRUE;
    }
    SetEvent(stream->StopEvent);
    bool finished = false;
    if (GetCurrentThreadId() != stream->ServiceThreadId) {
        AwaitService(stream, stream->ServiceFinished);
        finished = stream->ServiceFinished != 0 || ThreadEnded(stream, 0);
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
