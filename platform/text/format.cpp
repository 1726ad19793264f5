// wsprintfW: the system's own small formatter, which knows no floating point and writes at most 1024
// characters, the terminator among them.
#include <windows.h>

#include <algorithm>
#include <cstdarg>
#include <cstddef>

namespace {

constexpr size_t Limit = 1024;

// Fills the caller's buffer up to the limit and drops what is too much.
class Output {
public:
    explicit Output(LPWSTR buffer) : buffer_(buffer) {}

    void Put(WCHAR character) {
        if (length_ < Limit - 1) {
            buffer_[length_++] = character;
        }
    }
    void Fill(WCHAR character, size_t count) {
        for (; count > 0; --count) {
            Put(character);
        }
    }
    int Finish() {
        buffer_[length_] = 0;
        return static_cast<int>(length_);
    }

private:
    LPWSTR buffer_;
    size_t length_ = 0;
};

// One conversion: %[-][#][0][width][.precision][h|l|w]type
struct Field {
    bool Left = false;
    bool Prefix = false;
    bool ZeroFill = false;
    size_t Width = 0;
    bool HasPrecision = false;
    size_t Precision = 0;
    WCHAR Size = 0;
    WCHAR Type = 0;

    // The argument is text of 8-bit characters. Without a size, a capital type means "the other kind".
    bool IsNarrow() const {
        if (Size) {
            return Size == u'h';
        }
        return Type == u'S' || Type == u'C';
    }
};

size_t ParseNumber(LPCWSTR* format) {
    size_t number = 0;
    for (; **format >= u'0' && **format <= u'9'; ++*format) {
        number = std::min<size_t>(number * 10 + static_cast<size_t>(**format - u'0'), Limit);
    }
    return number;
}

// `*format` stands behind the per cent sign, and afterwards behind the type.
Field ParseField(LPCWSTR* format) {
    Field field;
    for (;; ++*format) {
        if (**format == u'-') {
            field.Left = true;
        } else if (**format == u'#') {
            field.Prefix = true;
        } else if (**format == u'0') {
            field.ZeroFill = true;
        } else {
            break;
        }
    }
    field.Width = ParseNumber(format);
    if (**format == u'.') {
        ++*format;
        field.HasPrecision = true;
        field.Precision = ParseNumber(format);
    }
    if (**format == u'h' || **format == u'l' || **format == u'w') {
        field.Size = *(*format)++;
    }
    if (**format) {
        field.Type = *(*format)++;
    }
    return field;
}

// `Character` is char for 8-bit text, whose bytes are taken as Latin-1.
template <typename Character>
void WriteText(Output& output, const Field& field, const Character* text, size_t length) {
    if (field.HasPrecision) {
        length = std::min(length, field.Precision);
    }
    const size_t padding = field.Width > length ? field.Width - length : 0;
    if (!field.Left) {
        output.Fill(field.ZeroFill ? u'0' : u' ', padding);
    }
    for (size_t i = 0; i < length; ++i) {
        if constexpr (sizeof(Character) == 1) {
            output.Put(static_cast<unsigned char>(text[i]));
        } else {
            output.Put(text[i]);
        }
    }
    if (field.Left) {
        output.Fill(u' ', padding);
    }
}

template <typename Character>
void WriteString(Output& output, const Field& field, const Character* text) {
    if (!text) {
        return WriteText(output, field, "(null)", 6);
    }
    // With a precision the text may have no terminator, so it is not looked at beyond that.
    size_t length = 0;
    while ((!field.HasPrecision || length < field.Precision) && text[length]) {
        ++length;
    }
    WriteText(output, field, text, length);
}

void WriteInteger(Output& output, const Field& field, ULONG_PTR value, bool negative) {
    const bool hexadecimal = field.Type == u'x' || field.Type == u'X' || field.Type == u'p';
    const char* digits = field.Type == u'x' ? "0123456789abcdef" : "0123456789ABCDEF";
    const ULONG_PTR base = hexadecimal ? 16 : 10;

    char reversed[24];
    size_t count = 0;
    do {
        reversed[count++] = digits[value % base];
        value /= base;
    } while (value != 0);

    const bool prefix = field.Prefix && hexadecimal;
    const size_t sign = negative ? 1 : 0;
    size_t zeros = field.Precision > count ? field.Precision - count : 0;
    const size_t length = sign + (prefix ? 2 : 0) + zeros + count;
    size_t padding = field.Width > length ? field.Width - length : 0;
    if (field.ZeroFill && !field.Left) {
        zeros += padding;
        padding = 0;
    }

    if (!field.Left) {
        output.Fill(u' ', padding);
    }
    output.Fill(u'-', sign);
    if (prefix) {
        output.Put(u'0');
        output.Put(field.Type == u'x' ? u'x' : u'X');
    }
    output.Fill(u'0', zeros);
    while (count > 0) {
        output.Put(static_cast<WCHAR>(reversed[--count]));
    }
    if (field.Left) {
        output.Fill(u' ', padding);
    }
}

void WriteSigned(Output& output, const Field& field, int value) {
    const unsigned magnitude = static_cast<unsigned>(value);
    WriteInteger(output, field, value < 0 ? 0u - magnitude : magnitude, value < 0);
}

}  // namespace

int WINAPI wvsprintfW(LPWSTR buffer, LPCWSTR format, va_list arguments) {
    Output output(buffer);
    while (*format) {
        if (*format != u'%') {
            output.Put(*format++);
            continue;
        }
        ++format;
        Field field = ParseField(&format);
        switch (field.Type) {
        case u's':
        case u'S':
            if (field.IsNarrow()) {
                WriteString(output, field, va_arg(arguments, const char*));
            } else {
                WriteString(output, field, va_arg(arguments, const WCHAR*));
            }
            break;
        case u'c':
        case u'C': {
            const int argument = va_arg(arguments, int);
            const WCHAR character =
                field.IsNarrow() ? static_cast<unsigned char>(argument) : static_cast<WCHAR>(argument);
            WriteText(output, field, &character, 1);
            break;
        }
        case u'd':
        case u'i': {
            const int argument = va_arg(arguments, int);
            WriteSigned(output, field, field.Size == u'h' ? static_cast<short>(argument) : argument);
            break;
        }
        case u'u':
        case u'x':
        case u'X': {
            const unsigned argument = va_arg(arguments, unsigned);
            WriteInteger(output, field, field.Size == u'h' ? static_cast<unsigned short>(argument) : argument,
                         false);
            break;
        }
        case u'p':
            field.Precision = 2 * sizeof(void*);
            WriteInteger(output, field, reinterpret_cast<ULONG_PTR>(va_arg(arguments, void*)), false);
            break;
        case 0:
            break;
        default:  // a doubled per cent sign, and whatever is no conversion
            output.Put(field.Type);
        }
    }
    return output.Finish();
}

int wsprintfW(LPWSTR buffer, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = wvsprintfW(buffer, format, arguments);
    va_end(arguments);
    return length;
}
