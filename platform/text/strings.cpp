// The system's string calls over UTF-16. A null string is an empty one to the lengths and the
// comparisons, and makes the copies fail, as in the system.
#include <windows.h>

#include <algorithm>
#include <string_view>

#include "platform/text/case.h"

namespace {

std::u16string_view View(LPCWSTR text) {
    return text ? std::u16string_view(text) : std::u16string_view();
}

}  // namespace

int WINAPI lstrlenW(LPCWSTR text) {
    return static_cast<int>(View(text).size());
}

LPWSTR WINAPI lstrcpyW(LPWSTR target, LPCWSTR source) {
    if (!target || !source) {
        return nullptr;
    }
    // The terminator comes along; the two may overlap.
    std::char_traits<WCHAR>::move(target, source, View(source).size() + 1);
    return target;
}

LPWSTR WINAPI lstrcpynW(LPWSTR target, LPCWSTR source, int size) {
    if (!target || !source) {
        return nullptr;
    }
    if (size <= 0) {
        return target;
    }
    size_t length = 0;
    while (length + 1 < static_cast<size_t>(size) && source[length]) {
        ++length;
    }
    std::char_traits<WCHAR>::move(target, source, length);
    target[length] = 0;
    return target;
}

LPWSTR WINAPI lstrcatW(LPWSTR target, LPCWSTR source) {
    if (!target || !source) {
        return nullptr;
    }
    lstrcpyW(target + View(target).size(), source);
    return target;
}

int WINAPI lstrcmpiW(LPCWSTR left, LPCWSTR right) {
    return platform::CompareIgnoringCase(View(left), View(right));
}

int WINAPI lstrcmpW(LPCWSTR left, LPCWSTR right) {
    // Dictionary order: case decides only between words that are otherwise the same, small first.
    const int folded = lstrcmpiW(left, right);
    return folded != 0 ? folded : -View(left).compare(View(right));
}
