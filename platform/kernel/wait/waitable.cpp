#include "platform/kernel/wait/waitable.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace platform {

namespace {

void WakeThread(std::atomic<int>* word) {
    syscall(SYS_futex, reinterpret_cast<int*>(word), FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

timespec HostTime(Deadline deadline) {
    const auto sinceEpoch = deadline.time_since_epoch();
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceEpoch);
    return {seconds.count(), std::chrono::nanoseconds(sinceEpoch - seconds).count()};
}

// Blocks while the word has this value. False at the deadline; true may also come without a change.
bool BlockWhileEqual(std::atomic<int>* word, int value, Deadline deadline) {
    const timespec until = deadline == Never ? timespec{} : HostTime(deadline);
    const timespec* limit = deadline == Never ? nullptr : &until;
    // The bit set form takes its limit as a point of the monotonic clock, so early wake-ups cost nothing.
    const long result = syscall(SYS_futex, reinterpret_cast<int*>(word), FUTEX_WAIT_BITSET_PRIVATE, value,
                                limit, nullptr, FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != ETIMEDOUT;
}

}  // namespace

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

bool Waiter::ClaimAndWake(int outcome) {
    if (!Claim(outcome)) {
        return false;
    }
    WakeThread(&outcome_);
    return true;
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
    const std::lock_guard guard(lock_);
    for (Waiter* const waiter : waiters_) {
        const bool claimed = waiter->ClaimAndWake(Waiter::Satisfied);
        if (claimed && automatic_) {
            return;  // handed straight to that wait: never seen signalled
        }
    }
    signalled_ = true;
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
        TakeLocked();
    }
}

void Waitable::Withdraw(Waiter& waiter) {
    const std::lock_guard guard(lock_);
    std::erase(waiters_, &waiter);
}

bool Waitable::TryTake() {
    const std::lock_guard guard(lock_);
    if (!signalled_) {
        return false;
    }
    TakeLocked();
    return true;
}

void Waitable::TakeLocked() {
    if (automatic_) {
        signalled_ = false;
    }
}

}  // namespace platform
