// The library in its process: its module handle, and unloading.
#pragma once

#include <windows.h>

namespace kestvox {

extern HMODULE ModuleHandle;

// Set by an installation: from then on this process shows no configuration sheet.
extern bool InstallingFlag;

// Closes this process's streams and its handle of DriverMutex. The second call does nothing.
void ReleaseProcess();

}  // namespace kestvox
