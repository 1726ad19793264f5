// The focus and the mouse capture of the calling thread.
#pragma once

#include <windows.h>

namespace platform {

// For a window that is about to be destroyed. Takes focus and capture away from it and the windows in it.
void GiveUpInput(HWND window);

// For a window that is being hidden. The focus goes to its parent; the capture stays.
void GiveUpFocus(HWND window);

// For a top-level window that comes up: takes the focus, unless a window in it has it.
void Activate(HWND window);

}  // namespace platform
