#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <sstream>

#include "simulator/attach.h"
#include "simulator/simulator.h"
#include "tests/support/system.h"
#include "tests/support/text.h"
#include "tools/machine/host.h"

namespace test_system {

namespace {

// What the driver has shown and reported.
struct Notebook {
    std::mutex Lock;
    int Answer = IDOK;
    std::vector<platform::MessageBoxRecord> Boxes;
    std::vector<platform::EventRecord> Events;
    std::map<HANDLE, std::u16string> Sources;  // all that were ever opened
    size_t OpenSources = 0;
    std::vector<platform::HelpRequest> Help;
    bool OpensHelp = false;
};
Notebook notebook;

std::u16string TextOf(const WCHAR* text) {
    return text ? Utf16(text) : std::u16string();
}

int WINAPI ShowMessageBox(HWND owner, LPCWSTR text, LPCWSTR caption, UINT style) {
    const std::lock_guard guard(notebook.Lock);
    notebook.Boxes.push_back({owner, TextOf(text), caption ? Utf16(caption) : u"Error", style});
    return notebook.Answer;
}

BOOL WINAPI ShowHelp(HWND window, LPCWSTR file, UINT command, ULONG_PTR data) {
    {
        const std::lock_guard guard(notebook.Lock);
        notebook.Help.push_back({window, TextOf(file), command, data});
        if (!notebook.OpensHelp) {
            return TRUE;
        }
    }
    const FARPROC systems = GetProcAddress(GetModuleHandleW(L"user32.dll"), "WinHelpW");
    return reinterpret_cast<decltype(&WinHelpW)>(reinterpret_cast<void*>(systems))(window, file, command,
                                                                                   data);
}

// The handle is the place of the name: the system's own says nothing.
HANDLE WINAPI OpenSource(LPCWSTR, LPCWSTR name) {
    const std::lock_guard guard(notebook.Lock);
    const auto handle = reinterpret_cast<HANDLE>(notebook.Sources.size() + 1);
    notebook.Sources[handle] = TextOf(name);
    ++notebook.OpenSources;
    return handle;
}

BOOL WINAPI Report(HANDLE source, WORD type, WORD category, DWORD id, PSID, WORD, DWORD, LPCWSTR*, LPVOID) {
    const std::lock_guard guard(notebook.Lock);
    if (!notebook.Sources.contains(source)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    notebook.Events.push_back({notebook.Sources[source], type, category, id});
    return TRUE;
}

BOOL WINAPI CloseSource(HANDLE) {
    const std::lock_guard guard(notebook.Lock);
    --notebook.OpenSources;
    return TRUE;
}

std::atomic<unsigned long> mutexReleases{0};

// This program's own import of it is redirected, too.
BOOL WINAPI CountRelease(HANDLE mutex) {
    static const auto release = reinterpret_cast<decltype(&ReleaseMutex)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "ReleaseMutex")));
    mutexReleases.fetch_add(1, std::memory_order_relaxed);
    return release(mutex);
}

template <typename Function>
void Redirect(const char* name, Function* replacement) {
    simulator::RedirectCall(name, reinterpret_cast<void*>(replacement));
}

// The test program is attached as the driver is: some tests ask the cards themselves.
struct Attachment {
    Attachment() {
        Redirect("MessageBoxW", ShowMessageBox);
        Redirect("ReleaseMutex", CountRelease);
        Redirect("WinHelpW", ShowHelp);
        Redirect("RegisterEventSourceW", OpenSource);
        Redirect("ReportEventW", Report);
        Redirect("DeregisterEventSource", CloseSource);
        simulator::Attach(GetModuleHandleW(nullptr));
    }
};
const Attachment AttachmentOfTests;

// What installation and settings leave.
constexpr const WCHAR* DriverKeys[] = {
    TEXT("System\\CurrentControlSet\\Services\\Kestrelvox"),
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\System\\Kestrelvox"),
    TEXT("System\\CurrentControlSet\\Services\\EventLog\\Application\\KESTVOX.DLL"),
    TEXT("Software\\Zephyr Harmonic Works\\Kestrelvox"),
};

}  // namespace

void FreshMachine() {
    kestvox::UnloadWaveDriver();
    simulator::UseMachine("");
    for (const WCHAR* key : DriverKeys) {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
    }
    const std::lock_guard guard(notebook.Lock);
    notebook.Answer = IDOK;
    notebook.Boxes.clear();
    notebook.Events.clear();
    notebook.Sources.clear();
    notebook.Help.clear();
}

HMODULE LoadDriver() {
    return simulator::LoadAttached(TEXT("kestvox.dll"));
}

std::string Usage() {
    const simulator::Holdings held = simulator::CurrentHoldings();
    const std::lock_guard guard(notebook.Lock);
    std::ostringstream text;
    text << held.Handles << " handles, " << held.RegistryKeys << " registry keys, " << notebook.OpenSources
         << " event sources, " << held.GlobalBlocks << " global blocks, " << held.HeapBlocks
         << " heap blocks, " << held.UserObjects << " menus and pictures";
    return text.str();
}

void* TakePage() {
    return VirtualAlloc(nullptr, 1, MEM_COMMIT, PAGE_READWRITE);
}

void GiveBackPage(void* page) {
    VirtualFree(page, 0, MEM_RELEASE);
}

void OpenHelp(bool open) {
    const std::lock_guard guard(notebook.Lock);
    notebook.OpensHelp = open;
}

}  // namespace test_system

// As the layer in place of Windows has them on Linux.
namespace platform {

using test_system::notebook;

unsigned long MutexReleases() {
    return test_system::mutexReleases.load(std::memory_order_relaxed);
}

void AnswerMessageBoxes(int button) {
    const std::lock_guard guard(notebook.Lock);
    notebook.Answer = button;
}

std::vector<MessageBoxRecord> MessageBoxes() {
    const std::lock_guard guard(notebook.Lock);
    return notebook.Boxes;
}

std::vector<HelpRequest> HelpRequests() {
    const std::lock_guard guard(notebook.Lock);
    return notebook.Help;
}

std::vector<EventRecord> EventLog() {
    const std::lock_guard guard(notebook.Lock);
    return notebook.Events;
}

void FailCall(const char* function, unsigned nth) {
    if (!simulator::FailCall(function, nth)) {
        std::fprintf(stderr, "no call of %s can be made to fail\n", function);
        std::abort();
    }
}

bool CallFailuresAreWaiting() {
    return simulator::CallFailuresAreWaiting();
}

void ClearCallFailures() {
    simulator::ClearCallFailures();
}

}  // namespace platform
