// The button: push button, check box, radio button, group box.
#include "platform/controls/control.h"
#include "platform/controls/control_classes.h"

namespace platform {

namespace {

class Button final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    DWORD Type() const { return Style() & BS_TYPEMASK; }

    LRESULT DialogCode() const;
    void Click();
    void SetCheck(WPARAM check);
    void CheckAloneInGroup();

    WPARAM check_ = BST_UNCHECKED;
};

LRESULT Button::DialogCode() const {
    switch (Type()) {
    case BS_PUSHBUTTON:
        return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    case BS_DEFPUSHBUTTON:
        return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    case BS_AUTORADIOBUTTON:
        return DLGC_BUTTON | DLGC_RADIOBUTTON;
    case BS_GROUPBOX:
        return DLGC_STATIC;
    default:
        return DLGC_BUTTON;
    }
}

// A click takes the focus, whoever makes it.
void Button::Click() {
    SetFocus(Window());
    if (Type() == BS_AUTOCHECKBOX) {
        SetCheck(check_ == BST_UNCHECKED ? BST_CHECKED : BST_UNCHECKED);
    } else if (Type() == BS_AUTORADIOBUTTON) {
        CheckAloneInGroup();
    }
    Command(BN_CLICKED);
}

void Button::SetCheck(WPARAM check) {
    check_ = check;
    if (Type() == BS_AUTORADIOBUTTON) {
        // The tab key enters a group at the button that is checked.
        const DWORD style = check_ == BST_CHECKED ? Style() | WS_TABSTOP : Style() & ~DWORD{WS_TABSTOP};
        SetWindowLongPtrW(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
    }
}

void Button::CheckAloneInGroup() {
    const HWND parent = GetParent(Window());
    HWND sibling = Window();
    do {
        const bool isRadioButton = (SendMessageW(sibling, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
        if (sibling != Window() && isRadioButton) {
            SendMessageW(sibling, BM_SETCHECK, BST_UNCHECKED, 0);
        }
        sibling = GetNextDlgGroupItem(parent, sibling, FALSE);
    } while (sibling && sibling != Window());
    SetCheck(BST_CHECKED);
}

LRESULT Button::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DialogCode();
    case WM_KEYUP:
        if (first == VK_SPACE) {
            Click();
        }
        return 0;
    case BM_CLICK:
        Click();
        return 0;
    case BM_GETCHECK:
        return static_cast<LRESULT>(check_);
    case BM_SETCHECK:
        SetCheck(first);
        return 0;
    default:
        return Default(message, first, second);
    }
}

}  // namespace

WNDPROC ButtonProcedure() {
    return ControlProcedure<Button>;
}

}  // namespace platform
