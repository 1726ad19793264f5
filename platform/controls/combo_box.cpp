// The combo box that is a drop-down list. Its list is never open: the keys choose in it.
#include <algorithm>
#include <vector>

#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

class ComboBox final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    int Count() const { return static_cast<int>(entries_.size()); }
    bool Has(WPARAM index) const { return index < entries_.size(); }

    LRESULT TellText(WPARAM index, LPWSTR target) const;
    void Choose(int index);
    void Key(WPARAM key);

    std::vector<std::u16string> entries_;
    int selected_ = CB_ERR;
};

LRESULT ComboBox::TellText(WPARAM index, LPWSTR target) const {
    return Has(index) ? CopyText(entries_[index], target, entries_[index].size() + 1) : CB_ERR;
}

// A choice of the user's, of which the parent is notified.
void ComboBox::Choose(int index) {
    const int chosen = std::clamp(index, 0, Count() - 1);
    if (chosen != selected_) {
        selected_ = chosen;
        Command(CBN_SELCHANGE);
    }
}

void ComboBox::Key(WPARAM key) {
    switch (key) {
    case VK_UP:
        Choose(selected_ - 1);
        break;
    case VK_DOWN:
        Choose(selected_ + 1);
        break;
    case VK_HOME:
        Choose(0);
        break;
    case VK_END:
        Choose(Count() - 1);
        break;
    default:
        break;
    }
}

LRESULT ComboBox::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_KEYDOWN:
        Key(first);
        return 0;
    case CB_ADDSTRING:
        entries_.emplace_back(reinterpret_cast<LPCWSTR>(second));
        return Count() - 1;
    case CB_RESETCONTENT:
        entries_.clear();
        selected_ = CB_ERR;
        return 0;
    case CB_GETCOUNT:
        return Count();
    case CB_SETCURSEL:
        selected_ = Has(first) ? static_cast<int>(first) : CB_ERR;
        return selected_;
    case CB_GETCURSEL:
        return selected_;
    case CB_GETLBTEXT:
        return TellText(first, reinterpret_cast<LPWSTR>(second));
    case CB_GETLBTEXTLEN:
        return Has(first) ? static_cast<LRESULT>(entries_[first].size()) : CB_ERR;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC ComboBoxProcedure() {
    return ControlProcedure<ComboBox>;
}

}  // namespace platform
