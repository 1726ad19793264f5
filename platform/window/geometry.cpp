// Rectangles and points, of windows and on the screen. Nothing is drawn, but everything has its place.
#include <algorithm>

#include "platform/window/window_object.h"

namespace platform {

namespace {

// The system's sizes, in pixels.
constexpr LONG Border = 1;
constexpr LONG Edge = 2;
constexpr LONG DialogFrame = 3;
constexpr LONG SizeFrame = 4;
constexpr LONG CaptionHeight = 18;
constexpr LONG ScrollBar = 16;
constexpr LONG DragDistance = 4;

POINT ScreenOrigin(HWND window) {
    const std::lock_guard hold(DesktopLock());
    return ClientOriginLocked(window);
}

bool Contains(const RECT& area, POINT point) {
    return point.x >= area.left && point.x < area.right && point.y >= area.top && point.y < area.bottom;
}

RECT FrameOnScreenLocked(const WindowObject& window) {
    const POINT origin = FrameOriginLocked(window.Handle);
    return {origin.x, origin.y, origin.x + window.Frame.right - window.Frame.left,
            origin.y + window.Frame.bottom - window.Frame.top};
}

}  // namespace

RECT FrameInsets(DWORD style, DWORD exStyle) {
    LONG width = 0;
    if ((style & WS_THICKFRAME) != 0) {
        width = SizeFrame;
    } else if ((style & WS_DLGFRAME) != 0 || (exStyle & WS_EX_DLGMODALFRAME) != 0) {
        width = DialogFrame;
    } else if ((style & WS_BORDER) != 0) {
        width = Border;
    }
    if ((exStyle & WS_EX_CLIENTEDGE) != 0) {
        width += Edge;
    }
    const bool captioned = (style & WS_CAPTION) == WS_CAPTION;
    return {width, width + (captioned ? CaptionHeight + Border : 0), width, width};
}

}  // namespace platform

using namespace platform;

BOOL WINAPI GetWindowRect(HWND window, LPRECT frame) {
    const LockedWindow found(window);
    if (!found) {
        return FALSE;
    }
    *frame = FrameOnScreenLocked(*found);
    return TRUE;
}

BOOL WINAPI GetClientRect(HWND window, LPRECT client) {
    const LockedWindow found(window);
    if (!found) {
        return FALSE;
    }
    const RECT insets = found->Parent ? FrameInsets(found->Style, found->ExStyle) : RECT{};
    const LONG width = found->Frame.right - found->Frame.left - insets.left - insets.right;
    const LONG height = found->Frame.bottom - found->Frame.top - insets.top - insets.bottom;
    *client = {0, 0, std::max<LONG>(width, 0), std::max<LONG>(height, 0)};
    return TRUE;
}

int WINAPI MapWindowPoints(HWND from, HWND to, LPPOINT points, UINT count) {
    if ((from && !IsWindow(from)) || (to && !IsWindow(to))) {
        return 0;
    }
    const POINT origin = ScreenOrigin(from);
    const POINT target = ScreenOrigin(to);
    const POINT shift = {origin.x - target.x, origin.y - target.y};
    for (UINT i = 0; i < count; ++i) {
        points[i].x += shift.x;
        points[i].y += shift.y;
    }
    return MAKELONG(shift.x, shift.y);
}

BOOL WINAPI ClientToScreen(HWND window, LPPOINT point) {
    if (!IsWindow(window)) {
        return FALSE;
    }
    MapWindowPoints(window, nullptr, point, 1);
    return TRUE;
}

BOOL WINAPI ScreenToClient(HWND window, LPPOINT point) {
    if (!IsWindow(window)) {
        return FALSE;
    }
    MapWindowPoints(nullptr, window, point, 1);
    return TRUE;
}

BOOL WINAPI AdjustWindowRectEx(LPRECT area, DWORD style, BOOL, DWORD exStyle) {
    const RECT insets = FrameInsets(style, exStyle);
    area->left -= insets.left;
    area->top -= insets.top;
    area->right += insets.right;
    area->bottom += insets.bottom;
    return TRUE;
}

BOOL WINAPI PtInRect(const RECT* area, POINT point) {
    return Contains(*area, point) ? TRUE : FALSE;
}

BOOL WINAPI OffsetRect(LPRECT area, int x, int y) {
    *area = {area->left + x, area->top + y, area->right + x, area->bottom + y};
    return TRUE;
}

BOOL WINAPI InvalidateRect(HWND window, const RECT*, BOOL) {
    return !window || IsWindow(window) ? TRUE : FALSE;
}

BOOL WINAPI UpdateWindow(HWND window) {
    return IsWindow(window);
}

int WINAPI GetSystemMetrics(int which) {
    RECT screen;
    GetWindowRect(GetDesktopWindow(), &screen);
    switch (which) {
    case SM_CXSCREEN:
        return screen.right;
    case SM_CYSCREEN:
        return screen.bottom;
    case SM_CXVSCROLL:
    case SM_CYHSCROLL:
        return ScrollBar;
    case SM_CYCAPTION:
        return CaptionHeight + Border;
    case SM_CXBORDER:
    case SM_CYBORDER:
        return Border;
    case SM_CXDLGFRAME:
    case SM_CYDLGFRAME:
        return DialogFrame;
    case SM_CXFRAME:
    case SM_CYFRAME:
        return SizeFrame;
    case SM_CXEDGE:
    case SM_CYEDGE:
        return Edge;
    case SM_CXDRAG:
    case SM_CYDRAG:
        return DragDistance;
    default:
        return 0;
    }
}
