#include "settings/settings_key.h"

#include "card/heap.h"

namespace kestvox {

namespace {

constexpr REGSAM DeleteAccess = 0x3001F;
constexpr REGSAM WriteAccess = 0x2001F;

}  // namespace

SettingsKey::SettingsKey(HKEY root) : root_(root), path_(nullptr) {}

SettingsKey::~SettingsKey() {
    FreeHeapArray(path_);
}

void SettingsKey::SetPath(const WCHAR* path) {
    FreeHeapArray(path_);
    path_ = NewHeapArray<WCHAR>(static_cast<DWORD>(lstrlenW(path)) + 1);
    if (path_ != nullptr) {
        lstrcpyW(path_, path);
    }
}

BOOL SettingsKey::Open(REGSAM access, HKEY* key) const {
    return path_ != nullptr && RegOpenKeyExW(root_, path_, 0, access, key) == ERROR_SUCCESS;
}

BOOL SettingsKey::Query(const WCHAR* name, DWORD* type, void* data, DWORD* size) const {
    HKEY key = nullptr;
    if (!Open(KEY_READ, &key)) {
        return FALSE;
    }
    const LONG result = RegQueryValueExW(key, name, nullptr, type, static_cast<BYTE*>(data), size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS;
}

BOOL SettingsKey::KeyExists() const {
    HKEY key = nullptr;
    if (!Open(KEY_READ, &key)) {
        return FALSE;
    }
    RegCloseKey(key);
    return TRUE;
}

BOOL SettingsKey::ValueExists(const WCHAR* name) const {
    DWORD type = 0;
    return QueryType(name, &type);
}

BOOL SettingsKey::QuerySize(const WCHAR* name, DWORD* size) const {
    return Query(name, nullptr, nullptr, size);
}

BOOL SettingsKey::QueryType(const WCHAR* name, DWORD* type) const {
    return Query(name, type, nullptr, nullptr);
}

BOOL SettingsKey::QueryString(const WCHAR* name, WCHAR** string) const {
    DWORD size = 0;
    if (!QuerySize(name, &size)) {
        return FALSE;
    }
    // One more character: nothing says that the stored string has its terminator.
    const DWORD characters = (size + 1) / sizeof(WCHAR);
    WCHAR* buffer = NewHeapArray<WCHAR>(characters + 1);
    if (buffer == nullptr) {
        return FALSE;
    }
    DWORD type = 0;
    size = characters * sizeof(WCHAR);
    if (!Query(name, &type, buffer, &size) || type != REG_SZ) {
        FreeHeapArray(buffer);
        return FALSE;
    }
    buffer[size / sizeof(WCHAR)] = 0;
    *string = buffer;
    return TRUE;
}

BOOL SettingsKey::QueryBinary(const WCHAR* name, void* buffer, DWORD maxSize) const {
    DWORD type = 0;
    DWORD size = 0;
    if (buffer == nullptr || !Query(name, &type, nullptr, &size) || type != REG_BINARY || size > maxSize) {
        return FALSE;
    }
    return Query(name, nullptr, buffer, &size);
}

BOOL SettingsKey::DeleteValue(const WCHAR* name) const {
    HKEY key = nullptr;
    if (!Open(DeleteAccess, &key)) {
        return FALSE;
    }
    const LONG result = RegDeleteValueW(key, name);
    RegCloseKey(key);
    return result == ERROR_SUCCESS;
}

BOOL SettingsKey::SetValue(const WCHAR* name, const void* data, DWORD size, DWORD type) const {
    HKEY key = nullptr;
    if (!KeyExists()) {
        if (path_ == nullptr || RegCreateKeyW(root_, path_, &key) != ERROR_SUCCESS) {
            return FALSE;
        }
        RegCloseKey(key);
    } else if (ValueExists(name)) {
        DWORD storedType = 0;
        DWORD storedSize = 0;
        if (!QueryType(name, &storedType) || !QuerySize(name, &storedSize) || storedType != type ||
            storedSize != size) {
            return FALSE;
        }
    }
    if (!Open(WriteAccess, &key)) {
        return FALSE;
    }
    const LONG result = RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS;
}

}  // namespace kestvox
