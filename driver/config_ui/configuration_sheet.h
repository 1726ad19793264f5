// The card's configuration user interface.
#pragma once

#include <windows.h>

namespace kestvox {

// Shows the configuration sheet and returns when the user has closed it: DRVCNF_CANCEL when there is
// nothing to show, DRVCNF_OK, or DRVCNF_RESTART.
LONG ShowConfigurationSheet(HWND owner, HINSTANCE instance, const void* configurationInfo);

}  // namespace kestvox
