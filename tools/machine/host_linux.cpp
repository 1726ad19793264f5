#include <unistd.h>

#include "front/unload_driver.h"
#include "platform/machine.h"
#include "tools/machine/host.h"

namespace kestvox {

bool JoinMachine(const std::string& name) {
    return platform::UseMachine(name);
}

bool MachineOutlivesProcess() {
    return !platform::MachineName().empty();
}

bool CardsAreSimulated() {
    return true;
}

void UnloadWaveDriver() {
    front::UnloadWaveDriver();
}

bool StandardErrorIsTerminal() {
    return isatty(STDERR_FILENO) == 1;
}

bool HostShowsWindows() {
    return false;
}

}  // namespace kestvox
