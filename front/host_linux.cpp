#include <cstdlib>
#include <string>

#include "front/host.h"
#include "platform/kernel/handles.h"
#include "platform/text/unicode.h"

namespace platform::host {

HMODULE LoadDriverLibrary() {
    const char* const path = std::getenv("KESTVOX_DRIVER");
    return LoadLibraryW(path && *path ? ToUtf16(path).c_str() : u"kestvox.dll");
}

void FreeDriverLibrary(HMODULE library) {
    FreeLibrary(library);
}

bool IsEvent(HANDLE handle) {
    const std::shared_ptr<KernelObject> object = FindObject(handle);
    return object && object->Kind() == HandleKind::Event;
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

}  // namespace platform::host
