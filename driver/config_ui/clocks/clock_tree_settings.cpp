#include "config_ui/clocks/clock_tree_settings.h"

#include "card/card_table.h"
#include "config_ui/clocks/clock_choices.h"
#include "config_ui/clocks/clock_tree.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "config_ui/saved_meanwhile.h"

namespace kestvox {

namespace {

// Null: the card follows nobody, or a card that is not there.
CardRecord* MasterOf(const CardRecord& card) {
    return FindCard(FindCardByRegistryPath(card.Settings.Master));
}

void AddFreeCards(HWND page) {
    const HWND tree = ClockTree(page);
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        if (MasterOf(*card) == nullptr) {
            InsertCard(tree, *card, ClockRoot(tree), TVI_SORT);
            if (card->Settings.ClockSource == LinkClock) {
                ChooseClockSource(page, *card, AutomaticClock);
            }
        }
    }
}

// A card whose master is itself a slave has no group to join and stands at the top level.
void AddSlaves(HWND page) {
    const HWND tree = ClockTree(page);
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        CardRecord* master = MasterOf(*card);
        if (master != nullptr) {
            const HTREEITEM group = FindTopLevelCard(tree, *master);
            InsertCard(tree, *card, group != nullptr ? group : ClockRoot(tree), TVI_SORT);
            ChooseClockSource(page, *card, LinkClock);
            if (master->Settings.ClockSource == AutomaticClock) {
                ChooseClockSource(page, *master, InternalClock);
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
    ShowRefusal(page, IDS_SEVERAL_MASTERS);
    return false;
}

CardClock SavedClockOf(const CardRecord& card) {
    return {MasterOf(card), card.Settings.ClockSource};
}

struct TreeCard {
    CardRecord& Card;
    CardClock Clock;  // as the tree has it
};

// Every card of the tree, each master before its slaves.
template <typename Action>
void ForEachCard(HWND page, Action action) {
    const HWND tree = ClockTree(page);
    for (HTREEITEM item = TreeView_GetChild(tree, ClockRoot(tree)); item != nullptr;
         item = TreeView_GetNextSibling(tree, item)) {
        CardRecord& leader = *CardOfItem(tree, item);
        action(TreeCard{leader, {nullptr, ChosenClockSource(page, leader)}});
        for (HTREEITEM slave = TreeView_GetChild(tree, item); slave != nullptr;
             slave = TreeView_GetNextSibling(tree, slave)) {
            action(TreeCard{*CardOfItem(tree, slave), {&leader, LinkClock}});
        }
    }
}

void RememberClocks(HWND page) {
    ForEachCard(page, [page](const TreeCard& each) {
        if (ClockChoice* choice = FindClockChoice(page, each.Card)) {
            choice->Loaded = SavedClockOf(each.Card);
            choice->Shown = each.Clock;
        }
    });
}

bool IsRegrouped(HWND page) {
    bool regrouped = false;
    ForEachCard(page, [page, &regrouped](const TreeCard& each) {
        const ClockChoice* choice = FindClockChoice(page, each.Card);
        regrouped |= choice == nullptr || each.Clock.Master != choice->Shown.Master;
    });
    return regrouped;
}

// With the groups as the user left them, a card stays as another sheet or program has saved it meanwhile.
bool IsClockSavedElsewhere(HWND page, const TreeCard& each) {
    const ClockChoice* choice = FindClockChoice(page, each.Card);
    const CardClock saved = SavedClockOf(each.Card);
    return choice != nullptr && (saved.Master != choice->Loaded.Master ||
                                 IsSavedElsewhere(each.Clock, choice->Shown, choice->Loaded, saved));
}

bool HasSavedSlaves(const CardRecord& master) {
    CardRecord* card = FirstCard();
    while (card != nullptr && MasterOf(*card) != &master) {
        card = NextCard(card);
    }
    return card != nullptr;
}

// The working clock sources are everybody's: on another sheet, which does not show the group, a master can
// have got the automatic clock selection. When no card was regrouped, the groups stay as they are saved.
void GiveUpAutomaticClocks(HWND page, bool regrouped) {
    const HWND tree = ClockTree(page);
    ForEachCard(page, [page, tree, regrouped](const TreeCard& each) {
        if (each.Clock.Source != AutomaticClock) {
            return;
        }
        const bool leads =
            regrouped ? HasSlaves(tree, FindTopLevelCard(tree, each.Card)) : HasSavedSlaves(each.Card);
        if (leads) {
            ChooseClockSource(page, each.Card, InternalClock);
            InvalidateRect(tree, nullptr, TRUE);
        }
    });
}

void SaveClock(HWND page, const TreeCard& each) {
    CardRecord& card = each.Card;
    lstrcpynW(card.Settings.Master, each.Clock.Master != nullptr ? each.Clock.Master->RegistryPath : TEXT(""),
              PathLength);
    card.Settings.ClockSource = each.Clock.Source;
    card.WorkingClockSource = each.Clock.Source;
    SaveCard(page, card);
}

void RemoveCards(HWND tree) {
    while (const HTREEITEM card = TreeView_GetChild(tree, ClockRoot(tree))) {
        TreeView_DeleteItem(tree, card);
    }
}

}  // namespace

void FillClockTree(HWND page) {
    const HWND tree = ClockTree(page);
    if (FirstCard() == nullptr) {
        EnableWindow(tree, FALSE);
        return;
    }
    AddFreeCards(page);
    AddSlaves(page);
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        ChooseClockSource(page, *card, card->WorkingClockSource);
    }
    RememberClocks(page);
    HasOneMasterAtMost(page);
    ExpandAll(tree);
}

BOOL ApplyClockTree(HWND page) {
    if (!HasOneMasterAtMost(page)) {
        return FALSE;
    }
    const bool regrouped = IsRegrouped(page);
    GiveUpAutomaticClocks(page, regrouped);
    bool kept = false;
    ForEachCard(page, [page, regrouped, &kept](const TreeCard& each) {
        if (!regrouped && IsClockSavedElsewhere(page, each)) {
            each.Card.WorkingClockSource = each.Card.Settings.ClockSource.load();
            kept = true;
        } else {
            SaveClock(page, each);
        }
    });
    if (kept) {
        RemoveCards(ClockTree(page));
        FillClockTree(page);
    }
    RememberClocks(page);
    return TRUE;
}

void RestoreClockSources() {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        card->WorkingClockSource = card->Settings.ClockSource.load();
    }
}

}  // namespace kestvox
