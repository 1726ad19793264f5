// Something done on the thread of a window, as that thread itself would do it.
#pragma once

#include <windows.h>

#include <functional>

// Runs the action when the window's thread has dealt with every message posted to it before, and waits until
// it is done. One visit at a time in the process.
void VisitWindow(HWND window, const std::function<void()>& action);
