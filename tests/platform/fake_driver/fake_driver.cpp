#include "tests/platform/fake_driver/fake_driver.h"

#include <windows.h>

namespace {

// Initialised data, so that the tests see that a first load brings the file's contents along.
struct alignas(4096) SharedPage {
    DWORD Word;
};
__attribute__((section("shared"))) SharedPage shared = {41};

HINSTANCE givenHandle = nullptr;

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    givenHandle = module;
    const HANDLE source = RegisterEventSourceW(nullptr, fake_driver::ModuleSource);
    ReportEventW(source, EVENTLOG_INFORMATION_TYPE, reserved ? 1 : 0, reason, nullptr, 0, 0, nullptr,
                 nullptr);
    DeregisterEventSource(source);
    return TRUE;
}

DWORD* WINAPI SharedWord() {
    return &shared.Word;
}

HINSTANCE WINAPI GivenHandle() {
    return givenHandle;
}

}  // extern "C"
