#include "platform/window/dialog/property_sheet.h"

#include <windows.h>
#include <commctrl.h>

#include <algorithm>

#include "platform/window/dialog/dialog.h"

namespace platform {

namespace {

// Of the sheet's own controls.
constexpr int TabControl = 0x3020;
constexpr int ApplyButton = 0x3021;

// Sizes in pixels.
constexpr int Margin = 7;
constexpr int ButtonWidth = 75;
constexpr int ButtonHeight = 23;

// Its parts are placed once the tabs are known.
DialogTemplate SheetTemplate(const std::u16string& caption) {
    constexpr DWORD Shown = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
    return {WS_POPUP,
            {},
            caption,
            {{Shown | BS_DEFPUSHBUTTON | WS_GROUP, {}, IDOK, u"Button", u"OK"},
             {Shown, {}, IDCANCEL, u"Button", u"Cancel"},
             {Shown | WS_DISABLED, {}, ApplyButton, u"Button", u"&Apply"},
             {Shown, {}, IDHELP, u"Button", u"Help"},
             {Shown | WS_GROUP | TCS_MULTILINE, {}, TabControl, WC_TABCONTROLW, u""}}};
}

}  // namespace

PropertySheetDialog::PropertySheetDialog(const PROPSHEETHEADERW& header) : caption_(header.pszCaption) {
    for (UINT i = 0; i < header.nPages; ++i) {
        pages_.push_back({header.phpage[i], FindUserObject<PropertyPage>(header.phpage[i])});
    }
}

PropertySheetDialog::~PropertySheetDialog() {
    for (const SheetPage& page : pages_) {
        DestroyPropertySheetPage(page.Handle);
    }
}

HWND PropertySheetDialog::Tabs() const {
    return GetDlgItem(window_, TabControl);
}

INT_PTR PropertySheetDialog::Run() {
    const HWND window =
        CreateDialogFrom(SheetTemplate(caption_), nullptr, Procedure, reinterpret_cast<LPARAM>(this));
    if (!window) {
        return -1;
    }
    ShowWindow(window, SW_SHOW);
    MSG message;
    while (!over_ && GetMessageW(&message, nullptr, 0, 0)) {
        HandleDialogMessage(window, message);
    }
    DestroyWindow(window);
    return result_;
}

INT_PTR CALLBACK PropertySheetDialog::Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, static_cast<int>(DWLP_USER), second);
        reinterpret_cast<PropertySheetDialog*>(second)->Open(window);
        return FALSE;
    }
    auto* const sheet =
        reinterpret_cast<PropertySheetDialog*>(GetWindowLongPtrW(window, static_cast<int>(DWLP_USER)));
    return sheet ? sheet->Handle(message, first, second) : FALSE;
}

void PropertySheetDialog::Open(HWND window) {
    window_ = window;
    for (const SheetPage& page : pages_) {
        std::u16string title = page.Page->Title();
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = title.data();
        SendMessageW(Tabs(), TCM_INSERTITEMW, pages_.size(), reinterpret_cast<LPARAM>(&item));
    }
    LayOut();
    Turn(0);
}

// What the tabs take around a page that begins at {0, 0}.
RECT PropertySheetDialog::TabsArea() const {
    RECT area = pages_.front().Page->Area();  // all are of one size
    SendMessageW(Tabs(), TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&area));
    return area;
}

void PropertySheetDialog::LayOut() {
    const RECT tabs = TabsArea();
    const int right = Margin + tabs.right - tabs.left;
    const int bottom = Margin + tabs.bottom - tabs.top;
    SetWindowPos(Tabs(), nullptr, Margin, Margin, right - Margin, bottom - Margin, SWP_NOZORDER);
    int x = right + Margin;
    for (const int button : {IDHELP, ApplyButton, IDCANCEL, IDOK}) {
        x -= ButtonWidth + Margin;
        SetWindowPos(GetDlgItem(window_, button), nullptr, x, bottom + Margin, ButtonWidth, ButtonHeight,
                     SWP_NOZORDER);
    }
    SetWindowPos(window_, nullptr, 0, 0, right + Margin, bottom + Margin + ButtonHeight + Margin,
                 SWP_NOZORDER);
}

