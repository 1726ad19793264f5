// The configuration sheet before its user. It runs on a thread of its own; tests look at it and work it
// from theirs, through messages alone.
#pragma once

#include <windows.h>
#include <commctrl.h>
#include <prsht.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/driver_library.h"
#include "tests/support/text.h"
#include "tools/system/sheet_window.h"

// One page as it is shown, and its controls by their numbers. What a user cannot do to a disabled control
// is not done.
class SheetPage {
public:
    explicit SheetPage(HWND window) : window_(window) {}

    HWND Window() const { return window_; }
    HWND Control(int id) const { return GetDlgItem(window_, id); }

    bool IsEnabled(int id) const { return IsWindowEnabled(Control(id)) != FALSE; }
    bool IsChecked(int id) const { return Send(id, BM_GETCHECK) == BST_CHECKED; }
    std::u16string Text(int id) const { return Utf16(kestvox::WindowText(Control(id)).c_str()); }
    int Position(int id) const { return Send(id, TBM_GETPOS); }  // of a slider
    int Chosen(int id) const { return Send(id, CB_GETCURSEL); }  // entry of a list; CB_ERR: none

    // As the Tab key does.
    void Focus(int id) const {
        if (IsEnabled(id)) {
            SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(id)), TRUE);
        }
    }
    // A button of any kind.
    void Click(int id) const {
        if (IsEnabled(id)) {
            Send(id, BM_CLICK);
        }
    }
    void Press(int id, WORD key) const;                   // a key, by its virtual code, in that control
    void Type(int id, const std::u16string& text) const;  // in place of what an edit shows
    void Choose(int id, int entry) const;                 // with the keys
    void Slide(int id, int position) const;               // the thumb is dragged there, and still held
    void AskHelp(int id) const;                           // F1

    // Runs the action on the page's thread, as that thread itself would do it: when it has dealt with every
    // message posted to the page before. Returns when that is done. One at a time in the process.
    void OnItsThread(const std::function<void()>& action) const;

private:
    int Send(int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return static_cast<int>(SendMessageW(Control(id), message, wParam, lParam));
    }

    HWND window_;
};

class Sheet {
public:
    // By DriverProc any number of sheets can be open; by Configure one of the desktop.
    enum class Entry { DriverProc, Configure };

    // Returns when the sheet shows its first page, or when it has answered without a window. A sheet that
    // is still open at the end is cancelled.
    explicit Sheet(const DriverLibrary& driver, Entry entry = Entry::DriverProc);

    HWND Window() const { return window_.Window(); }
    bool IsOpen() const { return window_.IsOpen(); }
    bool CanApply() const { return IsWindowEnabled(GetDlgItem(Window(), ApplyButton)) != FALSE; }
    std::vector<std::u16string> Titles() const;

    // Selects the page's tab, by its place or by how its title begins.
    SheetPage Show(size_t page) const { return SheetPage(window_.ShowPage(page)); }
    SheetPage Show(const std::u16string& title) const;
    SheetPage Current() const { return SheetPage(window_.CurrentPage()); }

    void Apply() const { window_.Press(PSBTN_APPLYNOW); }
    void Help() const { window_.Press(PSBTN_HELP); }
    void Ok() const { window_.Press(PSBTN_OK); }          // the sheet closes, when no page objects
    void Cancel() const { window_.Press(PSBTN_CANCEL); }  // ...
    LONG Closed() { return window_.Closed(); }            // the answer, once the sheet has been closed
    LONG Accept() {                                       // OK, to that
        Ok();
        return Closed();
    }
    LONG Dismiss() {  // ... and Cancel
        Cancel();
        return Closed();
    }

private:
    static constexpr int ApplyButton = 0x3021;  // of every sheet

    kestvox::SheetWindow window_;
};
