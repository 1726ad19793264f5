#include "platform/window/dialog/dialog_template.h"

#include <cstdint>
#include <cstring>

namespace platform {

namespace {

constexpr WORD ExtendedVersion = 1;
constexpr WORD ExtendedSignature = 0xFFFF;
constexpr WORD NumberMark = 0xFFFF;
constexpr WORD FirstClassNumber = 0x80;

// Reads the template's fields one after the other. A read beyond the end gives zeros, and IsGood is false
// from then on.
class Reader {
public:
    Reader(const void* data, size_t size) : data_(static_cast<const BYTE*>(data)), size_(size) {}

    template <typename T>
    T Take() {
        T value{};
        if (position_ > size_ || size_ - position_ < sizeof value) {
            good_ = false;
            position_ = size_;
            return value;
        }
        std::memcpy(&value, data_ + position_, sizeof value);
        position_ += sizeof value;
        return value;
    }

    std::u16string TakeText() {
        std::u16string text;
        for (auto letter = Take<char16_t>(); letter != 0; letter = Take<char16_t>()) {
            text += letter;
        }
        return text;
    }

    // A text, or a number after its mark.
    TemplateName TakeName() {
        const size_t begin = position_;
        if (Take<WORD>() == NumberMark) {
            return {Take<WORD>(), {}};
        }
        position_ = begin;
        return {0, TakeText()};
    }

    std::vector<BYTE> TakeBytes(size_t count) {
        std::vector<BYTE> bytes;
        for (size_t i = 0; i < count && good_; ++i) {
            bytes.push_back(Take<BYTE>());
        }
        return bytes;
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
    bool IsGood() const { return good_ && position_ <= size_; }

private:
    const BYTE* const data_;
    const size_t size_;
    size_t position_ = 0;
    bool good_ = true;
};

TemplateControl TakeControl(Reader& reader, bool extended) {
    TemplateControl control{};
    if (extended) {
        reader.Take<DWORD>();  // help context
        control.ExStyle = reader.Take<DWORD>();
        control.Style = reader.Take<DWORD>();
    } else {
        control.Style = reader.Take<DWORD>();
        control.ExStyle = reader.Take<DWORD>();
    }
    control.Place = reader.TakePlace();
    control.Id = extended ? reader.Take<DWORD>() : reader.Take<WORD>();
    control.Class = reader.TakeName();
    control.Text = reader.TakeName();
    control.Data = reader.TakeBytes(reader.Take<WORD>());
    return control;
}

void TakeFont(Reader& reader, bool extended, DialogTemplate* dialog) {
    dialog->FontHeight = reader.Take<WORD>();
    if (extended) {
        reader.Take<WORD>();  // weight
        reader.Take<BYTE>();  // italic
        reader.Take<BYTE>();  // character set
    }
    dialog->FontFace = reader.TakeText();
}

bool IsExtended(const void* data, size_t size) {
    Reader reader(data, size);
    return reader.Take<WORD>() == ExtendedVersion && reader.Take<WORD>() == ExtendedSignature;
}

}  // namespace

std::u16string TemplateControl::ClassName() const {
    static constexpr const char16_t* ByNumber[] = {u"Button",  u"Edit",      u"Static",
                                                   u"ListBox", u"ScrollBar", u"ComboBox"};
    if (!Class.IsNumber()) {
        return Class.Text;
    }
    const size_t index = static_cast<size_t>(Class.Number) - FirstClassNumber;
    return index < std::size(ByNumber) ? ByNumber[index] : u"";
}

std::optional<DialogTemplate> ReadDialogTemplate(const void* data, size_t size) {
    const bool extended = IsExtended(data, size);
    Reader reader(data, size);
    DialogTemplate dialog{};
    if (extended) {
        reader.Take<DWORD>();  // version and signature
        reader.Take<DWORD>();  // help context
        dialog.ExStyle = reader.Take<DWORD>();
        dialog.Style = reader.Take<DWORD>();
    } else {
        dialog.Style = reader.Take<DWORD>();
        dialog.ExStyle = reader.Take<DWORD>();
    }
    const WORD controls = reader.Take<WORD>();
    dialog.Place = reader.TakePlace();
    dialog.Menu = reader.TakeName();
    dialog.Class = reader.TakeName();
    dialog.Title = reader.TakeText();
    if ((dialog.Style & DS_SETFONT) != 0) {
        TakeFont(reader, extended, &dialog);
    }
    for (WORD i = 0; i < controls && reader.IsGood(); ++i) {
        reader.Align();
        dialog.Controls.push_back(TakeControl(reader, extended));
    }
    return reader.IsGood() ? std::optional(std::move(dialog)) : std::nullopt;
}

}  // namespace platform
