#include <algorithm>
#include <cstdio>
#include <iterator>

#include "tools/command_error.h"
#include "tools/commands/commands.h"
#include "tools/machine/host.h"
#include "tools/system/driver_handle.h"
#include "tools/system/registry_value.h"

namespace kestvox {
namespace {

constexpr WCHAR ServiceKey[] = TEXT("System\\CurrentControlSet\\Services\\Kestrelvox");
constexpr WCHAR SystemLogKey[] = TEXT("System\\CurrentControlSet\\Services\\EventLog\\System\\Kestrelvox");
constexpr WCHAR ApplicationLogKey[] =
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\Application\\KESTVOX.DLL");

// Where the multimedia system finds its drivers, by alias, and what they are called.
constexpr WCHAR DriverSection[] = TEXT("Drivers32");
constexpr WCHAR DriversKey[] = TEXT("Software\\Microsoft\\Windows NT\\CurrentVersion\\Drivers32");
constexpr WCHAR DescriptionsKey[] = TEXT("Software\\Microsoft\\Windows NT\\CurrentVersion\\drivers.desc");
constexpr WCHAR Description[] = TEXT("Kestrelvox");
constexpr LPCWSTR WaveAliases[] = {TEXT("wave"),  TEXT("wave1"), TEXT("wave2"), TEXT("wave3"), TEXT("wave4"),
                                   TEXT("wave5"), TEXT("wave6"), TEXT("wave7"), TEXT("wave8"), TEXT("wave9")};

struct Entry {
    WideText Key;
    WideText Name;
};

// Without the multimedia driver's alias.
const Entry Entries[] = {
    {ServiceKey, TEXT("ErrorControl")},
    {ServiceKey, TEXT("Group")},
    {ServiceKey, TEXT("ImagePath")},
    {ServiceKey, TEXT("Start")},
    {ServiceKey, TEXT("Type")},
    {SystemLogKey, TEXT("EventMessageFile")},
    {SystemLogKey, TEXT("TypesSupported")},
    {ApplicationLogKey, TEXT("EventMessageFile")},
    {ApplicationLogKey, TEXT("TypesSupported")},
    {DescriptionsKey, DriverFile},
};

WideText RegisteredFile(LPCWSTR alias) {
    const std::optional<RegistryValue> value = ReadRegistryValue(DriversKey, alias);
    return value && value->Type == REG_SZ ? TextOf(*value) : WideText();
}

bool IsOurs(LPCWSTR alias) {
    return lstrcmpiW(RegisteredFile(alias).c_str(), DriverFile) == 0;
}

// The alias that the driver has, or else the first that nobody has. Null when all are taken.
LPCWSTR FindAlias() {
    const auto* alias = std::ranges::find_if(WaveAliases, IsOurs);
    if (alias == std::end(WaveAliases)) {
        alias = std::ranges::find_if(WaveAliases, [](LPCWSTR name) { return RegisteredFile(name).empty(); });
    }
    return alias == std::end(WaveAliases) ? nullptr : *alias;
}

// To the driver, as the control panel sends it. The system has to be started anew when the driver says so.
LRESULT SendSetupMessage(UINT message, LPCWSTR alias) {
    DRVCONFIGINFO where = {};
    where.dwDCISize = sizeof where;
    where.lpszDCISectionName = DriverSection;
    where.lpszDCIAliasName = alias;
    DriverHandle driver;
    return driver.Send(message, 0, reinterpret_cast<LPARAM>(&where));
}

std::string Shown(const RegistryValue& value) {
    if (value.Type == REG_DWORD && value.Bytes.size() == sizeof(DWORD)) {
        DWORD number;
        std::copy(value.Bytes.begin(), value.Bytes.end(), reinterpret_cast<uint8_t*>(&number));
        return "REG_DWORD " + std::to_string(number);
    }
    if (value.Type == REG_SZ || value.Type == REG_EXPAND_SZ) {
        return (value.Type == REG_SZ ? "REG_SZ " : "REG_EXPAND_SZ ") + Narrow(TextOf(value));
    }
    return "type " + std::to_string(value.Type) + ", " + std::to_string(value.Bytes.size()) + " bytes";
}

// Each key once, with its values below it.
void PrintEntries(LPCWSTR alias) {
    std::vector<Entry> entries(std::begin(Entries), std::end(Entries));
    if (alias) {
        entries.push_back({DriversKey, alias});
    }
    WideText lastKey;
    for (const Entry& entry : entries) {
        const std::optional<RegistryValue> value = ReadRegistryValue(entry.Key, entry.Name);
        if (!value) {
            continue;
        }
        if (entry.Key != lastKey) {
            std::printf("HKEY_LOCAL_MACHINE\\%s\n", Narrow(entry.Key).c_str());
            lastKey = entry.Key;
        }
        std::printf("    %s: %s\n", Narrow(entry.Name).c_str(), Shown(*value).c_str());
    }
}

void Require(LONG result, LPCWSTR key) {
    if (result != ERROR_SUCCESS) {
        throw CommandError("HKEY_LOCAL_MACHINE\\" + Narrow(key) + " cannot be changed: registry error " +
                           std::to_string(result));
    }
}

int Finish(LRESULT answer, LPCWSTR alias) {
    UnloadWaveDriver();
    PrintEntries(alias);
    std::printf("restart-needed: %s\n", answer == DRVCNF_RESTART ? "yes" : "no");
    if (!MachineOutlivesProcess()) {
        std::fputs("kestvox: note: no machine is named, so the change ends with this command\n", stderr);
    }
    return ExitSuccess;
}

}  // namespace

int InstallDriver(const std::string& machine) {
    EnterMachine(machine);
    const LPCWSTR alias = FindAlias();
    if (!alias) {
        throw CommandError("there are ten wave drivers already: wave to wave9");
    }
    const LRESULT answer = SendSetupMessage(DRV_INSTALL, alias);
    if (answer == DRVCNF_CANCEL) {
        throw CommandError("the driver does not want to be installed");
    }
    Require(WriteRegistryValue(DriversKey, alias, RegistryValue::Text(REG_SZ, DriverFile)), DriversKey);
    Require(WriteRegistryValue(DescriptionsKey, DriverFile, RegistryValue::Text(REG_SZ, Description)),
            DescriptionsKey);
    return Finish(answer, alias);
}

int RemoveDriver(const std::string& machine) {
    EnterMachine(machine);
    const auto* alias = std::ranges::find_if(WaveAliases, IsOurs);
    if (alias == std::end(WaveAliases)) {
        throw CommandError("the driver is not installed");
    }
    const LRESULT answer = SendSetupMessage(DRV_REMOVE, *alias);
    Require(DeleteRegistryValue(DriversKey, *alias), DriversKey);
    // Only the name that is shown for it: nobody misses it.
    DeleteRegistryValue(DescriptionsKey, DriverFile);
    return Finish(answer, nullptr);
}

}  // namespace kestvox
