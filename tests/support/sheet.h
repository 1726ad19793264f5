// The configuration sheet before its user. It runs on a thread of its own; tests look at it and work it
// from theirs, through messages alone.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <string>
#include <vector>

#include "tests/support/driver_library.h"
#include "tools/system/sheet_window.h"

// One page as it is shown, and its controls by their numbers. What a user cannot do to a disabled control
// is not done.
class SheetPage {
public:
    explicit SheetPage(HWND window) : window_(window) {}

    HWND Window() const { return window_; }
    HWND Control(int id) const { return GetDlgItem(window_, id); }

    bool IsEnabled(int id) const;
    bool IsChecked(int id) const;
    std::u16string Text(int id) const;
    int Position(int id) const;                           // of a slider
    int Chosen(int id) const;                             // entry of a list; CB_ERR: none
    std::vector<std::u16string> Entries(int id) const;    // of a list
    void Focus(int id) const;                             // as the Tab key does
    void Click(int id) const;                             // a button of any kind
    void Press(int id, WORD key) const;                   // a key, by its virtual code, in that control
    void Type(int id, const std::u16string& text) const;  // in place of what an edit shows
    void Choose(int id, int entry) const;                 // with the keys
    void Slide(int id, int position) const;               // the thumb is dragged there, and still held
    void AskHelp(int id) const;                           // F1

private:
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
    bool CanApply() const;
    std::vector<std::u16string> Titles() const;

    SheetPage Show(size_t page) const;  // by its place; selects its tab
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
    kestvox::SheetWindow window_;
};
