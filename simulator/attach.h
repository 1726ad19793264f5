// Windows only: puts the simulator between a library and the system, without a change to its file. The
// library's imports of the device calls, of the timer and of what goes with them lead here; the loaded
// library is otherwise what it is on a card.
//
// While no Simulator exists the redirected calls do what the system's do. They are answered by this library,
// which therefore must stay loaded longer than what is attached to it.
#pragma once

#include <windows.h>

#include <string>

namespace simulator {

// LoadLibraryW, with the library attached before its entry point runs (and looks for cards). FreeLibrary
// gives it back. Null, and the reason in GetLastError, when it does not load.
HMODULE LoadAttached(const WCHAR* path);

// Attaches a module that is loaded already, a program among them; for good. What it has done before went
// to the system.
void Attach(HMODULE module);

// What timeGetTime answers in attached modules: the time of the process's Simulator when that steps, else the
// system's, in milliseconds, wrapping at 2^32.
DWORD TimerMilliseconds();

// Whether the process has a Simulator.
bool HasSimulator();

// Which cards a Simulator made from now on is on: those of all processes that gave the same name (letters,
// digits, '-', '_'; at most 64), or for an empty one cards of this process alone. At first the environment
// variable KESTVOX_MACHINE tells. A machine lasts as long as a process is on it. No Simulator may exist.
// False, and no change, when the name is bad.
//
// Registry, event log, the driver's mutexes and its shared data are the computer's whatever the machine:
// programs that run at the same time should be on the same one.
bool UseMachine(const std::string& name);
const std::string& MachineName();

// Makes the n-th coming call (1 = the next) of the named function by an attached module fail, as that
// function fails: one that driver code calls and that can (windows/redirected_calls.cpp lists them). False
// when there is none of that name.
bool FailCall(const char* function, unsigned nth);
bool CallFailuresAreWaiting();  // for a call that has not come yet
void ClearCallFailures();

// What attached modules have taken of the system and not given back. Equal before and after a piece of work
// that leaked nothing.
struct Holdings {
    size_t Handles;  // files, devices, events, mutexes and threads
    size_t RegistryKeys;
    size_t EventSources;
    size_t GlobalBlocks;
    size_t HeapBlocks;
    size_t UserObjects;  // menus, bitmaps and image lists
};
Holdings CurrentHoldings();

// Modules attached from now on call `replacement` for that function of the system, which must have its
// signature: to see what they ask of the user or of the event log. A failure from FailCall goes before it.
void RedirectCall(const char* function, void* replacement);

}  // namespace simulator
