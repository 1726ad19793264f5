// The Monitor page: the eight gains of a card's two output mixers.
#pragma once

#include <windows.h>

namespace kestvox {

// Dialog procedure of IDD_MONITOR.
INT_PTR CALLBACK MonitorPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kestvox
