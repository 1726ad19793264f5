// Windows only: puts the simulator between a library and the system. The library's file is not changed. When
// it is attached, its imports of the device calls, of the timer and of what goes with them lead here, and
// everything else in it is as on a computer with cards.
//
// While no Simulator exists, the redirected calls do what the system's do. They lead into this library, which
// must therefore stay loaded longer than any library that is attached.
#pragma once

#include <windows.h>

#include <string>

namespace simulator {

// LoadLibraryW, with the library attached before its entry point runs (and looks for cards). FreeLibrary
// gives it back. Null, and the reason in GetLastError, when it does not load.
HMODULE LoadAttached(const WCHAR* path);

// Attaches a module that is loaded already; it may be a program. It stays attached until the process ends.
// Calls that it made before went to the system.
void Attach(HMODULE module);

// What timeGetTime answers in attached modules: the time of the process's Simulator when that steps, else the
// system's, in milliseconds, wrapping at 2^32.
DWORD TimerMilliseconds();

// Whether the process has a Simulator.
bool HasSimulator();

// Chooses the machine of the Simulators made from now on. All processes that give the same name share its
// cards; with an empty name the cards are this process's alone. A name has at most 64 letters, digits, '-'
// and '_'. Until the first call the environment variable KESTVOX_MACHINE has the name. A machine lasts as
// long as a process is on it. No Simulator may exist. False, and no change, when the name is bad.
//
// Registry, event log, the driver's mutexes and its shared data are the computer's whatever the machine:
// programs that run at the same time should be on the same one.
bool UseMachine(const std::string& name);
const std::string& MachineName();

// Makes the n-th call from now on (1: the next) of the named function by an attached module fail, in the way
// in which that function fails. windows/redirected_calls.cpp lists the functions. False when it lists none of
// that name.
bool FailCall(const char* function, unsigned nth);
bool CallFailuresAreWaiting();  // at least one has not had its call yet
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

// Modules attached from now on call `replacement` in place of that function of the system, so that a test
// sees what they ask of the user or write to the event log. It must have the function's signature. A failure
// that FailCall has set comes first.
void RedirectCall(const char* function, void* replacement);

}  // namespace simulator
