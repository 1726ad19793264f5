// The order of windows: parents, owners, children and siblings.
#include <algorithm>

#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

HWND Neighbour(const WindowObject& window, UINT which) {
    const WindowObject* const parent = FindWindowLocked(window.Parent);
    if (!parent || parent->Children.empty()) {
        return nullptr;
    }
    const std::vector<HWND>& all = parent->Children;
    const auto place = std::find(all.begin(), all.end(), window.Handle);
    switch (which) {
    case GW_HWNDFIRST:
        return all.front();
    case GW_HWNDLAST:
        return all.back();
    case GW_HWNDNEXT:
        return place == all.end() || place + 1 == all.end() ? nullptr : *(place + 1);
    default:
        return place == all.end() || place == all.begin() ? nullptr : *(place - 1);
    }
}

// Collects the windows front to back, each followed by the windows in it.
void AppendDescendants(HWND window, std::vector<HWND>* all) {
    if (const WindowObject* const found = FindWindowLocked(window)) {
        for (const HWND child : found->Children) {
            all->push_back(child);
            AppendDescendants(child, all);
        }
    }
}

// Calls for each until it answers FALSE; windows that are gone by then are left out.
BOOL Enumerate(const std::vector<HWND>& windows, WNDENUMPROC each, LPARAM parameter) {
    for (const HWND window : windows) {
        if (IsWindow(window) && !each(window, parameter)) {
            return FALSE;
        }
    }
    return TRUE;
}

std::vector<HWND> TopLevelWindowsOf(DWORD thread) {
    const std::lock_guard hold(DesktopLock());
    std::vector<HWND> windows = FindWindowLocked(DesktopWindow())->Children;
    std::erase_if(windows, [thread](HWND window) { return FindWindowLocked(window)->Thread != thread; });
    return windows;
}

std::optional<std::u16string_view> WantedText(LPCWSTR text) {
    return text ? std::optional<std::u16string_view>(text) : std::nullopt;
}

}  // namespace

}  // namespace platform

using namespace platform;

// A child's parent; a top-level window's owner.
HWND WINAPI GetParent(HWND window) {
    const LockedWindow found(window);
    if (!found) {
        return nullptr;
    }
    return found->IsChild() ? found->Parent : found->Owner;
}

HWND WINAPI GetWindow(HWND window, UINT which) {
    const LockedWindow found(window);
    if (!found) {
        return nullptr;
    }
    switch (which) {
    case GW_OWNER:
        return found->Owner;
    case GW_CHILD:
        return found->Children.empty() ? nullptr : found->Children.front();
    case GW_HWNDFIRST:
    case GW_HWNDLAST:
    case GW_HWNDNEXT:
    case GW_HWNDPREV:
        return Neighbour(*found, which);
    default:
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
}

HWND WINAPI GetTopWindow(HWND window) {
    return GetWindow(window ? window : DesktopWindow(), GW_CHILD);
}

BOOL WINAPI IsChild(HWND parent, HWND window) {
    const std::lock_guard hold(DesktopLock());
    return IsChildLocked(parent, window) ? TRUE : FALSE;
}

BOOL WINAPI EnumChildWindows(HWND parent, WNDENUMPROC each, LPARAM parameter) {
    std::vector<HWND> windows;
    {
        const std::lock_guard hold(DesktopLock());
        AppendDescendants(parent ? parent : DesktopWindow(), &windows);
    }
    return Enumerate(windows, each, parameter);
}

BOOL WINAPI EnumThreadWindows(DWORD thread, WNDENUMPROC each, LPARAM parameter) {
    return Enumerate(TopLevelWindowsOf(thread), each, parameter);
}

HWND WINAPI FindWindowW(LPCWSTR className, LPCWSTR title) {
    std::u16string name;
    if (className && IS_INTRESOURCE(className)) {
        const std::shared_ptr<const WindowClass> found = FindClass(className, nullptr);
        if (!found) {
            return nullptr;
        }
        name = found->Name;
        className = name.c_str();
    }
    return FindMachineWindow(WantedText(className), WantedText(title));
}
