#include <cstdlib>
#include <string>

#include "front/host.h"
#include "platform/kernel/handles.h"
#include "platform/text/unicode.h"

namespace front::host {

HMODULE LoadDriverLibrary() {
    const char* const path = std::getenv("KESTVOX_DRIVER");
    return LoadLibraryW(path && *path ? platform::ToUtf16(path).c_str() : u"kestvox.dll");
}

void FreeDriverLibrary(HMODULE library) {
    FreeLibrary(library);
}

void NoteOpened(WaveDirection, UINT, const WAVEFORMATEX&) {}
void NoteClosed(WaveDirection, UINT) {}
void NoteRefused(WaveDirection, UINT) {}

bool WatchesHeaders() {
    return false;
}
void NoteHeader(HeaderEvent, WaveDirection, UINT, const WAVEHDR*) {}
void NoteReset(WaveDirection, UINT) {}

bool IsEvent(HANDLE handle) {
    const std::shared_ptr<platform::KernelObject> object = platform::FindObject(handle);
    return object && object->Kind() == platform::HandleKind::Event;
}

std::unique_ptr<Conversion> OpenConversion(const WAVEFORMATEX&, const WAVEFORMATEX&) {
    return nullptr;
}

HDRVR OpenOtherDriver(LPCWSTR, LPCWSTR, LPARAM) {
    return nullptr;
}

LRESULT SendToOtherDriver(HDRVR, UINT, LPARAM, LPARAM) {
    return 0;
}

LRESULT CloseOtherDriver(HDRVR, LPARAM, LPARAM) {
    return 0;
}

HMODULE ModuleOfOtherDriver(HDRVR) {
    return nullptr;
}

}  // namespace front::host
