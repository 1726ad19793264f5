// The library in its process: its module handle, and unloading.
#pragma once

#include <windows.h>

namespace kestvox {

extern HMODULE ModuleHandle;

// Set by an installation: from then on this process shows no configuration sheet.
extern bool InstallingFlag;

// The mutex that processes hold while they discover cards or initialise them again.
inline constexpr const WCHAR* DiscoveryMutexName = TEXT("ZPH_Kestrelvox_Discovery_Mutex");

// Closes this process's streams and its handles of the shared mutexes: waiting at most five seconds in
// all. From its begin on nothing can be opened. A second call does only what the first had no time for.
void ReleaseProcess();

// What a library that was released but not unloaded needs before it is used once more.
void UseAgain();

}  // namespace kestvox
