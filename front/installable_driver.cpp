#include "front/installable_driver.h"

#include <windows.h>
#include <mmsystem.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "front/host.h"
#include "front/wave_driver.h"

namespace front {

namespace {

constexpr WCHAR DriverFile[] = TEXT("kestvox.dll");
constexpr WCHAR RegisteredDrivers[] = TEXT("Software\\Microsoft\\Windows NT\\CurrentVersion\\");
constexpr WCHAR UsualSection[] = TEXT("Drivers32");

// One OpenDriver of the wave driver, which stays loaded as long as this lives.
struct OpenInstance {
    WaveDriverUse Driver;
    DWORD_PTR Id = 0;  // what the driver made of DRV_OPEN

    HDRVR Handle() { return reinterpret_cast<HDRVR>(this); }
};

// A handle is its instance's address.
class InstanceTable {
public:
    void Add(std::shared_ptr<OpenInstance> instance) {
        const std::lock_guard hold(lock_);
        instances_.push_back(std::move(instance));
    }

    // Null when the handle is none of the wave driver's.
    std::shared_ptr<OpenInstance> Find(HDRVR handle) {
        const std::lock_guard hold(lock_);
        const auto found = Position(handle);
        return found == instances_.end() ? nullptr : *found;
    }

    std::shared_ptr<OpenInstance> Remove(HDRVR handle) {
        const std::lock_guard hold(lock_);
        const auto found = Position(handle);
        if (found == instances_.end()) {
            return nullptr;
        }
        std::shared_ptr<OpenInstance> removed = std::move(*found);
        instances_.erase(found);
        return removed;
    }

    HDRVR First() {
        const std::lock_guard hold(lock_);
        return instances_.empty() ? nullptr : instances_.front()->Handle();
    }

private:
    using Instances = std::vector<std::shared_ptr<OpenInstance>>;

    Instances::iterator Position(HDRVR handle) {
        return std::ranges::find(instances_, handle, [](const auto& instance) { return instance->Handle(); });
    }

    std::mutex lock_;
    Instances instances_;
};

InstanceTable& TheInstances() {
    static auto* const instances = new InstanceTable;
    return *instances;
}

bool IsDriverFile(std::basic_string_view<WCHAR> path) {
    const size_t separator = path.find_last_of(TEXT("\\/"));
    const std::basic_string<WCHAR> file(path.substr(separator + 1));
    return lstrcmpiW(file.c_str(), DriverFile) == 0;
}

// The file that an alias such as "wave1" stands for; empty when nothing is registered under it.
std::basic_string<WCHAR> FileOfAlias(LPCWSTR alias, LPCWSTR section) {
    const std::basic_string<WCHAR> path =
        std::basic_string<WCHAR>(RegisteredDrivers) + (section ? section : UsualSection);
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return {};
    }
    WCHAR file[MAX_PATH + 1] = {};
    DWORD size = MAX_PATH * sizeof(WCHAR);
    DWORD type = 0;
    const LONG result = RegQueryValueExW(key, alias, nullptr, &type, reinterpret_cast<LPBYTE>(file), &size);
    RegCloseKey(key);
    return result == ERROR_SUCCESS && type == REG_SZ ? file : TEXT("");
}

HDRVR OpenInstanceOf(LPCWSTR name, LPARAM parameter) {
    auto instance = std::make_shared<OpenInstance>();
    instance->Id = static_cast<DWORD_PTR>(
        instance->Driver.SendToDriver(0, DRV_OPEN, reinterpret_cast<LPARAM>(name), parameter));
    if (instance->Id == 0) {
        return nullptr;
    }
    const HDRVR handle = instance->Handle();
    TheInstances().Add(std::move(instance));
    return handle;
}

}  // namespace

void CloseInstallableDrivers() {
    while (const HDRVR open = TheInstances().First()) {
        CloseDriver(open, 0, 0);
    }
}

}  // namespace front

using namespace front;

HDRVR WINAPI OpenDriver(LPCWSTR name, LPCWSTR section, LPARAM parameter) {
    if (!name) {
        return nullptr;
    }
    return IsDriverFile(name) || IsDriverFile(FileOfAlias(name, section))
               ? OpenInstanceOf(name, parameter)
               : host::OpenOtherDriver(name, section, parameter);
}

LRESULT WINAPI SendDriverMessage(HDRVR handle, UINT message, LPARAM first, LPARAM second) {
    const std::shared_ptr<OpenInstance> instance = TheInstances().Find(handle);
    return instance ? instance->Driver.SendToDriver(instance->Id, message, first, second)
                    : host::SendToOtherDriver(handle, message, first, second);
}

LRESULT WINAPI CloseDriver(HDRVR handle, LPARAM first, LPARAM second) {
    const std::shared_ptr<OpenInstance> instance = TheInstances().Remove(handle);
    return instance ? instance->Driver.SendToDriver(instance->Id, DRV_CLOSE, first, second)
                    : host::CloseOtherDriver(handle, first, second);
}

HMODULE WINAPI GetDriverModuleHandle(HDRVR handle) {
    const std::shared_ptr<OpenInstance> instance = TheInstances().Find(handle);
    return instance ? instance->Driver.Module() : host::ModuleOfOtherDriver(handle);
}

HMODULE WINAPI DrvGetModuleHandle(HDRVR handle) {
    return GetDriverModuleHandle(handle);
}
