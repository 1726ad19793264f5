// The Clocks + Sync page: the clock source of every card, and who follows whom.
#pragma once

#include <windows.h>

namespace kestvox {

// Dialog procedure of IDD_CLOCKS.
INT_PTR CALLBACK ClocksPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kestvox
