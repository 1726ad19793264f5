#include "config_ui/clocks/clock_menu.h"

#include "card/card_table.h"
#include "config_ui/clocks/clock_choices.h"
#include "config_ui/clocks/clock_tree.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

struct SourceCommand {
    DWORD Source;
    UINT Text;
    bool ForMasters;
};
constexpr SourceCommand SourceCommands[] = {
    {AutomaticClock, IDS_MENU_AUTOMATIC_CLOCK, false},
    {InternalClock, IDS_MENU_INTERNAL_CLOCK, true},
    {DigitalInputClock, IDS_MENU_DIGITAL_INPUT_CLOCK, true},
};

void AppendCommand(HMENU menu, UINT command, UINT text, UINT flags = 0) {
    WCHAR label[50];
    LoadText(text, label);
    AppendMenuW(menu, MF_STRING | flags, command, label);
}

void AppendSeparator(HMENU menu) {
    AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
}

void AppendSources(HMENU menu, DWORD source, bool master) {
    for (const SourceCommand& command : SourceCommands) {
        if (!master || command.ForMasters) {
            const bool current = command.Source == source;
            AppendCommand(menu, command.Source, command.Text, current ? MF_CHECKED : MF_UNCHECKED);
        }
    }
    AppendSeparator(menu);
}

void FillCardMenu(HMENU menu, HWND page, HTREEITEM item) {
    const HWND tree = ClockTree(page);
    const bool topLevel = IsTopLevel(tree, item);
    const bool master = HasSlaves(tree, item);
    if (topLevel) {
        AppendSources(menu, ChosenClockSource(page, *CardOfItem(tree, item)), master);
    }
    if (master) {
        AppendCommand(menu, StopBeingMasterCommand, IDS_MENU_STOP_MASTER);
    } else {
        const bool alone = NextCard(FirstCard()) == nullptr;
        AppendCommand(menu, BecomeMasterCommand, IDS_MENU_BECOME_MASTER,
                      alone ? MF_GRAYED | MF_DISABLED : MF_ENABLED);
    }
    if (!topLevel) {
        AppendCommand(menu, StopBeingSlaveCommand, IDS_MENU_STOP_SLAVE);
    }
    AppendSeparator(menu);
    AppendCommand(menu, CancelCommand, IDS_MENU_CANCEL);
}

void FillResetMenu(HMENU menu) {
    AppendCommand(menu, ResetDriverCommand, IDS_MENU_RESET_DRIVER);
    AppendSeparator(menu);
    AppendCommand(menu, CancelCommand, IDS_MENU_CANCEL);
}

BOOL TrackMenu(HMENU menu, HWND page, POINT place) {
    const BOOL shown = TrackPopupMenu(menu, TPM_RIGHTBUTTON, place.x, place.y, 0, page, nullptr);
    DestroyMenu(menu);
    return shown;
}

BOOL ShowItemMenu(HWND page, HTREEITEM item, POINT place) {
    const HWND tree = ClockTree(page);
    if (item == ClockRoot(tree)) {
        return FALSE;
    }
    const HMENU menu = CreatePopupMenu();
    TreeView_SelectItem(tree, item);
    FillCardMenu(menu, page, item);
    return TrackMenu(menu, page, place);
}

BOOL ShowResetMenu(HWND page, POINT place) {
    const HMENU menu = CreatePopupMenu();
    FillResetMenu(menu);
    return TrackMenu(menu, page, place);
}

// On the screen. What the tree reports and takes as places is counted from here.
POINT TreeOrigin(HWND tree) {
    RECT area = {};
    GetWindowRect(tree, &area);
    return {area.left, area.top};
}

HTREEITEM ItemAt(HWND tree, POINT place) {
    const POINT origin = TreeOrigin(tree);
    TVHITTESTINFO hit = {};
    hit.pt = {place.x - origin.x, place.y - origin.y};
    return TreeView_HitTest(tree, &hit);
}

// The upper left corner of an item's text, on the screen. The item is scrolled into view first.
POINT PlaceOfItem(HWND tree, HTREEITEM item) {
    TreeView_EnsureVisible(tree, item);
    union {
        HTREEITEM Item;  // in
        RECT Text;       // out
    } request = {item};
    SendMessageW(tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&request));
    const POINT origin = TreeOrigin(tree);
    return {origin.x + request.Text.left, origin.y + request.Text.top};
}

}  // namespace

BOOL ShowClockMenu(HWND page, POINT place) {
    if (const HTREEITEM item = ItemAt(ClockTree(page), place)) {
        return ShowItemMenu(page, item, place);
    }
    const bool shift = GetKeyState(VK_SHIFT) < 0;
    return shift ? ShowResetMenu(page, place) : FALSE;
}

BOOL ShowMenuOfSelectedItem(HWND page) {
    const HWND tree = ClockTree(page);
    const HTREEITEM item = TreeView_GetSelection(tree);
    return item != nullptr ? ShowItemMenu(page, item, PlaceOfItem(tree, item)) : FALSE;
}

}  // namespace kestvox
