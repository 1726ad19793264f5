#include "platform/text/case.h"

#include <algorithm>

namespace platform {

char16_t FoldCase(char16_t letter) {
    const bool ascii = letter >= u'a' && letter <= u'z';
    // In Latin-1 the two rows of letters lie 0x20 apart too, around the division sign.
    const bool latin = letter >= 0xE0 && letter <= 0xFE && letter != 0xF7;
    return static_cast<char16_t>(ascii || latin ? letter - 0x20 : letter);
}

int CompareIgnoringCase(std::u16string_view left, std::u16string_view right) {
    const size_t common = std::min(left.size(), right.size());
    for (size_t i = 0; i < common; ++i) {
        const int difference = FoldCase(left[i]) - FoldCase(right[i]);
        if (difference != 0) {
            return difference;
        }
    }
    if (left.size() == right.size()) {
        return 0;
    }
    return left.size() < right.size() ? -1 : 1;
}

}  // namespace platform
