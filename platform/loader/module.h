// The modules of this process: its program and the libraries that it has loaded.
//
// Loading and unloading, with the calls of a module's DllMain, happen one at a time under the loader
// lock, which its holder may take again. Looking a module up needs no loader lock.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/loader/shared_section.h"

namespace platform {

using ModuleEntry = BOOL(WINAPI*)(HINSTANCE, DWORD, LPVOID);

// A handle of a module is its Module's address.
struct Module {
    std::string Path;                       // absolute, links resolved
    void* Library = nullptr;                // as the host's dynamic linker knows it
    uintptr_t Base = 0;                     // where its image begins in memory
    unsigned References = 1;                // loads not yet freed; guarded by the loader lock
    ModuleEntry Entry = nullptr;            // its DllMain, if it has one
    std::unique_ptr<SharedSection> Shared;  // if it has one
    std::vector<BYTE> Resources;            // a compiled resource file; empty when it has none
};

// Null when the handle names no loaded module; a null handle is the program.
std::shared_ptr<Module> FindModule(HMODULE handle);

// Takes the loader lock and gives it back. Every thread does so before and after its routine. As in the
// system, a DllMain that waits for a thread to begin or to end therefore waits for ever.
void PassLoaderLock();

}  // namespace platform
