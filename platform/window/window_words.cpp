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
    case GWL_EXSTYLE:
        return exchange(window.ExStyle);
    case GWLP_ID:
        return exchange(window.Id);
    case GWLP_USERDATA:
        return exchange(window.UserData);
    case GWLP_WNDPROC:
        return exchange(window.Procedure);
    case GWLP_HINSTANCE:
        return exchange(window.Instance);
    case GWLP_HWNDPARENT:
        return exchange(window.IsChild() ? window.Parent : window.Owner);
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

// WM_STYLECHANGING lets the window change the new style; WM_STYLECHANGED tells it what has been set.
LONG_PTR SetStyle(HWND window, int index, DWORD style) {
    STYLESTRUCT change = {static_cast<DWORD>(GetWindowLongPtrW(window, index)), style};
    const auto which = static_cast<WPARAM>(static_cast<LONG_PTR>(index));
    SendMessageW(window, WM_STYLECHANGING, which, reinterpret_cast<LPARAM>(&change));
    const auto value = static_cast<LONG_PTR>(change.styleNew);
    const LONG_PTR before = Word(window, index, &value);
    SendMessageW(window, WM_STYLECHANGED, which, reinterpret_cast<LPARAM>(&change));
    return before;
}

}  // namespace

}  // namespace platform

using namespace platform;

LONG_PTR WINAPI GetWindowLongPtrW(HWND window, int index) {
    return Word(window, index, nullptr);
}

LONG_PTR WINAPI SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    if (index == GWL_STYLE || index == GWL_EXSTYLE) {
        return SetStyle(window, index, static_cast<DWORD>(value));
    }
    return Word(window, index, &value);
}

int WINAPI GetWindowTextW(HWND window, LPWSTR buffer, int size) {
    if (!buffer || size <= 0) {
        return 0;
    }
    buffer[0] = 0;
    return static_cast<int>(
        SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(size), reinterpret_cast<LPARAM>(buffer)));
}

int WINAPI GetWindowTextLengthW(HWND window) {
    return static_cast<int>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL WINAPI SetWindowTextW(HWND window, LPCWSTR text) {
    if (!IsWindow(window)) {
        return FALSE;
    }
    return SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) != 0 ? TRUE : FALSE;
}
