// Calls of the system's innermost library that have no Windows call in front of them.
#pragma once

#include <windows.h>

#include "device/device_driver.h"

extern "C" {

// What a kernel driver's procedure call comes to: the routine gets all three arguments.
NTSYSAPI LONG NTAPI NtQueueApcThread(HANDLE thread, device::ProcedureCall routine, ULONG_PTR first,
                                     ULONG_PTR second, ULONG_PTR third);

// Negative: from now on. In units of 100 nanoseconds.
NTSYSAPI LONG NTAPI NtDelayExecution(BOOLEAN alertable, const LARGE_INTEGER* time);

struct CountedString {
    USHORT Length;  // bytes
    USHORT Capacity;
    WCHAR* Text;
};

// Of a library that was loaded or unloaded.
struct LoaderNotice {
    ULONG Flags;
    const CountedString* FullName;
    const CountedString* BaseName;
    void* Base;
    ULONG Size;
};
inline constexpr ULONG NoticeLoaded = 1;
using LoaderCallback = void(CALLBACK*)(ULONG reason, const LoaderNotice* notice, void* context);

// The callback runs between the resolving of a library's imports and its entry point.
NTSYSAPI LONG NTAPI LdrRegisterDllNotification(ULONG flags, LoaderCallback callback, void* context,
                                               void** cookie);
NTSYSAPI LONG NTAPI LdrUnregisterDllNotification(void* cookie);
}
