#include <windows.h>
#include <mmddk.h>

#include <unistd.h>

#include "platform/inspect.h"
#include "platform/machine.h"
#include "tools/command_error.h"
#include "tools/host.h"

namespace kestvox {

bool JoinMachine(const std::string& name) {
    return platform::UseMachine(name);
}

bool MachineOutlivesProcess() {
    return !platform::MachineName().empty();
}

void UnloadWaveDriver() {
    platform::UnloadWaveDriver();
}

void SendPowerEvent(PowerEvent event) {
    const HMODULE driver = LoadLibraryW(TEXT("kestvox.dll"));
    const auto driverProc =
        driver ? reinterpret_cast<DRIVERPROC>(reinterpret_cast<void*>(GetProcAddress(driver, "DriverProc")))
               : nullptr;
    if (!driverProc) {
        throw CommandError("the driver takes no power events");
    }
    driverProc(0, nullptr, DRV_POWER, event == PowerEvent::Suspend ? PWR_SUSPENDREQUEST : PWR_SUSPENDRESUME,
               0);
    FreeLibrary(driver);
}

bool StandardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

bool HostShowsWindows() {
    return false;
}

}  // namespace kestvox
