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
    bool IsRadioButton() const { return Type() == BS_RADIOBUTTON || Type() == BS_AUTORADIOBUTTON; }
    bool IsCheckBox() const { return Type() == BS_CHECKBOX || Type() == BS_AUTOCHECKBOX; }

    LRESULT DialogCode() const;
    void Press();
    void Release(bool inside);
    void Click();
    void ClickBySystem();
    void SetCheck(WPARAM check);
    void SetType(DWORD type);
    void CheckAloneInGroup();

    WPARAM check_ = BST_UNCHECKED;
    bool pressed_ = false;
};

LRESULT Button::DialogCode() const {
    switch (Type()) {
    case BS_PUSHBUTTON:
        return DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON;
    case BS_DEFPUSHBUTTON:
        return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    case BS_RADIOBUTTON:
    case BS_AUTORADIOBUTTON:
        return DLGC_BUTTON | DLGC_RADIOBUTTON;
    case BS_GROUPBOX:
        return DLGC_STATIC;
    default:
        return DLGC_BUTTON;
    }
}

void Button::Press() {
    SetCapture(Window());
    SetFocus(Window());
    pressed_ = true;
}

void Button::Release(bool inside) {
    if (!pressed_) {
        return;
    }
    pressed_ = false;
    if (GetCapture() == Window()) {
        ReleaseCapture();
    }
    if (inside) {
        Click();
    }
}

void Button::Click() {
    if (Type() == BS_GROUPBOX) {
        return;
    }
    if (Type() == BS_AUTOCHECKBOX) {
        SetCheck(check_ == BST_UNCHECKED ? BST_CHECKED : BST_UNCHECKED);
    } else if (Type() == BS_AUTORADIOBUTTON) {
        CheckAloneInGroup();
    }
    Command(BN_CLICKED);
}

// BM_CLICK goes through the same messages as a click of the mouse.
void Button::ClickBySystem() {
    SendMessageW(Window(), WM_LBUTTONDOWN, MK_LBUTTON, 0);
    SendMessageW(Window(), WM_LBUTTONUP, 0, 0);
}

void Button::SetCheck(WPARAM check) {
    if (!IsCheckBox() && !IsRadioButton()) {
        return;
    }
    check_ = check == BST_UNCHECKED ? BST_UNCHECKED : BST_CHECKED;
    if (IsRadioButton()) {
        // The tab key enters a group at the button that is checked.
        const DWORD style = check_ == BST_CHECKED ? Style() | WS_TABSTOP : Style() & ~DWORD{WS_TABSTOP};
        SetWindowLongPtrW(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
    }
}

void Button::SetType(DWORD type) {
    const DWORD style = (Style() & ~DWORD{BS_TYPEMASK}) | (type & BS_TYPEMASK);
    SetWindowLongPtrW(Window(), GWL_STYLE, static_cast<LONG_PTR>(style));
}

void Button::CheckAloneInGroup() {
    const HWND parent = GetParent(Window());
    HWND sibling = Window();
    do {
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(sibling, GWL_STYLE));
        const bool isRadioButton = (SendMessageW(sibling, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
        if (sibling != Window() && isRadioButton && (style & BS_TYPEMASK) == BS_AUTORADIOBUTTON) {
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
    case WM_NCHITTEST:
        return Type() == BS_GROUPBOX ? HTTRANSPARENT : Default(message, first, second);
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        Press();
        return 0;
    case WM_LBUTTONUP: {
        const RECT area = ClientArea();
        Release(PtInRect(&area, PointOf(second)) != FALSE);
        return 0;
    }
    case WM_KEYDOWN:
        pressed_ = pressed_ || first == VK_SPACE;
        return 0;
    case WM_KEYUP:
        Release(first == VK_SPACE);
        return 0;
    case WM_CAPTURECHANGED:
    case WM_KILLFOCUS:
        pressed_ = false;
        return 0;
    case BM_CLICK:
        ClickBySystem();
        return 0;
    case BM_GETCHECK:
        return static_cast<LRESULT>(check_);
    case BM_SETCHECK:
        SetCheck(first);
        return 0;
    case BM_GETSTATE:
        return static_cast<LRESULT>(check_) | (pressed_ ? BST_PUSHED : 0) | (HasFocus() ? BST_FOCUS : 0);
    case BM_SETSTATE:
        pressed_ = first != FALSE;
        return 0;
    case BM_SETSTYLE:
        SetType(static_cast<DWORD>(first));
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
