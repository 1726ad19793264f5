// WaitForSingleObject, WaitForSingleObjectEx and SleepEx.
#include "platform/kernel/call_failure.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/mutex_object.h"

namespace platform {

namespace {

// What a wait is for; exactly one of the two is set.
struct WaitTarget {
    std::shared_ptr<Waitable> Object;
    std::shared_ptr<MutexObject> Mutex;
};

// A mutex may be freed by another process, which cannot wake a wait in this one. A wait that may also end in
// other ways therefore looks at its mutex this often.
constexpr std::chrono::milliseconds MutexPollInterval{1};

bool FindTarget(HANDLE handle, WaitTarget* target) {
    std::shared_ptr<KernelObject> object = FindObject(handle);
    if (!object) {
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
    switch (object->Kind()) {
    case HandleKind::Event:
    case HandleKind::Thread:
        target->Object = std::static_pointer_cast<Waitable>(std::move(object));
        return true;
    case HandleKind::Mutex:
        target->Mutex = std::static_pointer_cast<MutexObject>(std::move(object));
        return true;
    default:
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }
}

// Satisfied now by this target: WAIT_OBJECT_0 or WAIT_ABANDONED; else WAIT_TIMEOUT.
DWORD TryTarget(const WaitTarget& target) {
    if (target.Mutex) {
        return target.Mutex->Acquire(false);
    }
    return target.Object->TryTake() ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

// Waits for the object, if any, and for procedure calls when alertable. Answers the outcome of the Waiter.
int WaitOnce(Waitable* object, Deadline deadline, bool alertable) {
    Waiter waiter;
    if (object) {
        object->Enlist(waiter);
    }
    if (alertable) {
        CurrentThread().BeginAlertableWait(waiter);
    }
    const int outcome = waiter.Await(deadline);
    if (alertable) {
        CurrentThread().EndAlertableWait();
    }
    if (object) {
        object->Withdraw(waiter);
    }
    return outcome;
}

// Without a target only time and procedure calls end the wait.
DWORD WaitFor(const WaitTarget* target, Deadline deadline, bool alertable) {
    const bool polls = target && target->Mutex;
    Waitable* const object = target ? target->Object.get() : nullptr;
    for (;;) {
        const DWORD result = target ? TryTarget(*target) : WAIT_TIMEOUT;
        if (result != WAIT_TIMEOUT || (deadline == AtOnce && !alertable)) {
            return result;
        }
        const Deadline soon = polls ? std::chrono::steady_clock::now() + MutexPollInterval : Never;
        const bool looksAgain = soon < deadline;
        const int outcome = WaitOnce(object, looksAgain ? soon : deadline, alertable);
        if (outcome == Waiter::Satisfied) {
            return WAIT_OBJECT_0;
        }
        if (outcome == Waiter::CallQueued) {
            CurrentThread().RunQueuedCalls();
            return WAIT_IO_COMPLETION;
        }
        if (!looksAgain) {
            return WAIT_TIMEOUT;
        }
    }
}

DWORD WaitForHandle(HANDLE handle, DWORD milliseconds, bool alertable) {
    WaitTarget target;
    if (!FindTarget(handle, &target)) {
        return WAIT_FAILED;
    }
    if (target.Mutex && !alertable && milliseconds == INFINITE) {
        return target.Mutex->Acquire(true);
    }
    return WaitFor(&target, DeadlineAfter(milliseconds), alertable);
}

}  // namespace

}  // namespace platform

using namespace platform;

DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) {
    return WaitForHandle(hHandle, dwMilliseconds, false);
}

DWORD WINAPI WaitForSingleObjectEx(HANDLE hHandle, DWORD dwMilliseconds, BOOL bAlertable) {
    if (CallFails("WaitForSingleObjectEx")) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    return WaitForHandle(hHandle, dwMilliseconds, bAlertable != FALSE);
}

DWORD WINAPI SleepEx(DWORD dwMilliseconds, BOOL bAlertable) {
    if (!bAlertable) {
        Sleep(dwMilliseconds);
        return 0;
    }
    return WaitFor(nullptr, DeadlineAfter(dwMilliseconds), true) == WAIT_IO_COMPLETION ? WAIT_IO_COMPLETION
                                                                                       : 0;
}
