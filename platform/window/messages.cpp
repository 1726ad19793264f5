// Posting, sending, getting and dispatching messages.
#include "platform/window/gui_thread.h"
#include "platform/window/machine_windows.h"
#include "platform/window/private_messages.h"
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

// Remembers where the mouse was when the message was made, for GetMessagePos.
void Remember(const MSG& message) {
    CurrentGuiThread().MessagePosition = message.pt;
}

// Some keys lead to another message when they are taken out of the queue.
void FollowKey(const MSG& message) {
    if (message.message == WM_KEYDOWN && message.wParam == VK_F1) {
        PostMessageW(message.hwnd, HelpKeyMessage, 0, 0);
    } else if (message.message == WM_KEYUP && message.wParam == VK_APPS) {
        PostMessageW(message.hwnd, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(message.hwnd), -1);
    }
}

bool IsGoodFilter(HWND window) {
    return !window || window == MessageFilter::ThreadOnly || IsWindow(window);
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
    if (!window) {
        return PostThreadMessageW(GetCurrentThreadId(), message, first, second);
    }
    if (IsForeignWindow(window)) {
        const WindowRequest request = {
            WindowRequest::Kind::Post, message, static_cast<uint64_t>(first), second, {}, 0};
        if (AskMachineWindow(window, request)) {
            return TRUE;
        }
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return FALSE;
    }
    Target target;
    if (!FindTarget(window, &target)) {
        return FALSE;
    }
    if (const std::shared_ptr<MessageQueue> queue = FindMessageQueue(target.Thread)) {
        queue->Post(window, message, first, second);
    }
    return TRUE;  // the desktop takes messages and does nothing with them
}

void WINAPI PostQuitMessage(int exitCode) {
    CurrentGuiThread().Queue->PostQuit(exitCode);
}

BOOL WINAPI PeekMessageW(LPMSG message, HWND window, UINT first, UINT last, UINT options) {
    if (!IsGoodFilter(window)) {
        return FALSE;
    }
    const bool remove = (options & PM_REMOVE) != 0;
    if (!CurrentGuiThread().Queue->Take({window, first, last}, remove, message)) {
        return FALSE;
    }
    Remember(*message);
    if (remove) {
        FollowKey(*message);
    }
    return TRUE;
}

BOOL WINAPI GetMessageW(LPMSG message, HWND window, UINT first, UINT last) {
    if (!IsGoodFilter(window)) {
        return -1;
    }
    *message = CurrentGuiThread().Queue->Wait({window, first, last});
    Remember(*message);
    FollowKey(*message);
    return message->message != WM_QUIT ? TRUE : FALSE;
}

LRESULT WINAPI DispatchMessageW(const MSG* message) {
    if (message->message == WM_TIMER && message->lParam != 0) {
        reinterpret_cast<TIMERPROC>(message->lParam)(message->hwnd, WM_TIMER, message->wParam, message->time);
        return 0;
    }
    return message->hwnd && IsOwnWindow(message->hwnd)
               ? SendMessageW(message->hwnd, message->message, message->wParam, message->lParam)
               : 0;
}

LRESULT WINAPI CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM first, LPARAM second) {
    return procedure(window, message, first, second);
}

DWORD WINAPI GetMessagePos() {
    const POINT position = CurrentGuiThread().MessagePosition;
    return static_cast<DWORD>(MAKELONG(position.x, position.y));
}

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure) {
    if (window && !IsOwnWindow(window)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    return CurrentGuiThread().Queue->SetTimer(window, id, milliseconds, procedure);
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR id) {
    return CurrentGuiThread().Queue->KillTimer(window, id) ? TRUE : FALSE;
}
