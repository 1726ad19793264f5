// Making and destroying windows.
#include <algorithm>

#include "platform/window/gui_thread.h"
#include "platform/window/input/input_focus.h"
#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// CW_USEDEFAULT stands for these.
constexpr int DefaultPlace = 22;
constexpr int DefaultWidth = 640;
constexpr int DefaultHeight = 480;

// What CreateWindowExW is told, with the defaults put in.
struct Creation {
    CREATESTRUCTW Description;
    std::shared_ptr<const WindowClass> Class;
    HWND Parent;  // the desktop for a top-level window
    HWND Owner;
};

bool FindParents(Creation* creation) {
    const CREATESTRUCTW& description = creation->Description;
    const DWORD style = static_cast<DWORD>(description.style);
    const bool child = (style & (WS_CHILD | WS_POPUP)) == WS_CHILD;
    const std::lock_guard hold(DesktopLock());
    if (description.hwndParent && !FindWindowLocked(description.hwndParent)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return false;
    }
    if (child && !description.hwndParent) {
        SetLastError(ERROR_TLW_WITH_WSCHILD);
        return false;
    }
    creation->Parent = child ? description.hwndParent : DesktopWindow();
    // An owner is a top-level window, and a child as owner stands for the one that it lies in.
    const HWND owner = child ? nullptr : TopLevelLocked(description.hwndParent);
    creation->Owner = owner == DesktopWindow() ? nullptr : owner;
    return true;
}

HWND Enter(const Creation& creation) {
    const CREATESTRUCTW& description = creation.Description;
    auto window = std::make_shared<WindowObject>();
    window->Thread = CurrentGuiThread().Id;
    window->Class = creation.Class;
    window->Instance = description.hInstance;
    window->Procedure = creation.Class->Procedure;
    window->Style = static_cast<DWORD>(description.style) & ~DWORD{WS_VISIBLE};
    if (creation.Parent == DesktopWindow()) {
        window->Style |= WS_CLIPSIBLINGS;
    }
    window->ExStyle = description.dwExStyle & ~static_cast<DWORD>(WS_EX_TOPMOST);
    window->Id = reinterpret_cast<LONG_PTR>(description.hMenu);
    window->Extra.resize(static_cast<size_t>(creation.Class->ExtraBytes));
    window->Parent = creation.Parent;
    window->Owner = creation.Owner;
    window->Frame = {description.x, description.y, description.x + std::max(description.cx, 0),
                     description.y + std::max(description.cy, 0)};

    const std::lock_guard hold(DesktopLock());
    WindowObject* const parent = FindWindowLocked(creation.Parent);
    window->Handle = static_cast<HWND>(OpenUserHandle(window));
    if (creation.Parent != DesktopWindow()) {
        // A new child lies behind its siblings, and so comes last in the order of the tab key.
        parent->Children.push_back(window->Handle);
        return window->Handle;
    }
    if (!EnterMachineWindow(window->Handle, window->Thread, creation.Class->Name, u"")) {
        CloseUserHandle(window->Handle, UserObjectKind::Window);
        SetLastError(ERROR_NO_MORE_USER_HANDLES);
        return nullptr;
    }
    parent->Children.insert(parent->Children.begin(), window->Handle);
    return window->Handle;
}

