// A dialog's template in memory, of the extended kind.
#pragma once

#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

namespace window_test {

class TemplateBytes {
public:
    // Place and size in dialog units, {x, y, width, height}.
    TemplateBytes(DWORD style, const std::u16string& title, const RECT& place) {
        Append({WORD{1}, WORD{0xFFFF}});
        Append({DWORD{0}, DWORD{0}, style});
        Append({WORD{0}});  // the number of controls
        AppendPlace(place);
        Append({WORD{0}, WORD{0}});  // no menu, the usual class
        Append(title);
        if ((style & DS_SETFONT) != 0) {
            Append({WORD{8}, WORD{FW_NORMAL}, WORD{DEFAULT_CHARSET << 8}});
            Append(u"MS Shell Dlg");
        }
    }

    void Add(WORD classNumber, DWORD id, const std::u16string& text, DWORD style, const RECT& place) {
        bytes_.resize((bytes_.size() + 3) / 4 * 4);
        Append({DWORD{0}, DWORD{0}, style});
        AppendPlace(place);
        Append({id});
        Append({WORD{0xFFFF}, classNumber});
        Append(text);
        Append({WORD{0}});
        ++bytes_[Count];
    }

    LPCDLGTEMPLATEW Get() const { return reinterpret_cast<LPCDLGTEMPLATEW>(bytes_.data()); }

private:
    static constexpr size_t Count = 16;  // where the number of controls lies

    template <typename Number>
    void Append(std::initializer_list<Number> numbers) {
        for (const Number number : numbers) {
            bytes_.resize(bytes_.size() + sizeof number);
            std::memcpy(&bytes_[bytes_.size() - sizeof number], &number, sizeof number);
        }
    }
    void Append(const std::u16string& text) {
        for (const char16_t letter : text) {
            Append({letter});
        }
        Append({WORD{0}});
    }
    void AppendPlace(const RECT& place) {
        Append({static_cast<WORD>(place.left), static_cast<WORD>(place.top), static_cast<WORD>(place.right),
                static_cast<WORD>(place.bottom)});
    }

    std::vector<BYTE> bytes_;
};

}  // namespace window_test
