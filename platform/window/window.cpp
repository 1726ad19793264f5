// Making and destroying windows.
#include <algorithm>

#include "platform/window/gui_thread.h"
#include "platform/window/input/input_focus.h"
#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// A child's parent, or a top-level window's owner, is the one given.
std::shared_ptr<WindowObject> Describe(const WindowClass& windowClass, const CREATESTRUCTW& description) {
    auto window = std::make_shared<WindowObject>();
    window->Thread = CurrentGuiThread().Id;
    window->Class = &windowClass;
    window->Procedure = windowClass.Procedure;
    window->Style = static_cast<DWORD>(description.style) & ~DWORD{WS_VISIBLE};
    window->Id = reinterpret_cast<LONG_PTR>(description.hMenu);
    window->Extra.resize(static_cast<size_t>(windowClass.ExtraBytes));
    window->Parent = window->IsChild() ? description.hwndParent : DesktopWindow();
    window->Owner = window->IsChild() ? nullptr : description.hwndParent;
    window->Frame = {description.x, description.y, description.x + description.cx,
                     description.y + description.cy};
    return window;
}

HWND Enter(const std::shared_ptr<WindowObject>& window) {
    const std::lock_guard hold(DesktopLock());
    WindowObject* const parent = FindWindowLocked(window->Parent);
    if (!parent) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return nullptr;
    }
    window->Handle = static_cast<HWND>(OpenUserHandle(window));
    if (window->Parent == DesktopWindow() && !EnterMachineWindow(window->Handle, window->Thread)) {
        CloseUserHandle(window->Handle, UserObjectKind::Window);
        SetLastError(ERROR_NO_MORE_USER_HANDLES);
        return nullptr;
    }
    // A new child lies behind its siblings, and so comes last in the order of the tab key.
    parent->Children.push_back(window->Handle);
    return window->Handle;
}

std::vector<HWND> ChildrenOf(HWND window) {
    const std::lock_guard hold(DesktopLock());
    const WindowObject* const found = FindWindowLocked(window);
    return found ? found->Children : std::vector<HWND>();
}

// WM_DESTROY goes from the window down ...
void TellDestroy(HWND window) {
    SendMessageW(window, WM_DESTROY, 0, 0);
    for (const HWND child : ChildrenOf(window)) {
        TellDestroy(child);
    }
}

// ... and WM_NCDESTROY from its children up. Then the window is out of the tree and out of the queue, and its
// handle goes bad.
void Dismantle(HWND window) {
    for (const HWND child : ChildrenOf(window)) {
        Dismantle(child);
    }
    SendMessageW(window, WM_NCDESTROY, 0, 0);
    CurrentGuiThread().Queue->Forget(window);
    const std::lock_guard hold(DesktopLock());
    LeaveLocked(window);
}

}  // namespace

void LeaveLocked(HWND window) {
    const WindowObject* const found = FindWindowLocked(window);
    if (!found) {
        return;
    }
    if (WindowObject* const parent = FindWindowLocked(found->Parent)) {
        std::erase(parent->Children, window);
    }
    if (found->Parent == DesktopWindow()) {
        LeaveMachineWindow(window);
    }
    CloseUserHandle(window, UserObjectKind::Window);
}

}  // namespace platform

using namespace platform;

HWND WINAPI CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR name, DWORD style, int x, int y,
                            int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                            LPVOID parameter) {
    CREATESTRUCTW description = {
        parameter, instance,  menu,   parent, height, width, y, x, static_cast<LONG>(style),
        name,      className, exStyle};
    const WindowClass* const windowClass = FindClass(className);
    const HWND window = windowClass ? Enter(Describe(*windowClass, description)) : nullptr;
    if (!window) {
        return nullptr;
    }
    SendMessageW(window, WM_NCCREATE, 0, reinterpret_cast<LPARAM>(&description));
    SendMessageW(window, WM_CREATE, 0, reinterpret_cast<LPARAM>(&description));
    if ((style & WS_VISIBLE) != 0) {
        ShowWindow(window, SW_SHOW);
    }
    return window;
}

BOOL WINAPI DestroyWindow(HWND window) {
    if (!IsOwnWindow(window)) {
        return FALSE;
    }
    ShowWindow(window, SW_HIDE);
    TellDestroy(window);
    GiveUpInput(window);
    Dismantle(window);
    return TRUE;
}

BOOL WINAPI IsWindow(HWND window) {
    return LockedWindow(window) ? TRUE : FALSE;
}

HWND WINAPI GetDesktopWindow() {
    return DesktopWindow();
}
