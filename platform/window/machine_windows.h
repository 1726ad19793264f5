// The top-level windows of all processes of the machine, front to back, and what processes ask of each
// other's: to be shown, placed, or given a posted message. Any thread.
#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

namespace platform {

// What is asked. The owner's thread does it while it looks for messages.
struct WindowRequest {
    enum class Kind : uint32_t { Post, Show, Place };

    Kind What;
    UINT Message;    // Post: the message and its two words; Show: First is the command
    uint64_t First;  // Place: where in the order
    int64_t Second;
    int32_t Place[4];  // Place: x, y, width, height
    UINT PlaceFlags;
};

struct MachineWindowState {
    bool Visible;
    bool Iconic;
};

// By the window's own process. Enter puts it at the front; false when the machine has no room for it.
bool EnterMachineWindow(HWND window, DWORD thread, std::u16string_view className, std::u16string_view title);
void LeaveMachineWindow(HWND window);
void SetMachineWindowTitle(HWND window, std::u16string_view title);
void SetMachineWindowState(HWND window, const MachineWindowState& state);

// `after` as in SetWindowPos: HWND_TOP, HWND_BOTTOM, HWND_TOPMOST, HWND_NOTOPMOST. Another window: nothing.
void OrderMachineWindow(HWND window, HWND after);

// The frontmost visible one; null when there is none.
HWND FrontMachineWindow();

// The frontmost whose class and title are these, without regard to case for the class; an empty optional
// matches any. Null when there is none.
HWND FindMachineWindow(std::optional<std::u16string_view> className,
                       std::optional<std::u16string_view> title);

// None when the machine has no such top-level window.
std::optional<MachineWindowState> FindMachineWindowState(HWND window);

// Asks another process, and waits until it has done so unless a message is posted. False when there is no
// such window, or it goes away meanwhile.
bool AskMachineWindow(HWND window, const WindowRequest& request);

// Does what is asked of the calling thread's windows. False when it has none, so that nothing can be.
bool RunMachineRequests();

}  // namespace platform
