#include "tests/support/window_visit.h"

namespace {

constexpr UINT VisitMessage = WM_APP + 0x3E5;

// An action that waits for its turn on a window's thread, in the guise of that window's procedure.
struct Visit {
    const std::function<void()>& Action;
    HANDLE Done;
};
WNDPROC visitedProcedure = nullptr;

LRESULT CALLBACK ReceiveVisit(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != VisitMessage) {
        return CallWindowProcW(visitedProcedure, window, message, wParam, lParam);
    }
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(visitedProcedure));
    const auto& visit = *reinterpret_cast<const Visit*>(lParam);
    visit.Action();
    SetEvent(visit.Done);
    return 0;
}

}  // namespace

void VisitWindow(HWND window, const std::function<void()>& action) {
    HANDLE done = nullptr;
    while (done == nullptr) {  // the test may have it fail, too
        done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    const Visit visit = {action, done};
    visitedProcedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ReceiveVisit));
    PostMessageW(window, VisitMessage, 0, reinterpret_cast<LPARAM>(&visit));
    WaitForSingleObject(visit.Done, INFINITE);
    CloseHandle(visit.Done);
}
