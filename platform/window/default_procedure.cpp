// DefWindowProcW: the answers to messages that a window's own procedure does not handle.
#include <algorithm>

#include "platform/window/machine_windows.h"
#include "platform/window/private_messages.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

constexpr WCHAR NumberMark = 0xFFFF;  // begins a text that is a resource's number

// In place of a text there may be the number of a picture, which is not stored.
bool IsText(LPCWSTR text) {
    return text && !IS_INTRESOURCE(text) && text[0] != NumberMark;
}

bool SetText(HWND window, LPCWSTR text) {
    const LockedWindow found(window);
    if (!found) {
        return false;
    }
    found->Text = IsText(text) ? text : u"";
    if (found->Parent == DesktopWindow()) {
        SetMachineWindowTitle(window, found->Text);
    }
    return true;
}

size_t CopyText(HWND window, LPWSTR buffer, size_t size) {
    const LockedWindow found(window);
    if (!found || size == 0) {
        return 0;
    }
    const size_t length = found->Text.copy(buffer, size - 1);
    buffer[length] = 0;
    return length;
}

size_t TextLength(HWND window) {
    const LockedWindow found(window);
    return found ? found->Text.size() : 0;
}

void TellPosition(HWND window, const WINDOWPOS& position) {
    if ((position.flags & SWP_NOMOVE) == 0) {
        SendMessageW(window, WM_MOVE, 0, MAKELPARAM(position.x, position.y));
    }
    RECT client;
    if ((position.flags & SWP_NOSIZE) == 0 && GetClientRect(window, &client)) {
        SendMessageW(window, WM_SIZE, SIZE_RESTORED, MAKELPARAM(client.right, client.bottom));
    }
}

bool IsChildWindow(HWND window) {
    return (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
}

// WM_HELP goes to the window with the focus, and up from there.
void AskForHelp(HWND window) {
    HELPINFO help{};
    help.cbSize = sizeof help;
    help.iContextType = HELPINFO_WINDOW;
    help.iCtrlId = GetDlgCtrlID(window);
    help.hItemHandle = window;
    GetCursorPos(&help.MousePos);
    SendMessageW(window, WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
}

void HandUp(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (IsChildWindow(window)) {
        SendMessageW(GetParent(window), message, first, second);
    }
}

LRESULT SystemCommand(HWND window, WPARAM command) {
    switch (command & 0xFFF0) {
    case SC_CLOSE:
        SendMessageW(window, WM_CLOSE, 0, 0);
        break;
    case SC_MINIMIZE:
        ShowWindow(window, SW_MINIMIZE);
        break;
    case SC_MAXIMIZE:
        ShowWindow(window, SW_SHOWMAXIMIZED);
        break;
    case SC_RESTORE:
        ShowWindow(window, SW_RESTORE);
        break;
    default:
        break;
    }
    return 0;
}

LRESULT SystemKey(HWND window, WPARAM key) {
    if (key == VK_F4) {
        PostMessageW(TopLevelOf(window), WM_SYSCOMMAND, SC_CLOSE, 0);
    } else if (key == VK_F10 && GetKeyState(VK_SHIFT) < 0) {
        SendMessageW(window, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window), -1);
    }
    return 0;
}

}  // namespace

}  // namespace platform

using namespace platform;

LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_NCCREATE:
        return SetText(window, reinterpret_cast<const CREATESTRUCTW*>(second)->lpszName) ? TRUE : FALSE;
    case WM_SETTEXT:
        return SetText(window, reinterpret_cast<LPCWSTR>(second)) ? TRUE : FALSE;
    case WM_GETTEXT:
        return static_cast<LRESULT>(CopyText(window, reinterpret_cast<LPWSTR>(second), first));
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(TextLength(window));
    case WM_WINDOWPOSCHANGED:
        TellPosition(window, *reinterpret_cast<const WINDOWPOS*>(second));
        return 0;
    case WM_ACTIVATE:
        if (LOWORD(first) != WA_INACTIVE && HIWORD(first) == 0) {
            SetFocus(window);
        }
        return 0;
    case WM_CLOSE:
        DestroyWindow(window);
        return 0;
    case WM_SYSCOMMAND:
        return SystemCommand(window, first);
    case WM_SYSKEYDOWN:
        return SystemKey(window, first);
    case WM_CANCELMODE:
        if (GetCapture() == window) {
            ReleaseCapture();
        }
        return 0;
    case HelpKeyMessage:
        AskForHelp(window);
        return 0;
    case WM_HELP:
        HandUp(window, message, first, second);
        return TRUE;
    case WM_CONTEXTMENU:
        HandUp(window, message, first, second);
        return 0;
    case WM_RBUTTONUP: {
        POINT point = {static_cast<SHORT>(LOWORD(second)), static_cast<SHORT>(HIWORD(second))};
        ClientToScreen(window, &point);
        SendMessageW(window, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window), MAKELPARAM(point.x, point.y));
        return 0;
    }
    case WM_NOTIFYFORMAT:
        return second == NF_QUERY ? NFR_UNICODE : 0;
    default:
        return 0;
    }
}