// The page's answer, as it set it with DWLP_MSGRESULT.
LRESULT PropertySheetDialog::Notify(const SheetPage& page, UINT code, LPARAM parameter) const {
    PSHNOTIFY notification = {{window_, 0, code}, parameter};
    return SendMessageW(page.Window, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
}

// False when the page cannot be made.
bool PropertySheetDialog::Turn(size_t index) {
    SheetPage& page = pages_[index];
    if (!page.Window) {
        page.Window = page.Page->Create(window_);
        // In front of the buttons, so that the tab key comes to its controls first.
        const RECT tabs = TabsArea();
        SetWindowPos(page.Window, HWND_TOP, Margin - tabs.left, Margin - tabs.top, 0, 0, SWP_NOSIZE);
    }
    if (page.Window) {
        Notify(page, PSN_SETACTIVE);
        Show(index);
    }
    return page.Window != nullptr;
}

void PropertySheetDialog::Show(size_t index) {
    const HWND before = pages_[active_].Window;
    const HWND page = pages_[index].Window;
    active_ = index;
    SendMessageW(Tabs(), TCM_SETCURSEL, index, 0);
    ShowWindow(page, SW_SHOW);
    if (before != page) {
        ShowWindow(before, SW_HIDE);
    }
    // A tab that was chosen keeps the focus; else it is the page's.
    if (GetFocus() != Tabs()) {
        FocusControl(GetNextDlgTabItem(page, nullptr, FALSE));
    }
}

INT_PTR PropertySheetDialog::Answer(LRESULT answer) {
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, answer);
    return TRUE;
}

INT_PTR PropertySheetDialog::HandleTabs(UINT notification) {
    if (notification == TCN_SELCHANGING) {
        return Answer(MayLeave() ? FALSE : TRUE);
    }
    if (notification == TCN_SELCHANGE &&
        !Turn(static_cast<size_t>(SendMessageW(Tabs(), TCM_GETCURSEL, 0, 0)))) {
        SendMessageW(Tabs(), TCM_SETCURSEL, active_, 0);
    }
    return FALSE;
}

INT_PTR PropertySheetDialog::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_COMMAND:
        Press(LOWORD(first));
        return TRUE;
    case WM_NOTIFY:
        return HandleTabs(reinterpret_cast<const NMHDR*>(second)->code);
    case PSM_CHANGED:
        SetChanged(reinterpret_cast<HWND>(first));
        return TRUE;
    case PSM_SETCURSEL:
        return Answer(first < pages_.size() && MayLeave() && Turn(first) ? TRUE : FALSE);
    case PSM_PRESSBUTTON: {
        static constexpr int Buttons[] = {0, 0, 0, IDOK, ApplyButton, IDCANCEL, IDHELP};
        Press(Buttons[first]);
        return TRUE;
    }
    case PSM_RESTARTWINDOWS:
        restart_ = true;
        return TRUE;
    case PSM_QUERYSIBLINGS:
        return Answer(AskSiblings(first, second));
    case PSM_GETTABCONTROL:
        return Answer(reinterpret_cast<LRESULT>(Tabs()));
    case PSM_GETCURRENTPAGEHWND:
        return Answer(over_ ? 0 : reinterpret_cast<LRESULT>(pages_[active_].Window));
    default:
        return FALSE;
    }
}

LRESULT PropertySheetDialog::AskSiblings(WPARAM first, LPARAM second) const {
    for (const SheetPage& page : pages_) {
        if (const LRESULT answer = SendMessageW(page.Window, PSM_QUERYSIBLINGS, first, second)) {
            return answer;
        }
    }
    return 0;
}

void PropertySheetDialog::EnableApply(bool enable) const {
    EnableWindow(GetDlgItem(window_, ApplyButton), enable ? TRUE : FALSE);
}

// A page whose dialog is still being made has not been changed by anyone yet.
void PropertySheetDialog::SetChanged(HWND window) {
    for (const SheetPage& page : pages_) {
        if (page.Window == window) {
            EnableApply(true);
        }
    }
}

void PropertySheetDialog::Press(int button) {
    switch (button) {
    case IDOK:
        if (Apply(true)) {
            Finish(restart_ ? ID_PSRESTARTWINDOWS : 1);
        }
        break;
    case IDCANCEL:
        Cancel();
        break;
    case ApplyButton:
        Apply(false);
        break;
    case IDHELP:
        Notify(pages_[active_], PSN_HELP);
        break;
    default:
        break;
    }
}

// First the active page is asked whether it may be left, then every page that has been shown is told to
// apply. The first refusal ends it.
bool PropertySheetDialog::Apply(bool closes) {
    if (!MayLeave()) {
        return false;
    }
    for (const SheetPage& page : pages_) {
        if (page.Window && Notify(page, PSN_APPLY, closes ? TRUE : FALSE) != PSNRET_NOERROR) {
            return false;
        }
    }
    saved_ = true;
    EnableApply(false);
    if (!closes) {
        Notify(pages_[active_], PSN_SETACTIVE);
    }
    return true;
}

void PropertySheetDialog::Cancel() {
    if (Notify(pages_[active_], PSN_QUERYCANCEL) != FALSE) {
        return;
    }
    for (const SheetPage& page : pages_) {
        if (page.Window) {
            Notify(page, PSN_RESET);
        }
    }
    Finish(saved_ ? 1 : 0);
}

void PropertySheetDialog::Finish(INT_PTR result) {
    result_ = result;
    over_ = true;
    PostMessageW(window_, WM_NULL, 0, 0);
}

}  // namespace platform

INT_PTR WINAPI PropertySheetW(LPCPROPSHEETHEADERW header) {
    return platform::PropertySheetDialog(*header).Run();
}
