// Letters without regard to case, for the names that the system compares that way: registry keys and
// values, modules. Knows Latin-1; other letters equal only themselves.
#pragma once

#include <string_view>

namespace platform {

char16_t FoldCase(char16_t letter);

// Less than, equal to or greater than 0, as the folded texts compare.
int CompareIgnoringCase(std::u16string_view left, std::u16string_view right);

}  // namespace platform
