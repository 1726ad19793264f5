#include "tools/settings_store.h"

#include <string>

#include "simulator/simulator.h"
#include "tools/command_error.h"
#include "tools/wide_text.h"

namespace kestvox {
namespace {

WideText ConfigPath(unsigned card) {
    const std::u16string device = simulator::Simulator::RegistryPath(card);
    return WideText(device.begin(), device.end()) + TEXT("\\Config");
}

class OpenKey {
public:
    explicit OpenKey(HKEY key) : key_(key) {}
    ~OpenKey() { RegCloseKey(key_); }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;
    operator HKEY() const { return key_; }

private:
    HKEY key_;
};

}  // namespace

std::optional<StoredValue> ReadStoredSetting(unsigned card, const Setting& setting) {
    HKEY opened;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, ConfigPath(card).c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const OpenKey key(opened);
    const WideText name = Widen(setting.Name);
    StoredValue value;
    DWORD size = 0;
    if (RegQueryValueExW(key, name.c_str(), nullptr, &value.Type, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.Bytes.resize(size);
    if (RegQueryValueExW(key, name.c_str(), nullptr, &value.Type, value.Bytes.data(), &size) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.Bytes.resize(size);
    return value;
}

void WriteStoredSetting(unsigned card, const Setting& setting, const StoredValue& value) {
    HKEY opened;
    LONG result = RegCreateKeyW(HKEY_LOCAL_MACHINE, ConfigPath(card).c_str(), &opened);
    if (result == ERROR_SUCCESS) {
        const OpenKey key(opened);
        const WideText name = Widen(setting.Name);
        RegDeleteValueW(key, name.c_str());
        result = RegSetValueExW(key, name.c_str(), 0, value.Type, value.Bytes.data(),
                                static_cast<DWORD>(value.Bytes.size()));
    }
    if (result != ERROR_SUCCESS) {
        throw CommandError("card " + std::to_string(card) + ": " + setting.Name +
                           " cannot be stored: registry error " + std::to_string(result));
    }
}

}  // namespace kestvox
