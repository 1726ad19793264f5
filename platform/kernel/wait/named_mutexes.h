// The named mutexes of the machine, shared by its processes.
#pragma once

#include <windows.h>

#include <pthread.h>

#include <string_view>

namespace platform {

// The lock proper. Lies in the process's own memory or in a machine region.
struct MutexCore {
    pthread_mutex_t Lock;  // robust: the death of its owner's process gives it to the next
    bool Abandoned;        // guarded by Lock: the last owner ended without giving it back

    void Initialize(bool shared);
};

// One open use of a named mutex by this process; none when Core is null.
struct NamedMutexUse {
    MutexCore* Core = nullptr;
};

// Opens the mutex of that name, or makes it when no living process uses one. ERROR_SUCCESS (made),
// ERROR_ALREADY_EXISTS (opened), ERROR_INVALID_NAME or ERROR_NO_SYSTEM_RESOURCES.
DWORD OpenNamedMutex(std::u16string_view name, NamedMutexUse* use);

// The mutex and its name go away when no living process uses it any more.
void CloseNamedMutex(NamedMutexUse use);

}  // namespace platform
