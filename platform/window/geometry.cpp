// Rectangles and points, of windows and on the screen. Nothing is drawn, but everything has its place. A
// window has no frame: it is its client area.
#include "platform/window/window_object.h"

namespace platform {

namespace {

// Where the window's upper left corner lies on the screen. REQUIRES: the desktop lock is held.
POINT OriginLocked(const WindowObject* window) {
    POINT origin{};
    for (; window && window->Parent; window = FindWindowLocked(window->Parent)) {
        origin = {origin.x + window->Frame.left, origin.y + window->Frame.top};
    }
    return origin;
}

BOOL Shift(HWND window, LPPOINT point, LONG sign) {
    const LockedWindow found(window);
    if (!found) {
        return FALSE;
    }
    const POINT origin = OriginLocked(&*found);
    *point = {point->x + sign * origin.x, point->y + sign * origin.y};
    return TRUE;
}

}  // namespace

}  // namespace platform

using namespace platform;

BOOL WINAPI GetWindowRect(HWND window, LPRECT frame) {
    POINT origin{};
    if (!GetClientRect(window, frame) || !ClientToScreen(window, &origin)) {
        return FALSE;
    }
    *frame = {origin.x, origin.y, origin.x + frame->right, origin.y + frame->bottom};
    return TRUE;
}

BOOL WINAPI GetClientRect(HWND window, LPRECT client) {
    const LockedWindow found(window);
    if (!found) {
        return FALSE;
    }
    *client = {0, 0, found->Frame.right - found->Frame.left, found->Frame.bottom - found->Frame.top};
    return TRUE;
}

BOOL WINAPI ClientToScreen(HWND window, LPPOINT point) {
    return Shift(window, point, 1);
}

BOOL WINAPI ScreenToClient(HWND window, LPPOINT point) {
    return Shift(window, point, -1);
}

// `to` is null, the screen.
int WINAPI MapWindowPoints(HWND from, HWND, LPPOINT points, UINT count) {
    for (UINT i = 0; i < count; ++i) {
        ClientToScreen(from, &points[i]);
    }
    return static_cast<int>(count);
}

BOOL WINAPI PtInRect(const RECT* area, POINT point) {
    return point.x >= area->left && point.x < area->right && point.y >= area->top && point.y < area->bottom;
}

BOOL WINAPI InvalidateRect(HWND window, const RECT*, BOOL) {
    return IsWindow(window);
}

BOOL WINAPI UpdateWindow(HWND window) {
    return IsWindow(window);
}
