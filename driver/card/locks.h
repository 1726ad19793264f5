// The driver's locks. A thread takes them in this order and never the other way round:
//
// - The discovery's mutex (entry/module.h), between processes: the discovery of the cards, or a whole resume.
// - DriverMutex, between processes: each stream's queue, ledger and shadow buffers, and a whole completion
//   with its client callback, so it may be held for as long as a client likes.
// - ClockMutex, between processes: the programming of a group's clock, from the look at its rate to the note
//   of it, and the initialisation of a card. Held over requests and their waits, up to 0.7 s. A process that
//   dies inside leaves no rate behind: the next one programs the clock anew.
// - A stream's control: the starts, stops and power states of its port. Held over requests only.
// - SequenceMutex, between processes: requests that belong together, as an index and its data, or the start
//   or stop of one stream among the others on its clock. Held over requests only.
// - The stream list's lock: the list and the loans of devices. Held while they are looked at.
//
// So a thread that holds a stream's control, or what comes after it, neither takes DriverMutex nor calls the
// client nor waits for another thread. All but the last are Windows mutexes: one that its owner left behind
// when it died counts as taken, and every wait for one can be limited.
#pragma once

#include <windows.h>

#include <atomic>

namespace kestvox {

// This process's handles; null while the library is let go.
using SharedMutex = std::atomic<HANDLE>;
extern SharedMutex DriverMutex;
extern SharedMutex ClockMutex;
extern SharedMutex SequenceMutex;

// Once each, at process attach and detach. Without a thread-local slot no thread's waits are limited.
void InitializeLocks();
void DeleteLocks();

// Create or open the mutexes that all processes share, so that those of every user may. FALSE: DriverMutex
// cannot be had. Without one of the others what several programs do at one moment is not kept apart.
BOOL OpenSharedMutexes();

// A mutex whose handle is closed under its holder could not be given back, and would stay taken for all
// programs: when a thread comes to one at the last moment and keeps it, the handles are left to the system.
// Threads that have ended with their process do not count.
void CloseSharedMutexes(bool othersHaveEnded);

// Whether a thread of this process holds a mutex or waits for one.
bool LocksAreInUse();

// A named mutex that processes of every user may share; null when it cannot be had.
HANDLE CreateSharedMutex(const WCHAR* name);

// Holds a mutex for a scope. Where there is none to be had (null) the scope runs without it.
class MutexLock {
public:
    explicit MutexLock(HANDLE mutex, DWORD milliseconds = INFINITE);
    explicit MutexLock(const SharedMutex& mutex, DWORD milliseconds = INFINITE);
    ~MutexLock();
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    // Another thread has kept the mutex all that time.
    bool TimedOut() const { return result_ == WAIT_TIMEOUT; }

private:
    void Take(HANDLE mutex, DWORD milliseconds);

    HANDLE mutex_;
    DWORD result_;
};

class DriverLock : public MutexLock {
public:
    explicit DriverLock(DWORD milliseconds = INFINITE) : MutexLock(DriverMutex, milliseconds) {}
};

// While the library is let go, at DRV_FREE and at process detach, the calling thread waits for locks and
// threads five seconds in all, and for locks at most four of them: its own threads still have to leave the
// library's code when another program does not let go of DriverMutex. What it cannot have by then belongs to
// a thread that has been ended, to another program whose client does not come back, or to a client of this
// process inside a callback: it goes on without.
class LimitedWaits {
public:
    LimitedWaits();
    ~LimitedWaits();
    LimitedWaits(const LimitedWaits&) = delete;
    LimitedWaits& operator=(const LimitedWaits&) = delete;

    // Milliseconds that the thread may still wait, when so many are kept for something else.
    DWORD Left(DWORD kept = 0) const;
    void Spend(DWORD milliseconds);

private:
    DWORD left_;
};

// How much of a wait of so many milliseconds the calling thread may still do; and what it has waited for
// nothing.
DWORD PatienceFor(DWORD milliseconds);
void SpendPatience(DWORD milliseconds);

}  // namespace kestvox
