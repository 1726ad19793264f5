// The registry calls: key handles with their access rights, and the machine's store behind them.
#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/kernel/call_failure.h"
#include "platform/kernel/handles.h"
#include "platform/registry/registry_store.h"

namespace platform {

namespace {

constexpr MachineRegion<RegistryStore> StoreRegion("registry");

class RegistryKey : public KernelObject {
public:
    static constexpr HandleKind ObjectKind = HandleKind::RegistryKey;

    RegistryKey(KeyReference reference, REGSAM access)
        : KernelObject(ObjectKind), Reference(reference), Access(access) {}

    const KeyReference Reference;
    const REGSAM Access;
};

// A key as a call finds it behind its handle.
struct OpenKey {
    KeyReference Reference;
    REGSAM Access;

    bool Allows(REGSAM rights) const { return (Access & rights) == rights; }
};

bool IsPredefined(HKEY key) {
    const auto value = reinterpret_cast<ULONG_PTR>(key);
    const auto first = reinterpret_cast<ULONG_PTR>(HKEY_CLASSES_ROOT);
    return value >= first && value < first + RegistryStore::RootCount;
}

std::optional<OpenKey> FindKey(HKEY handle) {
    if (IsPredefined(handle)) {
        const auto root = static_cast<uint32_t>(reinterpret_cast<ULONG_PTR>(handle) & 0xF);
        return OpenKey{{root, 0}, KEY_ALL_ACCESS};
    }
    const std::shared_ptr<RegistryKey> key = FindObject<RegistryKey>(handle);
    if (!key) {
        return std::nullopt;
    }
    return OpenKey{key->Reference, key->Access};
}

// ERROR_SUCCESS when the handle is open with these rights.
LONG FindKeyWith(HKEY handle, REGSAM rights, OpenKey* key) {
    const std::optional<OpenKey> found = FindKey(handle);
    if (!found) {
        return ERROR_INVALID_HANDLE;
    }
    *key = *found;
    return key->Allows(rights) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

LONG OpenKeyHandle(KeyReference reference, REGSAM access, HKEY* handle) {
    const HANDLE opened = OpenHandle(std::make_shared<RegistryKey>(reference, access));
    if (!opened) {
        return ERROR_NO_SYSTEM_RESOURCES;
    }
    *handle = static_cast<HKEY>(opened);
    return ERROR_SUCCESS;
}

std::u16string_view View(LPCWSTR text) {
    return text ? std::u16string_view(text) : std::u16string_view();
}

// Looks up the key of that path below an open key, and answers the open key as `parent` and the found one as
// `found`.
LONG OpenBelow(HKEY handle, LPCWSTR subkey, OpenKey* parent, KeyReference* found) {
    const LONG error = FindKeyWith(handle, 0, parent);
    return error == ERROR_SUCCESS ? StoreRegion->Open(parent->Reference, View(subkey), found) : error;
}

}  // namespace

}  // namespace platform

using namespace platform;

LONG WINAPI RegOpenKeyExW(HKEY handle, LPCWSTR subkey, DWORD, REGSAM access, PHKEY result) {
    if (CallFails("RegOpenKeyExW")) {
        return ERROR_ACCESS_DENIED;
    }
    OpenKey key;
    KeyReference opened;
    const LONG error = OpenBelow(handle, subkey, &key, &opened);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    return OpenKeyHandle(opened, access, result);
}

LONG WINAPI RegCreateKeyW(HKEY handle, LPCWSTR subkey, PHKEY result) {
    if (CallFails("RegCreateKeyW")) {
        return ERROR_ACCESS_DENIED;
    }
    OpenKey key;
    KeyReference opened;
    LONG error = OpenBelow(handle, subkey, &key, &opened);
    if (error == ERROR_FILE_NOT_FOUND) {
        if (!key.Allows(KEY_CREATE_SUB_KEY)) {
            return ERROR_ACCESS_DENIED;
        }
        error = StoreRegion->Create(key.Reference, View(subkey), &opened);
    }
    return error == ERROR_SUCCESS ? OpenKeyHandle(opened, KEY_ALL_ACCESS, result) : error;
}

LONG WINAPI RegDeleteKeyW(HKEY handle, LPCWSTR subkey) {
    OpenKey key;
    const LONG error = FindKeyWith(handle, 0, &key);
    return error == ERROR_SUCCESS ? StoreRegion->DeleteKey(key.Reference, subkey) : error;
}

LONG WINAPI RegCloseKey(HKEY handle) {
    const bool closed = IsPredefined(handle) || CloseHandleOfKinds(handle, {HandleKind::RegistryKey});
    return closed ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LONG WINAPI RegQueryValueExW(HKEY handle, LPCWSTR name, LPDWORD, LPDWORD type, LPBYTE data, LPDWORD size) {
    if (CallFails("RegQueryValueExW")) {
        return ERROR_ACCESS_DENIED;
    }
    OpenKey key;
    const LONG error = FindKeyWith(handle, KEY_QUERY_VALUE, &key);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    return StoreRegion->QueryValue(key.Reference, View(name), {type, data, size});
}

LONG WINAPI RegSetValueExW(HKEY handle, LPCWSTR name, DWORD, DWORD type, const BYTE* data, DWORD size) {
    if (CallFails("RegSetValueExW")) {
        return ERROR_ACCESS_DENIED;
    }
    OpenKey key;
    const LONG error = FindKeyWith(handle, KEY_SET_VALUE, &key);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    return StoreRegion->SetValue(key.Reference, View(name), type, data, size);
}

LONG WINAPI RegDeleteValueW(HKEY handle, LPCWSTR name) {
    OpenKey key;
    const LONG error = FindKeyWith(handle, KEY_SET_VALUE, &key);
    return error == ERROR_SUCCESS ? StoreRegion->DeleteValue(key.Reference, View(name)) : error;
}
