#include "tests/support/sheet.h"

#include <commctrl.h>
#include <mmddk.h>

#include <algorithm>

#include "tests/support/system.h"
#include "tests/support/text.h"

namespace {

constexpr const WCHAR* Caption = TEXT("Kestrelvox(TM) Configuration");
constexpr int ApplyButton = 0x3021;  // of every sheet
constexpr int LongestText = 256;

LONG Ask(const DriverLibrary& driver, Sheet::Entry entry) {
    driver.DriverProc(DRV_OPEN);
    if (entry == Sheet::Entry::Configure) {
        using ConfigureEntry = DWORD(WINAPI*)();
        return static_cast<LONG>(test_system::DriverEntry<ConfigureEntry>(driver.Module(), "Configure")());
    }
    DRVCONFIGINFO info = {};
    return static_cast<LONG>(driver.DriverProc(DRV_CONFIGURE, 0, reinterpret_cast<LPARAM>(&info)));
}

}  // namespace

bool SheetPage::IsEnabled(int id) const {
    return IsWindowEnabled(Control(id)) != FALSE;
}

bool SheetPage::IsChecked(int id) const {
    return SendMessageW(Control(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

std::u16string SheetPage::Text(int id) const {
    return Utf16(kestvox::WindowText(Control(id)).c_str());
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

Sheet::Sheet(const DriverLibrary& driver, Entry entry)
    : window_(Caption, [&driver, entry] { return Ask(driver, entry); }) {}

bool Sheet::CanApply() const {
    return IsWindowEnabled(GetDlgItem(Window(), ApplyButton)) != FALSE;
}

std::vector<std::u16string> Sheet::Titles() const {
    std::vector<std::u16string> titles;
    for (const kestvox::WideText& title : window_.Titles()) {
        titles.push_back(Utf16(title.c_str()));
    }
    return titles;
}

SheetPage Sheet::Show(size_t page) const {
    return SheetPage(window_.ShowPage(page));
}

SheetPage Sheet::Show(const std::u16string& title) const {
    const std::vector<std::u16string> titles = Titles();
    return Show(static_cast<size_t>(std::find(titles.begin(), titles.end(), title) - titles.begin()));
}
