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

// What a dialog stores besides its DWLP_ words.
struct DialogState {
    HFONT Font = nullptr;  // its own; deleted with it
    LONG UnitWidth = 0;    // dialog base units in pixels
    LONG UnitHeight = 0;
    HWND Focus = nullptr;  // where the focus was when the dialog was deactivated
    UINT DefaultId = 0;    // of the button that Enter presses, 0: none
    bool Ended = false;    // EndDialog has been called
    INT_PTR Result = 0;
};

// A registered window class, shared by its windows.
struct WindowClass {
    std::u16string Name;
    HINSTANCE Module;  // null: of the system
    WNDPROC Procedure;
    UINT Style;
    int ExtraBytes;
    HCURSOR Cursor;
    ATOM Atom;
};

class WindowObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Window;

    WindowObject() : UserObject(OwnKind) {}

    HWND Handle = nullptr;
    DWORD Thread = 0;  // the one that made it and runs its procedure; 0: the desktop
    std::shared_ptr<const WindowClass> Class;
    HINSTANCE Instance = nullptr;
    WNDPROC Procedure = nullptr;

    DWORD Style = 0;
    DWORD ExStyle = 0;
    LONG_PTR Id = 0;
    LONG_PTR UserData = 0;
    std::vector<BYTE> Extra;  // the class's extra bytes
    std::u16string Text;

    HWND Parent = nullptr;       // the desktop for a top-level window; null for the desktop
    HWND Owner = nullptr;        // of a top-level window
    std::vector<HWND> Children;  // front to back

    RECT Frame{};  // in the client area of the parent
    bool Destroying = false;

    std::unique_ptr<DialogState> Dialog;

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

// The top-level window that the window is or lies in; null when there is no such window.
HWND TopLevelLocked(HWND window);
HWND TopLevelOf(HWND window);  // the same, taking the lock
bool IsChildLocked(HWND parent, HWND window);

// Whether a handle is another process's, alive or not.
bool IsForeignWindow(HWND window);

// Whether the calling thread made the window.
bool IsOwnWindow(HWND window);

// How wide the frame of a window of these styles is at each side of its client area.
RECT FrameInsets(DWORD style, DWORD exStyle);

// Where a window's frame and its client area begin on the screen; {0, 0} for null.
POINT FrameOriginLocked(HWND window);
POINT ClientOriginLocked(HWND window);

// The class of that name or atom as this module sees it (null: the program). Null, with
// ERROR_CANNOT_FIND_WND_CLASS as the last error, when there is none.
std::shared_ptr<const WindowClass> FindClass(LPCWSTR name, HINSTANCE module);

// Removes the windows of a thread that ends. They get no message.
void DestroyWindowsOfThread(DWORD thread);

}  // namespace platform
