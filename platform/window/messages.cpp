// Posting, sending, getting and dispatching messages.
#include "platform/window/gui_thread.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// Whose procedure a message goes to.
struct Target {
    DWORD Thread = 0;
    WNDPROC Procedure = nullptr;
};

bool FindTarget(HWND window, Target* target) {
    const LockedWindow found(window);
    if (!found) {
        return false;
    }
    *target = {found->Thread, found->Procedure};
    return true;
}

}  // namespace

}  // namespace platform

using namespace platform;

LRESULT WINAPI SendMessageW(HWND window, UINT message, WPARAM first, LPARAM second) {
    Target target;
    if (!FindTarget(window, &target)) {
        return 0;
    }
    if (target.Thread == 0 || target.Thread == GetCurrentThreadId()) {
        return target.Procedure(window, message, first, second);
    }
    const std::shared_ptr<MessageQueue> receiver = FindMessageQueue(target.Thread);
    return receiver ? CurrentGuiThread().Queue->SendTo(*receiver, window, message, first, second) : 0;
}

BOOL WINAPI PostThreadMessageW(DWORD thread, UINT message, WPARAM first, LPARAM second) {
    const std::shared_ptr<MessageQueue> queue = FindMessageQueue(thread);
    if (!queue) {
        SetLastError(ERROR_INVALID_THREAD_ID);
        return FALSE;
    }
    queue->Post(nullptr, message, first, second);
    return TRUE;
}

BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM first, LPARAM second) {
    Target target;
    if (!FindTarget(window, &target)) {
        return FALSE;
    }
    if (const std::shared_ptr<MessageQueue> queue = FindMessageQueue(target.Thread)) {
        queue->Post(window, message, first, second);
    }
    return TRUE;  // the desktop takes messages and does nothing with them
}

BOOL WINAPI PeekMessageW(LPMSG message, HWND, UINT, UINT, UINT options) {
    return CurrentGuiThread().Queue->Take((options & PM_REMOVE) != 0, message);
}

BOOL WINAPI GetMessageW(LPMSG message, HWND, UINT, UINT) {
    *message = CurrentGuiThread().Queue->Wait();
    return TRUE;
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
    return IsOwnWindow(message->hwnd)
               ? SendMessageW(message->hwnd, message->message, message->wParam, message->lParam)
               : 0;
}

LRESULT WINAPI CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM first, LPARAM second) {
    return procedure(window, message, first, second);
}
