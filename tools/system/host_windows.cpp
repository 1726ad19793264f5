#include <windows.h>

#include <atomic>

#include "tools/system/interrupt.h"
#include "tools/system/standard_streams.h"

namespace kestvox {
namespace {

constexpr int ByUser = 130;
constexpr int ByClosing = 129;
constexpr DWORD TimeToEnd = 10000;  // the system ends the process when its window's handler answers

std::atomic<int> status = 0;

// On a thread of the system's.
BOOL WINAPI OnControl(DWORD event) {
    const bool closing =
        event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT;
    status = closing ? ByClosing : ByUser;
    if (closing) {
        Sleep(TimeToEnd);
    }
    return TRUE;
}

}  // namespace

// The C library has no number for what is not open.
void OccupyStandardStreams() {}

int InterruptStatus() {
    return status;
}

InterruptGuard::InterruptGuard() {
    status = 0;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

InterruptGuard::~InterruptGuard() {
    SetConsoleCtrlHandler(OnControl, FALSE);
}

}  // namespace kestvox
