#include "tests/support/sheet.h"

#include <commctrl.h>
#include <mmddk.h>
#include <prsht.h>

#include <algorithm>
#include <thread>

#include "tests/support/system.h"
#include "tests/support/text.h"

namespace {

constexpr const char16_t* Caption = u"Kestrelvox(TM) Configuration";
constexpr int ApplyButton = 0x3021;  // of every sheet
constexpr int LongestText = 256;

std::u16string TextOf(HWND window) {
    WCHAR text[LongestText] = {};
    GetWindowTextW(window, text, LongestText);
    return Utf16(text);
}

bool IsSheet(HWND window) {
    WCHAR name[LongestText] = {};
    GetClassNameW(window, name, LongestText);
    return Utf16(name) == u"#32770" && TextOf(window) == Caption;
}

BOOL CALLBACK FindSheet(HWND window, LPARAM found) {
    if (!IsSheet(window)) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

HWND CurrentPage(HWND sheet) {
    return reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETCURRENTPAGEHWND, 0, 0));
}

}  // namespace

bool SheetPage::IsEnabled(int id) const {
    return IsWindowEnabled(Control(id)) != FALSE;
}

bool SheetPage::IsChecked(int id) const {
    return SendMessageW(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

std::u16string SheetPage::Text(int id) const {
    return TextOf(Control(id));
}

int SheetPage::Position(int id) const {
    return static_cast<int>(SendMessageW(Control(id), TBM_GETPOS, 0, 0));
}

int SheetPage::Chosen(int id) const {
    return static_cast<int>(SendMessageW(Control(id), CB_GETCURSEL, 0, 0));
}

std::vector<std::u16string> SheetPage::Entries(int id) const {
    std::vector<std::u16string> entries;
    const LRESULT count = SendMessageW(Control(id), CB_GETCOUNT, 0, 0);
    for (LRESULT entry = 0; entry < count; ++entry) {
        WCHAR text[LongestText] = {};
        SendMessageW(Control(id), CB_GETLBTEXT, static_cast<WPARAM>(entry), reinterpret_cast<LPARAM>(text));
        entries.push_back(Utf16(text));
    }
    return entries;
}

void SheetPage::Focus(int id) const {
    if (IsEnabled(id)) {
        SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
    }
}

void SheetPage::Click(int id) const {
    if (IsEnabled(id)) {
        SendMessageW(Control(id), BM_CLICK, 0, 0);
    }
}

void SheetPage::Press(int id, WORD key) const {
    if (IsEnabled(id)) {
        Focus(id);
        SendMessageW(Control(id), WM_KEYDOWN, key, 0);
        SendMessageW(Control(id), WM_KEYUP, key, 0);
    }
}

void SheetPage::Type(int id, const std::u16string& text) const {
    if (!IsEnabled(id)) {
        return;
    }
    Focus(id);
    SendMessageW(Control(id), EM_SETSEL, 0, -1);
    for (const char16_t character : text.empty() ? u"\b" : text) {
        SendMessageW(Control(id), WM_CHAR, character, 0);
    }
}

void SheetPage::Choose(int id, int entry) const {
    Press(id, VK_HOME);
    for (int i = 0; i < entry; ++i) {
        Press(id, VK_DOWN);
    }
}

void SheetPage::Slide(int id, int position) const {
    if (IsEnabled(id)) {
        SendMessageW(Control(id), TBM_SETPOS, TRUE, position);
        SendMessageW(window_, WM_HSCROLL, MAKEWPARAM(TB_THUMBTRACK, position),
                     reinterpret_cast<LPARAM>(Control(id)));
    }
}

void SheetPage::AskHelp(int id) const {
    HELPINFO info = {};
    info.cbSize = sizeof info;
    info.iContextType = HELPINFO_WINDOW;
    info.iCtrlId = id;
    info.hItemHandle = Control(id);
    SendMessageW(Control(id), WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
}

Sheet::Sheet(const DriverLibrary& driver, Entry entry) : driver_(driver), entry_(entry) {
    driver_.DriverProc(DRV_OPEN);
    thread_ = CreateThread(nullptr, 0, Run, this, 0, &threadId_);
    AwaitWindow();
}

Sheet::~Sheet() {
    if (IsOpen()) {
        Cancel();
    }
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
}

DWORD WINAPI Sheet::Run(void* sheet) {
    auto& self = *static_cast<Sheet*>(sheet);
    if (self.entry_ == Entry::Configure) {
        using ConfigureEntry = DWORD(WINAPI*)();
        const auto configure = test_system::DriverEntry<ConfigureEntry>(self.driver_.Module(), "Configure");
        self.answer_ = static_cast<LONG>(configure());
    } else {
        DRVCONFIGINFO info = {};
        self.answer_ = self.driver_.DriverProc(DRV_CONFIGURE, 0, reinterpret_cast<LPARAM>(&info));
    }
    return 0;
}

// Nothing tells that a window of another thread has appeared. Its thread answers messages only when the
// first page is there.
void Sheet::AwaitWindow() {
    while (WaitForSingleObject(thread_, 0) == WAIT_TIMEOUT) {
        EnumThreadWindows(threadId_, FindSheet, reinterpret_cast<LPARAM>(&window_));
        if (window_ != nullptr && CurrentPage(window_) != nullptr) {
            return;
        }
        std::this_thread::yield();
    }
}

bool Sheet::IsOpen() const {
    return window_ != nullptr && SendMessageW(window_, PSM_GETTABCONTROL, 0, 0) != 0;
}

bool Sheet::CanApply() const {
    return IsWindowEnabled(GetDlgItem(window_, ApplyButton)) != FALSE;
}

std::vector<std::u16string> Sheet::Titles() const {
    const auto tabs = reinterpret_cast<HWND>(SendMessageW(window_, PSM_GETTABCONTROL, 0, 0));
    std::vector<std::u16string> titles;
    const LRESULT count = SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0);
    for (LRESULT tab = 0; tab < count; ++tab) {
        WCHAR text[LongestText] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = LongestText;
        SendMessageW(tabs, TCM_GETITEMW, static_cast<WPARAM>(tab), reinterpret_cast<LPARAM>(&item));
        titles.push_back(Utf16(item.pszText));
    }
    return titles;
}

SheetPage Sheet::Show(size_t page) const {
    SendMessageW(window_, PSM_SETCURSEL, page, 0);
    return Current();
}

SheetPage Sheet::Show(const std::u16string& title) const {
    const std::vector<std::u16string> titles = Titles();
    return Show(static_cast<size_t>(std::find(titles.begin(), titles.end(), title) - titles.begin()));
}

SheetPage Sheet::Current() const {
    return SheetPage(CurrentPage(window_));
}

void Sheet::PressButton(WPARAM button) const {
    SendMessageW(window_, PSM_PRESSBUTTON, button, 0);
}

void Sheet::Apply() const {
    PressButton(PSBTN_APPLYNOW);
}

void Sheet::Help() const {
    PressButton(PSBTN_HELP);
}

void Sheet::Ok() const {
    PressButton(PSBTN_OK);
}

void Sheet::Cancel() const {
    PressButton(PSBTN_CANCEL);
}

LRESULT Sheet::Closed() {
    WaitForSingleObject(thread_, INFINITE);
    window_ = nullptr;
    return answer_;
}
