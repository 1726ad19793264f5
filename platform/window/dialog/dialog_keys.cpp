// The keys of a dialog.
#include "platform/window/dialog/dialog.h"

namespace platform {

namespace {

constexpr LRESULT PushButton = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;

LRESULT CodeOf(HWND control) {
    return SendMessageW(control, WM_GETDLGCODE, 0, 0);
}

void Press(HWND dialog, int id) {
    const HWND button = GetDlgItem(dialog, id);
    if (IsWindowEnabled(button)) {
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    }
}

// Enter presses the push button that has the focus, else the default one.
void PressDefault(HWND dialog) {
    const HWND focus = GetFocus();
    const bool onButton = (CodeOf(focus) & PushButton) != 0;
    Press(dialog, onButton ? GetDlgCtrlID(focus) : LOWORD(SendMessageW(dialog, DM_GETDEFID, 0, 0)));
}

// Arrows move within a group; a radio button that they come to is chosen.
void MoveInGroup(HWND dialog, bool previous) {
    const HWND next = GetNextDlgGroupItem(dialog, GetFocus(), previous ? TRUE : FALSE);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    if ((CodeOf(next) & DLGC_RADIOBUTTON) != 0 && SendMessageW(next, BM_GETCHECK, 0, 0) != BST_CHECKED) {
        SendMessageW(next, BM_CLICK, 0, 0);
    }
}

void MoveByTab(HWND dialog) {
    const HWND next = GetNextDlgTabItem(dialog, GetFocus(), GetKeyState(VK_SHIFT) < 0 ? TRUE : FALSE);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
}

// True when the key has been dealt with.
bool UseKey(HWND dialog, const MSG& message) {
    switch (message.wParam) {
    case VK_TAB:
        MoveByTab(dialog);
        return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if ((CodeOf(message.hwnd) & DLGC_WANTARROWS) != 0) {
            return false;
        }
        MoveInGroup(dialog, message.wParam == VK_LEFT || message.wParam == VK_UP);
        return true;
    case VK_ESCAPE:
        Press(dialog, IDCANCEL);
        return true;
    case VK_RETURN:
        PressDefault(dialog);
        return true;
    default:
        return false;
    }
}

}  // namespace

void FocusControl(HWND control) {
    if ((CodeOf(control) & DLGC_HASSETSEL) != 0) {
        SendMessageW(control, EM_SETSEL, 0, -1);
    }
    SetFocus(control);
}

void HandleDialogMessage(HWND dialog, const MSG& message) {
    const bool ours = message.hwnd == dialog || IsChild(dialog, message.hwnd);
    if (!ours || message.message != WM_KEYDOWN || !UseKey(dialog, message)) {
        DispatchMessageW(&message);
    }
}

}  // namespace platform
