#include "entry/installation.h"

namespace kestvox {

namespace {

constexpr const WCHAR* ServiceKey = TEXT("System\\CurrentControlSet\\Services\\Kestrelvox");
constexpr const WCHAR* SystemSourceKey =
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\System\\Kestrelvox");
constexpr const WCHAR* ApplicationSourceKey =
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\Application\\KESTVOX.DLL");

constexpr DWORD NormalErrorControl = 1;
constexpr DWORD SystemStart = 1;
constexpr DWORD Disabled = 4;
constexpr DWORD KernelDriver = 1;
constexpr DWORD AllEventTypes = 7;  // error, warning, information

void SetNumber(HKEY key, const WCHAR* name, DWORD value) {
    RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
}

void SetText(HKEY key, const WCHAR* name, DWORD type, const WCHAR* text) {
    const DWORD size = (static_cast<DWORD>(lstrlenW(text)) + 1) * static_cast<DWORD>(sizeof(WCHAR));
    RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(text), size);
}

LONG RegisterService() {
    HKEY key = nullptr;
    const LONG result = RegCreateKeyW(HKEY_LOCAL_MACHINE, ServiceKey, &key);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    SetNumber(key, TEXT("ErrorControl"), NormalErrorControl);
    SetText(key, TEXT("Group"), REG_SZ, TEXT("Base"));
    SetText(key, TEXT("ImagePath"), REG_EXPAND_SZ, TEXT("\\SystemRoot\\System32\\drivers\\kestvox.sys"));
    SetNumber(key, TEXT("Start"), SystemStart);
    SetNumber(key, TEXT("Type"), KernelDriver);
    RegCloseKey(key);
    return ERROR_SUCCESS;
}

LONG RegisterMessageFiles(const WCHAR* path, const WCHAR* messageFiles) {
    HKEY key = nullptr;
    const LONG result = RegCreateKeyW(HKEY_LOCAL_MACHINE, path, &key);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    SetText(key, TEXT("EventMessageFile"), REG_EXPAND_SZ, messageFiles);
    SetNumber(key, TEXT("TypesSupported"), AllEventTypes);
    return RegCloseKey(key);
}

}  // namespace

LONG InstallDriver() {
    const LONG result = RegisterService();
    if (result != ERROR_SUCCESS) {
        return result;
    }
    RegisterMessageFiles(SystemSourceKey, TEXT("%SystemRoot%\\System32\\IoLogMsg.dll,"
                                               "%SystemRoot%\\System32\\drivers\\kestvox.sys"));
    return RegisterMessageFiles(ApplicationSourceKey, TEXT("%SystemRoot%\\System32\\IoLogMsg.dll,"
                                                           "%SystemRoot%\\System32\\KESTVOX.DLL"));
}

LONG RemoveDriver() {
    HKEY key = nullptr;
    const LONG result = RegOpenKeyExW(HKEY_LOCAL_MACHINE, ServiceKey, 0, KEY_ALL_ACCESS, &key);
    if (result != ERROR_SUCCESS) {
        return result;
    }
    SetNumber(key, TEXT("Start"), Disabled);
    return RegCloseKey(key);
}

}  // namespace kestvox
