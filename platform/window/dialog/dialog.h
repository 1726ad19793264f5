// Dialogs made from templates.
#pragma once

#include <windows.h>

#include "platform/window/dialog/dialog_template.h"

namespace platform {

// Makes the dialog and its controls and sends WM_INITDIALOG; the dialog is not shown. Null when the dialog or
// one of its controls cannot be made.
HWND CreateDialogFrom(const DialogTemplate& dialog, HWND owner, DLGPROC procedure, LPARAM parameter);

// Reads the template from a module's resources. When there is no such dialog, the answer is empty and the
// last error says why.
std::optional<DialogTemplate> LoadDialogTemplate(HINSTANCE instance, LPCWSTR name);

// In pixels, for a place in dialog units.
RECT DialogUnitsToPixels(const RECT& area);

// Acts on the dialog's own keys (tab, arrows, Enter, Escape), when the message is one of them and for a
// window of the dialog; every other message is dispatched.
void HandleDialogMessage(HWND dialog, const MSG& message);

// Moves the focus to a control of a dialog and selects its text, when it has any.
void FocusControl(HWND control);

}  // namespace platform
