#include "platform/kernel/wait/deadline.h"

namespace platform {

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

}  // namespace platform
