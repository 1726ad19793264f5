// The stored settings of a card: what there is, how each is written on the command line, what its
// codes mean, and the bytes that the registry holds for it. One table serves all of it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tools/system/registry_value.h"

namespace kestvox {

enum class SettingKind {
    Name,   // REG_SZ
    Card,   // REG_SZ: the device key of a card, or empty
    Code,   // REG_BINARY, 4 bytes
    Mixer,  // REG_BINARY, 68 bytes: own size, eight slider positions, eight gains
};

// A value that a setting can have, with what it means.
struct SettingCode {
    uint32_t Value;
    const char* Meaning;
};

struct Setting {
    const char* Name;  // also the registry value's
    SettingKind Kind;
    const char* Default;  // as it is written on the command line
    const char* Purpose;
    std::span<const SettingCode> Codes;  // of a Code: all that can be chosen
};

std::span<const Setting> AllSettings();

// By its name, in any case. CommandError when there is none, naming those there are.
const Setting& FindSetting(std::string_view name);

// Reads a value as written on the command line. CommandError when the setting cannot have it.
RegistryValue ParseSetting(const Setting& setting, std::string_view text);

// The value with its meaning. Nothing when the driver would not read it and take the default: another
// type, too many bytes, a mixer block that does not begin with its size.
std::optional<std::string> ShowSetting(const Setting& setting, const RegistryValue& value);

}  // namespace kestvox
