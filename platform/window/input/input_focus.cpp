#include "platform/window/input/input_focus.h"

#include "platform/window/gui_thread.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

bool LiesIn(HWND window, HWND parent) {
    return window && (window == parent || IsChild(parent, window));
}

// The next window of the thread to become active when `window` goes: its owner, or the frontmost.
HWND NextActive(HWND window) {
    const std::lock_guard hold(DesktopLock());
    const WindowObject* const found = FindWindowLocked(window);
    if (found && found->Owner) {
        return found->Owner;
    }
    for (const HWND candidate : FindWindowLocked(DesktopWindow())->Children) {
        const WindowObject& other = *FindWindowLocked(candidate);
        if (candidate != window && other.Thread == GetCurrentThreadId() && other.HasStyle(WS_VISIBLE) &&
            !other.HasStyle(WS_DISABLED) && !other.Destroying) {
            return candidate;
        }
    }
    return nullptr;
}

// Moves the focus and tells both sides.
void MoveFocus(HWND window) {
    GuiThread& thread = CurrentGuiThread();
    const HWND before = thread.Focus;
    if (before == window) {
        return;
    }
    thread.Focus = window;
    if (before) {
        SendMessageW(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), 0);
    }
    // The one that lost it may have sent it elsewhere.
    if (window && thread.Focus == window) {
        SendMessageW(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
    }
}

}  // namespace

void Activate(HWND window) {
    GuiThread& thread = CurrentGuiThread();
    const HWND before = thread.Active;
    if (before == window) {
        return;
    }
    if (before) {
        SendMessageW(before, WM_ACTIVATE, WA_INACTIVE, reinterpret_cast<LPARAM>(window));
    }
    thread.Active = window;
    if (!window) {
        return;
    }
    SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    SendMessageW(window, WM_ACTIVATE, WA_ACTIVE, reinterpret_cast<LPARAM>(before));
    if (thread.Active == window && !LiesIn(thread.Focus, window)) {
        MoveFocus(window);
    }
}

void GiveUpFocus(HWND window) {
    if (LiesIn(GetFocus(), window)) {
        const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
        MoveFocus((style & WS_CHILD) != 0 ? GetParent(window) : nullptr);
    }
    if (CurrentGuiThread().Active == window) {
        Activate(NextActive(window));
    }
}

void GiveUpInput(HWND window) {
    if (LiesIn(GetCapture(), window)) {
        ReleaseCapture();
    }
    GuiThread& thread = CurrentGuiThread();
    if (LiesIn(thread.Focus, window)) {
        MoveFocus(nullptr);
    }
    if (thread.Active == window) {
        Activate(NextActive(window));
    }
}

}  // namespace platform

using namespace platform;

HWND WINAPI SetFocus(HWND window) {
    GuiThread& thread = CurrentGuiThread();
    const HWND before = thread.Focus;
    if (!window) {
        MoveFocus(nullptr);
        return before;
    }
    if (!IsOwnWindow(window)) {
        if (IsWindow(window)) {
            SetLastError(ERROR_ACCESS_DENIED);
        }
        return nullptr;
    }
    Activate(TopLevelOf(window));
    MoveFocus(window);
    return before;
}

HWND WINAPI GetFocus() {
    return CurrentGuiThread().Focus;
}

HWND WINAPI SetCapture(HWND window) {
    GuiThread& thread = CurrentGuiThread();
    const HWND before = thread.Capture;
    if (window && !IsOwnWindow(window)) {
        if (IsWindow(window)) {
            SetLastError(ERROR_ACCESS_DENIED);
        }
        return nullptr;
    }
    thread.Capture = window;
    if (before) {
        SendMessageW(before, WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(window));
    }
    return before;
}

BOOL WINAPI ReleaseCapture() {
    SetCapture(nullptr);
    return TRUE;
}

HWND WINAPI GetCapture() {
    return CurrentGuiThread().Capture;
}
