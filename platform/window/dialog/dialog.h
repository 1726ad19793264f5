// Dialogs made from templates.
#pragma once

#include <windows.h>

#include "platform/window/dialog/dialog_template.h"

namespace platform {

// Makes the dialog and its controls and sends WM_INITDIALOG. Null when the dialog or, unless it has
// DS_NOFAILCREATE, one of its controls cannot be made.
HWND CreateDialogFrom(HINSTANCE instance, const DialogTemplate& dialog, HWND owner, DLGPROC procedure,
                      LPARAM parameter);

// Reads the template from a module's resources. When there is no such dialog, the answer is empty and the
// last error says why.
std::optional<DialogTemplate> LoadDialogTemplate(HINSTANCE instance, LPCWSTR name);

// Handles a message for the dialog or one of its controls. The dialog's own keys (tab, arrows, Enter, Escape,
// mnemonics) are acted on here; every other message is dispatched. False when the message is for no window
// of the dialog.
bool HandleDialogMessage(HWND dialog, MSG* message);

// Moves the focus to a control of a dialog and selects its text, when it has any.
void FocusControl(HWND control);

// Gets and dispatches messages until `ended()` is true; it is asked before each message. A message for which
// `handle(&message)` is true is not dispatched. False when WM_QUIT came; it is posted again for the
// caller's own loop.
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
