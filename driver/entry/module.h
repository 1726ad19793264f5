// The library in its process: loading, discovery, unloading.
#pragma once

#include <windows.h>

namespace kestvox {

extern HMODULE ModuleHandle;

// Set by an installation: from then on this process shows no configuration sheet.
extern bool InstallingFlag;

// Finds the cards 0, 1, ... until one does not open; enables and initialises each. Once on a machine, by
// the first process that loads the library.
void EnumerateCards();

// Closes this process's streams and its handle of DriverMutex. The second call does nothing.
void ReleaseProcess();

}  // namespace kestvox
