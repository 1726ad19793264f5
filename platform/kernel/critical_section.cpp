#include <windows.h>

#include <mutex>

// The lock proper hangs on the structure's last handle; the counters are for a reader in a debugger.
static std::recursive_mutex& LockOf(LPCRITICAL_SECTION section) {
    return *static_cast<std::recursive_mutex*>(section->LockSemaphore);
}

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    *lpCriticalSection = {};
    lpCriticalSection->LockCount = -1;
    lpCriticalSection->LockSemaphore = new std::recursive_mutex;
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    delete &LockOf(lpCriticalSection);
    *lpCriticalSection = {};
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    LockOf(lpCriticalSection).lock();
    ++lpCriticalSection->RecursionCount;
    lpCriticalSection->OwningThread = reinterpret_cast<HANDLE>(static_cast<ULONG_PTR>(GetCurrentThreadId()));
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    if (--lpCriticalSection->RecursionCount == 0) {
        lpCriticalSection->OwningThread = nullptr;
    }
    LockOf(lpCriticalSection).unlock();
}
