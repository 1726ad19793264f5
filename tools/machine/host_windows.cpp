#include <windows.h>

#include <algorithm>

#include "simulator/attach.h"
#include "tools/command_error.h"
#include "tools/machine/host.h"
#include "tools/machine/named_machines.h"

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

bool DeleteMachine(const std::string&) {
    return false;
}

std::vector<NamedMachine> ListNamedMachines() {
    throw CommandError(
        "on this system a machine ends with the last process on it, and there is nothing to manage");
}

bool MachineIsShared() {
    return !simulator::MachineName().empty();
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

// The systems that the command is for have consoles without them.
bool TerminalShowsColours() {
    return false;
}

bool HostShowsWindows() {
    return true;
}

unsigned TerminalWidth() {
    CONSOLE_SCREEN_BUFFER_INFO screen{};
    return GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &screen)
               ? static_cast<unsigned>(std::max<SHORT>(screen.dwSize.X, 1))
               : 0;
}

}  // namespace kestvox
