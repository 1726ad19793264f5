// The edit control of one line.
#include <algorithm>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr size_t InitialLimit = 30000;
constexpr size_t NoLimit = 0x7FFFFFFE;
constexpr WPARAM Backspace = 8;
constexpr WPARAM FirstPrintable = 32;

class Edit final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    bool IsReadOnly() const { return (Style() & ES_READONLY) != 0; }
    size_t SelectionStart() const { return std::min(anchor_, caret_); }
    size_t SelectionEnd() const { return std::max(anchor_, caret_); }

    void SetText(LPCWSTR text);
    void SetLimit(WPARAM limit) { limit_ = limit == 0 ? NoLimit : limit; }
    void SetReadOnly(bool readOnly);
    void Select(LONG_PTR start, LONG_PTR end);
    LRESULT TellSelection(DWORD* start, DWORD* end) const;
    void ReplaceSelection(std::u16string_view text);
    void Erase(size_t from, size_t to);
    void Type(WPARAM character);
    void Key(WPARAM key);
    void MoveCaret(size_t place, bool extend);
    void TellChange() const;

    std::u16string text_;
    size_t limit_ = InitialLimit;  // for what the user types or a program inserts, not for WM_SETTEXT
    size_t anchor_ = 0;            // the selection lies between these two
    size_t caret_ = 0;
};

void Edit::TellChange() const {
    Command(EN_UPDATE);
    Command(EN_CHANGE);
}

void Edit::SetText(LPCWSTR text) {
    text_ = text ? text : TEXT("");
    anchor_ = caret_ = 0;
    TellChange();
}

void Edit::SetReadOnly(bool readOnly) {
    const DWORD style = readOnly ? Style() | ES_READONLY : Style() & ~DWORD{ES_READONLY};
    SetWindowLongPtrW(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
}

void Edit::Select(LONG_PTR start, LONG_PTR end) {
    if (start < 0) {
        anchor_ = caret_;
        return;
    }
    const auto within = [this](LONG_PTR place) {
        return place < 0 ? text_.size() : std::min(static_cast<size_t>(place), text_.size());
    };
    anchor_ = within(start);
    caret_ = within(end);
}

LRESULT Edit::TellSelection(DWORD* start, DWORD* end) const {
    const auto from = static_cast<DWORD>(SelectionStart());
    const auto to = static_cast<DWORD>(SelectionEnd());
    if (start) {
        *start = from;
    }
    if (end) {
        *end = to;
    }
    return MAKELONG(from, to);
}

void Edit::ReplaceSelection(std::u16string_view text) {
    const size_t selected = SelectionEnd() - SelectionStart();
    const size_t kept = text_.size() - selected;
    const size_t room = limit_ > kept ? limit_ - kept : 0;
    if (text.size() > room) {
        text = text.substr(0, room);
        Command(EN_MAXTEXT);
    }
    if (text.empty() && selected == 0) {
        return;
    }
    text_.replace(SelectionStart(), selected, text);
    anchor_ = caret_ = SelectionStart() + text.size();
    TellChange();
}

void Edit::Erase(size_t from, size_t to) {
    if (anchor_ == caret_) {
        anchor_ = from;
        caret_ = to;
    }
    ReplaceSelection({});
}

void Edit::Type(WPARAM character) {
    if (IsReadOnly()) {
        return;
    }
    if (character == Backspace) {
        Erase(caret_ > 0 ? caret_ - 1 : 0, caret_);
    } else if (character >= FirstPrintable) {
        const auto letter = static_cast<WCHAR>(character);
        ReplaceSelection({&letter, 1});
    }
}

void Edit::MoveCaret(size_t place, bool extend) {
    caret_ = place;
    if (!extend) {
        anchor_ = place;
    }
}

void Edit::Key(WPARAM key) {
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    switch (key) {
    case VK_LEFT:
        MoveCaret(caret_ > 0 ? caret_ - 1 : 0, shift);
        break;
    case VK_RIGHT:
        MoveCaret(std::min(caret_ + 1, text_.size()), shift);
        break;
    case VK_HOME:
        MoveCaret(0, shift);
        break;
    case VK_END:
        MoveCaret(text_.size(), shift);
        break;
    case VK_DELETE:
        if (!IsReadOnly()) {
            Erase(caret_, std::min(caret_ + 1, text_.size()));
        }
        break;
    default:
        break;
    }
}

LRESULT Edit::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_CREATE: {
        const LPCWSTR text = reinterpret_cast<const CREATESTRUCTW*>(second)->lpszName;
        text_ = text ? text : TEXT("");
        return 0;
    }
    case WM_GETDLGCODE:
        return DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
    case WM_SETTEXT:
        SetText(reinterpret_cast<LPCWSTR>(second));
        return TRUE;
    case WM_GETTEXT:
        return CopyText(text_, reinterpret_cast<LPWSTR>(second), first);
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(text_.size());
    case WM_CHAR:
        Type(first);
        return 0;
    case WM_KEYDOWN:
        Key(first);
        return 0;
    case WM_LBUTTONDOWN:
        SetFocus(Window());
        MoveCaret(std::min<size_t>(LOWORD(second) / CharacterWidth, text_.size()), false);
        return 0;
    case WM_SETFOCUS:
        Command(EN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        Command(EN_KILLFOCUS);
        return 0;
    case EM_SETLIMITTEXT:
        SetLimit(first);
        return 0;
    case EM_GETLIMITTEXT:
        return static_cast<LRESULT>(limit_);
    case EM_SETREADONLY:
        SetReadOnly(first != FALSE);
        return TRUE;
    case EM_SETSEL:
        Select(static_cast<LONG_PTR>(first), second);
        return TRUE;
    case EM_GETSEL:
        return TellSelection(reinterpret_cast<DWORD*>(first), reinterpret_cast<DWORD*>(second));
    case EM_REPLACESEL:
        ReplaceSelection(reinterpret_cast<LPCWSTR>(second));
        return 0;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC EditProcedure() {
    return ControlProcedure<Edit>;
}

}  // namespace platform
