#include "simulator/windows/mutex_waits.h"

#include <atomic>
#include <mutex>
#include <set>

#include "simulator/machine/host.h"

namespace simulator {
namespace {

std::atomic<uint64_t> waits{0};

// Never destroyed: modules close their handles when the process ends.
struct KnownMutexes {
    host::Lock Lock;
    std::set<HANDLE> Handles;
};

KnownMutexes& TheMutexes() {
    static KnownMutexes& all = *new KnownMutexes;
    return all;
}

bool IsNamedMutex(HANDLE handle) {
    const std::lock_guard guard(TheMutexes().Lock);
    return TheMutexes().Handles.contains(handle);
}

}  // namespace

namespace windows {

HANDLE WINAPI CreateKnownMutex(SECURITY_ATTRIBUTES* security, BOOL owned, const WCHAR* name) {
    const HANDLE mutex = CreateMutexW(security, owned, name);
    if (mutex != nullptr && name != nullptr) {
        const DWORD error = GetLastError();  // tells whether there was one of that name
        {
            const std::lock_guard guard(TheMutexes().Lock);
            TheMutexes().Handles.insert(mutex);
        }
        SetLastError(error);
    }
    return mutex;
}

DWORD WINAPI WaitForOneObject(HANDLE object, DWORD milliseconds) {
    if (milliseconds != 0 && IsNamedMutex(object)) {
        if (const DWORD result = WaitForSingleObject(object, 0); result != WAIT_TIMEOUT) {
            return result;
        }
        ++waits;
    }
    return WaitForSingleObject(object, milliseconds);
}

void ForgetMutex(HANDLE handle) {
    const std::lock_guard guard(TheMutexes().Lock);
    TheMutexes().Handles.erase(handle);
}

}  // namespace windows

uint64_t host::SharedMutexWaits() {
    return waits;
}

}  // namespace simulator
