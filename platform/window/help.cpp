// WinHelpW: there is no help viewer; what it was asked for is recorded.
#include <windows.h>

#include <mutex>

#include "platform/inspect.h"

namespace platform {

namespace {

struct Requests {
    std::mutex Lock;  // guards All
    std::vector<HelpRequest> All;
};

Requests& TheRequests() {
    static auto* const requests = new Requests;
    return *requests;
}

}  // namespace

std::vector<HelpRequest> HelpRequests() {
    const std::lock_guard hold(TheRequests().Lock);
    return TheRequests().All;
}

void ClearHelpRequests() {
    const std::lock_guard hold(TheRequests().Lock);
    TheRequests().All.clear();
}

}  // namespace platform

BOOL WINAPI WinHelpW(HWND window, LPCWSTR file, UINT command, ULONG_PTR data) {
    platform::Requests& requests = platform::TheRequests();
    const std::lock_guard hold(requests.Lock);
    requests.All.push_back({window, file ? file : u"", command, data});
    return TRUE;
}
