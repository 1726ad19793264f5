// The winmm.dll of the system, whose place this library has taken in the program.
#pragma once

#include <windows.h>

namespace front {

// A function of it by name; null when the system's library does not load or has none of that name.
// Loads the library at the first call: not from DllMain.
FARPROC FindInSystemLibrary(const char* name);

}  // namespace front
