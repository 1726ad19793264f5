// The wave driver as an installable driver: the messages that reach it past the wave calls.
#pragma once

#include <windows.h>
#include <mmsystem.h>

namespace kestvox {

inline constexpr WCHAR DriverFile[] = TEXT("kestvox.dll");

class DriverHandle {
public:
    // CommandError when the driver does not load.
    DriverHandle();
    ~DriverHandle();
    DriverHandle(const DriverHandle&) = delete;
    DriverHandle& operator=(const DriverHandle&) = delete;

    LRESULT Send(UINT message, LPARAM first = 0, LPARAM second = 0);

private:
    HDRVR handle_;
};

}  // namespace kestvox
