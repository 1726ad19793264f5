// Resources by handle. A resource's handle is the address of what was found; loading and locking it
// gives the data, which lies in the module.
#include <windows.h>

#include <map>
#include <mutex>

#include "platform/loader/resources.h"

namespace platform {

namespace {

struct FoundResources {
    std::mutex Lock;  // guards the rest
    std::map<const BYTE*, Resource> ByData;
};

FoundResources& Found() {
    static auto* const found = new FoundResources;
    return *found;
}

}  // namespace

}  // namespace platform

using namespace platform;

HRSRC WINAPI FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
    Resource resource;
    if (!FindModuleResource(module, type, name, &resource)) {
        return nullptr;
    }
    const std::lock_guard hold(Found().Lock);
    const auto entry = Found().ByData.insert_or_assign(resource.Data, resource).first;
    return reinterpret_cast<HRSRC>(&entry->second);
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC found) {
    return found ? const_cast<BYTE*>(reinterpret_cast<const Resource*>(found)->Data) : nullptr;
}

LPVOID WINAPI LockResource(HGLOBAL data) {
    return data;
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC found) {
    return found ? reinterpret_cast<const Resource*>(found)->Size : 0;
}