// Out of the tree and out of the queue; its handle goes bad.
void Leave(HWND window) {
    CurrentGuiThread().Queue->Forget(window);
    const std::lock_guard hold(DesktopLock());
    WindowObject* const found = FindWindowLocked(window);
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

std::vector<HWND> ChildrenOf(HWND window) {
    const std::lock_guard hold(DesktopLock());
    const WindowObject* const found = FindWindowLocked(window);
    return found ? found->Children : std::vector<HWND>();
}

std::vector<HWND> OwnedBy(HWND window) {
    const std::lock_guard hold(DesktopLock());
    std::vector<HWND> owned;
    for (const HWND candidate : FindWindowLocked(DesktopWindow())->Children) {
        if (FindWindowLocked(candidate)->Owner == window) {
            owned.push_back(candidate);
        }
    }
    return owned;
}

// WM_DESTROY goes from the window down ...
void TellDestroy(HWND window) {
    SendMessageW(window, WM_DESTROY, 0, 0);
    for (const HWND child : ChildrenOf(window)) {
        TellDestroy(child);
    }
}

// ... and WM_NCDESTROY from its children up.
void Dismantle(HWND window) {
    for (const HWND child : ChildrenOf(window)) {
        Dismantle(child);
    }
    SendMessageW(window, WM_NCDESTROY, 0, 0);
    Leave(window);
}

bool BeginDestroying(HWND window) {
    const LockedWindow found(window);
    if (!found || found->Thread != CurrentGuiThread().Id || found->Destroying) {
        if (found) {
            SetLastError(ERROR_ACCESS_DENIED);
        }
        return false;
    }
    found->Destroying = true;
    return true;
}

// WM_NCCREATE and WM_CREATE. False when the window refuses one of them, and so its own creation.
bool TellCreation(HWND window, CREATESTRUCTW& description) {
    const auto parameter = reinterpret_cast<LPARAM>(&description);
    if (!SendMessageW(window, WM_NCCREATE, 0, parameter)) {
        if (IsWindow(window)) {
            SendMessageW(window, WM_NCDESTROY, 0, 0);
            Leave(window);
        }
        return false;
    }
    if (SendMessageW(window, WM_CREATE, 0, parameter) == -1) {
        DestroyWindow(window);
        return false;
    }
    return IsWindow(window) != FALSE;
}

void TellPlace(HWND window) {
    RECT client;
    RECT frame;
    if (!GetClientRect(window, &client)) {
        return;
    }
    SendMessageW(window, WM_SIZE, SIZE_RESTORED, MAKELPARAM(client.right, client.bottom));
    {
        const LockedWindow found(window);
        if (!found) {
            return;
        }
        frame = found->Frame;
    }
    SendMessageW(window, WM_MOVE, 0, MAKELPARAM(frame.left, frame.top));
}

}  // namespace

}  // namespace platform

using namespace platform;

HWND WINAPI CreateWindowExW(DWORD exStyle, LPCWSTR className, LPCWSTR name, DWORD style, int x, int y,
                            int width, int height, HWND parent, HMENU menu, HINSTANCE instance,
                            LPVOID parameter) {
    if (x == CW_USEDEFAULT) {
        x = y = DefaultPlace;
    }
    if (width == CW_USEDEFAULT) {
        width = DefaultWidth;
        height = DefaultHeight;
    }
    Creation creation{};
    creation.Description = {
        parameter, instance,  menu,   parent, height, width, y, x, static_cast<LONG>(style),
        name,      className, exStyle};
    creation.Class = FindClass(className, instance);
    if (!creation.Class || !FindParents(&creation)) {
        return nullptr;
    }
    const HWND window = Enter(creation);
    if (!window || !TellCreation(window, creation.Description)) {
        return nullptr;
    }
    TellPlace(window);
    if ((exStyle & WS_EX_TOPMOST) != 0) {
        SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    }
    if ((style & WS_VISIBLE) != 0) {
        ShowWindow(window, (style & WS_MINIMIZE) != 0 ? SW_SHOWMINIMIZED : SW_SHOW);
    }
    return IsWindow(window) ? window : nullptr;
}

BOOL WINAPI DestroyWindow(HWND window) {
    if (!BeginDestroying(window)) {
        return FALSE;
    }
    ShowWindow(window, SW_HIDE);
    for (const HWND owned : OwnedBy(window)) {
        DestroyWindow(owned);
    }
    TellDestroy(window);
    GiveUpInput(window);
    Dismantle(window);
    return TRUE;
}

BOOL WINAPI IsWindow(HWND window) {
    {
        const std::lock_guard hold(DesktopLock());
        if (FindWindowLocked(window)) {
            return TRUE;
        }
    }
    if (IsForeignWindow(window) && FindMachineWindowState(window)) {
        return TRUE;
    }
    SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    return FALSE;
}

HWND WINAPI GetDesktopWindow() {
    return DesktopWindow();
}
