#include "platform/window/dialog/property_sheet.h"

#include <windows.h>
#include <commctrl.h>

#include <algorithm>

#include "platform/loader/resources.h"
#include "platform/window/dialog/dialog.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// Sizes in pixels.
constexpr int Margin = 7;
constexpr int ButtonWidth = 75;
constexpr int ButtonHeight = 23;
constexpr int ButtonGap = 6;

TemplateControl Button(DWORD id, const char16_t* text, DWORD style) {
    return {style | WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, {}, id, {0, u"Button"}, {0, text}, {}};
}

// The sheet as a dialog; its controls are placed once the pages' sizes are known.
DialogTemplate SheetTemplate(const PROPSHEETHEADERW& header) {
    DialogTemplate sheet{};
    sheet.Style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_SETFONT | DS_CONTEXTHELP;
    sheet.FontHeight = 8;
    sheet.FontFace = u"MS Shell Dlg";
    sheet.Controls.push_back(Button(IDOK, u"OK", BS_DEFPUSHBUTTON | WS_GROUP));
    sheet.Controls.push_back(Button(IDCANCEL, u"Cancel", BS_PUSHBUTTON));
    if ((header.dwFlags & PSH_NOAPPLYNOW) == 0) {
        sheet.Controls.push_back(
            Button(PropertySheetDialog::ApplyButton, u"&Apply", BS_PUSHBUTTON | WS_DISABLED));
    }
    if ((header.dwFlags & PSH_HASHELP) != 0) {
        sheet.Controls.push_back(Button(IDHELP, u"Help", BS_PUSHBUTTON));
    }
    sheet.Controls.push_back({WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_GROUP | WS_CLIPSIBLINGS | TCS_MULTILINE,
                              0,
                              {},
                              PropertySheetDialog::TabControl,
                              {0, WC_TABCONTROLW},
                              {},
                              {}});
    return sheet;
}

std::u16string Caption(const PROPSHEETHEADERW& header) {
    if (!header.pszCaption) {
        return u"";
    }
    if (!IS_INTRESOURCE(header.pszCaption)) {
        return header.pszCaption;
    }
    WCHAR caption[256];
    LoadStringW(header.hInstance, ResourceNumber(header.pszCaption), caption, 256);
    return caption;
}

}  // namespace

PropertySheetDialog::PropertySheetDialog(const PROPSHEETHEADERW& header) : header_(header) {
    for (UINT i = 0; i < header.nPages; ++i) {
        const HPROPSHEETPAGE handle = (header.dwFlags & PSH_PROPSHEETPAGE) != 0
                                          ? CreatePropertySheetPageW(&header.ppsp[i])
                                          : header.phpage[i];
        if (auto page = FindUserObject<PropertyPage>(handle)) {
            pages_.push_back({handle, std::move(page)});
        }
    }
}

PropertySheetDialog::~PropertySheetDialog() {
    for (const SheetPage& page : pages_) {
        DestroyPropertySheetPage(page.Handle);
    }
}

INT_PTR PropertySheetDialog::Run() {
    if (pages_.empty()) {
        return -1;
    }
    InitCommonControls();
    const HWND owner = header_.hwndParent ? TopLevelOf(header_.hwndParent) : nullptr;
    DialogTemplate sheet = SheetTemplate(header_);
    sheet.Title = Caption(header_);
    const HWND window =
        CreateDialogFrom(header_.hInstance, sheet, owner, Procedure, reinterpret_cast<LPARAM>(this));
    if (!window) {
        return -1;
    }
    const bool disabled = owner && owner != DesktopWindow() && !EnableWindow(owner, FALSE);
    ShowWindow(window, SW_SHOW);
    RunModalLoop([this, window] { return over_ || !IsWindow(window); },
                 [this](MSG* message) { return TakesKey(message) || HandleDialogMessage(window_, message); });
    if (disabled) {
        EnableWindow(owner, TRUE);
    }
    DestroyWindow(window);
    return result_;
}

INT_PTR CALLBACK PropertySheetDialog::Procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, static_cast<int>(DWLP_USER), second);
        reinterpret_cast<PropertySheetDialog*>(second)->Open(window);
        return FALSE;  // the page decides where the focus is
    }
    auto* const sheet =
        reinterpret_cast<PropertySheetDialog*>(GetWindowLongPtrW(window, static_cast<int>(DWLP_USER)));
    return sheet ? sheet->Handle(message, first, second) : FALSE;
}

void PropertySheetDialog::Open(HWND window) {
    window_ = window;
    AddTabs();
    LayOut();
    const size_t start = header_.nStartPage < pages_.size() ? header_.nStartPage : 0;
    SendMessageW(Tabs(), TCM_SETCURSEL, start, 0);
    Turn(start);
}

