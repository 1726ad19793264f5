// A loaded module's import table.
#pragma once

#include <windows.h>

#include <span>

namespace simulator::windows {

struct Redirection {
    const char* Function;  // its name, whichever library it is imported from
    void* Replacement;
};

// Makes the module's imports of these functions lead to their replacements. A function that the module looks
// up with GetProcAddress is not redirected.
void RedirectImports(HMODULE module, std::span<const Redirection> redirections);

}  // namespace simulator::windows
