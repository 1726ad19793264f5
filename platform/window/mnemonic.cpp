#include "platform/window/mnemonic.h"

#include "platform/text/case.h"

namespace platform {

bool IsMnemonicOf(std::u16string_view text, WCHAR letter) {
    constexpr WCHAR Mark = u'&';
    for (size_t i = 0; i + 1 < text.size(); ++i) {
        if (text[i] != Mark) {
            continue;
        }
        if (text[i + 1] != Mark) {
            return FoldCase(text[i + 1]) == FoldCase(letter);
        }
        ++i;  // a doubled mark is one to be seen
    }
    return false;
}

}  // namespace platform
