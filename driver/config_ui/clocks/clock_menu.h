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

// Shows the menu of the item at a point of the screen, and selects the item; at an empty place, while Shift
// is held down, the menu that resets the driver. The command comes to the page as WM_COMMAND. The result is
// TrackPopupMenu's; FALSE without a menu: the root has none.
BOOL ShowClockMenu(HWND page, POINT place);

// Shows the menu of the selected item beside it. FALSE also when no item is selected.
BOOL ShowMenuOfSelectedItem(HWND page);

}  // namespace kestvox
