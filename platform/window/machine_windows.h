// The top-level windows of all processes of the machine, so that one finds another's and can have it shown.
// Any thread.
#pragma once

#include <windows.h>

#include <string_view>

namespace platform {

// By the window's own process. False when the machine has no room for it.
bool EnterMachineWindow(HWND window, DWORD thread);
void LeaveMachineWindow(HWND window);
void SetMachineWindowTitle(HWND window, std::u16string_view title);
void SetMachineWindowIconic(HWND window, bool iconic);

// One with this title; null when there is none.
HWND FindMachineWindow(std::u16string_view title);

// False when the machine has no such window.
bool IsMachineWindowIconic(HWND window);

// Asks another process, and waits until the window's thread has done so, when it looks for messages. False
// when there is no such window, or it goes away meanwhile.
bool ShowMachineWindow(HWND window, int command);

// Does what is asked of the calling thread's windows. False when it has none, so that nothing can be.
bool RunMachineRequests();

}  // namespace platform
