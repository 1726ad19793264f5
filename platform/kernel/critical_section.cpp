#include <windows.h>

#include <mutex>

// The lock proper hangs on the structure's last handle.
static std::recursive_mutex& LockOf(LPCRITICAL_SECTION section) {
    return *static_cast<std::recursive_mutex*>(section->LockSemaphore);
}

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    *lpCriticalSection = {};
    lpCriticalSection->LockSemaphore = new std::recursive_mutex;
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    delete &LockOf(lpCriticalSection);
    *lpCriticalSection = {};
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    LockOf(lpCriticalSection).lock();
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION lpCriticalSection) {
    LockOf(lpCriticalSection).unlock();
}
