#include "card/locks.h"

#include <atomic>
#include <initializer_list>

namespace kestvox {

HANDLE DriverMutex = nullptr;
HANDLE ClockMutex = nullptr;
HANDLE SequenceMutex = nullptr;

namespace {

constexpr DWORD PatienceWhenLetGo = 5000;  // milliseconds
constexpr DWORD KeptForThreads = 1000;     // ... of which waits for mutexes leave that much

// The thread that lets the library go, if one does, and how long it may still wait.
std::atomic<DWORD> LimitedThread = 0;
DWORD PatienceLeft = 0;

// Threads of this process that hold or wait for a mutex, each scope by itself.
std::atomic<LONG> LockCount = 0;

bool IsLimited() {
    return GetCurrentThreadId() == LimitedThread;
}

DWORD WaitForMutex(HANDLE mutex, DWORD milliseconds) {
    DWORD patience = PatienceFor(milliseconds);
    if (IsLimited()) {
        const DWORD left = PatienceLeft > KeptForThreads ? PatienceLeft - KeptForThreads : 0;
        patience = left < patience ? left : patience;
    }
    const DWORD result = WaitForSingleObject(mutex, patience);
    if (result == WAIT_TIMEOUT) {
        SpendPatience(patience);
    }
    return result;
}

}  // namespace

HANDLE CreateSharedMutex(const WCHAR* name) {
    // A null access list lets every process of every user open the mutex.
    SECURITY_DESCRIPTOR descriptor;
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE);
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, &descriptor, FALSE};
    return CreateMutexW(&attributes, FALSE, name);
}

BOOL OpenSharedMutexes() {
    DriverMutex = CreateSharedMutex(TEXT("ZPH_Kestrelvox_Wave_Driver_Mutex"));
    if (DriverMutex == nullptr) {
        return FALSE;
    }
    ClockMutex = CreateSharedMutex(TEXT("ZPH_Kestrelvox_Clock_Mutex"));
    SequenceMutex = CreateSharedMutex(TEXT("ZPH_Kestrelvox_Sequence_Mutex"));
    return TRUE;
}

void CloseSharedMutexes() {
    for (HANDLE* mutex : {&SequenceMutex, &ClockMutex, &DriverMutex}) {
        if (*mutex != nullptr) {
            CloseHandle(*mutex);
            *mutex = nullptr;
        }
    }
}

bool LocksAreInUse() {
    return LockCount != 0;
}

MutexLock::MutexLock(HANDLE mutex, DWORD milliseconds) : mutex_(mutex) {
    ++LockCount;
    result_ = mutex != nullptr ? WaitForMutex(mutex, milliseconds) : WAIT_FAILED;
}

MutexLock::~MutexLock() {
    if (result_ == WAIT_OBJECT_0 || result_ == WAIT_ABANDONED) {
        ReleaseMutex(mutex_);
    }
    --LockCount;
}

LimitedWaits::LimitedWaits() {
    PatienceLeft = PatienceWhenLetGo;
    LimitedThread = GetCurrentThreadId();
}

LimitedWaits::~LimitedWaits() {
    LimitedThread = 0;
}

DWORD PatienceFor(DWORD milliseconds) {
    return IsLimited() && PatienceLeft < milliseconds ? PatienceLeft : milliseconds;
}

void SpendPatience(DWORD milliseconds) {
    if (IsLimited()) {
        PatienceLeft -= milliseconds < PatienceLeft ? milliseconds : PatienceLeft;
    }
}

}  // namespace kestvox
