#include "front/windows/system_library.h"

namespace front {

namespace {

HMODULE LoadSystemLibrary() {
    constexpr WCHAR FileName[] = TEXT("\\winmm.dll");
    WCHAR path[MAX_PATH + 16] = {};
    const UINT length = GetSystemDirectoryW(path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) {
        return nullptr;
    }
    lstrcatW(path, FileName);
    return LoadLibraryW(path);
}

}  // namespace

FARPROC FindInSystemLibrary(const char* name) {
    static const HMODULE library = LoadSystemLibrary();
    return library ? GetProcAddress(library, name) : nullptr;
}

}  // namespace front
