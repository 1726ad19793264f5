// The keys of a dialog.
#include "platform/window/dialog/dialog.h"
#include "platform/window/mnemonic.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

constexpr LRESULT PushButton = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;

LRESULT CodeOf(HWND control, const MSG* message = nullptr) {
    return SendMessageW(control, WM_GETDLGCODE, message ? message->wParam : 0,
                        reinterpret_cast<LPARAM>(message));
}

std::u16string TextOf(HWND window) {
    std::u16string text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, 0);
    text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

// A page is a dialog inside the sheet's dialog; keys are handled by the outermost one.
HWND OutermostDialog(HWND dialog) {
    while ((GetWindowLongPtrW(dialog, GWL_STYLE) & DS_CONTROL) != 0) {
        const HWND parent = GetParent(dialog);
        const LockedWindow found(parent);
        if (!found || !found->Dialog) {
            break;
        }
        dialog = parent;
    }
    return dialog;
}

void Press(HWND dialog, int id) {
    const HWND button = GetDlgItem(dialog, id);
    if (!button || IsWindowEnabled(button)) {
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
    }
}

// Enter presses the push button that has the focus, else the default one.
void PressDefault(HWND dialog) {
    const HWND focus = GetFocus();
    if (focus && (CodeOf(focus) & PushButton) != 0) {
        SendMessageW(GetParent(focus), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(focus), BN_CLICKED),
                     reinterpret_cast<LPARAM>(focus));
        return;
    }
    const auto answer = static_cast<DWORD>(SendMessageW(dialog, DM_GETDEFID, 0, 0));
    Press(dialog, HIWORD(answer) == DC_HASDEFID ? LOWORD(answer) : IDOK);
}

// Arrows move within a group; a radio button that they come to is chosen.
void MoveInGroup(HWND dialog, const MSG* message, bool previous) {
    const HWND next = GetNextDlgGroupItem(dialog, GetFocus(), previous ? TRUE : FALSE);
    if (!next) {
        return;
    }
    if (CodeOf(next, message) != (DLGC_BUTTON | DLGC_RADIOBUTTON)) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
        return;
    }
    SetFocus(next);
    const bool automatic = (GetWindowLongPtrW(next, GWL_STYLE) & BS_TYPEMASK) == BS_AUTORADIOBUTTON;
    if (automatic && SendMessageW(next, BM_GETCHECK, 0, 0) != BST_CHECKED) {
        SendMessageW(next, BM_CLICK, 0, 0);
    }
}

void MoveByTab(HWND dialog) {
    const HWND next = GetNextDlgTabItem(dialog, GetFocus(), GetKeyState(VK_SHIFT) < 0 ? TRUE : FALSE);
    if (next) {
        SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    }
}

// True when the key has been dealt with.
bool UseKey(HWND dialog, const MSG* message) {
    const LRESULT code = CodeOf(message->hwnd, message);
    if ((code & DLGC_WANTMESSAGE) != 0) {
        return false;
    }
    switch (message->wParam) {
    case VK_TAB:
        if ((code & DLGC_WANTTAB) != 0) {
            return false;
        }
        MoveByTab(dialog);
        return true;
    case VK_LEFT:
    case VK_UP:
    case VK_RIGHT:
    case VK_DOWN:
        if ((code & DLGC_WANTARROWS) != 0) {
            return false;
        }
        MoveInGroup(dialog, message, message->wParam == VK_LEFT || message->wParam == VK_UP);
        return true;
    case VK_CANCEL:
    case VK_ESCAPE:
        Press(dialog, IDCANCEL);
        return true;
    case VK_EXECUTE:
    case VK_RETURN:
        PressDefault(dialog);
        return true;
    default:
        return false;
    }
}

// Collects the visible controls of the dialog and of its pages, whose mnemonics are looked at.
BOOL CALLBACK AppendVisible(HWND window, LPARAM list) {
    if (IsWindowVisible(window) && IsWindowEnabled(window)) {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    }
    return TRUE;
}

// A label's mnemonic takes the focus to the control after it; a push button's presses it; a check box's
// or radio button's clicks it.
bool UseMnemonic(HWND dialog, WCHAR letter) {
    std::vector<HWND> controls;
    EnumChildWindows(dialog, AppendVisible, reinterpret_cast<LPARAM>(&controls));
    for (const HWND control : controls) {
        const bool literal = (GetWindowLongPtrW(control, GWL_STYLE) & SS_NOPREFIX) != 0 &&
                             (CodeOf(control) & DLGC_STATIC) != 0;
        const LRESULT code = CodeOf(control);
        if ((code & (DLGC_STATIC | DLGC_BUTTON | PushButton)) == 0 || literal ||
            !IsMnemonicOf(TextOf(control), letter)) {
            continue;
        }
        if ((code & DLGC_STATIC) != 0) {
            SendMessageW(dialog, WM_NEXTDLGCTL,
                         reinterpret_cast<WPARAM>(GetNextDlgTabItem(dialog, control, FALSE)), TRUE);
        } else if ((code & PushButton) != 0) {
            SendMessageW(GetParent(control), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(control), BN_CLICKED),
                         reinterpret_cast<LPARAM>(control));
        } else {
            SetFocus(control);
            SendMessageW(control, BM_CLICK, 0, 0);
        }
        return true;
    }
    return false;
}

// A letter without Alt is a mnemonic too, unless the control with the focus takes letters.
bool UseLetter(HWND dialog, const MSG* message) {
    if (message->message == WM_CHAR &&
        (CodeOf(message->hwnd, message) & (DLGC_WANTCHARS | DLGC_WANTMESSAGE)) != 0) {
        return false;
    }
    return UseMnemonic(dialog, static_cast<WCHAR>(message->wParam));
}

}  // namespace

void FocusControl(HWND control) {
    const LRESULT code = CodeOf(control);
    if ((code & DLGC_HASSETSEL) != 0) {
        SendMessageW(control, EM_SETSEL, 0, -1);
    }
    SetFocus(control);
}

bool HandleDialogMessage(HWND dialog, MSG* message) {
    if (message->hwnd != dialog && !IsChild(dialog, message->hwnd)) {
        return false;
    }
    const HWND outermost = OutermostDialog(dialog);
    const bool used = message->message == WM_KEYDOWN ? UseKey(outermost, message)
                      : message->message == WM_CHAR || message->message == WM_SYSCHAR
                          ? UseLetter(outermost, message)
                          : false;
    if (!used) {
        TranslateMessage(message);
        DispatchMessageW(message);
    }
    return true;
}

}  // namespace platform
