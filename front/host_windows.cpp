#include <string>

#include "front/host.h"
#include "front/unload_driver.h"
#include "front/windows/bench.h"
#include "front/windows/simulated_cards.h"
#include "front/windows/system_library.h"
#include "simulator/attach.h"

namespace front::host {

namespace {

// The driver's file lies beside this library.
std::wstring DriverPath() {
    static const WCHAR here = 0;
    MEMORY_BASIC_INFORMATION memory = {};
    WCHAR path[MAX_PATH + 1] = {};
    if (VirtualQuery(&here, &memory, sizeof memory) == 0) {
        return {};
    }
    const DWORD length = GetModuleFileNameW(static_cast<HMODULE>(memory.AllocationBase), path, MAX_PATH);
    const std::wstring whole(path, length);
    return whole.substr(0, whole.find_last_of(L'\\') + 1) + L"kestvox.dll";
}

// Calls the function of that name in the system's library; its type is that of this library's own function.
template <typename Function, typename... Arguments>
auto CallSystem(Function*, const char* name, Arguments... arguments) {
    const auto function = reinterpret_cast<Function*>(reinterpret_cast<void*>(FindInSystemLibrary(name)));
    return function ? function(arguments...) : decltype(function(arguments...)){};
}

}  // namespace

HMODULE LoadDriverLibrary() {
    return PutUpCards() ? simulator::LoadAttached(DriverPath().c_str()) : nullptr;
}

void FreeDriverLibrary(HMODULE library) {
    FreeLibrary(library);
    TakeAwayCards();
}

void NoteOpened(WaveDirection direction, UINT device, const WAVEFORMATEX& format) {
    if (Bench* const bench = TheBench()) {
        bench->Opened(direction, device, format);
    }
}

void NoteClosed(WaveDirection direction, UINT device) {
    if (Bench* const bench = TheBench()) {
        bench->Closed(direction, device);
    }
}

void NoteRefused(WaveDirection direction, UINT device) {
    if (Bench* const bench = TheBench()) {
        bench->Refused(direction, device);
    }
}

bool WatchesHeaders() {
    return TheBench() && TheBench()->WatchesHeaders();
}

void NoteHeader(HeaderEvent event, WaveDirection direction, UINT device, const WAVEHDR* header) {
    if (Bench* const bench = TheBench()) {
        bench->Header(event, direction, device, header);
    }
}

void NoteReset(WaveDirection direction, UINT device) {
    if (Bench* const bench = TheBench()) {
        bench->Reset(direction, device);
    }
}

// Every valid handle is accepted, because the system does not tell what kind of object it belongs to.
bool IsEvent(HANDLE handle) {
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

HDRVR OpenOtherDriver(LPCWSTR name, LPCWSTR section, LPARAM parameter) {
    return CallSystem(OpenDriver, "OpenDriver", name, section, parameter);
}

LRESULT SendToOtherDriver(HDRVR driver, UINT message, LPARAM first, LPARAM second) {
    return CallSystem(SendDriverMessage, "SendDriverMessage", driver, message, first, second);
}

LRESULT CloseOtherDriver(HDRVR driver, LPARAM first, LPARAM second) {
    return CallSystem(CloseDriver, "CloseDriver", driver, first, second);
}

HMODULE ModuleOfOtherDriver(HDRVR driver) {
    return CallSystem(GetDriverModuleHandle, "GetDriverModuleHandle", driver);
}

}  // namespace front::host

extern "C" void WINAPI KestvoxUnloadDriver() {
    front::UnloadWaveDriver();
}
