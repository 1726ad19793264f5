#include "platform/window/dialog/dialog_template.h"

#include <cstring>

namespace platform {

namespace {

constexpr WORD NumberMark = 0xFFFF;
constexpr WORD FirstClassNumber = 0x80;

// Reads the template's fields one after the other. A read beyond the end gives zeros, and IsGood is false
// from then on.
class Reader {
public:
    Reader(const BYTE* data, size_t size) : data_(data), size_(size) {}

    template <typename T>
    T Take() {
        T value{};
        good_ = good_ && position_ + sizeof value <= size_;
        if (good_) {
            std::memcpy(&value, data_ + position_, sizeof value);
            position_ += sizeof value;
        }
        return value;
    }

    // A text; a number keeps its mark.
    std::u16string TakeText() {
        std::u16string text;
        for (auto letter = Take<char16_t>(); letter != 0; letter = Take<char16_t>()) {
            text += letter;
            if (letter == NumberMark) {
                return text + Take<char16_t>();
            }
        }
        return text;
    }

    RECT TakePlace() {
        RECT place;
        place.left = Take<SHORT>();
        place.top = Take<SHORT>();
        place.right = Take<SHORT>();
        place.bottom = Take<SHORT>();
        return place;
    }

    void Align() { position_ = (position_ + 3) & ~size_t{3}; }
    bool IsGood() const { return good_; }

private:
    const BYTE* const data_;
    const size_t size_;
    size_t position_ = 0;
    bool good_ = true;
};

// The classes of user32 have numbers.
std::u16string TakeClassName(Reader& reader) {
    static constexpr const char16_t* ByNumber[] = {u"Button",  u"Edit",      u"Static",
                                                   u"ListBox", u"ScrollBar", u"ComboBox"};
    const std::u16string name = reader.TakeText();
    if (name.size() != 2 || name[0] != NumberMark) {
        return name;
    }
    const size_t index = static_cast<size_t>(name[1]) - FirstClassNumber;
    return index < std::size(ByNumber) ? ByNumber[index] : u"";
}

TemplateControl TakeControl(Reader& reader) {
    TemplateControl control{};
    control.Style = reader.Take<DWORD>();
    reader.Take<DWORD>();  // extended style
    control.Place = reader.TakePlace();
    control.Id = reader.Take<WORD>();
    control.ClassName = TakeClassName(reader);
    control.Text = reader.TakeText();
    reader.Take<WORD>();  // the length of data for the control: none
    return control;
}

}  // namespace

std::optional<DialogTemplate> ReadDialogTemplate(const BYTE* data, size_t size) {
    Reader reader(data, size);
    DialogTemplate dialog{};
    dialog.Style = reader.Take<DWORD>();
    reader.Take<DWORD>();  // extended style
    const WORD controls = reader.Take<WORD>();
    dialog.Place = reader.TakePlace();
    reader.TakeText();  // menu
    reader.TakeText();  // class
    dialog.Title = reader.TakeText();
    if ((dialog.Style & DS_SETFONT) != 0) {
        reader.Take<WORD>();  // points
        reader.TakeText();    // typeface
    }
    for (WORD i = 0; i < controls && reader.IsGood(); ++i) {
        reader.Align();
        dialog.Controls.push_back(TakeControl(reader));
    }
    return reader.IsGood() ? std::optional(std::move(dialog)) : std::nullopt;
}

}  // namespace platform
