// Showing, enabling and placing windows, and bringing them to the front.
#include <algorithm>

#include "platform/window/input/input_focus.h"
#include "platform/window/machine_windows.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

void TellMachine(const WindowObject& window) {
    if (window.Parent == DesktopWindow()) {
        SetMachineWindowState(window.Handle, {window.HasStyle(WS_VISIBLE), window.HasStyle(WS_MINIMIZE)});
    }
}

// Sets and clears style bits. Answers whether the window was visible before.
bool ChangeState(HWND window, DWORD set, DWORD clear) {
    const LockedWindow found(window);
    if (!found) {
        return false;
    }
    const bool wasVisible = found->HasStyle(WS_VISIBLE);
    found->Style = (found->Style & ~clear) | set;
    TellMachine(*found);
    return wasVisible;
}

void TellShown(HWND window, bool shown) {
    SendMessageW(window, WM_SHOWWINDOW, shown ? TRUE : FALSE, 0);
}

bool Hide(HWND window) {
    const bool wasVisible = ChangeState(window, 0, 0);
    if (wasVisible) {
        TellShown(window, false);
        ChangeState(window, 0, WS_VISIBLE);
        GiveUpFocus(window);
    }
    return wasVisible;
}

struct ShowCommand {
    DWORD Set;
    DWORD Clear;
    bool Activates;
    UINT Size;  // for WM_SIZE when the state changes
};

ShowCommand CommandOf(int command) {
    switch (command) {
    case SW_SHOWMINIMIZED:
        return {WS_VISIBLE | WS_MINIMIZE, WS_MAXIMIZE, true, SIZE_MINIMIZED};
    case SW_MINIMIZE:
    case SW_SHOWMINNOACTIVE:
        return {WS_VISIBLE | WS_MINIMIZE, WS_MAXIMIZE, false, SIZE_MINIMIZED};
    case SW_SHOWMAXIMIZED:
        return {WS_VISIBLE | WS_MAXIMIZE, WS_MINIMIZE, true, SIZE_MAXIMIZED};
    case SW_SHOWNORMAL:
    case SW_RESTORE:
        return {WS_VISIBLE, WS_MINIMIZE | WS_MAXIMIZE, true, SIZE_RESTORED};
    case SW_SHOWNOACTIVATE:
        return {WS_VISIBLE, WS_MINIMIZE | WS_MAXIMIZE, false, SIZE_RESTORED};
    case SW_SHOWNA:
        return {WS_VISIBLE, 0, false, SIZE_RESTORED};
    default:  // SW_SHOW
        return {WS_VISIBLE, 0, true, SIZE_RESTORED};
    }
}

// Whether the window was visible before.
bool Show(HWND window, int command) {
    if (command == SW_HIDE) {
        return Hide(window);
    }
    const ShowCommand wanted = CommandOf(command);
    const auto before = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
    const bool wasVisible = (before & WS_VISIBLE) != 0;
    if (!wasVisible) {
        TellShown(window, true);
    }
    ChangeState(window, wanted.Set, wanted.Clear);
    const DWORD after = (before & ~wanted.Clear) | wanted.Set;
    if (((before ^ after) & (WS_MINIMIZE | WS_MAXIMIZE)) != 0) {
        RECT client;
        GetClientRect(window, &client);
        SendMessageW(window, WM_SIZE, wanted.Size, MAKELPARAM(client.right, client.bottom));
    }
    if ((before & WS_CHILD) == 0 && wanted.Activates && IsOwnWindow(window)) {
        Activate(window);
    }
    return wasVisible;
}

// Where `after` puts the window among those with the same parent.
void OrderLocked(WindowObject& window, HWND after) {
    std::vector<HWND>& all = FindWindowLocked(window.Parent)->Children;
    std::erase(all, window.Handle);
    const auto isTopMost = [](HWND other) { return (FindWindowLocked(other)->ExStyle & WS_EX_TOPMOST) != 0; };
    if (after == HWND_TOPMOST) {
        window.ExStyle |= WS_EX_TOPMOST;
    } else if (after == HWND_NOTOPMOST || after == HWND_BOTTOM) {
        window.ExStyle &= ~static_cast<DWORD>(WS_EX_TOPMOST);
    }
    auto place = all.begin();
    if (after == HWND_BOTTOM) {
        place = all.end();
    } else if (after == HWND_TOP || after == HWND_NOTOPMOST || after == HWND_TOPMOST) {
        const bool topMost = (window.ExStyle & WS_EX_TOPMOST) != 0;
        place = topMost ? all.begin() : std::find_if_not(all.begin(), all.end(), isTopMost);
    } else if (const auto neighbour = std::find(all.begin(), all.end(), after); neighbour != all.end()) {
        place = neighbour + 1;
    }
    all.insert(place, window.Handle);
    if (window.Parent == DesktopWindow()) {
        OrderMachineWindow(window.Handle, after);
    }
}

