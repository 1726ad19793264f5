// Until when a wait lasts.
#pragma once

#include <windows.h>

#include <chrono>
#include <ctime>

namespace platform {

using Deadline = std::chrono::steady_clock::time_point;
constexpr Deadline Never = Deadline::max();
constexpr Deadline AtOnce = Deadline::min();
Deadline DeadlineAfter(DWORD milliseconds);  // INFINITE: Never, 0: AtOnce
timespec HostTime(std::chrono::nanoseconds sinceEpoch);

}  // namespace platform
