#include "tools/system/wide_text.h"

#include <cstdint>

namespace kestvox {
namespace {

constexpr char32_t Replacement = 0xFFFD;

// Takes one code point off the front of `text`.
char32_t TakeUtf8(std::string_view& text) {
    const auto lead = static_cast<uint8_t>(text.front());
    text.remove_prefix(1);
    if (lead < 0x80) {
        return lead;
    }
    const unsigned trailing = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    static constexpr char32_t Smallest[] = {0, 0x80, 0x800, 0x10000};
    if (lead < 0xC2 || lead > 0xF4) {
        return Replacement;
    }
    char32_t code = lead & (0x3Fu >> trailing);
    for (unsigned i = 0; i < trailing; ++i) {
        if (text.empty() || (static_cast<uint8_t>(text.front()) & 0xC0) != 0x80) {
            return Replacement;
        }
        code = code << 6 | (static_cast<uint8_t>(text.front()) & 0x3F);
        text.remove_prefix(1);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < Smallest[trailing] || code > 0x10FFFF || surrogate ? Replacement : code;
}

char32_t TakeUtf16(std::basic_string_view<WCHAR>& text) {
    const char32_t first = static_cast<char16_t>(text.front());
    text.remove_prefix(1);
    if (first < 0xD800 || first > 0xDFFF) {
        return first;
    }
    const char32_t second = text.empty() ? 0 : static_cast<char16_t>(text.front());
    if (first > 0xDBFF || second < 0xDC00 || second > 0xDFFF) {
        return Replacement;
    }
    text.remove_prefix(1);
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

}  // namespace

WideText Widen(std::string_view text) {
    WideText wide;
    while (!text.empty()) {
        const char32_t code = TakeUtf8(text);
        if (code < 0x10000) {
            wide += static_cast<WCHAR>(code);
        } else {
            wide += static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
            wide += static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
    }
    return wide;
}

std::string Narrow(std::basic_string_view<WCHAR> text) {
    std::string narrow;
    while (!text.empty()) {
        const char32_t code = TakeUtf16(text);
        if (code < 0x80) {
            narrow += static_cast<char>(code);
            continue;
        }
        const unsigned trailing = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        static constexpr unsigned Leads[] = {0, 0xC0, 0xE0, 0xF0};
        narrow += static_cast<char>(Leads[trailing] | code >> (6 * trailing));
        for (unsigned i = trailing; i-- > 0;) {
            narrow += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
        }
    }
    return narrow;
}

}  // namespace kestvox
