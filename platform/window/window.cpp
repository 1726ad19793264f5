// Windows. There is none but the desktop, which takes messages and does nothing with them.
#include <windows.h>

HWND WINAPI GetDesktopWindow() {
    // A value as the system gives out for windows; nothing stands behind it.
    return reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0x10010));
}

BOOL WINAPI IsWindow(HWND window) {
    return window == GetDesktopWindow() ? TRUE : FALSE;
}

BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (!window) {
        return PostThreadMessageW(GetCurrentThreadId(), message, first, second);
    }
    if (IsWindow(window)) {
        return TRUE;
    }
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return FALSE;
}
