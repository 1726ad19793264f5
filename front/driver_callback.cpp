// What drivers call: DriverCallback, which notifies a client, and DefDriverProc, the default answers to
// installable-driver messages.
#include "front/driver_callback.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

extern "C" BOOL WINAPI DriverCallback(DWORD_PTR target, DWORD flags, HDRVR device, DWORD message,
                                      DWORD_PTR user, DWORD_PTR first, DWORD_PTR second) {
    if (target == 0) {
        return FALSE;
    }
    const auto deviceParameter = reinterpret_cast<WPARAM>(device);
    switch (flags & DCB_TYPEMASK) {
    case DCB_WINDOW:
        return PostMessageW(reinterpret_cast<HWND>(target), message, deviceParameter,
                            static_cast<LPARAM>(first));
    case DCB_TASK:
        return PostThreadMessageW(static_cast<DWORD>(target), message, deviceParameter,
                                  static_cast<LPARAM>(first));
    case DCB_FUNCTION:
        reinterpret_cast<LPDRVCALLBACK>(target)(device, message, user, first, second);
        return TRUE;
    case DCB_EVENT:
        return SetEvent(reinterpret_cast<HANDLE>(target));
    default:
        return FALSE;
    }
}

LRESULT WINAPI DefDriverProc(DWORD_PTR, HDRVR, UINT message, LPARAM, LPARAM) {
    switch (message) {
    case DRV_LOAD:
    case DRV_ENABLE:
    case DRV_DISABLE:
    case DRV_FREE:
        return 1;
    default:
        return 0;
    }
}
