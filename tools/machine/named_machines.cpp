#include "tools/machine/named_machines.h"

#include <algorithm>

#include "tools/command_error.h"
#include "tools/machine/host.h"

namespace kestvox {

void RemoveNamedMachine(const std::string& name) {
    const std::vector<NamedMachine> machines = ListNamedMachines();
    const auto machine = std::ranges::find(machines, name, &NamedMachine::Name);
    if (machine == machines.end()) {
        throw CommandError("there is no machine '" + name + "'");
    }
    if (!machine->Users.empty()) {
        const MachineUser& user = machine->Users.front();
        throw CommandError("machine '" + name + "' is in use by process " + std::to_string(user.Process) +
                           " (" + user.Program + ")");
    }
    if (!DeleteMachine(name)) {
        throw CommandError("machine '" + name + "' cannot be removed");
    }
}

}  // namespace kestvox
