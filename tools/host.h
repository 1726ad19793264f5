// What differs between the systems that the command runs on.
#pragma once

#include <string>

namespace kestvox {

// Joins the machine of that name, which other processes share. False when the name is bad.
bool JoinMachine(const std::string& name);

// Whether what this process stores outlives it.
bool MachineOutlivesProcess();

// Closes every wave device of the process and unloads the driver; the next wave call loads it again.
void UnloadWaveDriver();

// Tells the driver of this process that the computer goes to sleep or has woken up, as the system does.
enum class PowerEvent { Suspend, Resume };
void SendPowerEvent(PowerEvent event);

bool StandardErrorIsTerminal();

// Whether windows can be seen here.
bool HostShowsWindows();

}  // namespace kestvox