void PropertySheetDialog::AddTabs() {
    for (size_t i = 0; i < pages_.size(); ++i) {
        std::u16string title = pages_[i].Page->Title();
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = title.data();
        SendMessageW(Tabs(), TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&item));
    }
}

// All pages get the same room: the width of the widest and the height of the highest.
RECT PropertySheetDialog::LargestPage() const {
    RECT largest{};
    for (const SheetPage& page : pages_) {
        if (const std::optional<DialogTemplate> dialog = page.Page->Template()) {
            largest.right = std::max(largest.right, dialog->Place.right);
            largest.bottom = std::max(largest.bottom, dialog->Place.bottom);
        }
    }
    MapDialogRect(window_, &largest);
    return largest;
}

void PropertySheetDialog::LayOut() {
    constexpr UINT PlaceOnly = SWP_NOZORDER | SWP_NOACTIVATE;
    RECT tabs = LargestPage();
    SendMessageW(Tabs(), TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&tabs));
    OffsetRect(&tabs, Margin - tabs.left, Margin - tabs.top);
    SetWindowPos(Tabs(), nullptr, tabs.left, tabs.top, tabs.right - tabs.left, tabs.bottom - tabs.top,
                 PlaceOnly);

    int x = tabs.right;
    for (const int id : {IDHELP, static_cast<int>(ApplyButton), IDCANCEL, IDOK}) {
        if (const HWND button = GetDlgItem(window_, id)) {
            x -= ButtonWidth;
            SetWindowPos(button, nullptr, x, tabs.bottom + Margin, ButtonWidth, ButtonHeight, PlaceOnly);
            x -= ButtonGap;
        }
    }

    RECT frame = {0, 0, tabs.right + Margin, tabs.bottom + Margin + ButtonHeight + Margin};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(window_, GWL_EXSTYLE)));
    SetWindowPos(window_, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 PlaceOnly | SWP_NOMOVE);
}

// The page's answer, as it set it with DWLP_MSGRESULT.
LRESULT PropertySheetDialog::Notify(const SheetPage& page, UINT code, LPARAM parameter) const {
    PSHNOTIFY notification = {{window_, 0, code}, parameter};
    return SendMessageW(page.Window, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
}

bool PropertySheetDialog::MayLeave() const {
    return active_ == NoPage || Notify(pages_[active_], PSN_KILLACTIVE) == FALSE;
}

// Goes from the active page to another. False when the active page refuses to be left or no page can be
// shown.
bool PropertySheetDialog::Switch(size_t index) {
    if (index >= pages_.size() || !MayLeave()) {
        return false;
    }
    return Turn(index);
}

// Shows the page, unless it cannot be made or its answer to PSN_SETACTIVE names another page or (-1) the next
// one. False when no page takes its turn.
bool PropertySheetDialog::Turn(size_t index) {
    constexpr LRESULT Skip = -1;
    size_t target = index;
    for (size_t tries = 0; tries < pages_.size(); ++tries) {
        SheetPage& page = pages_[target];
        const LRESULT answer = EnsureCreated(page) ? Notify(page, PSN_SETACTIVE) : Skip;
        if (answer == 0) {
            Show(target);
            return true;
        }
        const auto named = std::find_if(pages_.begin(), pages_.end(), [answer](const SheetPage& candidate) {
            return answer != Skip && candidate.Page->DialogNumber() == answer;
        });
        target = named != pages_.end() ? static_cast<size_t>(named - pages_.begin())
                                       : (target + 1) % pages_.size();
    }
    return false;
}

bool PropertySheetDialog::EnsureCreated(SheetPage& page) {
    if (page.Window) {
        return true;
    }
    const HWND made = page.Page->Create(window_);
    if (!made) {
        return false;
    }
    page.Window = made;
    RECT area;
    GetClientRect(Tabs(), &area);
    SendMessageW(Tabs(), TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
    MapWindowPoints(Tabs(), window_, reinterpret_cast<POINT*>(&area), 2);
    // In front of the buttons, so that the tab key comes to its controls first.
    SetWindowPos(made, HWND_TOP, area.left, area.top, area.right - area.left, area.bottom - area.top,
                 SWP_NOACTIVATE);
    return true;
}

void PropertySheetDialog::Show(size_t index) {
    const size_t before = active_;
    active_ = index;
    SendMessageW(Tabs(), TCM_SETCURSEL, index, 0);
    EnableWindow(GetDlgItem(window_, IDHELP), pages_[index].Page->HasHelp() ? TRUE : FALSE);
    ShowWindow(pages_[index].Window, SW_SHOW);
    if (before != NoPage && before != index) {
        ShowWindow(pages_[before].Window, SW_HIDE);
    }
    // A tab that was clicked keeps the focus; else it is the page's.
    if (GetFocus() != Tabs()) {
        const HWND first = GetNextDlgTabItem(pages_[index].Window, nullptr, FALSE);
        if (first && IsChild(pages_[index].Window, first)) {
            FocusControl(first);
        }
    }
}

void PropertySheetDialog::TabChanged() {
    const auto index = static_cast<size_t>(SendMessageW(Tabs(), TCM_GETCURSEL, 0, 0));
    if (index != active_ && !Turn(index)) {
        SendMessageW(Tabs(), TCM_SETCURSEL, active_, 0);
    }
}

INT_PTR PropertySheetDialog::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_COMMAND:
        Press(LOWORD(first));
        return TRUE;
    case WM_NOTIFY: {
        const NMHDR& header = *reinterpret_cast<const NMHDR*>(second);
        if (header.code == TCN_SELCHANGING) {
            SetWindowLongPtrW(window_, DWLP_MSGRESULT, MayLeave() ? FALSE : TRUE);
            return TRUE;
        }
        if (header.code == TCN_SELCHANGE) {
            TabChanged();
        }
        return FALSE;
    }
    default:
        return HandleSheetMessage(message, first, second);
    }
}

