#include "platform/kernel/wait/futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace platform {

namespace {

void Wake(const std::atomic<int>* word, int most) {
    syscall(SYS_futex, reinterpret_cast<const int*>(word), FUTEX_WAKE_PRIVATE, most, nullptr, nullptr, 0);
}

}  // namespace

bool BlockWhileEqual(const std::atomic<int>* word, int value, Deadline deadline) {
    const timespec until = deadline == Never ? timespec{} : HostTime(deadline.time_since_epoch());
    const timespec* limit = deadline == Never ? nullptr : &until;
    // The bit set form takes its limit as a point of the monotonic clock, so early wake-ups cost nothing.
    const long result = syscall(SYS_futex, reinterpret_cast<const int*>(word), FUTEX_WAIT_BITSET_PRIVATE,
                                value, limit, nullptr, FUTEX_BITSET_MATCH_ANY);
    return result == 0 || errno != ETIMEDOUT;
}

void WakeOne(const std::atomic<int>* word) {
    Wake(word, 1);
}

void WakeAll(const std::atomic<int>* word) {
    Wake(word, INT_MAX);
}

}  // namespace platform
