// A property sheet that runs on a thread of its own, looked at and worked from another one through
// messages alone.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "tools/system/wide_text.h"

namespace kestvox {

// Of a window of any thread, at most 255 characters.
WideText WindowText(HWND window);
WideText WindowClass(HWND window);

class SheetWindow {
public:
    // `show` opens the sheet with that caption, keeps its caller until the user has closed it, and answers
    // what became of it. Returns when the sheet shows its first page, or when `show` is done without one.
    SheetWindow(WideText caption, std::function<LONG()> show);
    ~SheetWindow();  // a sheet that is still open is cancelled
    SheetWindow(const SheetWindow&) = delete;
    SheetWindow& operator=(const SheetWindow&) = delete;

    HWND Window() const { return window_; }  // null: none came up
    bool IsOpen() const;
    std::vector<WideText> Titles() const;

    // Selects the tab; the window of its page.
    HWND ShowPage(size_t page) const;
    HWND CurrentPage() const;

    // PSBTN_OK and so on.
    void Press(int button) const;

    // Waits until the sheet has been closed; what `show` answered.
    LONG Closed();

private:
    static DWORD WINAPI Run(void* sheet);
    static BOOL CALLBACK TakeSheet(HWND window, LPARAM sheet);
    void AwaitFirstPage();
    HWND Tabs() const;

    WideText caption_;
    std::function<LONG()> show_;
    LONG answer_ = 0;
    HWND window_ = nullptr;
    DWORD threadId_ = 0;
    HANDLE thread_;
};

}  // namespace kestvox
