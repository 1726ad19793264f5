// The named machines of this user's: what is kept of them on the computer, and who is on them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestvox {

struct MachineUser {
    unsigned Process;
    std::string Program;
};

struct NamedMachine {
    std::string Name;
    uint64_t Bytes = 0;
    std::vector<std::string> Regions;  // what processes share there: registry, event log, cards, ...
    std::vector<MachineUser> Users;
};

// By their names. CommandError where machines do not outlive their processes.
std::vector<NamedMachine> ListNamedMachines();

// CommandError when there is none of that name, or a process is on it.
void RemoveNamedMachine(const std::string& name);

}  // namespace kestvox
