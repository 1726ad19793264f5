// DefDlgProcW: asks the dialog's own procedure first, then does what every dialog does.
#include "platform/window/dialog/dialog.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

UINT DefaultId(HWND dialog) {
    const LockedWindow found(dialog);
    return found->DefaultId;
}

void SetDefaultId(HWND dialog, UINT id) {
    const LockedWindow found(dialog);
    found->DefaultId = id;
}

LRESULT DefaultAnswer(HWND dialog, UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_SETFOCUS:
        if (const HWND control = GetNextDlgTabItem(dialog, nullptr, FALSE)) {
            FocusControl(control);
        }
        return 0;
    case DM_SETDEFID:
        SetDefaultId(dialog, static_cast<UINT>(first));
        return TRUE;
    case DM_GETDEFID:
        return static_cast<LRESULT>(MAKELONG(DefaultId(dialog), DC_HASDEFID));
    case WM_NEXTDLGCTL:
        FocusControl(reinterpret_cast<HWND>(first));
        return 0;
    default:
        return DefWindowProcW(dialog, message, first, second);
    }
}

}  // namespace

}  // namespace platform

using namespace platform;

// For WM_INITDIALOG the answer is what the dialog's procedure returns; for all others it is DWLP_MSGRESULT.
LRESULT WINAPI DefDlgProcW(HWND dialog, UINT message, WPARAM first, LPARAM second) {
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
    const auto procedure =
        reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog, static_cast<int>(DWLP_DLGPROC)));
    const INT_PTR handled = procedure ? procedure(dialog, message, first, second) : FALSE;
    if (!handled) {
        return DefaultAnswer(dialog, message, first, second);
    }
    return message == WM_INITDIALOG ? handled : GetWindowLongPtrW(dialog, DWLP_MSGRESULT);
}
