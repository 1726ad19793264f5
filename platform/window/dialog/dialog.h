// Dialogs made from templates.
#pragma once

#include <windows.h>

#include "platform/window/dialog/dialog_template.h"

namespace platform {

// Makes the dialog and its controls and sends WM_INITDIALOG. Null when the dialog or, unless it has
// DS_NOFAILCREATE, one of its controls cannot be made.
HWND CreateDialogFrom(HINSTANCE instance, const DialogTemplate& dialog, HWND owner, DLGPROC procedure,
                      LPARAM parameter);

// The template in a module's resources; none, and the last error says why, when there is no such dialog.
std::optional<DialogTemplate> LoadDialogTemplate(HINSTANCE instance, LPCWSTR name);

// Sends a control the message about a key, unless the dialog's keys (tab, arrows, Enter, Escape,
// mnemonics) have a use for it. False when the message is for no window of the dialog.
bool HandleDialogMessage(HWND dialog, MSG* message);

// Moves the focus to a control of a dialog and selects its text, when it has any.
void FocusControl(HWND control);

// Runs messages until `ended`, asked before each. A message that `handle` takes is not dispatched. False
// when WM_QUIT came, which is posted again.
template <typename Ended, typename Handle>
bool RunModalLoop(const Ended& ended, const Handle& handle) {
    MSG message;
    while (!ended()) {
        if (!GetMessageW(&message, nullptr, 0, 0)) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return false;
        }
        if (!handle(&message)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    return true;
}

}  // namespace platform
