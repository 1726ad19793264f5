#include "tests/support/registry_value.h"

#include "tests/support/text.h"

namespace {

class ReadableKey {
public:
    explicit ReadableKey(const std::u16string& path) {
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(path), 0, KEY_READ, &key_) != ERROR_SUCCESS) {
            key_ = nullptr;
        }
    }
    ~ReadableKey() {
        if (key_ != nullptr) {
            RegCloseKey(key_);
        }
    }
    ReadableKey(const ReadableKey&) = delete;
    ReadableKey& operator=(const ReadableKey&) = delete;

    HKEY Get() const { return key_; }

private:
    HKEY key_ = nullptr;
};

}  // namespace

RegistryValue RegistryValue::Number(DWORD number) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&number);
    return {REG_DWORD, {bytes, bytes + sizeof number}};
}

RegistryValue RegistryValue::Text(DWORD type, const std::u16string& text) {
    const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return {type, {bytes, bytes + (text.size() + 1) * sizeof(char16_t)}};
}

std::optional<RegistryValue> ReadRegistry(const std::u16string& key, const std::u16string& name) {
    const ReadableKey open(key);
    DWORD size = 0;
    RegistryValue value = {};
    if (open.Get() == nullptr ||
        RegQueryValueExW(open.Get(), Wide(name), nullptr, &value.Type, nullptr, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    value.Data.resize(size);
    if (RegQueryValueExW(open.Get(), Wide(name), nullptr, nullptr, value.Data.data(), &size) !=
        ERROR_SUCCESS) {
        return std::nullopt;
    }
    return value;
}

bool RegistryKeyExists(const std::u16string& key) {
    return ReadableKey(key).Get() != nullptr;
}
