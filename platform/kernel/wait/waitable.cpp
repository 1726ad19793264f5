#include "platform/kernel/wait/waitable.h"

#include "platform/kernel/wait/futex.h"

namespace platform {

bool Waiter::Claim(int outcome) {
    int expected = Waiting;
    return outcome_.compare_exchange_strong(expected, outcome, std::memory_order_acq_rel);
}

// Only the address is used. A thread that waits for something else there by now looks again.
void Waiter::Wake(Waiter* waiter) {
    WakeOne(reinterpret_cast<std::atomic<int>*>(waiter));
}

int Waiter::Await(Deadline deadline) {
    int outcome = outcome_.load(std::memory_order_acquire);
    while (outcome == Waiting) {
        if (deadline == AtOnce || !BlockWhileEqual(&outcome_, Waiting, deadline)) {
            Claim(TimedOut);  // fails when somebody else has just claimed the wait: that claim counts
        }
        outcome = outcome_.load(std::memory_order_acquire);
    }
    return outcome;
}

void Waitable::Signal() {
    std::vector<Waiter*> claimed;
    {
        const std::lock_guard guard(lock_);
        for (Waiter* const waiter : waiters_) {
            if ((claimed.empty() || !automatic_) && waiter->Claim(Waiter::Satisfied)) {
                claimed.push_back(waiter);
            }
        }
        // An automatic object is handed straight to its waiter: it is never seen signalled.
        signalled_ = claimed.empty() || !automatic_;
    }
    for (Waiter* const waiter : claimed) {
        Waiter::Wake(waiter);
    }
}

void Waitable::Reset() {
    const std::lock_guard guard(lock_);
    signalled_ = false;
}

void Waitable::Enlist(Waiter& waiter) {
    const std::lock_guard guard(lock_);
    if (!signalled_) {
        waiters_.push_back(&waiter);
    } else if (waiter.Claim(Waiter::Satisfied)) {
        signalled_ = !automatic_;
    }
}

void Waitable::Withdraw(Waiter& waiter) {
    const std::lock_guard guard(lock_);
    std::erase(waiters_, &waiter);
}

}  // namespace platform
