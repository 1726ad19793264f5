#include "tools/system/sheet_window.h"

#include <commctrl.h>
#include <prsht.h>

#include <thread>
#include <utility>

namespace kestvox {
namespace {

constexpr int LongestText = 256;

}  // namespace

WideText WindowText(HWND window) {
    WCHAR text[LongestText] = {};
    GetWindowTextW(window, text, LongestText);
    return text;
}

WideText WindowClass(HWND window) {
    WCHAR name[LongestText] = {};
    GetClassNameW(window, name, LongestText);
    return name;
}

SheetWindow::SheetWindow(WideText caption, std::function<LONG()> show)
    : caption_(std::move(caption)),
      show_(std::move(show)),
      thread_(CreateThread(nullptr, 0, Run, this, 0, &threadId_)) {
    AwaitFirstPage();
}

SheetWindow::~SheetWindow() {
    if (IsOpen()) {
        Press(PSBTN_CANCEL);
    }
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
}

DWORD WINAPI SheetWindow::Run(void* sheet) {
    auto& self = *static_cast<SheetWindow*>(sheet);
    self.answer_ = self.show_();
    return 0;
}

BOOL CALLBACK SheetWindow::TakeSheet(HWND window, LPARAM sheet) {
    auto& self = *reinterpret_cast<SheetWindow*>(sheet);
    if (WindowClass(window) != TEXT("#32770") || WindowText(window) != self.caption_) {
        return TRUE;
    }
    self.window_ = window;
    return FALSE;
}

// Nothing tells that another thread's window has appeared. Its thread answers messages only when the first
// page is there.
void SheetWindow::AwaitFirstPage() {
    while (WaitForSingleObject(thread_, 0) == WAIT_TIMEOUT) {
        EnumThreadWindows(threadId_, TakeSheet, reinterpret_cast<LPARAM>(this));
        if (window_ != nullptr && CurrentPage() != nullptr) {
            return;
        }
        std::this_thread::yield();
    }
}

HWND SheetWindow::Tabs() const {
    return reinterpret_cast<HWND>(SendMessageW(window_, PSM_GETTABCONTROL, 0, 0));
}

bool SheetWindow::IsOpen() const {
    return window_ != nullptr && Tabs() != nullptr;
}

std::vector<WideText> SheetWindow::Titles() const {
    std::vector<WideText> titles;
    const LRESULT count = SendMessageW(Tabs(), TCM_GETITEMCOUNT, 0, 0);
    for (LRESULT tab = 0; tab < count; ++tab) {
        WCHAR text[LongestText] = {};
        TCITEMW item = {};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = LongestText;
        SendMessageW(Tabs(), TCM_GETITEMW, static_cast<WPARAM>(tab), reinterpret_cast<LPARAM>(&item));
        titles.emplace_back(item.pszText);
    }
    return titles;
}

HWND SheetWindow::ShowPage(size_t page) const {
    SendMessageW(window_, PSM_SETCURSEL, page, 0);
    return CurrentPage();
}

HWND SheetWindow::CurrentPage() const {
    return reinterpret_cast<HWND>(SendMessageW(window_, PSM_GETCURRENTPAGEHWND, 0, 0));
}

void SheetWindow::Press(int button) const {
    SendMessageW(window_, PSM_PRESSBUTTON, static_cast<WPARAM>(button), 0);
    // Wine's sheet looks whether it has ended only after a message that was posted.
    PostMessageW(window_, WM_NULL, 0, 0);
}

LONG SheetWindow::Closed() {
    WaitForSingleObject(thread_, INFINITE);
    window_ = nullptr;
    return answer_;
}

}  // namespace kestvox