INT_PTR PropertySheetDialog::HandleSheetMessage(UINT message, WPARAM first, LPARAM second) {
    LRESULT answer = 0;
    switch (message) {
    case PSM_CHANGED:
    case PSM_UNCHANGED:
        SetChanged(reinterpret_cast<HWND>(first), message == PSM_CHANGED);
        break;
    case PSM_SETCURSEL: {
        const size_t named = FindPage(reinterpret_cast<HPROPSHEETPAGE>(second));
        answer = Switch(named != NoPage ? named : first) ? TRUE : FALSE;
        break;
    }
    case PSM_SETCURSELID: {
        const auto found = std::find_if(pages_.begin(), pages_.end(), [second](const SheetPage& page) {
            return page.Page->DialogNumber() == second;
        });
        answer = found != pages_.end() && Switch(static_cast<size_t>(found - pages_.begin())) ? TRUE : FALSE;
        break;
    }
    case PSM_PRESSBUTTON: {
        static constexpr int Buttons[] = {0, 0, 0, IDOK, static_cast<int>(ApplyButton), IDCANCEL, IDHELP};
        Press(first < std::size(Buttons) ? Buttons[first] : 0);
        break;
    }
    case PSM_APPLY:
        answer = Apply(false) ? TRUE : FALSE;
        break;
    case PSM_RESTARTWINDOWS:
        restart_ = std::max<INT_PTR>(restart_, ID_PSRESTARTWINDOWS);
        break;
    case PSM_REBOOTSYSTEM:
        restart_ = ID_PSREBOOTSYSTEM;
        break;
    case PSM_QUERYSIBLINGS:
        answer = AskSiblings(first, second);
        break;
    case PSM_GETTABCONTROL:
        answer = reinterpret_cast<LRESULT>(Tabs());
        break;
    case PSM_GETCURRENTPAGEHWND:
        answer = active_ != NoPage && !over_ ? reinterpret_cast<LRESULT>(pages_[active_].Window) : 0;
        break;
    default:
        return FALSE;
    }
    SetWindowLongPtrW(window_, DWLP_MSGRESULT, answer);
    return TRUE;
}

size_t PropertySheetDialog::FindPage(HPROPSHEETPAGE handle) const {
    const auto found = std::find_if(pages_.begin(), pages_.end(),
                                    [handle](const SheetPage& page) { return page.Handle == handle; });
    return found != pages_.end() ? static_cast<size_t>(found - pages_.begin()) : NoPage;
}

LRESULT PropertySheetDialog::AskSiblings(WPARAM first, LPARAM second) const {
    for (const SheetPage& page : pages_) {
        const LRESULT answer = page.Window ? SendMessageW(page.Window, PSM_QUERYSIBLINGS, first, second) : 0;
        if (answer != 0) {
            return answer;
        }
    }
    return 0;
}

// Control with Tab, Page Up or Page Down goes from page to page.
bool PropertySheetDialog::TakesKey(MSG* message) {
    if (message->message != WM_KEYDOWN || GetKeyState(VK_CONTROL) >= 0 || active_ == NoPage) {
        return false;
    }
    const bool tab = message->wParam == VK_TAB;
    const bool back = message->wParam == VK_PRIOR || (tab && GetKeyState(VK_SHIFT) < 0);
    if (!tab && message->wParam != VK_NEXT && message->wParam != VK_PRIOR) {
        return false;
    }
    Switch((active_ + (back ? pages_.size() - 1 : 1)) % pages_.size());
    return true;
}

}  // namespace platform

INT_PTR WINAPI PropertySheetW(LPCPROPSHEETHEADERW header) {
    if (!header || header->dwSize != sizeof *header || header->nPages > MAXPROPPAGES) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    return platform::PropertySheetDialog(*header).Run();
}
