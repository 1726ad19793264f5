#include "simulator/attach.h"

#include "simulator/windows/redirected_calls.h"
#include "simulator/windows/system_calls.h"

namespace simulator {
namespace {

// The library that the calling thread is loading with LoadAttached.
struct Loading {
    const WCHAR* Name;
    DWORD Thread;
};

const WCHAR* NameIn(const WCHAR* path) {
    const WCHAR* name = path;
    for (; *path != 0; ++path) {
        if (*path == '\\' || *path == '/' || *path == ':') {
            name = path + 1;
        }
    }
    return name;
}

void CALLBACK LibraryLoaded(ULONG reason, const LoaderNotice* notice, void* context) {
    const Loading& loading = *static_cast<const Loading*>(context);
    if (reason == NoticeLoaded && GetCurrentThreadId() == loading.Thread &&
        lstrcmpiW(notice->BaseName->Text, loading.Name) == 0) {
        Attach(static_cast<HMODULE>(notice->Base));
    }
}

}  // namespace

HMODULE LoadAttached(const WCHAR* path) {
    Loading loading{NameIn(path), GetCurrentThreadId()};
    void* cookie = nullptr;
    if (LdrRegisterDllNotification(0, LibraryLoaded, &loading, &cookie) < 0) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return nullptr;
    }
    const HMODULE module = LoadLibraryW(path);
    const DWORD error = GetLastError();
    LdrUnregisterDllNotification(cookie);
    SetLastError(error);
    return module;
}

void Attach(HMODULE module) {
    windows::RedirectImports(module, windows::RedirectedCalls());
}

bool FailCall(const char* function, unsigned nth) {
    return nth != 0 && windows::ArmFailure(function, nth);
}

bool CallFailuresAreWaiting() {
    return windows::AnyFailureIsArmed();
}

void ClearCallFailures() {
    windows::DisarmFailures();
}

void RedirectCall(const char* function, void* replacement) {
    windows::AddRedirection({function, replacement});
}

}  // namespace simulator
