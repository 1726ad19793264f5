// The Version page: who a card is. It changes nothing.
#pragma once

#include <windows.h>

namespace kestvox {

// Dialog procedure of IDD_VERSION.
INT_PTR CALLBACK VersionPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kestvox
