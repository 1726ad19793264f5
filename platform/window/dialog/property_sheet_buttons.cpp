// The buttons of a property sheet: OK, Cancel and Apply.
#include <windows.h>
#include <prsht.h>

#include <algorithm>

#include "platform/window/dialog/property_sheet.h"

namespace platform {

// A page whose dialog is still being made has not been changed by anyone yet.
void PropertySheetDialog::SetChanged(HWND window, bool changed) {
    const auto page = std::find_if(pages_.begin(), pages_.end(), [window](const SheetPage& candidate) {
        return candidate.Window && candidate.Window == window;
    });
    if (page != pages_.end()) {
        page->Dirty = changed;
    }
    const bool any = std::any_of(pages_.begin(), pages_.end(), [](const SheetPage& p) { return p.Dirty; });
    EnableWindow(GetDlgItem(window_, ApplyButton), any ? TRUE : FALSE);
}

void PropertySheetDialog::Press(int button) {
    switch (button) {
    case IDOK:
        Accept();
        break;
    case IDCANCEL:
        Cancel();
        break;
    case ApplyButton:
        Apply(false);
        break;
    case IDHELP:
        if (active_ != NoPage) {
            Notify(pages_[active_], PSN_HELP);
        }
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
    for (size_t i = 0; i < pages_.size(); ++i) {
        const LRESULT answer = pages_[i].Window ? Notify(pages_[i], PSN_APPLY, closes ? TRUE : FALSE) : 0;
        if (answer == PSNRET_INVALID) {
            Show(i);
        }
        if (answer == PSNRET_INVALID || answer == PSNRET_INVALID_NOCHANGEPAGE) {
            return false;
        }
    }
    saved_ = true;
    for (SheetPage& page : pages_) {
        page.Dirty = false;
    }
    EnableWindow(GetDlgItem(window_, ApplyButton), FALSE);
    if (!closes && active_ != NoPage) {
        Notify(pages_[active_], PSN_SETACTIVE);
    }
    return true;
}

void PropertySheetDialog::Accept() {
    if (Apply(true)) {
        Finish(restart_ != 0 ? restart_ : 1);
    }
}

void PropertySheetDialog::Cancel() {
    if (active_ != NoPage && Notify(pages_[active_], PSN_QUERYCANCEL) != FALSE) {
        return;
    }
    for (const SheetPage& page : pages_) {
        if (page.Window) {
            Notify(page, PSN_RESET);
        }
    }
    Finish(saved_ && restart_ != 0 ? restart_ : saved_ ? 1 : 0);
}

void PropertySheetDialog::Finish(INT_PTR result) {
    result_ = result;
    over_ = true;
    PostMessageW(window_, WM_NULL, 0, 0);
}

}  // namespace platform
