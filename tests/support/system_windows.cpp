#include <tlhelp32.h>

#include <map>
#include <mutex>

#include "simulator/attach.h"
#include "simulator/simulator.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "tools/host.h"

namespace test_system {

namespace {

// What the driver has shown and reported.
struct Notebook {
    std::mutex Lock;
    int Answer = IDOK;
    std::vector<MessageBoxShown> Boxes;
    std::vector<LoggedEvent> Events;
    std::map<HANDLE, std::u16string> Sources;
};
Notebook notebook;

std::u16string TextOf(const WCHAR* text) {
    return text ? Utf16(text) : std::u16string();
}

int WINAPI ShowMessageBox(HWND, LPCWSTR text, LPCWSTR, UINT style) {
    const std::lock_guard guard(notebook.Lock);
    notebook.Boxes.push_back({TextOf(text), style});
    return notebook.Answer;
}

// The handle is the place of the name: the system's own says nothing.
HANDLE WINAPI OpenSource(LPCWSTR, LPCWSTR name) {
    const std::lock_guard guard(notebook.Lock);
    const auto handle = reinterpret_cast<HANDLE>(notebook.Sources.size() + 1);
    notebook.Sources[handle] = TextOf(name);
    return handle;
}

BOOL WINAPI Report(HANDLE source, WORD type, WORD, DWORD id, PSID, WORD, DWORD, LPCWSTR*, LPVOID) {
    const std::lock_guard guard(notebook.Lock);
    if (!notebook.Sources.contains(source)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    notebook.Events.push_back({notebook.Sources[source], type, id});
    return TRUE;
}

BOOL WINAPI CloseSource(HANDLE) {
    return TRUE;
}

template <typename Function>
void Redirect(const char* name, Function* replacement) {
    simulator::RedirectCall(name, reinterpret_cast<void*>(replacement));
}

// NT has no call that deletes a key with all that is in it.
void DeleteTree(HKEY parent, const WCHAR* name) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, name, 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS) {
        return;
    }
    WCHAR child[256];
    while (RegEnumKeyW(key, 0, child, 256) == ERROR_SUCCESS) {
        DeleteTree(key, child);
    }
    RegCloseKey(key);
    RegDeleteKeyW(parent, name);
}

// What installation and settings leave.
constexpr const WCHAR* DriverKeys[] = {
    TEXT("System\\CurrentControlSet\\Services\\Kestrelvox"),
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\System\\Kestrelvox"),
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\Application\\KESTVOX.DLL"),
    TEXT("Software\\Zephyr Harmonic Works\\Kestrelvox"),
};

unsigned ThreadCount() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 thread = {};
    thread.dwSize = sizeof thread;
    unsigned count = 0;
    for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread)) {
        count += thread.th32OwnerProcessID == GetCurrentProcessId();
    }
    CloseHandle(snapshot);
    return count;
}

}  // namespace

void FreshMachine() {
    static const bool redirected = [] {
        Redirect("MessageBoxW", ShowMessageBox);
        Redirect("RegisterEventSourceW", OpenSource);
        Redirect("ReportEventW", Report);
        Redirect("DeregisterEventSource", CloseSource);
        return true;
    }();
    static_cast<void>(redirected);
    simulator::UseMachine("");
    for (const WCHAR* key : DriverKeys) {
        DeleteTree(HKEY_LOCAL_MACHINE, key);
    }
    const std::lock_guard guard(notebook.Lock);
    notebook.Answer = IDOK;
    notebook.Boxes.clear();
    notebook.Events.clear();
    notebook.Sources.clear();
}

void UnloadWaveDriver() {
    kestvox::UnloadWaveDriver();
}

HMODULE LoadDriver() {
    return simulator::LoadAttached(TEXT("kestvox.dll"));
}

std::string Usage() {
    DWORD handles = 0;
    GetProcessHandleCount(GetCurrentProcess(), &handles);
    return std::to_string(handles) + " handles, " + std::to_string(ThreadCount()) + " threads";
}

std::vector<MessageBoxShown> MessageBoxes() {
    const std::lock_guard guard(notebook.Lock);
    return notebook.Boxes;
}

std::vector<LoggedEvent> EventLog() {
    const std::lock_guard guard(notebook.Lock);
    return notebook.Events;
}

void FailCall(const char* function, unsigned nth) {
    simulator::FailCall(function, nth);
}

void ClearCallFailures() {
    simulator::ClearCallFailures();
}

}  // namespace test_system
