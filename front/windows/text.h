// The system's text and UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace front {

std::wstring Wide(std::string_view utf8);
std::string Utf8(std::wstring_view wide);

// One line for the debugger, under this library's name.
void TellDebugger(const std::string& line);

}  // namespace front
