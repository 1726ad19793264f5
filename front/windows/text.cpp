#include "front/windows/text.h"

#include <windows.h>

namespace front {

std::wstring Wide(std::string_view utf8) {
    std::wstring wide(utf8.size(), L'\0');
    const auto size = static_cast<int>(utf8.size());
    wide.resize(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size)));
    return wide;
}

std::string Utf8(std::wstring_view wide) {
    constexpr size_t MostBytes = 3;  // for one of the system's characters
    std::string utf8(wide.size() * MostBytes, '\0');
    utf8.resize(static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, wide.data(),
                                                        static_cast<int>(wide.size()), utf8.data(),
                                                        static_cast<int>(utf8.size()), nullptr, nullptr)));
    return utf8;
}

void TellDebugger(const std::string& line) {
    OutputDebugStringA(("winmm: " + line + "\n").c_str());
}

}  // namespace front
