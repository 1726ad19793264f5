// A loaded module's import table.
#pragma once

#include <windows.h>

#include <span>

namespace simulator::windows {

struct Redirection {
    const char* Function;  // by name, of whichever library
    void* Replacement;
};

// Makes the module's imports of these functions lead to their replacements. What it asks GetProcAddress for
// is not redirected.
void RedirectImports(HMODULE module, std::span<const Redirection> redirections);

}  // namespace simulator::windows
