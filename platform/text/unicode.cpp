#include "platform/text/unicode.h"

#include <cstdint>

namespace platform {

namespace {

constexpr char32_t Replacement = 0xFFFD;

bool IsSurrogate(char32_t code) {
    return code >= 0xD800 && code <= 0xDFFF;
}

// The code point at `*position`, which moves behind it, or by one byte over a malformed one.
char32_t TakeUtf8(std::string_view text, size_t* position) {
    const auto lead = static_cast<uint8_t>(text[(*position)++]);
    if (lead < 0x80) {
        return lead;
    }
    const size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    if (more == 0 || *position + more > text.size()) {
        return Replacement;
    }
    char32_t code = lead & (0x3Fu >> more);
    for (size_t i = 0; i < more; ++i) {
        const auto next = static_cast<uint8_t>(text[*position + i]);
        if ((next & 0xC0) != 0x80) {
            return Replacement;
        }
        code = code << 6 | (next & 0x3Fu);
    }
    constexpr char32_t Smallest[] = {0, 0x80, 0x800, 0x10000};
    if (code < Smallest[more] || code > 0x10FFFF || IsSurrogate(code)) {
        return Replacement;
    }
    *position += more;
    return code;
}

char32_t TakeUtf16(std::u16string_view text, size_t* position) {
    const char32_t first = text[(*position)++];
    if (!IsSurrogate(first)) {
        return first;
    }
    const char32_t second = *position < text.size() ? text[*position] : 0;
    if (first >= 0xDC00 || second < 0xDC00 || second > 0xDFFF) {
        return Replacement;
    }
    ++*position;
    return 0x10000 + ((first & 0x3FF) << 10 | (second & 0x3FF));
}

}  // namespace

std::u16string ToUtf16(std::string_view text) {
    std::u16string result;
    for (size_t position = 0; position < text.size();) {
        const char32_t code = TakeUtf8(text, &position);
        if (code < 0x10000) {
            result += static_cast<char16_t>(code);
            continue;
        }
        result += static_cast<char16_t>(0xD800 | (code - 0x10000) >> 10);
        result += static_cast<char16_t>(0xDC00 | (code & 0x3FF));
    }
    return result;
}

std::string ToUtf8(std::u16string_view text) {
    std::string result;
    for (size_t position = 0; position < text.size();) {
        const char32_t code = TakeUtf16(text, &position);
        if (code < 0x80) {
            result += static_cast<char>(code);
            continue;
        }
        const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        result += static_cast<char>(0xFF00u >> (more + 1) | code >> 6 * more);
        for (int i = more - 1; i >= 0; --i) {
            result += static_cast<char>(0x80u | (code >> 6 * i & 0x3Fu));
        }
    }
    return result;
}

}  // namespace platform
