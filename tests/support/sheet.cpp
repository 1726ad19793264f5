#include "tests/support/sheet.h"

#include <algorithm>

namespace {

constexpr const WCHAR* Caption = TEXT("Kestrelvox(TM) Configuration");
constexpr UINT VisitMessage = WM_APP + 0x3E5;

// An action that waits for its turn on a page's thread, in the guise of that page's procedure.
struct Visit {
    const std::function<void()>& Action;
    HANDLE Done;
};
WNDPROC visitedProcedure = nullptr;

LRESULT CALLBACK ReceiveVisit(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != VisitMessage) {
        return CallWindowProcW(visitedProcedure, page, message, wParam, lParam);
    }
    SetWindowLongPtrW(page, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(visitedProcedure));
    const auto& visit = *reinterpret_cast<const Visit*>(lParam);
    visit.Action();
    SetEvent(visit.Done);
    return 0;
}

LONG Ask(const DriverLibrary& driver, Sheet::Entry entry) {
    driver.DriverProc(DRV_OPEN);
    if (entry == Sheet::Entry::Configure) {
        using ConfigureEntry = DWORD(WINAPI*)();
        return static_cast<LONG>(driver.Entry<ConfigureEntry>("Configure")());
    }
    DRVCONFIGINFO info = {};
    return static_cast<LONG>(driver.DriverProc(DRV_CONFIGURE, 0, reinterpret_cast<LPARAM>(&info)));
}

}  // namespace

void SheetPage::Press(int id, WORD key) const {
    if (IsEnabled(id)) {
        Focus(id);
        Send(id, WM_KEYDOWN, key);
        Send(id, WM_KEYUP, key);
    }
}

void SheetPage::Type(int id, const std::u16string& text) const {
    if (!IsEnabled(id)) {
        return;
    }
    Focus(id);
    Send(id, EM_SETSEL, 0, -1);
    for (const char16_t character : text.empty() ? u"\b" : text) {
        Send(id, WM_CHAR, character);
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
        Send(id, TBM_SETPOS, TRUE, position);
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
    Send(id, WM_HELP, 0, reinterpret_cast<LPARAM>(&info));
}

void SheetPage::OnItsThread(const std::function<void()>& action) const {
    HANDLE done = nullptr;
    while (done == nullptr) {  // the test may have it fail, too
        done = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    }
    const Visit visit = {action, done};
    visitedProcedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window_, GWLP_WNDPROC));
    SetWindowLongPtrW(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ReceiveVisit));
    PostMessageW(window_, VisitMessage, 0, reinterpret_cast<LPARAM>(&visit));
    WaitForSingleObject(done, INFINITE);
    CloseHandle(done);
}

Sheet::Sheet(const DriverLibrary& driver, Entry entry)
    : window_(Caption, [&driver, entry] { return Ask(driver, entry); }) {}

std::vector<std::u16string> Sheet::Titles() const {
    std::vector<std::u16string> titles;
    for (const kestvox::WideText& title : window_.Titles()) {
        titles.push_back(Utf16(title.c_str()));
    }
    return titles;
}

SheetPage Sheet::Show(const std::u16string& title) const {
    const std::vector<std::u16string> titles = Titles();
    const auto found = std::find_if(titles.begin(), titles.end(), [&title](const std::u16string& whole) {
        return whole.starts_with(title);
    });
    return Show(static_cast<size_t>(found - titles.begin()));
}
