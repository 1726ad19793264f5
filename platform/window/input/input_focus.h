// The focus, the active window and the mouse capture of the calling thread.
#pragma once

#include <windows.h>

namespace platform {

// The window is about to go: what it and the windows in it have of the thread's input is given up, and
// another top-level window of the thread becomes active in its place.
void GiveUpInput(HWND window);

// The same for a window that is hidden: the focus goes to its parent, capture stays.
void GiveUpFocus(HWND window);

// Makes a top-level window the thread's active one, with WM_ACTIVATE; null: none.
void Activate(HWND window);

}  // namespace platform
