// wsprintfW: the system's own small formatter, which writes at most 1024 characters, the terminator among
// them. Known are %[0][width][l]u, %s, and %hc for an 8-bit character.
#include <windows.h>

#include <cstdarg>
#include <string>
#include <string_view>

namespace {

constexpr size_t Limit = 1024;

std::u16string Digits(unsigned value) {
    std::u16string digits;
    do {
        digits.insert(digits.begin(), static_cast<WCHAR>(u'0' + value % 10));
        value /= 10;
    } while (value != 0);
    return digits;
}

}  // namespace

int wsprintfW(LPWSTR buffer, LPCWSTR format, ...) {
    std::u16string text;
    va_list arguments;
    va_start(arguments, format);
    while (*format) {
        if (*format != u'%') {
            text += *format++;
            continue;
        }
        const WCHAR fill = *++format == u'0' ? u'0' : u' ';
        size_t width = 0;
        for (; *format >= u'0' && *format <= u'9'; ++format) {
            width = width * 10 + static_cast<size_t>(*format - u'0');
        }
        format += *format == u'h' || *format == u'l' ? 1 : 0;
        std::u16string field;
        switch (*format++) {
        case u's':
            field = va_arg(arguments, const WCHAR*);
            break;
        case u'c':
            field = static_cast<unsigned char>(va_arg(arguments, int));
            break;
        default:
            field = Digits(va_arg(arguments, unsigned));
        }
        text.append(width > field.size() ? width - field.size() : 0, fill).append(field);
    }
    va_end(arguments);
    lstrcpynW(buffer, text.c_str(), Limit);
    return lstrlenW(buffer);
}
