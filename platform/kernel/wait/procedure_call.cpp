// User-mode procedure calls: queued to a thread by anyone, run by the thread when it waits alertably.
#include "platform/kernel/call_failure.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/futex.h"

namespace platform {

namespace {

std::atomic<int> busyThreads{0};    // with calls queued or still at work on what they set off
std::atomic<int> quietAwaiters{0};  // threads that sleep until there are fewer

// In which a thread deals with one completion: less than it takes to put another to sleep and to wake it. 20
// minutes on one device pass in stepped time in three quarters of the time. Giving way meanwhile would make
// whoever waits the last in the row of a busy computer.
constexpr auto CompletionTime = std::chrono::microseconds(20);

}  // namespace

bool ThreadObject::QueueCall(PAPCFUNC routine, ULONG_PTR data) {
    return Queue({routine, nullptr, {data, 0, 0}});
}

bool ThreadObject::QueueCall(device::ProcedureCall routine, ULONG_PTR first, ULONG_PTR second,
                             ULONG_PTR third) {
    return Queue({nullptr, routine, {first, second, third}});
}

bool ThreadObject::Queue(const QueuedCall& call) {
    Waiter* claimed = nullptr;
    {
        const std::lock_guard guard(callLock_);
        if (ended_) {
            return false;
        }
        calls_.push_back(call);
        if (!busy_) {
            busy_ = true;
            ++busyThreads;
        }
        if (alertable_ != nullptr && alertable_->Claim(Waiter::CallQueued)) {
            claimed = alertable_;
        }
    }
    if (claimed != nullptr) {
        Waiter::Wake(claimed);  // it needs the lock to go on
    }
    return true;
}

void ThreadObject::BecomeQuietLocked() {
    if (!busy_) {
        return;
    }
    busy_ = false;
    const int left = --busyThreads;
    if (left <= 1 && quietAwaiters != 0) {  // a busy thread that waits for the others leaves itself out
        WakeAll(&busyThreads);
    }
}

bool ThreadObject::IsBusy() {
    const std::lock_guard guard(callLock_);
    return busy_;
}

void ThreadObject::BeginAlertableWait(Waiter& waiter) {
    const std::lock_guard guard(callLock_);
    if (!calls_.empty()) {
        waiter.Claim(Waiter::CallQueued);
        return;
    }
    alertable_ = &waiter;
    if (!waiter.IsClaimed()) {
        BecomeQuietLocked();
    }
}

void ThreadObject::EndAlertableWait() {
    const std::lock_guard guard(callLock_);
    alertable_ = nullptr;
}

void ThreadObject::RunQueuedCalls() {
    std::unique_lock guard(callLock_);
    while (!calls_.empty()) {
        const QueuedCall call = calls_.front();
        calls_.pop_front();
        guard.unlock();
        if (call.Short != nullptr) {
            call.Short(call.Arguments[0]);
        } else {
            call.Long(call.Arguments[0], call.Arguments[1], call.Arguments[2]);
        }
        guard.lock();
    }
}

bool QueueProcedureCall(const ThreadReference& thread, device::ProcedureCall routine, ULONG_PTR first,
                        ULONG_PTR second, ULONG_PTR third) {
    return thread->QueueCall(routine, first, second, third);
}

bool WaitUntilQuiet(DWORD realMilliseconds) {
    const Deadline deadline = DeadlineAfter(realMilliseconds);
    const int own = CurrentThread().IsBusy() ? 1 : 0;  // no thread waits for itself
    const Deadline sleepFrom = std::chrono::steady_clock::now() + CompletionTime;
    while (busyThreads > own && std::chrono::steady_clock::now() < sleepFrom) {
    }
    ++quietAwaiters;
    int busy = busyThreads;
    while (busy > own && deadline != AtOnce && BlockWhileEqual(&busyThreads, busy, deadline)) {
        busy = busyThreads;
    }
    --quietAwaiters;
    return busyThreads <= own;
}

}  // namespace platform

DWORD WINAPI QueueUserAPC(PAPCFUNC pfnAPC, HANDLE hThread, ULONG_PTR dwData) {
    if (platform::CallFails("QueueUserAPC")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    const auto thread = platform::FindThreadObject(hThread);
    if (!thread) {
        return 0;
    }
    if (!thread->QueueCall(pfnAPC, dwData)) {
        SetLastError(ERROR_GEN_FAILURE);
        return 0;
    }
    return 1;
}
