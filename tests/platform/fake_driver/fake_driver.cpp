#include "tests/platform/fake_driver/fake_driver.h"

#include <windows.h>

namespace {

HINSTANCE givenHandle = nullptr;

}  // namespace

extern "C" {

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved) {
    givenHandle = module;
    const HANDLE source = RegisterEventSourceW(nullptr, fake_driver::ModuleSource);
    ReportEventW(source, EVENTLOG_WARNING_TYPE, reserved ? 1 : 0, reason, nullptr, 0, 0, nullptr, nullptr);
    DeregisterEventSource(source);
    return TRUE;
}

HINSTANCE WINAPI GivenHandle() {
    return givenHandle;
}

}  // extern "C"
