// DefDlgProcW: asks the dialog's own procedure first, then does what every dialog does.
#include "platform/window/dialog/dialog.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// For these messages the answer is what the dialog's procedure returns; for all others it is DWLP_MSGRESULT.
bool IsAnsweredDirectly(UINT message) {
    return message == WM_INITDIALOG || (message >= WM_CTLCOLOREDIT - 1 && message <= WM_CTLCOLORSTATIC);
}

HWND DialogFocus(HWND dialog) {
    const LockedWindow found(dialog);
    return found && found->Dialog ? found->Dialog->Focus : nullptr;
}

void SetDialogFocus(HWND dialog, HWND focus) {
    const LockedWindow found(dialog);
    if (found && found->Dialog) {
        found->Dialog->Focus = focus;
    }
}

// Remembers which control has the focus, to give it back when the dialog becomes active again.
void SaveFocus(HWND dialog) {
    const HWND focus = GetFocus();
    if (focus && IsChild(dialog, focus)) {
        SetDialogFocus(dialog, focus);
    }
}

void RestoreFocus(HWND dialog) {
    HWND focus = DialogFocus(dialog);
    SetDialogFocus(dialog, nullptr);
    if (!focus || !IsChild(dialog, focus)) {
        focus = GetNextDlgTabItem(dialog, nullptr, FALSE);
        if (!focus) {
            SetFocus(dialog);
            return;
        }
    }
    FocusControl(focus);
}

UINT DefaultId(HWND dialog) {
    const LockedWindow found(dialog);
    return found && found->Dialog ? found->Dialog->DefaultId : 0;
}

void SetButtonStyle(HWND dialog, UINT id, DWORD from, DWORD to) {
    const HWND button = id != 0 ? GetDlgItem(dialog, static_cast<int>(id)) : nullptr;
    if (button && (SendMessageW(button, WM_GETDLGCODE, 0, 0) & from) != 0) {
        SendMessageW(button, BM_SETSTYLE, to, TRUE);
    }
}

void SetDefaultId(HWND dialog, UINT id) {
    SetButtonStyle(dialog, DefaultId(dialog), DLGC_DEFPUSHBUTTON, BS_PUSHBUTTON);
    {
        const LockedWindow found(dialog);
        if (found && found->Dialog) {
            found->Dialog->DefaultId = id;
        }
    }
    SetButtonStyle(dialog, id, DLGC_UNDEFPUSHBUTTON, BS_DEFPUSHBUTTON);
}

void Close(HWND dialog) {
    const HWND cancel = GetDlgItem(dialog, IDCANCEL);
    if (!cancel || IsWindowEnabled(cancel)) {
        PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), reinterpret_cast<LPARAM>(cancel));
    }
}

void DropDialog(HWND dialog) {
    std::unique_ptr<DialogState> state;
    {
        const LockedWindow found(dialog);
        if (found) {
            state = std::move(found->Dialog);
        }
    }
    if (state && state->Font) {
        DeleteObject(state->Font);
    }
}

HFONT DialogFont(HWND dialog) {
    const LockedWindow found(dialog);
    return found && found->Dialog ? found->Dialog->Font : nullptr;
}

LRESULT DefaultAnswer(HWND dialog, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_NCDESTROY:
        DropDialog(dialog);
        return DefWindowProcW(dialog, message, first, second);
    case WM_SHOWWINDOW:
        if (!first) {
            SaveFocus(dialog);
        }
        return 0;
    case WM_ACTIVATE:
        if (LOWORD(first) != WA_INACTIVE) {
            RestoreFocus(dialog);
        } else {
            SaveFocus(dialog);
        }
        return 0;
    case WM_SETFOCUS:
        RestoreFocus(dialog);
        return 0;
    case DM_SETDEFID:
        SetDefaultId(dialog, static_cast<UINT>(first));
        return TRUE;
    case DM_GETDEFID: {
        const UINT id = DefaultId(dialog);
        return id != 0 ? static_cast<LRESULT>(MAKELONG(id, DC_HASDEFID)) : 0;
    }
    case WM_NEXTDLGCTL: {
        const HWND next = second ? reinterpret_cast<HWND>(first)
                                 : GetNextDlgTabItem(dialog, GetFocus(), static_cast<BOOL>(first));
        if (next) {
            FocusControl(next);
        }
        return 0;
    }
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(DialogFont(dialog));
    case WM_CLOSE:
        Close(dialog);
        return 0;
    default:
        return DefWindowProcW(dialog, message, first, second);
    }
}

}  // namespace

}  // namespace platform

using namespace platform;

LRESULT WINAPI DefDlgProcW(HWND dialog, UINT message, WPARAM first, LPARAM second) {
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
    const auto procedure =
        reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog, static_cast<int>(DWLP_DLGPROC)));
    const INT_PTR handled = procedure ? procedure(dialog, message, first, second) : FALSE;
    const bool alive = IsWindow(dialog) != FALSE;
    if (alive && (!handled || message == WM_NCDESTROY)) {
        const LRESULT answer = DefaultAnswer(dialog, message, first, second);
        return IsAnsweredDirectly(message) ? handled : answer;
    }
    if (IsAnsweredDirectly(message) || !alive) {
        return handled;
    }
    return GetWindowLongPtrW(dialog, DWLP_MSGRESULT);
}
