#include <algorithm>
#include <atomic>
#include <cerrno>
#include <ctime>
#include <string_view>
#include <thread>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/wait/mutex_object.h"

namespace platform {

namespace {

std::atomic<int> heldMutexes{0};
std::atomic<unsigned long> releases{0};
std::atomic<unsigned long> namedWaits{0};

std::vector<HeldMutex>::iterator FindHeld(std::vector<HeldMutex>& held, const MutexCore* core) {
    return std::find_if(held.begin(), held.end(), [&](const HeldMutex& entry) { return entry.Core == core; });
}

// When it is not free.
int WaitUntil(pthread_mutex_t* lock, Deadline deadline) {
    if (deadline == Never) {
        return pthread_mutex_lock(lock);
    }
#ifdef KESTVOX_SANITIZE_THREAD  // it learns of a lock whose owner has died only where the lock is tried
    int tried = EBUSY;
    while (tried == EBUSY && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        tried = pthread_mutex_trylock(lock);
    }
    return tried == EBUSY ? ETIMEDOUT : tried;
#else
    const timespec until = HostTime(deadline.time_since_epoch());
    return pthread_mutex_clocklock(lock, CLOCK_MONOTONIC, &until);
#endif
}

}  // namespace

MutexObject::MutexObject()
    : KernelObject(HandleKind::Mutex), unnamed_(std::make_unique<MutexCore>()), core_(unnamed_.get()) {
    core_->Initialize(false);
}

MutexObject::MutexObject(NamedMutexUse named)
    : KernelObject(HandleKind::Mutex), named_(named), core_(named.Core) {}

MutexObject::~MutexObject() {
    if (unnamed_) {
        pthread_mutex_destroy(&unnamed_->Lock);
    } else {
        CloseNamedMutex(named_);
    }
}

DWORD MutexObject::Acquire(Deadline deadline) {
    std::vector<HeldMutex>& held = CurrentThread().HeldMutexes;
    const auto own = FindHeld(held, core_);
    if (own != held.end()) {
        ++own->Count;
        return WAIT_OBJECT_0;
    }
    int result = pthread_mutex_trylock(&core_->Lock);
    if (result == EBUSY && deadline != AtOnce) {
        namedWaits.fetch_add(named_.Core ? 1 : 0, std::memory_order_relaxed);
        result = WaitUntil(&core_->Lock, deadline);
    }
    if (result == EBUSY || result == ETIMEDOUT) {
        return WAIT_TIMEOUT;
    }
    bool abandoned = core_->Abandoned;
    if (result == EOWNERDEAD) {
        pthread_mutex_consistent(&core_->Lock);
        abandoned = true;
    }
    core_->Abandoned = false;
    held.push_back({shared_from_this(), core_, 1});
    heldMutexes.fetch_add(1);
    return abandoned ? WAIT_ABANDONED : WAIT_OBJECT_0;
}

bool MutexObject::Release() {
    std::vector<HeldMutex>& held = CurrentThread().HeldMutexes;
    const auto own = FindHeld(held, core_);
    if (own == held.end()) {
        return false;
    }
    releases.fetch_add(1, std::memory_order_relaxed);
    if (--own->Count == 0) {
        const HeldMutex last = std::move(*own);  // may be all that keeps the core
        held.erase(own);
        heldMutexes.fetch_sub(1);
        pthread_mutex_unlock(&last.Core->Lock);
    }
    return true;
}

void AbandonHeldMutexes(std::vector<HeldMutex>& held) {
    while (!held.empty()) {
        const HeldMutex last = std::move(held.back());
        held.pop_back();
        heldMutexes.fetch_sub(1);
        last.Core->Abandoned = true;
        pthread_mutex_unlock(&last.Core->Lock);
    }
}

void ForgetHeldMutexes(std::vector<HeldMutex>& held) {
    held.clear();
    heldMutexes.store(0);
}

int HeldMutexCount() {
    return heldMutexes.load();
}

unsigned long MutexReleases() {
    return releases.load(std::memory_order_relaxed);
}

unsigned long NamedMutexWaits() {
    return namedWaits.load(std::memory_order_relaxed);
}

}  // namespace platform

using namespace platform;

// Null and the error code in `error` when no object could be had; with one, `error` tells whether the
// mutex existed.
static std::shared_ptr<MutexObject> OpenMutexObject(LPCWSTR name, DWORD* error) {
    if (name == nullptr || *name == 0) {
        *error = ERROR_SUCCESS;
        return std::make_shared<MutexObject>();
    }
    NamedMutexUse use;
    *error = OpenNamedMutex(name, &use);
    return use.Core == nullptr ? nullptr : std::make_shared<MutexObject>(use);
}

HANDLE WINAPI CreateMutexW(LPSECURITY_ATTRIBUTES, BOOL bInitialOwner, LPCWSTR lpName) {
    if (CallFails("CreateMutexW")) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    DWORD error = ERROR_SUCCESS;
    const std::shared_ptr<MutexObject> mutex = OpenMutexObject(lpName, &error);
    if (!mutex) {
        SetLastError(error);
        return nullptr;
    }
    if (bInitialOwner && error != ERROR_ALREADY_EXISTS) {
        mutex->Acquire(Never);
    }
    const HANDLE handle = OpenHandle(mutex);
    if (handle == nullptr) {
        mutex->Release();
        error = ERROR_NOT_ENOUGH_MEMORY;
    }
    SetLastError(error);
    return handle;
}

BOOL WINAPI ReleaseMutex(HANDLE hMutex) {
    const std::shared_ptr<MutexObject> mutex = FindObject<MutexObject>(hMutex);
    if (!mutex) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (!mutex->Release()) {
        SetLastError(ERROR_NOT_OWNER);
        return FALSE;
    }
    return TRUE;
}