// Applies place, size and order, and completes the WINDOWPOS that the window is told afterwards.
bool Place(WINDOWPOS* change) {
    const LockedWindow found(change->hwnd);
    if (!found || !found->Parent) {
        return false;
    }
    RECT frame = found->Frame;
    if ((change->flags & SWP_NOMOVE) == 0) {
        OffsetRect(&frame, change->x - frame.left, change->y - frame.top);
    }
    if ((change->flags & SWP_NOSIZE) == 0) {
        frame.right = frame.left + std::max(change->cx, 0);
        frame.bottom = frame.top + std::max(change->cy, 0);
    }
    if (frame.left == found->Frame.left && frame.top == found->Frame.top) {
        change->flags |= SWP_NOMOVE;
    }
    if (frame.right - frame.left == found->Frame.right - found->Frame.left &&
        frame.bottom - frame.top == found->Frame.bottom - found->Frame.top) {
        change->flags |= SWP_NOSIZE;
    }
    found->Frame = frame;
    if ((change->flags & SWP_NOZORDER) == 0) {
        OrderLocked(*found, change->hwndInsertAfter);
    }
    change->x = frame.left;
    change->y = frame.top;
    change->cx = frame.right - frame.left;
    change->cy = frame.bottom - frame.top;
    return true;
}

bool PlaceWindow(WINDOWPOS change) {
    SendMessageW(change.hwnd, WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&change));
    if (!Place(&change)) {
        return false;
    }
    if ((change.flags & SWP_SHOWWINDOW) != 0) {
        Show(change.hwnd, SW_SHOWNA);
    } else if ((change.flags & SWP_HIDEWINDOW) != 0) {
        Hide(change.hwnd);
    }
    SendMessageW(change.hwnd, WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&change));
    const bool ofThread = IsOwnWindow(change.hwnd);
    if ((change.flags & (SWP_NOACTIVATE | SWP_NOZORDER)) == 0 && ofThread &&
        (GetWindowLongPtrW(change.hwnd, GWL_STYLE) & (WS_CHILD | WS_VISIBLE)) == WS_VISIBLE) {
        Activate(change.hwnd);
    }
    return true;
}

}  // namespace

}  // namespace platform

using namespace platform;

BOOL WINAPI ShowWindow(HWND window, int command) {
    if (IsForeignWindow(window)) {
        const std::optional<MachineWindowState> before = FindMachineWindowState(window);
        WindowRequest request{};
        request.What = WindowRequest::Kind::Show;
        request.First = static_cast<uint64_t>(command);
        return before && AskMachineWindow(window, request) && before->Visible ? TRUE : FALSE;
    }
    if (!IsWindow(window)) {
        return FALSE;
    }
    return Show(window, command) ? TRUE : FALSE;
}

BOOL WINAPI SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags) {
    if (IsForeignWindow(window)) {
        WindowRequest request{};
        request.What = WindowRequest::Kind::Place;
        request.First = reinterpret_cast<uint64_t>(after);
        const int32_t place[] = {x, y, width, height};
        std::copy(std::begin(place), std::end(place), request.Place);
        request.PlaceFlags = flags;
        return AskMachineWindow(window, request) ? TRUE : FALSE;
    }
    if (!IsWindow(window)) {
        return FALSE;
    }
    return PlaceWindow({window, after, x, y, width, height, flags}) ? TRUE : FALSE;
}

BOOL WINAPI BringWindowToTop(HWND window) {
    return SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

BOOL WINAPI SetForegroundWindow(HWND window) {
    return BringWindowToTop(window);
}

HWND WINAPI GetForegroundWindow() {
    return FrontMachineWindow();
}

// TRUE when the window was disabled before.
BOOL WINAPI EnableWindow(HWND window, BOOL enable) {
    bool wasDisabled = false;
    {
        const LockedWindow found(window);
        if (!found) {
            return FALSE;
        }
        wasDisabled = found->HasStyle(WS_DISABLED);
        found->Style = enable ? found->Style & ~static_cast<DWORD>(WS_DISABLED) : found->Style | WS_DISABLED;
    }
    if (wasDisabled == !enable) {
        return wasDisabled ? TRUE : FALSE;
    }
    if (!enable && IsOwnWindow(window)) {
        SendMessageW(window, WM_CANCELMODE, 0, 0);
        if (GetFocus() == window) {
            SetFocus(nullptr);
        }
        if (GetCapture() == window) {
            ReleaseCapture();
        }
    }
    SendMessageW(window, WM_ENABLE, enable ? TRUE : FALSE, 0);
    return wasDisabled ? TRUE : FALSE;
}

BOOL WINAPI IsWindowEnabled(HWND window) {
    const LockedWindow found(window);
    return found && !found->HasStyle(WS_DISABLED) ? TRUE : FALSE;
}

// Visible means that the window and all its parents are.
BOOL WINAPI IsWindowVisible(HWND window) {
    if (IsForeignWindow(window)) {
        const std::optional<MachineWindowState> state = FindMachineWindowState(window);
        return state && state->Visible ? TRUE : FALSE;
    }
    const std::lock_guard hold(DesktopLock());
    const WindowObject* found = FindWindowLocked(window);
    while (found && found->HasStyle(WS_VISIBLE) && found->Parent) {
        found = FindWindowLocked(found->Parent);
    }
    return found && found->HasStyle(WS_VISIBLE) ? TRUE : FALSE;
}

BOOL WINAPI IsIconic(HWND window) {
    if (IsForeignWindow(window)) {
        const std::optional<MachineWindowState> state = FindMachineWindowState(window);
        return state && state->Iconic ? TRUE : FALSE;
    }
    const LockedWindow found(window);
    return found && found->HasStyle(WS_MINIMIZE) ? TRUE : FALSE;
}
