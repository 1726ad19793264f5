// A window class whose windows note what they are told.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace window_test {

// The window's identifier and the message.
using Told = std::pair<int, UINT>;

// One at a time; its windows belong to the test's thread. A message with a handler gets its answer from it.
class Recorder {
public:
    static constexpr const char16_t* ClassName = u"Recorder";

    Recorder() {
        Current = this;
        WNDCLASSW description{};
        description.lpfnWndProc = Procedure;
        description.cbWndExtra = 2 * sizeof(LONG_PTR);
        description.lpszClassName = ClassName;
        RegisterClassW(&description);
    }
    ~Recorder() {
        UnregisterClassW(ClassName, nullptr);
        Current = nullptr;
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    HWND Make(DWORD style, HWND parent, int id) {
        const HMENU menu = reinterpret_cast<HMENU>(static_cast<ULONG_PTR>(id));
        return CreateWindowExW(0, ClassName, u"", style, 10 * id, 20, 100, 50, parent, menu, nullptr,
                               nullptr);
    }
    // What was told of these messages since the last call.
    std::vector<Told> Take(const std::vector<UINT>& messages) {
        std::vector<Told> taken;
        for (const Told& told : std::exchange(told_, {})) {
            if (std::find(messages.begin(), messages.end(), told.second) != messages.end()) {
                taken.push_back(told);
            }
        }
        return taken;
    }

    std::map<UINT, std::function<LRESULT(HWND, WPARAM, LPARAM)>> Handlers;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
        Current->told_.emplace_back(GetDlgCtrlID(window), message);
        const auto handler = Current->Handlers.find(message);
        return handler != Current->Handlers.end() ? handler->second(window, first, second)
                                                  : DefWindowProcW(window, message, first, second);
    }

    static inline Recorder* Current = nullptr;
    std::vector<Told> told_;
};

// Takes and dispatches what has been posted.
inline void RunPosted() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
}

}  // namespace window_test
