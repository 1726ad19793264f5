// What is stored in the registry below HKEY_LOCAL_MACHINE, by UTF-16 texts of the library.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "tools/system/registry_value.h"

using kestvox::RegistryValue;

RegistryValue NumberValue(DWORD number);                          // REG_DWORD
RegistryValue TextValue(DWORD type, const std::u16string& text);  // terminator included

// Nothing when the key or the value is missing.
std::optional<RegistryValue> ReadRegistry(const std::u16string& key, const std::u16string& name);

bool RegistryKeyExists(const std::u16string& key);
