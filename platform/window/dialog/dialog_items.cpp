// The controls of a dialog by number, and in the order of the tab and arrow keys.
#include <algorithm>

#include "platform/window/window_object.h"

namespace platform {

namespace {

bool IsReachable(const WindowObject& window) {
    return window.HasStyle(WS_VISIBLE) && !window.HasStyle(WS_DISABLED);
}

// The dialog's controls front to back; in place of a page, when it is shown, stands what lies in it.
void AppendControls(HWND parent, std::vector<HWND>* controls) {
    for (const HWND child : FindWindowLocked(parent)->Children) {
        const WindowObject& window = *FindWindowLocked(child);
        if (!window.IsDialog()) {
            controls->push_back(child);
        } else if (IsReachable(window)) {
            AppendControls(child, controls);
        }
    }
}

// From the place after `from` once around, backwards when `previous`. The first that is wanted.
template <typename Wanted>
HWND NextOf(const std::vector<HWND>& controls, HWND from, bool previous, const Wanted& wanted) {
    const size_t count = controls.size();
    const auto found = std::find(controls.begin(), controls.end(), from);
    size_t place = static_cast<size_t>(found - controls.begin());
    if (found == controls.end()) {
        place = previous ? 0 : count - 1;  // as if it lay before the first, or after the last
    }
    for (size_t step = 0; step < count; ++step) {
        place = previous ? (place + count - 1) % count : (place + 1) % count;
        if (wanted(*FindWindowLocked(controls[place]))) {
            return controls[place];
        }
    }
    return nullptr;
}

// The group of a control, within which the arrow keys move: from one control with WS_GROUP up to the next.
std::vector<HWND> GroupOf(const std::vector<HWND>& controls, HWND control) {
    const auto begins = [](HWND candidate) { return FindWindowLocked(candidate)->HasStyle(WS_GROUP); };
    auto first = std::find(controls.begin(), controls.end(), control);
    if (first == controls.end()) {
        return controls;
    }
    const auto last = std::find_if(first + 1, controls.end(), begins);
    while (first != controls.begin() && !begins(*first)) {
        --first;
    }
    return {first, last};
}

HWND NextItem(HWND dialog, HWND control, bool previous, bool inGroup) {
    const std::lock_guard hold(DesktopLock());
    std::vector<HWND> controls;
    AppendControls(dialog, &controls);
    if (inGroup) {
        return NextOf(GroupOf(controls, control), control, previous, IsReachable);
    }
    return NextOf(controls, control, previous, [](const WindowObject& window) {
        return IsReachable(window) && window.HasStyle(WS_TABSTOP);
    });
}

}  // namespace

}  // namespace platform

using namespace platform;

HWND WINAPI GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous) {
    return NextItem(dialog, control, previous != FALSE, false);
}

HWND WINAPI GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous) {
    return NextItem(dialog, control, previous != FALSE, true);
}

HWND WINAPI GetDlgItem(HWND dialog, int id) {
    const LockedWindow found(dialog);
    if (!found) {
        return nullptr;
    }
    for (const HWND child : found->Children) {
        if (static_cast<int>(FindWindowLocked(child)->Id) == id) {
            return child;
        }
    }
    SetLastError(ERROR_CONTROL_ID_NOT_FOUND);
    return nullptr;
}

int WINAPI GetDlgCtrlID(HWND window) {
    return static_cast<int>(GetWindowLongPtrW(window, GWLP_ID));
}

LRESULT WINAPI SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM first, LPARAM second) {
    const HWND control = GetDlgItem(dialog, id);
    return control ? SendMessageW(control, message, first, second) : 0;
}

UINT WINAPI GetDlgItemTextW(HWND dialog, int id, LPWSTR buffer, int size) {
    return static_cast<UINT>(GetWindowTextW(GetDlgItem(dialog, id), buffer, size));
}

BOOL WINAPI SetDlgItemTextW(HWND dialog, int id, LPCWSTR text) {
    return SetWindowTextW(GetDlgItem(dialog, id), text);
}

BOOL WINAPI CheckDlgButton(HWND dialog, int id, UINT check) {
    SendDlgItemMessageW(dialog, id, BM_SETCHECK, check, 0);
    return TRUE;
}

UINT WINAPI IsDlgButtonChecked(HWND dialog, int id) {
    return static_cast<UINT>(SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0));
}
