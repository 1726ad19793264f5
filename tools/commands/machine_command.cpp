#include <cstdio>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/machine/named_machines.h"

namespace kestvox {
namespace {

constexpr uint64_t Kilobyte = 1024;

void PrintMachine(const NamedMachine& machine) {
    std::printf("machine: %s\n", machine.Name.c_str());
    std::printf("kilobytes: %llu\n",
                static_cast<unsigned long long>((machine.Bytes + Kilobyte - 1) / Kilobyte));
    for (const MachineUser& user : machine.Users) {
        std::printf("process: %u %s\n", user.Process, user.Program.c_str());
    }
}

void ShowMachine(const std::string& name) {
    for (const NamedMachine& machine : ListNamedMachines()) {
        if (machine.Name == name) {
            PrintMachine(machine);
            for (const std::string& region : machine.Regions) {
                std::printf("region: %s\n", region.c_str());
            }
            return;
        }
    }
    throw CommandError("there is no machine '" + name + "'");
}

}  // namespace

int ManageMachines(const std::string& action, const std::string& name) {
    if ((action == "list") != name.empty()) {
        throw CommandError("machine " + action + (name.empty() ? ": which one?" : ": takes no name"));
    }
    if (action == "list") {
        for (const NamedMachine& machine : ListNamedMachines()) {
            PrintMachine(machine);
        }
    } else if (action == "show") {
        ShowMachine(name);
    } else {
        RemoveNamedMachine(name);
    }
    return ExitSuccess;
}

}  // namespace kestvox
