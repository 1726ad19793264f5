// Values of the registry, below HKEY_LOCAL_MACHINE.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/system/wide_text.h"

namespace kestvox {

struct RegistryValue {
    DWORD Type = REG_BINARY;
    std::vector<uint8_t> Bytes;

    // Of REG_SZ or REG_EXPAND_SZ, with its terminator.
    static RegistryValue Text(DWORD type, const WideText& text);
    bool operator==(const RegistryValue&) const = default;
};

// The value's bytes as text, up to its terminator.
WideText TextOf(const RegistryValue& value);

// Nothing when the key or the value is missing.
std::optional<RegistryValue> ReadRegistryValue(const WideText& key, const WideText& name);

// Replaces the value whatever type and size it had; makes the key when it is not there. Results are system
// error codes.
LONG WriteRegistryValue(const WideText& key, const WideText& name, const RegistryValue& value);
LONG DeleteRegistryValue(const WideText& key, const WideText& name);

}  // namespace kestvox
