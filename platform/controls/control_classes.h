// The window procedures of the controls, each in a file of its own. A window of theirs has extra bytes for
// one pointer.
#pragma once

#include <windows.h>

namespace platform {

WNDPROC ButtonProcedure();
WNDPROC EditProcedure();
WNDPROC StaticProcedure();
WNDPROC ComboBoxProcedure();
WNDPROC TrackbarProcedure();
WNDPROC TabControlProcedure();
WNDPROC TreeViewProcedure();

}  // namespace platform
