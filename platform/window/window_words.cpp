// What a window stores: its words (GetWindowLongPtrW) and its text.
#include <algorithm>
#include <cstring>

#include "platform/window/window_object.h"

namespace platform {

namespace {

// Reads, and writes when `value` is given, one word of the window. False when it has no such word.
bool ExchangeWord(WindowObject& window, int index, const LONG_PTR* value, LONG_PTR* before) {
    const auto exchange = [value, before](auto& word) {
        using Word = std::remove_reference_t<decltype(word)>;
        *before = (LONG_PTR)word;
        if (value) {
            word = (Word)*value;
        }
        return true;
    };
    switch (index) {
    case GWL_STYLE:
        return exchange(window.Style);
    case GWLP_ID:
        return exchange(window.Id);
    case GWLP_USERDATA:
        return exchange(window.UserData);
    case GWLP_WNDPROC:
        return exchange(window.Procedure);
    default:
        break;
    }
    if (index < 0 || static_cast<size_t>(index) + sizeof *before > window.Extra.size()) {
        return false;
    }
    std::memcpy(before, &window.Extra[static_cast<size_t>(index)], sizeof *before);
    if (value) {
        std::memcpy(&window.Extra[static_cast<size_t>(index)], value, sizeof *value);
    }
    return true;
}

LONG_PTR Word(HWND window, int index, const LONG_PTR* value) {
    const LockedWindow found(window);
    LONG_PTR before = 0;
    if (found && !ExchangeWord(*found, index, value, &before)) {
        SetLastError(ERROR_INVALID_INDEX);
    }
    return before;
}

}  // namespace

}  // namespace platform

using namespace platform;

LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index) {
    return Word(window, index, nullptr);
}

LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    return Word(window, index, &value);
}

int WINAPI GetWindowTextW(HWND window, LPWSTR buffer, int size) {
    buffer[0] = 0;
    return static_cast<int>(
        SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(buffer)));
}

BOOL WINAPI SetWindowTextW(HWND window, LPCWSTR text) {
    if (!IsWindow(window)) {
        return FALSE;
    }
    return SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0 ? TRUE : FALSE;
}
