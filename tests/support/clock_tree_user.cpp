#include "tests/support/clock_tree_user.h"

#include "tests/support/text.h"
#include "tools/system/sheet_window.h"

namespace {

constexpr int LongestText = 256;
constexpr UINT GetMenuOfWindow = 0x01E1;  // to the window of an open menu

BOOL CALLBACK FindMenu(HWND window, LPARAM found) {
    if (Utf16(kestvox::WindowClass(window).c_str()) != u"#32768" || !IsWindowVisible(window)) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(found) = window;
    return FALSE;
}

std::u16string MenuLine(HMENU menu, UINT position) {
    const UINT state = GetMenuState(menu, position, MF_BYPOSITION);
    if ((state & MF_SEPARATOR) != 0) {
        return u"-";
    }
    WCHAR text[LongestText] = {};
    GetMenuStringW(menu, position, text, LongestText, MF_BYPOSITION);
    const std::u16string line = ((state & MF_CHECKED) != 0 ? u"* " : u"") + Utf16(text);
    return (state & (MF_GRAYED | MF_DISABLED)) != 0 ? u"(" + line + u")" : line;
}

}  // namespace

std::pair<std::u16string, bool> ClockTreeUser::TextAndFold(HTREEITEM item) const {
    WCHAR text[LongestText] = {};
    TVITEMW request = {};
    request.mask = TVIF_TEXT | TVIF_STATE;
    request.hItem = item;
    request.stateMask = TVIS_EXPANDED;
    request.pszText = text;
    request.cchTextMax = LongestText;
    if (item == nullptr || !TreeView_GetItem(tree_, &request)) {
        return {};
    }
    return {Utf16(request.pszText), (request.state & TVIS_EXPANDED) != 0};
}

std::u16string ClockTreeUser::Row(HTREEITEM item, const char16_t* between) const {
    std::u16string row;
    for (; item != nullptr; item = TreeView_GetNextSibling(tree_, item)) {
        const auto [text, unfolded] = TextAndFold(item);
        const std::u16string slaves = unfolded ? Row(TreeView_GetChild(tree_, item), u", ") : u"";
        row += (row.empty() ? u"" : between) + text + (slaves.empty() ? u"" : u" [" + slaves + u"]");
    }
    return row;
}

HTREEITEM ClockTreeUser::Find(const std::u16string& name) const {
    HTREEITEM item = TreeView_GetRoot(tree_);
    while (item != nullptr && Text(item) != name && !Text(item).starts_with(name + u" (")) {
        item = TreeView_GetNextItem(tree_, item, TVGN_NEXTVISIBLE);
    }
    return item;
}

POINT ClockTreeUser::PlaceInTree(const std::u16string& place) const {
    if (place == Space) {
        RECT area = {};
        GetClientRect(tree_, &area);
        return {area.right / 2, area.bottom - 4};
    }
    union {
        HTREEITEM Item;
        RECT Text;
    } request = {Find(place)};
    SendMessageW(tree_, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&request));
    return {request.Text.left + 3, (request.Text.top + request.Text.bottom) / 2};
}

// While a card is dragged, the page has the mouse.
void ClockTreeUser::SendMouse(UINT message, const std::u16string& place) const {
    POINT point = PlaceInTree(place);
    ClientToScreen(tree_, &point);
    ScreenToClient(page_.Window(), &point);
    const WPARAM buttons = message == WM_MOUSEMOVE ? MK_LBUTTON : 0;
    SendMessageW(page_.Window(), message, buttons, MAKELPARAM(point.x, point.y));
}

// The press has a loop of its own, which ends when the mouse has moved far enough: both must be on their
// way before it begins.
void ClockTreeUser::PickUp(const std::u16string& item) const {
    OnItsThread([&] {
        const POINT place = PlaceInTree(item);
        PostToTree(WM_LBUTTONDOWN, MK_LBUTTON, place);
        PostToTree(WM_MOUSEMOVE, MK_LBUTTON, {place.x + 20, place.y});
    });
    OnItsThread([] {});
}

std::u16string ClockTreeUser::DragTo(const std::u16string& place) const {
    std::u16string highlighted;
    OnItsThread([&] {
        SendMouse(WM_MOUSEMOVE, place);
        highlighted = Highlighted();
    });
    return highlighted;
}

void ClockTreeUser::Drop(const std::u16string& place) const {
    OnItsThread([&] {
        SendMouse(WM_MOUSEMOVE, place);
        SendMouse(WM_LBUTTONUP, place);
    });
}

// The page opens its menu at the real pointer, which its own thread places: what the display still has to
// tell it of an earlier place is too old from then on. The release must be on its way before the press begins
// its loop, as for a drag.
std::vector<std::u16string> ClockTreeUser::RightClick(const std::u16string& place) const {
    OnItsThread([&] {
        POINT point = PlaceInTree(place);
        ClientToScreen(tree_, &point);
        SetCursorPos(point.x, point.y);
    });
    OnItsThread([&] {
        const POINT point = PlaceInTree(place);
        PostToTree(WM_RBUTTONDOWN, MK_RBUTTON, point);
        PostToTree(WM_RBUTTONUP, 0, point);
    });
    return OpenedMenu();
}

std::vector<std::u16string> ClockTreeUser::ShiftRightClick(const std::u16string& place) const {
    HoldShift(true);
    std::vector<std::u16string> menu = RightClick(place);
    HoldShift(false);
    return menu;
}

std::vector<std::u16string> ClockTreeUser::ShiftF10() const {
    HoldShift(true);
    PostMessageW(tree_, WM_SYSKEYDOWN, VK_F10, 0);
    std::vector<std::u16string> menu = OpenedMenu();
    HoldShift(false);
    return menu;
}

void ClockTreeUser::HoldShift(bool down) const {
    OnItsThread([down] {
        BYTE keys[256] = {};
        GetKeyboardState(keys);
        keys[VK_SHIFT] = down ? 0x80 : 0;
        SetKeyboardState(keys);
    });
}

// The menu's loop deals with other messages too, so the visit finds it open.
std::vector<std::u16string> ClockTreeUser::OpenedMenu() const {
    std::vector<std::u16string> lines;
    OnItsThread([&lines] {
        HWND window = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), FindMenu, reinterpret_cast<LPARAM>(&window));
        if (window == nullptr) {
            return;
        }
        const auto menu = reinterpret_cast<HMENU>(SendMessageW(window, GetMenuOfWindow, 0, 0));
        const int count = GetMenuItemCount(menu);
        for (int position = 0; position < count; ++position) {
            lines.push_back(MenuLine(menu, static_cast<UINT>(position)));
        }
    });
    return lines;
}

void ClockTreeUser::Choose(char16_t letter) const {
    PostMessageW(tree_, letter == VK_ESCAPE ? WM_KEYDOWN : WM_CHAR, letter, 0);
    OnItsThread([] {});  // the menu has closed and posted its command
    OnItsThread([] {});
}
