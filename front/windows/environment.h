// What the environment, and the setup file that it names, ask of the simulated cards of a program that does
// not put up cards itself. docs/windows.md tells its users about the variables.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "simulator/connectors/scene_syntax.h"
#include "simulator/simulator.h"

namespace front {

struct PluggedInput {
    std::optional<simulator::Connector> Where;  // nothing: every input of every card
    simulator::InputSignal Signal;
    unsigned FileRate = 0;  // Hz, at which a digital input gets it; 0: the card's
    std::string Source;     // the variable, or the line of the setup file, that says so
};

struct PluggedCable {
    simulator::CableEnds Ends;
    std::string Source;
};

struct Environment {
    std::string Machine;  // the name; empty: the cards are the process's own
    unsigned Cards = 0;   // 0: those that the machine has, one on a new machine
    std::optional<simulator::TimeKind> Time;
    std::vector<PluggedInput> Inputs;
    std::vector<PluggedCable> Cables;
    std::vector<simulator::Fault> Faults;
    std::wstring Capture;             // a file's path with one '*' in its name; empty: none
    std::wstring Trace;               // a file's path; empty: none
    std::wstring Report;              // a file's path, for the page about the run; empty: none
    std::optional<double> SuspendAt;  // seconds of the first stream
};

// False, and one line in `why`, when a value makes no sense.
bool ReadEnvironment(Environment* environment, std::string* why);

}  // namespace front
