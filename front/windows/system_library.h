// The system's own winmm.dll, in whose place the program has loaded this library.
#pragma once

#include <windows.h>

namespace front {

// The function of that name; null when the system's library does not load or has no such function. The first
// call loads the library, so it must not be made from DllMain.
FARPROC FindInSystemLibrary(const char* name);

}  // namespace front
