// The focus, the active window and the mouse capture of the calling thread.
#pragma once

#include <windows.h>

namespace platform {

// For a window that is about to be destroyed. Takes focus, capture and activation away from it and the
// windows in it; another top-level window of the thread becomes active in its place.
void GiveUpInput(HWND window);

// For a window that is being hidden. The focus goes to its parent; the capture stays.
void GiveUpFocus(HWND window);

// Makes a top-level window the thread's active one and sends WM_ACTIVATE to both windows. Null deactivates.
void Activate(HWND window);

}  // namespace platform
