#include <windows.h>

#include "simulator/attach.h"
#include "tools/machine/host.h"

namespace kestvox {
namespace {

// The multimedia front with the simulated cards has a call that the system's own has not.
using UnloadDriver = void(WINAPI*)();
UnloadDriver FindUnloadDriver() {
    const HMODULE front = GetModuleHandleW(TEXT("winmm.dll"));
    return front ? reinterpret_cast<UnloadDriver>(
                       reinterpret_cast<void*>(GetProcAddress(front, "KestvoxUnloadDriver")))
                 : nullptr;
}

}  // namespace

bool JoinMachine(const std::string& name) {
    return simulator::UseMachine(name);
}

// The registry is the computer's.
bool MachineOutlivesProcess() {
    return true;
}

bool CardsAreSimulated() {
    return FindUnloadDriver() != nullptr;
}

// Without the simulated cards the driver stays until the process ends.
void UnloadWaveDriver() {
    if (const UnloadDriver unload = FindUnloadDriver()) {
        unload();
    }
}

bool HostShowsWindows() {
    return true;
}

bool StandardErrorIsTerminal() {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

}  // namespace kestvox
