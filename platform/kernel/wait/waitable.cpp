#include "platform/kernel/wait/waitable.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace platform {

namespace {

// Blocks while the word has this value. False at the deadline; true may also come without a change.
bool BlockWhileEqual(std::atomic<int>* word, int value, Deadline deadline) {
    const timespec until = deadline == Never ? timespec{} : HostTime(deadline.time_since_epoch());
    const timespec* limit = deadline == Never ? nullptr : &until;
    // The bit set form takes its limit as a point of the monotonic clock, so early wake-ups cost nothing.
    const long result = syscall(SYS_futex, reinterpret_cast<int*>(word), FUTEX_WAIT_BITSET_PRIVATE, value,
                                limit, nullptr, FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != ETIMEDOUT;
}

}  // namespace

timespec HostTime(std::chrono::nanoseconds sinceEpoch) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
    return {seconds.count(), (sinceEpoch - seconds).count()};
}

Deadline DeadlineAfter(DWORD milliseconds) {
    if (milliseconds == INFINITE) {
        return Never;
    }
    return milliseconds == 0 ? AtOnce
                             : std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
}

bool Waiter::Claim(int outcome) {
    int expected = Waiting;
    return outcome_.compare_exchange_strong(expected, outcome, std::memory_order_acq_rel);
}

// Only the address is used. A thread that waits for something else there by now looks again.
void Waiter::Wake(Waiter* waiter) {
    syscall(SYS_futex, reinterpret_cast<int*>(waiter), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
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
