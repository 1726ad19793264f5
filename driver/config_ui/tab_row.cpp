#include "config_ui/tab_row.h"

#include <commctrl.h>
#include <prsht.h>

namespace kestvox {

namespace {

constexpr UINT PlaceOnly = SWP_NOZORDER | SWP_NOACTIVATE;

SIZE SizeOf(HWND window) {
    RECT area = {};
    GetWindowRect(window, &area);
    return {area.right - area.left, area.bottom - area.top};
}

void Shrink(HWND window, SIZE less) {
    const SIZE size = SizeOf(window);
    SetWindowPos(window, nullptr, 0, 0, size.cx - less.cx, size.cy - less.cy, PlaceOnly | SWP_NOMOVE);
}

// What the tab control needs around a page.
SIZE SizeAround(HWND tabs, HWND page) {
    RECT area = {};
    GetClientRect(page, &area);
    SendMessageW(tabs, TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&area));
    return {area.right - area.left, area.bottom - area.top};
}

// The buttons stand below the tabs, at the right.
void MoveButtons(HWND sheet, HWND tabs, HWND page, SIZE less) {
    for (HWND button = GetWindow(sheet, GW_CHILD); button != nullptr;
         button = GetWindow(button, GW_HWNDNEXT)) {
        if (button != tabs && button != page) {
            RECT area = {};
            GetWindowRect(button, &area);
            POINT place = {area.left, area.top};
            ScreenToClient(sheet, &place);
            SetWindowPos(button, nullptr, place.x - less.cx, place.y - less.cy, 0, 0, PlaceOnly | SWP_NOSIZE);
        }
    }
}

}  // namespace

void UseSingleTabRow(HWND page) {
    const HWND sheet = GetParent(page);
    const auto tabs = reinterpret_cast<HWND>(SendMessageW(sheet, PSM_GETTABCONTROL, 0, 0));
    if (SendMessageW(tabs, TCM_GETCURSEL, 0, 0) != 0) {
        return;
    }
    const LONG_PTR style = GetWindowLongPtrW(tabs, GWL_STYLE);
    SetWindowLongPtrW(tabs, GWL_STYLE, style & ~LONG_PTR{TCS_MULTILINE});
    // The system has laid the sheet out for rows that are not there any more.
    const SIZE stacked = SizeOf(tabs);
    const SIZE needed = SizeAround(tabs, page);
    const SIZE less = {stacked.cx - needed.cx, stacked.cy - needed.cy};
    Shrink(tabs, less);
    MoveButtons(sheet, tabs, page, less);
    Shrink(sheet, less);
}

}  // namespace kestvox
