// The system's UTF-16 texts and the library's.
#pragma once

#include <windows.h>

#include <string>

inline const WCHAR* Wide(const std::u16string& text) {
    return reinterpret_cast<const WCHAR*>(text.c_str());
}

inline std::u16string Utf16(const WCHAR* text) {
    return reinterpret_cast<const char16_t*>(text);
}
