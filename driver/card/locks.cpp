#include "card/locks.h"

namespace kestvox {

SharedMutex DriverMutex = nullptr;
SharedMutex ClockMutex = nullptr;
SharedMutex SequenceMutex = nullptr;

namespace {

constexpr DWORD PatienceWhenLetGo = 5000;  // milliseconds
constexpr DWORD KeptForThreads = 1000;     // ... of which waits for mutexes leave that much

// The LimitedWaits of the calling thread.
DWORD LimitSlot = TLS_OUT_OF_INDEXES;

// Threads of this process that hold or wait for a mutex, each scope by itself.
std::atomic<LONG> LockCount = 0;

LimitedWaits* Limit() {
    return LimitSlot != TLS_OUT_OF_INDEXES ? static_cast<LimitedWaits*>(TlsGetValue(LimitSlot)) : nullptr;
}

DWORD WaitForMutex(HANDLE mutex, DWORD milliseconds) {
    const LimitedWaits* limit = Limit();
    const DWORD left = limit != nullptr ? limit->Left(KeptForThreads) : INFINITE;
    const DWORD patience = left < milliseconds ? left : milliseconds;
    const DWORD result = WaitForSingleObject(mutex, patience);
    if (result == WAIT_TIMEOUT) {
        SpendPatience(patience);
    }
    return result;
}

// False: not so within the patience that the calling thread has left.
bool AwaitLocks() {
    const DWORD patience = PatienceFor(PatienceWhenLetGo);
    for (DWORD waited = 0; LocksAreInUse(); ++waited) {
        if (waited >= patience) {
            return false;
        }
        Sleep(1);
    }
    return true;
}

}  // namespace

void InitializeLocks() {
    LimitSlot = TlsAlloc();
}

void DeleteLocks() {
    TlsFree(LimitSlot);
    LimitSlot = TLS_OUT_OF_INDEXES;
}

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

void CloseSharedMutexes(bool othersHaveEnded) {
    // Who comes from here on finds none. Who has one counted itself before.
    const HANDLE taken[] = {SequenceMutex.exchange(nullptr), ClockMutex.exchange(nullptr),
                            DriverMutex.exchange(nullptr)};
    if (othersHaveEnded || AwaitLocks()) {
        for (HANDLE mutex : taken) {
            if (mutex != nullptr) {
                CloseHandle(mutex);
            }
        }
    }
}

bool LocksAreInUse() {
    return LockCount != 0;
}

MutexLock::MutexLock(HANDLE mutex, DWORD milliseconds) {
    ++LockCount;
    Take(mutex, milliseconds);
}

MutexLock::MutexLock(const SharedMutex& mutex, DWORD milliseconds) {
    ++LockCount;  // before the handle is looked at: see CloseSharedMutexes
    Take(mutex, milliseconds);
}

void MutexLock::Take(HANDLE mutex, DWORD milliseconds) {
    mutex_ = mutex;
    result_ = mutex != nullptr ? WaitForMutex(mutex, milliseconds) : WAIT_FAILED;
}

MutexLock::~MutexLock() {
    if (result_ == WAIT_OBJECT_0 || result_ == WAIT_ABANDONED) {
        ReleaseMutex(mutex_);
    }
    --LockCount;
}

LimitedWaits::LimitedWaits() : left_(PatienceWhenLetGo) {
    TlsSetValue(LimitSlot, this);
}

LimitedWaits::~LimitedWaits() {
    TlsSetValue(LimitSlot, nullptr);
}

DWORD LimitedWaits::Left(DWORD kept) const {
    return left_ > kept ? left_ - kept : 0;
}

void LimitedWaits::Spend(DWORD milliseconds) {
    left_ = Left(milliseconds);
}

DWORD PatienceFor(DWORD milliseconds) {
    const LimitedWaits* limit = Limit();
    return limit != nullptr && limit->Left() < milliseconds ? limit->Left() : milliseconds;
}

void SpendPatience(DWORD milliseconds) {
    if (LimitedWaits* limit = Limit()) {
        limit->Spend(milliseconds);
    }
}

}  // namespace kestvox
