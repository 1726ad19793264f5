// Mouse position and keys. There is no mouse and no keyboard: the position is where SetCursorPos put it,
// and keys are down when SetKeyboardState says so.
#include <atomic>
#include <cstring>

#include "platform/window/gui_thread.h"

namespace platform {

namespace {

std::atomic<POINT> cursorPosition{POINT{0, 0}};

constexpr BYTE Down = 0x80;

bool IsDown(const GuiThread& thread, int key) {
    return (thread.Keys[static_cast<size_t>(key)] & Down) != 0;
}

// The character of a key on an English keyboard; 0 when it has none.
WCHAR CharacterOf(const GuiThread& thread, WPARAM key) {
    const bool shifted = IsDown(thread, VK_SHIFT);
    if (key >= 'A' && key <= 'Z') {
        return static_cast<WCHAR>(shifted ? key : key - 'A' + 'a');
    }
    switch (key) {
    case VK_BACK:
    case VK_TAB:
    case VK_RETURN:
    case VK_ESCAPE:
    case VK_SPACE:
        return static_cast<WCHAR>(key);
    default:
        return key >= '0' && key <= '9' && !shifted ? static_cast<WCHAR>(key) : WCHAR{0};
    }
}

}  // namespace

}  // namespace platform

using namespace platform;

BOOL WINAPI GetCursorPos(LPPOINT position) {
    *position = cursorPosition.load();
    return TRUE;
}

BOOL WINAPI SetCursorPos(int x, int y) {
    cursorPosition.store({x, y});
    return TRUE;
}

SHORT WINAPI GetKeyState(int key) {
    const BYTE state = CurrentGuiThread().Keys[static_cast<BYTE>(key)];
    return static_cast<SHORT>(((state & Down) != 0 ? 0xFF80 : 0) | (state & 1));
}

BOOL WINAPI GetKeyboardState(BYTE* keys) {
    const auto& own = CurrentGuiThread().Keys;
    std::memcpy(keys, own.data(), own.size());
    return TRUE;
}

BOOL WINAPI SetKeyboardState(BYTE* keys) {
    auto& own = CurrentGuiThread().Keys;
    std::memcpy(own.data(), keys, own.size());
    return TRUE;
}

// TRUE for every key, as in the system.
BOOL WINAPI TranslateMessage(const MSG* message) {
    const bool system = message->message == WM_SYSKEYDOWN;
    if (message->message == WM_KEYDOWN || system) {
        const WCHAR character = CharacterOf(CurrentGuiThread(), message->wParam);
        if (character != 0) {
            PostMessageW(message->hwnd, system ? WM_SYSCHAR : WM_CHAR, character, message->lParam);
        }
        return TRUE;
    }
    return message->message == WM_KEYUP || message->message == WM_SYSKEYUP ? TRUE : FALSE;
}
