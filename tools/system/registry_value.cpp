#include "tools/system/registry_value.h"

#include <cstring>

namespace kestvox {
namespace {

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

RegistryValue RegistryValue::Text(DWORD type, const WideText& text) {
    RegistryValue value{.Type = type, .Bytes = std::vector<uint8_t>((text.size() + 1) * sizeof(WCHAR))};
    std::memcpy(value.Bytes.data(), text.c_str(), value.Bytes.size());
    return value;
}

WideText TextOf(const RegistryValue& value) {
    WideText text(value.Bytes.size() / sizeof(WCHAR), 0);
    std::memcpy(text.data(), value.Bytes.data(), text.size() * sizeof(WCHAR));
    return text.substr(0, text.find(WCHAR{0}));
}

std::optional<RegistryValue> ReadRegistryValue(const WideText& key, const WideText& name) {
    HKEY opened;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const OpenKey open(opened);
    RegistryValue value;
    DWORD size = 0;
    if (RegQueryValueExW(open, name.c_str(), nullptr, &value.Type, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.Bytes.resize(size);
    if (RegQueryValueExW(open, name.c_str(), nullptr, &value.Type, value.Bytes.data(), &size) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.Bytes.resize(size);
    return value;
}

LONG WriteRegistryValue(const WideText& key, const WideText& name, const RegistryValue& value) {
    HKEY opened;
    const LONG result = RegCreateKeyW(HKEY_LOCAL_MACHINE, key.c_str(), &opened);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    const OpenKey open(opened);
    return RegSetValueExW(open, name.c_str(), 0, value.Type, value.Bytes.data(),
                          static_cast<DWORD>(value.Bytes.size()));
}

LONG DeleteRegistryValue(const WideText& key, const WideText& name) {
    HKEY opened;
    const LONG result = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_SET_VALUE, &opened);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    const OpenKey open(opened);
    return RegDeleteValueW(open, name.c_str());
}

}  // namespace kestvox
