// The sheet's row of tabs.
#pragma once

#include <windows.h>

namespace kestvox {

// Shows all tabs in one row with arrows instead of stacking them in rows, and makes the sheet as small as
// that leaves it. At WM_INITDIALOG of the sheet's first page: does nothing while another tab is current.
void UseSingleTabRow(HWND page);

}  // namespace kestvox
