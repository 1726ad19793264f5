// The resources of a module: a compiled resource file that the build puts into the module's section
// ".rsrc".
#pragma once

#include <windows.h>

#include <vector>

namespace platform {

struct Resource {
    const BYTE* Data = nullptr;  // lives as long as the module
    DWORD Size = 0;
};

// The number in a type or name that is one.
inline WORD ResourceNumber(LPCWSTR name) {
    return LOWORD(reinterpret_cast<ULONG_PTR>(name));
}

// Type and name are texts, or numbers made with MAKEINTRESOURCEW; texts compare without regard to
// case. False, and the last error says why, when the handle or the resource does not exist. A module
// handle of null is the program itself. Any thread.
bool FindModuleResource(HMODULE module, LPCWSTR type, LPCWSTR name, Resource* resource);

// The same in a compiled resource file that lies in memory.
bool FindResourceIn(const std::vector<BYTE>& file, LPCWSTR type, LPCWSTR name, Resource* resource);

}  // namespace platform
