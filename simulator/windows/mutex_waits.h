// How often attached modules have had to wait for a mutex that has a name, and so is shared with other
// processes.
#pragma once

#include <windows.h>

namespace simulator::windows {

// The system's calls. Named mutexes are known from their creation to CloseAnyHandle.
HANDLE WINAPI CreateKnownMutex(SECURITY_ATTRIBUTES* security, BOOL owned, const WCHAR* name);
DWORD WINAPI WaitForOneObject(HANDLE object, DWORD milliseconds);
void ForgetMutex(HANDLE handle);

}  // namespace simulator::windows
