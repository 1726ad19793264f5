// What is stored in the registry below HKEY_LOCAL_MACHINE.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

struct RegistryValue {
    DWORD Type;
    std::vector<BYTE> Data;

    static RegistryValue Number(DWORD number);                          // REG_DWORD
    static RegistryValue Text(DWORD type, const std::u16string& text);  // terminator included
    bool operator==(const RegistryValue&) const = default;
};

// Nothing when the key or the value is missing.
std::optional<RegistryValue> ReadRegistry(const std::u16string& key, const std::u16string& name);

bool RegistryKeyExists(const std::u16string& key);
