// A card's settings in the registry, where the driver reads them when it finds the card.
#pragma once

#include <optional>

#include "tools/settings/settings_table.h"

namespace kestvox {

// Nothing when the card has no such value stored.
std::optional<RegistryValue> ReadStoredSetting(unsigned card, const Setting& setting);

// Replaces the value whatever type and size it had. CommandError when the registry refuses.
void WriteStoredSetting(unsigned card, const Setting& setting, const RegistryValue& value);

}  // namespace kestvox
