#include "config_ui/configuration_sheet.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

namespace kestvox {

// The library has no pages yet, and a sheet without pages is not shown.
LONG ShowConfigurationSheet(HWND, HINSTANCE, const void*) {
    return DRVCNF_CANCEL;
}

}  // namespace kestvox
