// What the loader reads from a module's file itself, because the host's dynamic linker does not offer
// it: sections by name.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

struct ElfSection {
    uintptr_t Address;  // where it lies in memory, relative to the module's base; 0 when not loaded
    size_t Size;
    std::vector<BYTE> Contents;
};

// None when the file cannot be read, is no 64-bit ELF file of this machine's byte order or has no
// such section.
std::optional<ElfSection> ReadElfSection(const std::string& path, const std::string& name);

}  // namespace platform
