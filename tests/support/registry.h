// What is stored in the registry below HKEY_LOCAL_MACHINE, by UTF-16 texts of the library.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "tests/support/text.h"
#include "tools/system/registry_value.h"

using kestvox::RegistryValue;

inline RegistryValue NumberValue(DWORD number) {  // REG_DWORD
    const auto* bytes = reinterpret_cast<const uint8_t*>(&number);
    return {.Type = REG_DWORD, .Bytes = {bytes, bytes + sizeof number}};
}

inline RegistryValue TextValue(DWORD type, const std::u16string& text) {  // terminator included
    return RegistryValue::Text(type, Wide(text));
}

// Nothing when the key or the value is missing.
inline std::optional<RegistryValue> ReadRegistry(const std::u16string& key, const std::u16string& name) {
    return kestvox::ReadRegistryValue(Wide(key), Wide(name));
}

inline bool RegistryKeyExists(const std::u16string& key) {
    HKEY opened = nullptr;
    const LONG result = RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(key), 0, KEY_READ, &opened);
    RegCloseKey(opened);
    return result == ERROR_SUCCESS;
}
