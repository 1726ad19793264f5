// WaitForSingleObject, WaitForSingleObjectEx and SleepEx.
#include "platform/kernel/call_failure.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/mutex_object.h"

namespace platform {

namespace {

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

// Without an object only time and procedure calls end the wait.
DWORD WaitFor(Waitable* object, Deadline deadline, bool alertable) {
    switch (WaitOnce(object, deadline, alertable)) {
    case Waiter::Satisfied:
        return WAIT_OBJECT_0;
    case Waiter::CallQueued:
        CurrentThread().RunQueuedCalls();
        return WAIT_IO_COMPLETION;
    default:
        return WAIT_TIMEOUT;
    }
}

// No procedure call interrupts the wait for a mutex.
DWORD WaitForHandle(HANDLE handle, Deadline deadline, bool alertable) {
    const std::shared_ptr<KernelObject> object = FindObject(handle);
    switch (object ? object->Kind() : HandleKind::DeviceFile) {
    case HandleKind::Event:
    case HandleKind::Thread:
        return WaitFor(static_cast<Waitable*>(object.get()), deadline, alertable);
    case HandleKind::Mutex:
        return static_cast<MutexObject*>(object.get())->Acquire(deadline);
    default:
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
}

}  // namespace

}  // namespace platform

using namespace platform;

DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds) {
    return WaitForHandle(hHandle, DeadlineAfter(dwMilliseconds), false);
}

DWORD WINAPI WaitForSingleObjectEx(HANDLE hHandle, DWORD dwMilliseconds, BOOL bAlertable) {
    if (CallFails("WaitForSingleObjectEx")) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    return WaitForHandle(hHandle, DeadlineAfter(dwMilliseconds), bAlertable != FALSE);
}

DWORD WINAPI SleepEx(DWORD dwMilliseconds, BOOL) {
    return WaitFor(nullptr, DeadlineAfter(dwMilliseconds), true) == WAIT_IO_COMPLETION ? WAIT_IO_COMPLETION
                                                                                       : 0;
}
