// Text between the command line (UTF-8) and the Windows calls (UTF-16).
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

namespace kestvox {

using WideText = std::basic_string<WCHAR>;

// Bytes that are not UTF-8, and halves of surrogate pairs, become U+FFFD.
WideText Widen(std::string_view text);
std::string Narrow(std::basic_string_view<WCHAR> text);

}  // namespace kestvox
