#include "simulator/windows/import_table.h"

#include <cstring>

namespace simulator::windows {
namespace {

template <typename T>
T* At(HMODULE module, DWORD address) {
    return reinterpret_cast<T*>(reinterpret_cast<BYTE*>(module) + address);
}

void Store(void** place, void* value) {
    DWORD protection = 0;
    if (VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection)) {
        *place = value;
        VirtualProtect(place, sizeof *place, protection, &protection);
    }
}

void RedirectLibrary(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& library,
                     std::span<const Redirection> redirections) {
    const auto* name = At<IMAGE_THUNK_DATA>(module, library.OriginalFirstThunk);
    void** address = At<void*>(module, library.FirstThunk);
    for (; name->u1.AddressOfData != 0; ++name, ++address) {
        if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
            continue;
        }
        const auto* import = At<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData);
        for (const Redirection& redirection : redirections) {
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), redirection.Function) == 0) {
                Store(address, redirection.Replacement);
            }
        }
    }
}

}  // namespace

void RedirectImports(HMODULE module, std::span<const Redirection> redirections) {
    const auto* dos = At<IMAGE_DOS_HEADER>(module, 0);
    const auto* headers = At<IMAGE_NT_HEADERS>(module, static_cast<DWORD>(dos->e_lfanew));
    const IMAGE_DATA_DIRECTORY& imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (imports.Size == 0) {
        return;
    }
    const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports.VirtualAddress);
    for (; library->Name != 0; ++library) {
        // Without the list of names, only addresses are left of it.
        if (library->OriginalFirstThunk != 0) {
            RedirectLibrary(module, *library, redirections);
        }
    }
}

}  // namespace simulator::windows
