// Showing, enabling and placing windows.
#include <algorithm>

#include "platform/window/input/input_focus.h"
#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// Sets and clears style bits. Answers the style that there was before.
DWORD ChangeStyle(HWND window, DWORD set, DWORD clear) {
    const LockedWindow found(window);
    if (!found) {
        return 0;
    }
    const DWORD before = found->Style;
    found->Style = (before & ~clear) | set;
    if (found->Parent == DesktopWindow()) {
        SetMachineWindowIconic(window, found->HasStyle(WS_MINIMIZE));
    }
    return before;
}

// A hidden window gives up the focus, a shown one becomes active unless it is a child or minimised.
void Show(HWND window, int command) {
    if (command == SW_HIDE) {
        ChangeStyle(window, 0, WS_VISIBLE);
        GiveUpFocus(window);
        return;
    }
    const DWORD before = ChangeStyle(window, WS_VISIBLE | (command == SW_MINIMIZE ? WS_MINIMIZE : 0),
                                     command == SW_RESTORE ? WS_MINIMIZE : 0);
    if ((before & WS_CHILD) == 0 && command != SW_MINIMIZE && IsOwnWindow(window)) {
        Activate(window);
    }
}

}  // namespace

}  // namespace platform

using namespace platform;

BOOL WINAPI ShowWindow(HWND window, int command) {
    if (IsForeignWindow(window)) {
        return ShowMachineWindow(window, command) ? TRUE : FALSE;
    }
    const bool wasVisible = (GetWindowLongPtrW(window, GWL_STYLE) & WS_VISIBLE) != 0;
    if (wasVisible || command != SW_HIDE) {
        Show(window, command);
    }
    return wasVisible ? TRUE : FALSE;
}

// A window that is put somewhere in the order of its siblings goes to the front.
BOOL WINAPI SetWindowPos(HWND window, HWND, int x, int y, int width, int height, UINT flags) {
    if ((flags & SWP_SHOWWINDOW) != 0) {
        ShowWindow(window, SW_SHOW);
    }
    if (IsForeignWindow(window)) {
        return TRUE;  // it has no place that another process can see
    }
    const LockedWindow found(window);
    if (!found) {
        return FALSE;
    }
    RECT& frame = found->Frame;
    const POINT corner = (flags & SWP_NOMOVE) != 0 ? POINT{frame.left, frame.top} : POINT{x, y};
    const POINT size = (flags & SWP_NOSIZE) != 0 ? POINT{frame.right - frame.left, frame.bottom - frame.top}
                                                 : POINT{width, height};
    frame = {corner.x, corner.y, corner.x + size.x, corner.y + size.y};
    std::vector<HWND>& siblings = FindWindowLocked(found->Parent)->Children;
    const auto place = std::find(siblings.begin(), siblings.end(), window);
    if ((flags & SWP_NOZORDER) == 0) {
        std::rotate(siblings.begin(), place, place + 1);
    }
    return TRUE;
}

// TRUE when the window was disabled before.
BOOL WINAPI EnableWindow(HWND window, BOOL enable) {
    const DWORD before = ChangeStyle(window, enable ? 0 : WS_DISABLED, enable ? WS_DISABLED : 0);
    if (!enable && GetFocus() == window) {
        SetFocus(nullptr);
    }
    return (before & WS_DISABLED) != 0 ? TRUE : FALSE;
}

BOOL WINAPI IsWindowEnabled(HWND window) {
    const LockedWindow found(window);
    return found && !found->HasStyle(WS_DISABLED) ? TRUE : FALSE;
}

// Visible means that the window and all its parents are.
BOOL WINAPI IsWindowVisible(HWND window) {
    const std::lock_guard hold(DesktopLock());
    const WindowObject* found = FindWindowLocked(window);
    while (found && found->HasStyle(WS_VISIBLE) && found->Parent) {
        found = FindWindowLocked(found->Parent);
    }
    return found && found->HasStyle(WS_VISIBLE) ? TRUE : FALSE;
}

BOOL WINAPI IsIconic(HWND window) {
    if (IsForeignWindow(window)) {
        return IsMachineWindowIconic(window) ? TRUE : FALSE;
    }
    return (GetWindowLongPtrW(window, GWL_STYLE) & WS_MINIMIZE) != 0 ? TRUE : FALSE;
}
