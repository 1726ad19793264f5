// Objects that are signalled or not, and the threads that wait for them.
#pragma once

#include <atomic>
#include <mutex>
#include <vector>

#include "platform/kernel/handles.h"
#include "platform/kernel/wait/deadline.h"

namespace platform {

// One wait of one thread. Whoever ends the wait claims it; the first claim wins. Lives on the waiting
// thread's stack: those who claim it hold the lock of the list it is on while they do, which that thread
// takes before it goes on. They wake the thread after they have let go of the lock, when the waiter may be
// gone already.
class Waiter {
public:
    // How a wait ended.
    static constexpr int Satisfied = 0;  // by the object
    static constexpr int TimedOut = -1;
    static constexpr int CallQueued = -2;

    bool Claim(int outcome);  // false when the wait had ended already
    static void Wake(Waiter* waiter);
    bool IsClaimed() const { return outcome_.load(std::memory_order_relaxed) != Waiting; }

    // Blocks the calling thread until the wait ends, at the latest at the deadline.
    int Await(Deadline deadline);

private:
    static constexpr int Waiting = -3;
    std::atomic<int> outcome_{Waiting};  // first, as its address is the waiter's
};

// Safe from any thread. An automatic object is reset by the one wait that it satisfies.
class Waitable : public KernelObject {
public:
    Waitable(HandleKind kind, bool automatic, bool signalled)
        : KernelObject(kind), automatic_(automatic), signalled_(signalled) {}

    // Satisfies every wait enlisted now, or the oldest one when automatic.
    void Signal();
    void Reset();

    // Satisfies the wait when the object is signalled, else enlists it. Withdraw is then due before
    // the waiter goes away.
    void Enlist(Waiter& waiter);
    void Withdraw(Waiter& waiter);

private:
    std::mutex lock_;
    const bool automatic_;
    bool signalled_;
    std::vector<Waiter*> waiters_;  // oldest first; those claimed elsewhere may still be on it
};

}  // namespace platform
