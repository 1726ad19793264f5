// Where timeGetTime and Sleep get their time from. The time limits of waits, and so of an alertable SleepEx,
// always run on the system's clock.
#pragma once

#include <windows.h>

namespace platform {

class TimeSource {
public:
    // The answer of timeGetTime: milliseconds, wraps at 2^32.
    virtual DWORD Milliseconds() = 0;

    // Sleep(milliseconds): 0 gives up the processor only.
    virtual void Sleep(DWORD milliseconds) = 0;

protected:
    ~TimeSource() = default;
};

// Null restores the system's monotonic clock, which the platform also starts with.
void InstallTimeSource(TimeSource* source);

}  // namespace platform
