// Cards change their place in the clock tree, and with it their clock source.
#pragma once

#include <windows.h>
#include <commctrl.h>

namespace kestvox {

// Moves a card to the end of the top level (`target` is the root) or to the end of the group that `target`
// belongs to, and selects it there. The result is its new item.
// Null, and nothing moves, when there is no target, when it is the card itself, when the card has slaves,
// when another card is the master already, of which the user is told, and when the tree takes no new item.
// The functions below end at the first card that does not move. A new master does not keep the automatic
// clock selection; the user is told of that, too.
HTREEITEM MoveCardItem(HWND page, HTREEITEM moved, HTREEITEM target);

// A slave becomes a free card with automatic clock selection. The result is its new item.
HTREEITEM StopBeingSlave(HWND page, HTREEITEM item);

// So do all slaves of a master.
void StopBeingMaster(HWND page, HTREEITEM item);

// All other cards become slaves of this one. A card that has slaves already is left alone.
void BecomeMaster(HWND page, HTREEITEM item);

}  // namespace kestvox
