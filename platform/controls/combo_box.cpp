// The combo box that is a drop-down list. Its list is not a window of its own: the keys choose in it.
#include <algorithm>
#include <vector>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"
#include "platform/text/case.h"

namespace platform {

namespace {

constexpr int PageLines = 5;
constexpr WPARAM FirstPrintable = 32;

class ComboBox final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    int Count() const { return static_cast<int>(entries_.size()); }
    bool Has(WPARAM index) const { return index < entries_.size(); }
    std::u16string_view SelectedText() const;

    int Add(LPCWSTR text);
    void Reset();
    LRESULT Select(WPARAM index);
    LRESULT TellText(WPARAM index, LPWSTR target) const;
    void Drop(bool show);
    void Choose(int index);
    void CloseUp(bool take);
    void Key(WPARAM key, bool alt);
    void ChooseByLetter(WCHAR letter);
    void Click();
    LRESULT DialogCode(const MSG* message) const;

    std::vector<std::u16string> entries_;
    int selected_ = CB_ERR;
    bool dropped_ = false;
};

std::u16string_view ComboBox::SelectedText() const {
    return selected_ == CB_ERR ? std::u16string_view() : entries_[static_cast<size_t>(selected_)];
}

int ComboBox::Add(LPCWSTR text) {
    entries_.emplace_back(text);
    return Count() - 1;
}

void ComboBox::Reset() {
    entries_.clear();
    selected_ = CB_ERR;
}

LRESULT ComboBox::Select(WPARAM index) {
    selected_ = Has(index) ? static_cast<int>(index) : CB_ERR;
    return selected_;
}

LRESULT ComboBox::TellText(WPARAM index, LPWSTR target) const {
    if (!Has(index)) {
        return CB_ERR;
    }
    return CopyText(entries_[index], target, entries_[index].size() + 1);
}

void ComboBox::Drop(bool show) {
    if (show == dropped_) {
        return;
    }
    if (!show) {
        CloseUp(true);
        return;
    }
    dropped_ = true;
    Command(CBN_DROPDOWN);
}

void ComboBox::CloseUp(bool take) {
    dropped_ = false;
    Command(take ? CBN_SELENDOK : CBN_SELENDCANCEL);
    Command(CBN_CLOSEUP);
}

// A choice of the user's, of which the parent is notified.
void ComboBox::Choose(int index) {
    if (index < 0 || index >= Count() || index == selected_) {
        return;
    }
    selected_ = index;
    if (!dropped_) {
        Command(CBN_SELENDOK);
    }
    Command(CBN_SELCHANGE);
}

void ComboBox::Key(WPARAM key, bool alt) {
    switch (key) {
    case VK_F4:
        Drop(!dropped_);
        break;
    case VK_UP:
    case VK_DOWN:
        if (alt) {
            Drop(!dropped_);
        } else {
            Choose(std::clamp(selected_ + (key == VK_UP ? -1 : 1), 0, Count() - 1));
        }
        break;
    case VK_PRIOR:
        Choose(std::max(selected_ - PageLines, 0));
        break;
    case VK_NEXT:
        Choose(std::min(selected_ + PageLines, Count() - 1));
        break;
    case VK_HOME:
        Choose(0);
        break;
    case VK_END:
        Choose(Count() - 1);
        break;
    case VK_RETURN:
    case VK_ESCAPE:
        if (dropped_) {
            CloseUp(key == VK_RETURN);
        }
        break;
    default:
        break;
    }
}

void ComboBox::ChooseByLetter(WCHAR letter) {
    for (int step = 1; step <= Count(); ++step) {
        const int index = (selected_ + step) % Count();
        const std::u16string& entry = entries_[static_cast<size_t>(index)];
        if (!entry.empty() && FoldCase(entry.front()) == FoldCase(letter)) {
            Choose(index);
            return;
        }
    }
}

void ComboBox::Click() {
    SetFocus(Window());
    Drop(!dropped_);
}

LRESULT ComboBox::DialogCode(const MSG* message) const {
    const LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
    // An open list takes the keys that would end the dialog.
    const bool endsList = dropped_ && message && message->message == WM_KEYDOWN &&
                          (message->wParam == VK_RETURN || message->wParam == VK_ESCAPE);
    return endsList ? code | DLGC_WANTMESSAGE : code;
}

LRESULT ComboBox::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DialogCode(reinterpret_cast<const MSG*>(second));
    case WM_GETTEXT:
        return CopyText(SelectedText(), reinterpret_cast<LPWSTR>(second), first);
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(SelectedText().size());
    case WM_SETTEXT:
        return CB_ERR;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        Click();
        return 0;
    case WM_KEYDOWN:
        Key(first, false);
        return 0;
    case WM_SYSKEYDOWN:
        Key(first, true);
        return 0;
    case WM_CHAR:
        if (first >= FirstPrintable) {
            ChooseByLetter(static_cast<WCHAR>(first));
        }
        return 0;
    case WM_SETFOCUS:
        Command(CBN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        Drop(false);
        Command(CBN_KILLFOCUS);
        return 0;
    case CB_ADDSTRING:
        return Add(reinterpret_cast<LPCWSTR>(second));
    case CB_RESETCONTENT:
        Reset();
        return CB_OKAY;
    case CB_GETCOUNT:
        return Count();
    case CB_SETCURSEL:
        return Select(first);
    case CB_GETCURSEL:
        return selected_;
    case CB_GETLBTEXT:
        return TellText(first, reinterpret_cast<LPWSTR>(second));
    case CB_GETLBTEXTLEN:
        return Has(first) ? static_cast<LRESULT>(entries_[first].size()) : CB_ERR;
    case CB_SHOWDROPDOWN:
        Drop(first != FALSE);
        return TRUE;
    case CB_GETDROPPEDSTATE:
        return dropped_;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC ComboBoxProcedure() {
    return ControlProcedure<ComboBox>;
}

}  // namespace platform
