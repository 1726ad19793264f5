#include "platform/window/window_object.h"

#include "platform/window/machine_windows.h"

namespace platform {

namespace {

constexpr LONG ScreenWidth = 1024;
constexpr LONG ScreenHeight = 768;

// The desktop's procedure does nothing and answers 0.
LRESULT CALLBACK DesktopProcedure(HWND, UINT, WPARAM, LPARAM) {
    return 0;
}

std::unique_ptr<WindowObject> MakeDesktop() {
    auto desktop = std::make_unique<WindowObject>();
    desktop->Handle = DesktopWindow();
    desktop->Class = std::make_shared<const WindowClass>(
        WindowClass{u"#32769", nullptr, DesktopProcedure, 0, 0, nullptr, 0x8001});
    desktop->Procedure = DesktopProcedure;
    desktop->Style = WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN;
    desktop->Frame = {0, 0, ScreenWidth, ScreenHeight};
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

HWND TopLevelLocked(HWND window) {
    const WindowObject* found = FindWindowLocked(window);
    while (found && found->Parent && found->Parent != DesktopWindow()) {
        found = FindWindowLocked(found->Parent);
    }
    return found ? found->Handle : nullptr;
}

HWND TopLevelOf(HWND window) {
    const std::lock_guard hold(DesktopLock());
    return TopLevelLocked(window);
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
    // The highest values are no handles but HWND_TOPMOST and its like.
    return process != 0 && process != GetCurrentProcessId() && process != UINT32_MAX;
}

bool IsOwnWindow(HWND window) {
    const std::lock_guard hold(DesktopLock());
    const WindowObject* const found = FindWindowLocked(window);
    return found && found->Thread == GetCurrentThreadId();
}

POINT FrameOriginLocked(HWND window) {
    const WindowObject* const found = FindWindowLocked(window);
    if (!found || !found->Parent) {
        return {0, 0};
    }
    const POINT parent = ClientOriginLocked(found->Parent);
    return {parent.x + found->Frame.left, parent.y + found->Frame.top};
}

POINT ClientOriginLocked(HWND window) {
    const WindowObject* const found = FindWindowLocked(window);
    if (!found || !found->Parent) {
        return {0, 0};
    }
    const POINT frame = FrameOriginLocked(window);
    const RECT insets = FrameInsets(found->Style, found->ExStyle);
    return {frame.x + insets.left, frame.y + insets.top};
}

void DestroyWindowsOfThread(DWORD thread) {
    const std::lock_guard hold(DesktopLock());
    for (const HWND window : WindowHandles()) {
        const WindowObject* const found = FindWindowLocked(window);
        if (!found || found->Thread != thread) {
            continue;
        }
        if (WindowObject* const parent = FindWindowLocked(found->Parent)) {
            std::erase(parent->Children, window);
        }
        if (found->Parent == DesktopWindow()) {
            LeaveMachineWindow(window);
        }
        if (found->Dialog && found->Dialog->Font) {
            DeleteObject(found->Dialog->Font);
        }
        CloseUserHandle(window, UserObjectKind::Window);
    }
}

}  // namespace platform
