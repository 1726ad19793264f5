#include <pthread.h>

#include <climits>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/mutex_object.h"
#include "platform/loader/module.h"
#include "platform/machine.h"

namespace platform {

namespace {

std::atomic<DWORD> lastThreadId{0};
std::atomic<int> runningThreads{0};

// The calling thread's own reference, also kept as the value of a thread-specific key: keys are
// cleaned up after every thread_local of the program, which may still use Windows calls.
thread_local std::shared_ptr<ThreadObject>* current = nullptr;

void EndCurrentThread(void* reference) {
    auto* thread = static_cast<std::shared_ptr<ThreadObject>*>(reference);
    current = thread;
    PassLoaderLock();
    (*thread)->End();
    current = nullptr;
    delete thread;
}

// In the child of a fork only the forking thread lives on, and it owns none of its parent's mutexes.
void ForgetParentThreads() {
    runningThreads.store(0);
    if (current != nullptr) {
        ForgetHeldMutexes((*current)->HeldMutexes);
    }
}

pthread_key_t MakeThreadKey() {
    pthread_key_t key{};
    pthread_key_create(&key, EndCurrentThread);
    pthread_atfork(nullptr, nullptr, ForgetParentThreads);
    return key;
}

void BecomeThread(std::shared_ptr<ThreadObject> thread) {
    static const pthread_key_t key = MakeThreadKey();
    current = new std::shared_ptr<ThreadObject>(std::move(thread));
    pthread_setspecific(key, current);
}

const std::shared_ptr<ThreadObject>& Current() {
    if (current == nullptr) {
        BecomeThread(std::make_shared<ThreadObject>(false));
    }
    return *current;
}

struct ThreadStart {
    std::shared_ptr<ThreadObject> Thread;
    LPTHREAD_START_ROUTINE Routine;
    LPVOID Parameter;
};

void* RunThread(void* argument) {
    const std::unique_ptr<ThreadStart> start(static_cast<ThreadStart*>(argument));
    const LPTHREAD_START_ROUTINE routine = start->Routine;
    const LPVOID parameter = start->Parameter;
    BecomeThread(std::move(start->Thread));
    PassLoaderLock();
    routine(parameter);
    return nullptr;
}

bool StartHostThread(std::unique_ptr<ThreadStart> start, SIZE_T stackSize) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stackSize > static_cast<SIZE_T>(PTHREAD_STACK_MIN)) {
        pthread_attr_setstacksize(&attributes, stackSize);
    }
    pthread_t thread{};
    const bool started = pthread_create(&thread, &attributes, RunThread, start.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (started) {
        start.release();  // the thread's now
    }
    return started;
}

}  // namespace

ThreadObject::ThreadObject(bool counted)
    : Waitable(HandleKind::Thread, false, false), id_(lastThreadId += 4), counted_(counted) {
    if (counted_) {
        runningThreads.fetch_add(1);
    }
}

void ThreadObject::End() {
    AbandonHeldMutexes(HeldMutexes);
    // Counted out before it is quiet or seen to have ended.
    if (counted_) {
        runningThreads.fetch_sub(1);
    }
    {
        const std::lock_guard guard(callLock_);
        ended_ = true;
        calls_.clear();
        BecomeQuietLocked();
    }
    Signal();
}

ThreadObject& CurrentThread() {
    return *Current();
}

ThreadReference CurrentThreadReference() {
    return Current();
}

std::shared_ptr<ThreadObject> FindThreadObject(HANDLE handle) {
    if (handle == GetCurrentThread()) {
        return Current();
    }
    std::shared_ptr<ThreadObject> thread = FindObject<ThreadObject>(handle);
    if (!thread) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return thread;
}

int RunningThreadCount() {
    return runningThreads.load();
}

}  // namespace platform

using namespace platform;

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T dwStackSize, LPTHREAD_START_ROUTINE lpStartAddress,
                           LPVOID lpParameter, DWORD, LPDWORD lpThreadId) {
    if (CallFails("CreateThread")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const auto thread = std::make_shared<ThreadObject>(true);
    const HANDLE handle = OpenHandle(thread);
    const DWORD id = thread->Id();
    if (handle == nullptr ||
        !StartHostThread(std::make_unique<ThreadStart>(ThreadStart{thread, lpStartAddress, lpParameter}),
                         dwStackSize)) {
        if (handle != nullptr) {
            CloseHandle(handle);
        }
        thread->End();
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (lpThreadId != nullptr) {
        *lpThreadId = id;
    }
    return handle;
}

// The host schedules its threads as it sees fit: a priority changes nothing.
BOOL WINAPI SetThreadPriority(HANDLE hThread, int) {
    return FindThreadObject(hThread) ? TRUE : FALSE;
}

HANDLE WINAPI GetCurrentThread() {
    return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2));
}

DWORD WINAPI GetCurrentThreadId() {
    return CurrentThread().Id();
}

DWORD WINAPI GetCurrentProcessId() {
    return platform::CurrentProcess().Id;
}
