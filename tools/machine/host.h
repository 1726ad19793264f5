// What differs between the systems that the command runs on.
#pragma once

#include <cstdint>
#include <string>

namespace kestvox {

// Joins the machine of that name, which other processes share. False when the name is bad.
bool JoinMachine(const std::string& name);

// Whether what this process stores outlives it.
bool MachineOutlivesProcess();

// Deletes what is kept of a named machine.
bool DeleteMachine(const std::string& name);

// Whether other programs may be on the machine, and move its time.
bool MachineIsShared();

// Whether the wave calls of this process lead to simulated cards, and not to those of the computer.
bool CardsAreSimulated();

// Closes every wave device of the process and unloads the driver; the next wave call loads it again.
void UnloadWaveDriver();

// Columns of the terminal that standard error goes to; 0: it is none.
unsigned TerminalWidth();
bool TerminalShowsColours();  // ... and can show them

// Whether windows can be seen here.
bool HostShowsWindows();

}  // namespace kestvox
