#include "tests/processes/companion.h"

#include "tests/support/system.h"
#include "tools/machine/host.h"

SharedMachine::SharedMachine() : name_("programs-" + std::to_string(GetCurrentProcessId())) {
    Renew();
}

SharedMachine::~SharedMachine() {
    test_system::FreshMachine();
    Remove();
}

void SharedMachine::Renew() {
    test_system::FreshMachine();
    Remove();
    kestvox::JoinMachine(name_);
}

Program::Program(unsigned cards)
    : Cards({.Cards = cards, .Time = simulator::TimeKind::Stepped, .Strict = true}) {
    Cards.KeepAudio();
    Cards.KeepTrace();
}

Program::~Program() {
    kestvox::UnloadWaveDriver();
}
