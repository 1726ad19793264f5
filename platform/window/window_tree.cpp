// The order of windows: parents, children and siblings.
#include <algorithm>

#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

using namespace platform;

// A child's parent; a top-level window's owner.
HWND WINAPI GetParent(HWND window) {
    const LockedWindow found(window);
    if (!found) {
        return nullptr;
    }
    return found->IsChild() ? found->Parent : found->Owner;
}

// GW_CHILD, the first child, or GW_HWNDNEXT, the next sibling.
HWND WINAPI GetWindow(HWND window, UINT which) {
    const LockedWindow found(window);
    if (!found) {
        return nullptr;
    }
    if (which == GW_CHILD) {
        return found->Children.empty() ? nullptr : found->Children.front();
    }
    const std::vector<HWND>& siblings = FindWindowLocked(found->Parent)->Children;
    const auto place = std::find(siblings.begin(), siblings.end(), window) + 1;
    return place == siblings.end() ? nullptr : *place;
}

BOOL WINAPI IsChild(HWND parent, HWND window) {
    const std::lock_guard hold(DesktopLock());
    return IsChildLocked(parent, window) ? TRUE : FALSE;
}

// Calls for each until it answers FALSE; windows that are gone by then are left out.
BOOL WINAPI EnumThreadWindows(DWORD thread, WNDENUMPROC each, LPARAM parameter) {
    std::vector<HWND> windows;
    {
        const std::lock_guard hold(DesktopLock());
        windows = FindWindowLocked(DesktopWindow())->Children;
        std::erase_if(windows, [thread](HWND window) { return FindWindowLocked(window)->Thread != thread; });
    }
    for (const HWND window : windows) {
        if (IsWindow(window) && !each(window, parameter)) {
            return FALSE;
        }
    }
    return TRUE;
}

// Of any class.
HWND WINAPI FindWindowW(LPCWSTR, LPCWSTR title) {
    return FindMachineWindow(title);
}
