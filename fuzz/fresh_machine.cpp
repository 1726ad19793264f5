#include "fuzz/fresh_machine.h"

#include <cstdio>
#include <cstdlib>

#include "front/unload_driver.h"
#include "platform/machine.h"

void Require(bool holds, const char* text) {
    if (!holds) {
        std::fprintf(stderr, "finding: %s\n", text);
        std::abort();
    }
}

FreshMachine::FreshMachine(unsigned cards) {
    platform::UseMachine("");
    platform::ClearMessageBoxes();
    usage_ = platform::CurrentUsage();
    simulator_.emplace(simulator::Simulator::Options{cards, simulator::TimeKind::Stepped});
}

FreshMachine::~FreshMachine() {
    front::UnloadWaveDriver();
    Require(simulator_->OpenFiles() == 0, "a device handle is left open");
    simulator_.reset();
    Require(platform::CurrentUsage() == usage_, "something was taken and not given back");
}
