#include "tools/settings/settings_store.h"

#include <string>

#include "simulator/simulator.h"
#include "tools/command_error.h"

namespace kestvox {
namespace {

WideText ConfigPath(unsigned card) {
    const std::u16string device = simulator::Simulator::RegistryPath(card);
    return WideText(device.begin(), device.end()) + TEXT("\\Config");
}

}  // namespace

std::optional<RegistryValue> ReadStoredSetting(unsigned card, const Setting& setting) {
    return ReadRegistryValue(ConfigPath(card), Widen(setting.Name));
}

void WriteStoredSetting(unsigned card, const Setting& setting, const RegistryValue& value) {
    const LONG result = WriteRegistryValue(ConfigPath(card), Widen(setting.Name), value);
    if (result != ERROR_SUCCESS) {
        throw CommandError("card " + std::to_string(card) + ": " + setting.Name +
                           " cannot be stored: registry error " + std::to_string(result));
    }
}

}  // namespace kestvox
