// Mouse position and keys. There is no mouse and no keyboard: the position is where SetCursorPos put it,
// and keys are down when SetKeyboardState says so.
#include <atomic>
#include <cstring>

#include "platform/window/gui_thread.h"

namespace platform {

namespace {

std::atomic<POINT> cursorPosition{POINT{0, 0}};

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
    const bool down = (CurrentGuiThread().Keys[static_cast<BYTE>(key)] & 0x80) != 0;
    return static_cast<SHORT>(down ? 0xFF80 : 0);
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
