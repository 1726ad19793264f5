#include <windows.h>
#include <mmsystem.h>
#include <commctrl.h>
#include <mmddk.h>

#include "config_ui/configuration_sheet.h"
#include "entry/installation.h"
#include "entry/module.h"
#include "entry/power.h"

namespace kestvox {

namespace {

constexpr LRESULT Done = 1;

LRESULT OnConfigure(LPARAM owner, LPARAM info) {
    if (InstallingFlag) {
        return DRVCNF_RESTART;
    }
    return ShowConfigurationSheet(reinterpret_cast<HWND>(owner), ModuleHandle,
                                  reinterpret_cast<const void*>(info));
}

// The kernel driver comes and goes with a system start, however the registration went.
LRESULT OnInstall() {
    InstallingFlag = true;
    InstallDriver();
    return DRVCNF_RESTART;
}

LRESULT OnRemove() {
    RemoveDriver();
    return DRVCNF_RESTART;
}

LRESULT OnPower(LPARAM event) {
    switch (event) {
    case PWR_SUSPENDREQUEST:
        SuspendDriver();
        break;
    case PWR_SUSPENDRESUME:
        ResumeDriver(Wake::Normal);
        break;
    case PWR_CRITICALRESUME:
        ResumeDriver(Wake::Critical);
        break;
    default:
        break;
    }
    return Done;
}

}  // namespace

}  // namespace kestvox

extern "C" LRESULT WINAPI DriverProc(DWORD_PTR id, HDRVR driver, UINT message, LPARAM param1, LPARAM param2) {
    using namespace kestvox;
    switch (message) {
    case DRV_LOAD:
        UseAgain();
        return Done;
    case DRV_ENABLE:
    case DRV_CLOSE:
    case DRV_DISABLE:
    case DRV_QUERYCONFIGURE:
        return Done;
    case DRV_OPEN:
        InitCommonControls();
        return Done;
    case DRV_FREE:
        ReleaseProcess();
        return Done;
    case DRV_CONFIGURE:
        return OnConfigure(param1, param2);
    case DRV_INSTALL:
        return OnInstall();
    case DRV_REMOVE:
        return OnRemove();
    case DRV_POWER:
        return OnPower(param1);
    default:
        return DefDriverProc(id, driver, message, param1, param2);
    }
}

extern "C" DWORD WINAPI Configure() {
    using namespace kestvox;
    return static_cast<DWORD>(ShowConfigurationSheet(nullptr, ModuleHandle, nullptr));
}
