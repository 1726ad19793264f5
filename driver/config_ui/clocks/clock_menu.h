// The context menu of the clock tree.
#pragma once

#include <windows.h>

namespace kestvox {

// What its commands are numbered. A clock source's command is its ClockSourceCode.
enum ClockCommand : WORD {
    ResetDriverCommand = 65531,
    StopBeingSlaveCommand = 65532,
    StopBeingMasterCommand = 65533,
    BecomeMasterCommand = 65534,
    CancelCommand = 65535,
};

// Shows the menu of the item at a point of the screen, which it selects, or with Shift held down that of the
// empty space. The command comes to the page as WM_COMMAND. The result is TrackPopupMenu's; FALSE without
// a menu.
BOOL ShowClockMenu(HWND page, int x, int y);

// The same at the selected item, if there is one.
BOOL ShowMenuOfSelectedItem(HWND page);

}  // namespace kestvox
