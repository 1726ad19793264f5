// Values of the registry, below HKEY_LOCAL_MACHINE.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "tools/system/wide_text.h"

namespace kestvox {

struct StoredValue {
    DWORD Type = REG_BINARY;
    std::vector<uint8_t> Bytes;
    bool operator==(const StoredValue&) const = default;
};

// A REG_SZ value, with its terminator.
StoredValue TextValue(const WideText& text);

// The value's bytes as text, up to its terminator.
WideText TextOf(const StoredValue& value);

// Nothing when there is no such value.
std::optional<StoredValue> ReadRegistryValue(const WideText& key, const WideText& name);

// Replaces the value whatever type and size it had; makes the key when it is not there. Results are system
// error codes.
LONG WriteRegistryValue(const WideText& key, const WideText& name, const StoredValue& value);
LONG DeleteRegistryValue(const WideText& key, const WideText& name);

}  // namespace kestvox
