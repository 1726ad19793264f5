// The wait calls.
#include <algorithm>
#include <array>
#include <span>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/thread_object.h"
#include "platform/kernel/wait/mutex_object.h"

namespace platform {

namespace {

// One object of a wait; exactly one of the two is set.
struct WaitTarget {
    std::shared_ptr<Waitable> Object;
    std::shared_ptr<MutexObject> Mutex;
};

// A mutex may be freed by another process, which cannot end a wait here. A wait that may end in other
// ways as well therefore looks at its mutexes this often.
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

DWORD TryAny(std::span<const WaitTarget> targets) {
    for (size_t i = 0; i < targets.size(); ++i) {
        const DWORD result = TryTarget(targets[i]);
        if (result != WAIT_TIMEOUT) {
            return result + static_cast<DWORD>(i);
        }
    }
    return WAIT_TIMEOUT;
}

// Waits on what is waitable among the targets. Answers the outcome of the Waiter.
int WaitOnce(std::span<const WaitTarget> targets, Deadline deadline, bool alertable, bool taking) {
    Waiter waiter;
    for (size_t i = 0; i < targets.size() && !waiter.IsClaimed(); ++i) {
        if (targets[i].Object) {
            targets[i].Object->Enlist(waiter, static_cast<int>(i), taking);
        }
    }
    if (alertable) {
        CurrentThread().BeginAlertableWait(waiter);
    }
    const int outcome = waiter.Await(deadline);
    if (alertable) {
        CurrentThread().EndAlertableWait();
    }
    for (const WaitTarget& target : targets) {
        if (target.Object) {
            target.Object->Withdraw(waiter);
        }
    }
    return outcome;
}

DWORD WaitForAny(std::span<const WaitTarget> targets, Deadline deadline, bool alertable) {
    const bool polls =
        std::any_of(targets.begin(), targets.end(), [](const WaitTarget& t) { return t.Mutex; });
    for (;;) {
        const DWORD result = TryAny(targets);
        if (result != WAIT_TIMEOUT || (deadline == AtOnce && !alertable)) {
            return result;
        }
        const Deadline soon = polls ? std::chrono::steady_clock::now() + MutexPollInterval : Never;
        const bool looksAgain = soon < deadline;
        const int outcome = WaitOnce(targets, looksAgain ? soon : deadline, alertable, true);
        if (outcome >= 0) {
            return WAIT_OBJECT_0 + static_cast<DWORD>(outcome);
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

// All or nothing: takes every target when all can be had now. Else `missing` is one that cannot.
DWORD TryAll(std::span<const WaitTarget> targets, size_t* missing) {
    DWORD result = WAIT_OBJECT_0;
    std::vector<MutexObject*> acquired;
    std::vector<Waitable*> objects;
    const auto giveUp = [&](size_t index) {
        for (MutexObject* mutex : acquired) {
            mutex->Release();
        }
        *missing = index;
        return static_cast<DWORD>(WAIT_TIMEOUT);
    };
    for (size_t i = 0; i < targets.size(); ++i) {
        if (targets[i].Object) {
            objects.push_back(targets[i].Object.get());
            continue;
        }
        const DWORD one = targets[i].Mutex->Acquire(false);
        if (one == WAIT_TIMEOUT) {
            return giveUp(i);
        }
        acquired.push_back(targets[i].Mutex.get());
        result = std::max(result, one);
    }
    // Every wait on several objects locks them in this order.
    std::sort(objects.begin(), objects.end());
    std::vector<std::unique_lock<std::mutex>> locks;
    locks.reserve(objects.size());
    for (Waitable* object : objects) {
        locks.emplace_back(object->Lock());
    }
    for (size_t i = 0; i < targets.size(); ++i) {
        if (targets[i].Object && !targets[i].Object->IsSignalledLocked()) {
            return giveUp(i);
        }
    }
    for (Waitable* object : objects) {
        object->TakeLocked();
    }
    return result;
}

DWORD WaitForAll(std::span<const WaitTarget> targets, Deadline deadline) {
    for (;;) {
        size_t missing = 0;
        const DWORD result = TryAll(targets, &missing);
        if (result != WAIT_TIMEOUT) {
            return result;
        }
        const std::span<const WaitTarget> one = targets.subspan(missing, 1);
        const Deadline soon =
            one.front().Mutex ? std::chrono::steady_clock::now() + MutexPollInterval : Never;
        const bool looksAgain = soon < deadline;
        const int outcome = WaitOnce(one, looksAgain ? soon : deadline, false, false);
        if (outcome == Waiter::TimedOut && !looksAgain) {
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
    return WaitForAny({&target, 1}, DeadlineAfter(milliseconds), alertable);
}

bool HasDuplicates(std::span<const HANDLE> handles) {
    for (size_t i = 1; i < handles.size(); ++i) {
        if (std::find(handles.begin(), handles.begin() + static_cast<ptrdiff_t>(i), handles[i]) !=
            handles.begin() + static_cast<ptrdiff_t>(i)) {
            return true;
        }
    }
    return false;
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

DWORD WINAPI WaitForMultipleObjects(DWORD nCount, const HANDLE* lpHandles, BOOL bWaitAll,
                                    DWORD dwMilliseconds) {
    const std::span<const HANDLE> handles(lpHandles, nCount);
    if (nCount == 0 || nCount > MAXIMUM_WAIT_OBJECTS || (bWaitAll && HasDuplicates(handles))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return WAIT_FAILED;
    }
    std::array<WaitTarget, MAXIMUM_WAIT_OBJECTS> targets;
    for (DWORD i = 0; i < nCount; ++i) {
        if (!FindTarget(handles[i], &targets[i])) {
            return WAIT_FAILED;
        }
    }
    const std::span<const WaitTarget> wanted(targets.data(), nCount);
    const Deadline deadline = DeadlineAfter(dwMilliseconds);
    return bWaitAll ? WaitForAll(wanted, deadline) : WaitForAny(wanted, deadline, false);
}

DWORD WINAPI SleepEx(DWORD dwMilliseconds, BOOL bAlertable) {
    if (!bAlertable) {
        Sleep(dwMilliseconds);
        return 0;
    }
    return WaitForAny({}, DeadlineAfter(dwMilliseconds), true) == WAIT_IO_COMPLETION ? WAIT_IO_COMPLETION : 0;
}
