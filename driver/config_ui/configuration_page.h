// The Configuration page: a card's name and its general options.
#pragma once

#include <windows.h>

namespace kestvox {

// Dialog procedure of IDD_CONFIGURATION.
INT_PTR CALLBACK ConfigurationPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kestvox
