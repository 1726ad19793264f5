#include "platform/window/input/input_focus.h"

#include "platform/window/gui_thread.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

bool LiesIn(HWND window, HWND parent) {
    return window && (window == parent || IsChild(parent, window));
}

// Moves the focus and tells both sides.
void MoveFocus(HWND window) {
    GuiThread& thread = CurrentGuiThread();
    const HWND before = thread.Focus;
    if (before == window) {
        return;
    }
    thread.Focus = window;
    if (before) {
        SendMessageW(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), 0);
    }
    // The one that lost it may have sent it elsewhere.
    if (window && thread.Focus == window) {
        SendMessageW(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
    }
}

}  // namespace

void Activate(HWND window) {
    if (!LiesIn(CurrentGuiThread().Focus, window)) {
        MoveFocus(window);
    }
}

void GiveUpFocus(HWND window) {
    if (LiesIn(GetFocus(), window)) {
        const LONG_PTR style = GetWindowLongPtrW(window, GWL_STYLE);
        MoveFocus((style & WS_CHILD) != 0 ? GetParent(window) : nullptr);
    }
}

void GiveUpInput(HWND window) {
    if (LiesIn(GetCapture(), window)) {
        ReleaseCapture();
    }
    if (LiesIn(GetFocus(), window)) {
        MoveFocus(nullptr);
    }
}

}  // namespace platform

using namespace platform;

HWND WINAPI SetFocus(HWND window) {
    const HWND before = GetFocus();
    MoveFocus(window);
    return before;
}

HWND WINAPI GetFocus() {
    return CurrentGuiThread().Focus;
}

HWND WINAPI SetCapture(HWND window) {
    GuiThread& thread = CurrentGuiThread();
    const HWND before = thread.Capture;
    thread.Capture = window;
    if (before) {
        SendMessageW(before, WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(window));
    }
    return before;
}

BOOL WINAPI ReleaseCapture() {
    SetCapture(nullptr);
    return TRUE;
}

HWND WINAPI GetCapture() {
    return CurrentGuiThread().Capture;
}
