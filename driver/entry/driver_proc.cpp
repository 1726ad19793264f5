#include <windows.h>
#include <mmsystem.h>
#include <commctrl.h>
#include <mmddk.h>

#include "card/card_handle.h"
#include "card/card_table.h"
#include "card/init_card.h"
#include "config_ui/configuration_sheet.h"
#include "entry/installation.h"
#include "entry/module.h"
#include "stream/stream_list.h"

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

// Whatever the cards were told is lost with the power. A card that cannot be opened is skipped.
void InitializeEnabledCards() {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (card->EnableCount <= 0) {
            continue;
        }
        BorrowedHandle handle(*card);
        if (handle) {
            InitCard(handle.Get(), *card);
            // The card is back at its initial clock: the first stream that is prepared has to program it.
            card->GroupRate = 0;
        }
    }
}

LRESULT OnPower(LPARAM event) {
    switch (event) {
    case PWR_SUSPENDREQUEST:
        SuspendStreams();
        break;
    case PWR_SUSPENDRESUME:
    case PWR_CRITICALRESUME:
        InitializeEnabledCards();
        ResumeStreams();
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
