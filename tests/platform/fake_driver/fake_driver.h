// What the tests know of the fake driver.
//
// Two output devices, and two input devices that can only be counted. Output 0 takes mono only, output 1
// any format; each takes one client at a time. Headers stay queued until the test has them completed.
// Every call that the driver gets, but those to its inputs, is an event of the machine's log: the source says
// which entry, the category the device number (DllMain: whether the process ends), the event number the
// message (DllMain: the reason).
#pragma once

#include <windows.h>

namespace fake_driver {

inline constexpr WCHAR FileName[] = u"fake_driver.dll";

inline constexpr WCHAR DriverSource[] = u"DriverProc";
inline constexpr WCHAR OutSource[] = u"wodMessage";
inline constexpr WCHAR ModuleSource[] = u"DllMain";

// Private messages to an open device.
inline constexpr UINT CompleteOldest = 0x4000;  // gives the oldest queued header back
inline constexpr UINT RefuseClose = 0x4001;     // from now on the close answers WAVERR_STILLPLAYING

// Exported by the module.
using SharedWordRoutine = DWORD*(WINAPI*)();       // "SharedWord": a word of the shared section
using ModuleHandleRoutine = HINSTANCE(WINAPI*)();  // "GivenHandle": what DllMain was called with

}  // namespace fake_driver
