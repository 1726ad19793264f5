// The dialog procedures of the sheet's five pages.
#pragma once

#include <windows.h>

namespace kestvox {

// IDD_CONFIGURATION: a card's name and its general options.
INT_PTR CALLBACK ConfigurationPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

// IDD_MONITOR: the eight gains of a card's two output mixers.
INT_PTR CALLBACK MonitorPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

// IDD_VERSION: a card's revisions and its serial number. It changes nothing.
INT_PTR CALLBACK VersionPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

// IDD_CLOCKS: the clock source of every card, and which cards follow which.
INT_PTR CALLBACK ClocksPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

// IDD_BUFFER_SIZES: the buffer sizes of the ASIO and EASI interfaces. Those are separate programs; nothing
// else in this library uses the sizes.
INT_PTR CALLBACK AsioEasiPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kestvox
