// The page before anything is said on it. The build puts page.html, its style, its script and the library
// that draws charts into one text.
#pragma once

#include <string_view>

namespace kestvox {

extern const std::string_view PageTemplate;

}  // namespace kestvox
