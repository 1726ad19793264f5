// Where timeGetTime and Sleep get their time from. Time limits of waits, SleepEx's alertable one among
// them, always run on the system's clock.
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

// Null puts the system's monotonic clock back, which is also what the platform starts with.
void InstallTimeSource(TimeSource* source);

}  // namespace platform
