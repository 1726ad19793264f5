#include "platform/window/window_object.h"

namespace platform {

namespace {

// The desktop's procedure does nothing and answers 0.
LRESULT CALLBACK DesktopProcedure(HWND, UINT, WPARAM, LPARAM) {
    return 0;
}

std::unique_ptr<WindowObject> MakeDesktop() {
    auto desktop = std::make_unique<WindowObject>();
    desktop->Handle = DesktopWindow();
    desktop->Procedure = DesktopProcedure;
    desktop->Style = WS_POPUP | WS_VISIBLE;
    return desktop;
}

}  // namespace

std::mutex& DesktopLock() {
    static auto* const lock = new std::mutex;
    return *lock;
}

HWND DesktopWindow() {
    // A value as the system gives out for windows.
    return reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0x10010));
}

WindowObject* FindWindowLocked(HWND window) {
    static WindowObject* const desktop = MakeDesktop().release();
    if (window == DesktopWindow()) {
        return desktop;
    }
    // Lives on: windows are only closed under the lock that the caller holds.
    return FindUserObject<WindowObject>(window).get();
}

LockedWindow::LockedWindow(HWND window) : hold_(DesktopLock()), window_(FindWindowLocked(window)) {
    if (!window_) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    }
}

bool IsChildLocked(HWND parent, HWND window) {
    const WindowObject* found = FindWindowLocked(window);
    while (found && found->IsChild()) {
        if (found->Parent == parent) {
            return true;
        }
        found = FindWindowLocked(found->Parent);
    }
    return false;
}

bool IsForeignWindow(HWND window) {
    const DWORD process = ProcessOfUserHandle(window);
    return process != 0 && process != GetCurrentProcessId();
}

bool IsOwnWindow(HWND window) {
    const std::lock_guard hold(DesktopLock());
    const WindowObject* const found = FindWindowLocked(window);
    return found && found->Thread == GetCurrentThreadId();
}

void DestroyWindowsOfThread(DWORD thread) {
    const std::lock_guard hold(DesktopLock());
    for (const HWND window : WindowHandles()) {
        const WindowObject* const found = FindWindowLocked(window);
        if (found && found->Thread == thread) {
            LeaveLocked(window);
        }
    }
}

}  // namespace platform
