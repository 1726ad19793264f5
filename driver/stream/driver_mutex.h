// The one lock that all processes share: each stream's queue, ledger and shadow buffers, the decision
// to hand over, every completion, and the last close on a clock.
//
// Recursive for the thread that holds it. Lock order: DriverMutex, then a stream's control lock, then the
// lock of the stream list. The client is called under DriverMutex only from a completion.
#pragma once

#include <windows.h>

namespace kestvox {

// This process's handle; null outside process attach and detach.
extern HANDLE DriverMutex;

// Creates or opens the mutex so that processes of every user may share it. FALSE: it cannot be had.
BOOL OpenDriverMutex();
void CloseDriverMutex();

// A named mutex with the same openness, for the first-load discovery; null when it cannot be had.
HANDLE CreateSharedMutex(const WCHAR* name);

// Holds DriverMutex for a scope. One that a dying process left behind counts as taken; without a mutex
// (after DRV_FREE) the scope runs unlocked.
class DriverLock {
public:
    DriverLock() : held_(Wait(INFINITE)) {}
    explicit DriverLock(DWORD milliseconds) : held_(Wait(milliseconds)) {}
    ~DriverLock();
    DriverLock(const DriverLock&) = delete;
    DriverLock& operator=(const DriverLock&) = delete;

    bool Held() const { return held_; }

private:
    static bool Wait(DWORD milliseconds);

    bool held_;
};

}  // namespace kestvox
