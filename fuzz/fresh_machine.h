// A machine of its own with simulated cards for one input, and proof at its end that everything was given
// back. A finding ends the program.
#pragma once

#include <optional>

#include "platform/inspect.h"
#include "simulator/simulator.h"

// Ends the program, with the text, unless `holds`.
void Require(bool holds, const char* text);

class FreshMachine {
public:
    explicit FreshMachine(unsigned cards = 1);
    ~FreshMachine();
    FreshMachine(const FreshMachine&) = delete;
    FreshMachine& operator=(const FreshMachine&) = delete;

    simulator::Simulator& Cards() { return *simulator_; }

private:
    platform::Usage usage_;
    std::optional<simulator::Simulator> simulator_;
};
