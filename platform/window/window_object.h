// What stands behind a window handle of this process, and the lock that guards all of it.
//
// Windows form one tree below the desktop window, which exists in every process. No lock is held while
// a window procedure runs: every call takes the desktop lock to look or to change, lets it go, and then
// tells the windows concerned.
#pragma once

#include <windows.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/window/user_object.h"

namespace platform {

struct WindowClass {
    LPCWSTR Name;
    WNDPROC Procedure;
    int ExtraBytes;
};

class WindowObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Window;

    WindowObject() : UserObject(OwnKind) {}

    HWND Handle = nullptr;
    DWORD Thread = 0;                    // the one that made it and runs its procedure; 0: the desktop
    const WindowClass* Class = nullptr;  // null: the desktop
    WNDPROC Procedure = nullptr;

    DWORD Style = 0;
    LONG_PTR Id = 0;
    LONG_PTR UserData = 0;
    std::vector<BYTE> Extra;  // the class's extra bytes
    std::u16string Text;

    HWND Parent = nullptr;       // the desktop for a top-level window; null for the desktop
    HWND Owner = nullptr;        // of a top-level window
    std::vector<HWND> Children;  // front to back

    RECT Frame{};  // in the client area of the parent

    UINT DefaultId = 0;  // of a dialog: the button that Enter presses

    bool IsDialog() const { return Class && Class->Procedure == DefDlgProcW; }
    bool IsChild() const { return (Style & (WS_CHILD | WS_POPUP)) == WS_CHILD; }
    bool HasStyle(DWORD bits) const { return (Style & bits) == bits; }
};

// Taken before the machine's locks and that of the handles, and after those of message queues.
std::mutex& DesktopLock();

HWND DesktopWindow();

// REQUIRES (here and below, where a name ends in Locked): the desktop lock is held.
// Null when this process has no such window.
WindowObject* FindWindowLocked(HWND window);

// Finds a window and holds the desktop lock as long as this lives. When there is no such window it sets the
// last error and holds no lock.
class LockedWindow {
public:
    explicit LockedWindow(HWND window);
    explicit operator bool() const { return window_ != nullptr; }
    WindowObject* operator->() const { return window_; }
    WindowObject& operator*() const { return *window_; }

private:
    std::unique_lock<std::mutex> hold_;
    WindowObject* window_;
};

bool IsChildLocked(HWND parent, HWND window);

// Whether a handle is another process's, alive or not.
bool IsForeignWindow(HWND window);

// Whether the calling thread made the window.
bool IsOwnWindow(HWND window);

// Null, with ERROR_CANNOT_FIND_WND_CLASS as the last error, when there is no class of that name.
const WindowClass* FindClass(LPCWSTR name);

// Takes a window out of the tree; its handle goes bad.
void LeaveLocked(HWND window);

// Removes the windows of a thread that ends. They get no message.
void DestroyWindowsOfThread(DWORD thread);

}  // namespace platform
