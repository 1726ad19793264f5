// A machine for tests with more than one process.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "platform/machine.h"

namespace services_test {

// A machine with a name of this process's own, for as long as the object lives.
class NamedMachine {
public:
    NamedMachine() : name_("services-" + std::to_string(getpid())) {
        platform::RemoveMachine(name_);
        platform::UseMachine(name_);
    }
    ~NamedMachine() {
        platform::UseMachine("");
        platform::RemoveMachine(name_);
    }
    NamedMachine(const NamedMachine&) = delete;
    NamedMachine& operator=(const NamedMachine&) = delete;

private:
    std::string name_;
};

}  // namespace services_test
