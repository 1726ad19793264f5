// The edit control of one line: typing replaces what is selected, or adds at the end of it.
#include <algorithm>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr WPARAM Backspace = 8;

class Edit final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    void SetText(LPCWSTR text);
    void Select(LPARAM end);
    void Type(WPARAM character);

    std::u16string text_;
    size_t limit_ = SIZE_MAX;  // for what the user types, not for WM_SETTEXT
    size_t selectionStart_ = 0;
    size_t selectionEnd_ = 0;  // the caret
};

void Edit::SetText(LPCWSTR text) {
    text_ = text;
    selectionStart_ = selectionEnd_ = 0;
    Command(EN_CHANGE);
}

// From the first character, up to `end`; -1 is the end of the text.
void Edit::Select(LPARAM end) {
    selectionStart_ = 0;
    selectionEnd_ = end < 0 ? text_.size() : std::min(static_cast<size_t>(end), text_.size());
}

void Edit::Type(WPARAM character) {
    if ((Style() & ES_READONLY) != 0) {
        return;
    }
    if (character == Backspace && selectionStart_ == selectionEnd_ && selectionStart_ > 0) {
        --selectionStart_;
    }
    text_.erase(selectionStart_, selectionEnd_ - selectionStart_);
    if (character != Backspace && text_.size() < limit_) {
        text_.insert(selectionStart_++, 1, static_cast<WCHAR>(character));
    }
    selectionEnd_ = selectionStart_;
    Command(EN_CHANGE);
}

LRESULT Edit::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_CREATE:
        text_ = reinterpret_cast<const CREATESTRUCTW*>(second)->lpszName;
        return 0;
    case WM_GETDLGCODE:
        return DLGC_HASSETSEL | DLGC_WANTARROWS;
    case WM_SETTEXT:
        SetText(reinterpret_cast<LPCWSTR>(second));
        return TRUE;
    case WM_GETTEXT:
        return CopyText(text_, reinterpret_cast<LPWSTR>(second), first);
    case WM_CHAR:
        Type(first);
        return 0;
    case WM_KILLFOCUS:
        Command(EN_KILLFOCUS);
        return 0;
    case EM_LIMITTEXT:
        limit_ = first;
        return 0;
    case EM_SETSEL:
        Select(second);
        return TRUE;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC EditProcedure() {
    return ControlProcedure<Edit>;
}

}  // namespace platform
