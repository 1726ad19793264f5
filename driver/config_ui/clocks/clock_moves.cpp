#include "config_ui/clocks/clock_moves.h"

#include "config_ui/clocks/clock_choices.h"
#include "config_ui/clocks/clock_tree.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

// The slaves of a master cannot run at a clock that is chosen anew for each stream.
void GiveUpAutomaticClock(HWND page, CardRecord& master) {
    if (ChosenClockSource(page, master) != AutomaticClock) {
        return;
    }
    WCHAR message[256];
    LoadText(IDS_MASTER_NOT_AUTOMATIC, message);
    MessageBoxW(page, message, TEXT("KESTVOX.DLL"), MB_ICONINFORMATION);
    ChooseClockSource(page, master, InternalClock);
}

// There is one group at most: a card may join it, or found it when there is none. Else the user is told.
bool MayJoin(HWND page, HTREEITEM group) {
    const HTREEITEM master = FirstMaster(ClockTree(page));
    if (master == nullptr || master == group) {
        return true;
    }
    ShowRefusal(page, IDS_ANOTHER_MASTER);
    return false;
}

// The clock source of a card that stands alone, or in the group of `master`, from now on.
void AdaptClockSource(HWND page, CardRecord& card, const CardRecord* master) {
    if (master != nullptr) {
        ChooseClockSource(page, card, LinkClock);
    } else if (ChosenClockSource(page, card) == LinkClock) {
        ChooseClockSource(page, card, AutomaticClock);
    }
}

// A tree view cannot move an item: it is inserted anew and the old one deleted. Null, and the old one stays,
// when it cannot be inserted.
HTREEITEM ReinsertCard(HWND tree, HTREEITEM item, HTREEITEM parent) {
    const HTREEITEM inserted = InsertCard(tree, *CardOfItem(tree, item), parent, TVI_LAST);
    if (inserted == nullptr) {
        return nullptr;
    }
    TreeView_DeleteItem(tree, item);
    TreeView_Expand(tree, parent, TVE_EXPAND);
    TreeView_SelectItem(tree, inserted);
    return inserted;
}

HTREEITEM OtherMaster(HWND tree, HTREEITEM item) {
    const HTREEITEM master = FirstMaster(tree);
    return master != item || master == nullptr ? master : NextMaster(tree, master);
}

HTREEITEM OtherTopLevelCard(HWND tree, HTREEITEM item) {
    const HTREEITEM card = TreeView_GetChild(tree, ClockRoot(tree));
    return card != item || card == nullptr ? card : TreeView_GetNextSibling(tree, card);
}

}  // namespace

HTREEITEM MoveCardItem(HWND page, HTREEITEM moved, HTREEITEM target) {
    const HWND tree = ClockTree(page);
    if (target == nullptr || target == moved || HasSlaves(tree, moved)) {
        return nullptr;
    }
    const HTREEITEM group = GroupOfItem(tree, target);
    CardRecord* master = CardOfItem(tree, group);  // null: the card is to stand alone, below the root
    if (master != nullptr && !MayJoin(page, group)) {
        return nullptr;
    }
    if (master != nullptr) {
        GiveUpAutomaticClock(page, *master);
    }
    CardRecord& card = *CardOfItem(tree, moved);
    const HTREEITEM inserted = ReinsertCard(tree, moved, group);
    if (inserted != nullptr) {
        AdaptClockSource(page, card, master);
    }
    return inserted;
}

HTREEITEM StopBeingSlave(HWND page, HTREEITEM item) {
    return MoveCardItem(page, item, ClockRoot(ClockTree(page)));
}

void StopBeingMaster(HWND page, HTREEITEM item) {
    const HWND tree = ClockTree(page);
    while (HasSlaves(tree, item) && StopBeingSlave(page, TreeView_GetChild(tree, item)) != nullptr) {
    }
    TreeView_SelectItem(tree, item);
}

void BecomeMaster(HWND page, HTREEITEM item) {
    const HWND tree = ClockTree(page);
    const HTREEITEM master = StopBeingSlave(page, item);
    if (master == nullptr) {
        return;
    }
    while (const HTREEITEM other = OtherMaster(tree, master)) {
        StopBeingMaster(page, other);
        if (HasSlaves(tree, other)) {
            return;
        }
    }
    HTREEITEM other = OtherTopLevelCard(tree, master);
    while (other != nullptr && MoveCardItem(page, other, master) != nullptr) {
        other = OtherTopLevelCard(tree, master);
    }
    TreeView_SelectItem(tree, master);
}

}  // namespace kestvox
