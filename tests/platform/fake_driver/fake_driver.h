// What the tests know of the fake driver, which is a module like any other: each call of its DllMain is an
// event of the machine's log, numbered by the reason, of category 1 when the process ends.
#pragma once

#include <windows.h>

namespace fake_driver {

inline constexpr WCHAR FileName[] = u"fake_driver.dll";
inline constexpr WCHAR ModuleSource[] = u"DllMain";  // of the events

// "GivenHandle", exported by the module: what DllMain was called with.
using ModuleHandleRoutine = HINSTANCE(WINAPI*)();

}  // namespace fake_driver
