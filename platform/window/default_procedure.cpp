// DefWindowProcW: the answers to messages that a window's own procedure does not handle.
#include "platform/window/machine_windows.h"
#include "platform/window/private_messages.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

constexpr WCHAR NumberMark = 0xFFFF;  // begins a text that is a resource's number

// In place of a text there may be the number of a picture, which is not stored.
bool IsText(LPCWSTR text) {
    return text && text[0] != NumberMark;
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

// WM_HELP goes to the window with the focus, and up from there.
void AskForHelp(HWND window) {
    HELPINFO help{};
    help.cbSize = sizeof help;
    help.iContextType = HELPINFO_WINDOW;
    help.iCtrlId = GetDlgCtrlID(window);
    help.hItemHandle = window;
    SendMessageW(window, WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
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
    case HelpKeyMessage:
        AskForHelp(window);
        return 0;
    case WM_HELP:
        if ((GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0) {
            SendMessageW(GetParent(window), message, first, second);
        }
        return TRUE;
    default:
        return 0;
    }
}
