// The ASIO + EASI page: the buffer sizes of the two low-latency interfaces, which are separate programs.
// Nothing else in this library uses them.
#pragma once

#include <windows.h>

namespace kestvox {

// Dialog procedure of IDD_BUFFER_SIZES.
INT_PTR CALLBACK AsioEasiPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace kestvox
