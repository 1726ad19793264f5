// The device calls as an attached module makes them: to a file of the installed device::Driver, or on to the
// system. A device file's handle is a real handle of the system's.
#pragma once

#include <windows.h>

namespace simulator::windows {

HANDLE WINAPI OpenFileOrDevice(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                               DWORD creation, DWORD flags, HANDLE pattern);

BOOL WINAPI ControlDevice(HANDLE device, DWORD code, LPVOID input, DWORD inputLength, LPVOID output,
                          DWORD outputLength, LPDWORD returned, LPOVERLAPPED overlapped);

BOOL WINAPI CloseAnyHandle(HANDLE handle);

}  // namespace simulator::windows
