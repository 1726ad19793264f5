// The window classes of the controls.
#pragma once

#include <windows.h>

namespace platform {

// Those of user32: "Button", "Edit", "Static", "ComboBox". Those of comctl32 come with
// InitCommonControls.
void RegisterUserControls();

// Their procedures, each in a file of its own.
WNDPROC ButtonProcedure();
WNDPROC EditProcedure();
WNDPROC StaticProcedure();
WNDPROC ComboBoxProcedure();
WNDPROC TrackbarProcedure();
WNDPROC TabControlProcedure();
WNDPROC TreeViewProcedure();

}  // namespace platform
