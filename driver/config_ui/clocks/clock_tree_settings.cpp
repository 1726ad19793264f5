#include "config_ui/clocks/clock_tree_settings.h"

#include "card/card_table.h"
#include "config_ui/clocks/clock_rules.h"
#include "config_ui/clocks/clock_tree.h"
#include "config_ui/resource.h"
#include "settings/card_settings_store.h"

namespace kestvox {

namespace {

// Null: the card follows nobody, or a card that is not there.
CardRecord* MasterOf(const CardRecord& card) {
    return FindCard(FindCardByRegistryPath(card.Settings.Master));
}

void AddFreeCards(HWND tree) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (MasterOf(*card) == nullptr) {
            InsertCard(tree, *card, ClockRoot(tree), TVI_SORT);
            if (card->Settings.ClockSource == LinkClock) {
                card->WorkingClockSource = AutomaticClock;
            }
        }
    }
}

// A card whose master is itself a slave has no group to join and stands at the top level.
void AddSlaves(HWND tree) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        CardRecord* master = MasterOf(*card);
        if (master != nullptr) {
            const HTREEITEM group = FindTopLevelCard(tree, *master);
            InsertCard(tree, *card, group != nullptr ? group : ClockRoot(tree), TVI_SORT);
            card->WorkingClockSource = LinkClock;
            if (master->Settings.ClockSource == AutomaticClock) {
                master->WorkingClockSource = InternalClock;
            }
        }
    }
}

void ExpandAll(HWND tree) {
    const HTREEITEM root = ClockRoot(tree);
    TreeView_Expand(tree, root, TVE_EXPAND);
    for (HTREEITEM item = TreeView_GetChild(tree, root); item != nullptr;
         item = TreeView_GetNextSibling(tree, item)) {
        TreeView_Expand(tree, item, TVE_EXPAND);
    }
}

// Tells the user when there is more than one.
bool HasOneMasterAtMost(HWND page) {
    const HWND tree = ClockTree(page);
    const HTREEITEM first = FirstMaster(tree);
    if (first == nullptr || NextMaster(tree, first) == nullptr) {
        return true;
    }
    ShowClockRefusal(page, IDS_SEVERAL_MASTERS);
    return false;
}

void SaveClock(CardRecord& card, const WCHAR* master) {
    lstrcpynW(card.Settings.Master, master, PathLength);
    card.Settings.ClockSource = card.WorkingClockSource.load();
    SaveCardSettings(card);
}

void SaveGroup(HWND tree, HTREEITEM item) {
    CardRecord& master = *CardOfItem(tree, item);
    SaveClock(master, TEXT(""));
    for (HTREEITEM slave = TreeView_GetChild(tree, item); slave != nullptr;
         slave = TreeView_GetNextSibling(tree, slave)) {
        SaveClock(*CardOfItem(tree, slave), master.RegistryPath);
    }
}

}  // namespace

void FillClockTree(HWND page) {
    const HWND tree = ClockTree(page);
    if (FirstCard() == nullptr) {
        EnableWindow(tree, FALSE);
        return;
    }
    AddFreeCards(tree);
    AddSlaves(tree);
    HasOneMasterAtMost(page);
    ExpandAll(tree);
}

BOOL ApplyClockTree(HWND page) {
    if (!HasOneMasterAtMost(page)) {
        return FALSE;
    }
    const HWND tree = ClockTree(page);
    for (HTREEITEM item = TreeView_GetChild(tree, ClockRoot(tree)); item != nullptr;
         item = TreeView_GetNextSibling(tree, item)) {
        SaveGroup(tree, item);
    }
    return TRUE;
}

void RestoreClockSources() {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        card->WorkingClockSource = card->Settings.ClockSource.load();
    }
}

}  // namespace kestvox
