#include "tests/support/registry.h"

#include "tests/support/text.h"

RegistryValue NumberValue(DWORD number) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(&number);
    return {.Type = REG_DWORD, .Bytes = {bytes, bytes + sizeof number}};
}

RegistryValue TextValue(DWORD type, const std::u16string& text) {
    return RegistryValue::Text(type, Wide(text));
}

std::optional<RegistryValue> ReadRegistry(const std::u16string& key, const std::u16string& name) {
    return kestvox::ReadRegistryValue(Wide(key), Wide(name));
}

bool RegistryKeyExists(const std::u16string& key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(key), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        return false;
    }
    RegCloseKey(opened);
    return true;
}
