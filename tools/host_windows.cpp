#include <windows.h>

#include "simulator/attach.h"
#include "tools/host.h"

namespace kestvox {

bool JoinMachine(const std::string& name) {
    return simulator::UseMachine(name);
}

// The registry is the computer's.
bool MachineOutlivesProcess() {
    return true;
}

// The multimedia front with the simulated cards has a call for it. The system's own has not: there the
// driver stays until the process ends.
void UnloadWaveDriver() {
    using UnloadDriver = void(WINAPI*)();
    const HMODULE front = GetModuleHandleW(TEXT("winmm.dll"));
    const auto unload = front ? reinterpret_cast<UnloadDriver>(
                                    reinterpret_cast<void*>(GetProcAddress(front, "KestvoxUnloadDriver")))
                              : nullptr;
    if (unload) {
        unload();
    }
}

bool StandardErrorIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

}  // namespace kestvox
