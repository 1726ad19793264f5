// The one lock that all processes share: each stream's queue, ledger and shadow buffers, the decision
// to hand over, every completion, and the last close on a clock.
//
// Recursive for the thread that holds it. Lock order: DriverMutex, then a stream's control lock, then the
// lock of the stream list. A completion calls the client under DriverMutex; nothing else takes it around
// a call of the client.
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

// Holds DriverMutex for a scope. One that a dying process left behind counts as taken. Where there is no
// mutex to be had (after DRV_FREE) the scope runs unlocked.
class DriverLock {
public:
    DriverLock() : DriverLock(INFINITE) {}
    explicit DriverLock(DWORD milliseconds) : result_(WaitForSingleObject(DriverMutex, milliseconds)) {}
    ~DriverLock();
    DriverLock(const DriverLock&) = delete;
    DriverLock& operator=(const DriverLock&) = delete;

    // Another thread has kept the mutex all that time: the scope must not go on.
    bool TimedOut() const { return result_ == WAIT_TIMEOUT; }

private:
    DWORD result_;
};

}  // namespace kestvox
