#include "simulator/machine/machine_state.h"

#include <algorithm>

#include "simulator/card/card_power.h"
#include "simulator/clock/clock_control.h"

namespace simulator {
namespace {

constexpr int64_t FirstVirtualTime = 1000000000;

void ForgetDeadProcesses(MachineState& machine) {
    for (host::Process& process : machine.Processes) {
        if (process.Id != 0 && !host::IsAlive(process)) {
            process = host::Process{};
        }
    }
    for (Tap& tap : machine.Taps) {
        if (tap.Listener.Id != 0 && !host::IsAlive(tap.Listener)) {
            tap.Listener = host::Process{};
            ++machine.TapChanges;
        }
    }
}

void MakeCards(MachineState& machine, unsigned cards) {
    machine.CardCount = std::min(cards, MaxCards);
    for (unsigned card = 0; card < machine.CardCount; ++card) {
        MakeCard(machine.Cards[card], card);
        machine.Cards[card].Clock.AnchorTime = machine.Now();
    }
    ResolveClocks(machine, machine.Now());
}

}  // namespace

MachineState& Machine() {
    return *static_cast<MachineState*>(host::MapMachine(sizeof(MachineState), [](void*) {}));
}

void AttachProcess(unsigned cards, std::optional<TimeKind> time) {
    MachineState& machine = Machine();
    const host::MachineGuard guard;
    ForgetDeadProcesses(machine);
    const bool alone = std::all_of(machine.Processes.begin(), machine.Processes.end(),
                                   [](const host::Process& process) { return process.Id == 0; });
    if (alone) {
        const bool stepped = time ? *time == TimeKind::Stepped : machine.InUse && machine.Stepped;
        const bool keep = cards == 0 && machine.InUse && machine.Stepped == stepped;
        machine.Stepped = stepped;
        if (!keep) {
            machine.VirtualTime = FirstVirtualTime;
            MakeCards(machine, std::max({cards, cards == 0 && machine.InUse ? machine.CardCount : 1u, 1u}));
        }
        machine.InUse = true;
        machine.RequestTime = 0;
        machine.Strict = false;
        machine.Disturbed = false;
    }
    const auto place = std::find_if(machine.Processes.begin(), machine.Processes.end(),
                                    [](const host::Process& process) { return process.Id == 0; });
    if (place != machine.Processes.end()) {
        *place = host::CurrentProcess();
    }
}

void DetachProcess() {
    const host::MachineGuard guard;
    std::replace(Machine().Processes.begin(), Machine().Processes.end(), host::CurrentProcess(),
                 host::Process{});
}

bool OthersAttached() {
    const host::Process self = host::CurrentProcess();
    const auto& processes = Machine().Processes;
    return std::any_of(processes.begin(), processes.end(),
                       [&](const host::Process& process) { return process.Id != 0 && process != self; });
}

}  // namespace simulator
