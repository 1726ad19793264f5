// A thread as the kernel sees it: waitable, with its queue of procedure calls and the mutexes it holds.
#pragma once

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/device.h"
#include "platform/kernel/wait/waitable.h"

namespace platform {

class MutexObject;
struct MutexCore;

// A mutex that a thread holds, and how many times over. Two objects of one named mutex have the same
// core.
struct HeldMutex {
    std::shared_ptr<MutexObject> Mutex;  // keeps the core alive
    MutexCore* Core;
    DWORD Count;
};

class ThreadObject : public Waitable {
public:
    static constexpr HandleKind ObjectKind = HandleKind::Thread;

    // `counted` for a thread made with CreateThread.
    explicit ThreadObject(bool counted);

    DWORD Id() const { return id_; }

    // The thread's own, touched by no other.
    std::vector<HeldMutex> HeldMutexes;

    // False when the thread has ended.
    bool QueueCall(PAPCFUNC routine, ULONG_PTR data);
    bool QueueCall(device::ProcedureCall routine, ULONG_PTR first, ULONG_PTR second, ULONG_PTR third);

    // Called by the thread itself. Between Begin and End a queued call ends the wait. When a call is queued
    // already, Begin ends it.
    void BeginAlertableWait(Waiter& waiter);
    void EndAlertableWait();
    void RunQueuedCalls();  // until the queue is empty
    bool IsBusy();          // has calls queued, or has run some and not waited alertably since

    // Called by the thread itself as its last act: abandons its mutexes, drops its queued calls and becomes
    // signalled.
    void End();

private:
    struct QueuedCall {
        PAPCFUNC Short;  // one of the two
        device::ProcedureCall Long;
        ULONG_PTR Arguments[3];
    };

    bool Queue(const QueuedCall& call);
    void BecomeQuietLocked();

    const DWORD id_;
    const bool counted_;

    std::mutex callLock_;  // guards the rest; taken after no other lock
    std::deque<QueuedCall> calls_;
    Waiter* alertable_ = nullptr;  // the wait that a queued call ends
    bool busy_ = false;
    bool ended_ = false;
};

// The calling thread, whoever made it.
ThreadObject& CurrentThread();

// GetCurrentThread's handle, or an open handle of a thread; else null and ERROR_INVALID_HANDLE.
std::shared_ptr<ThreadObject> FindThreadObject(HANDLE handle);

int RunningThreadCount();  // of those made with CreateThread

}  // namespace platform
