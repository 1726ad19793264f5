// The tree of the Clocks + Sync page: what it holds and how it looks.
//
// Below one root stand the cards that follow nobody, and below a card its slaves; a card with slaves is a
// Tessalink master. Items are inserted with the card as their data and ask for their text when they are
// drawn, so a card that is renamed or changes its clock source needs only a repaint.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include "card/card_record.h"

namespace kestvox {

HWND ClockTree(HWND page);  // the tree control, which all others here call `tree`

// Pictures and root. ClearClockTree takes everything out again.
void PrepareClockTree(HWND tree);
void ClearClockTree(HWND tree);

HTREEITEM ClockRoot(HWND tree);
CardRecord* CardOfItem(HWND tree, HTREEITEM item);  // null for the root and for no item

// `after`: TVI_SORT or TVI_LAST.
HTREEITEM InsertCard(HWND tree, CardRecord& card, HTREEITEM parent, HTREEITEM after);

bool IsTopLevel(HWND tree, HTREEITEM item);  // a card that follows nobody
bool IsSlave(HWND tree, HTREEITEM item);
bool HasSlaves(HWND tree, HTREEITEM item);

// The top-level card to whose group a card belongs; the root for the root.
HTREEITEM GroupOfItem(HWND tree, HTREEITEM item);

HTREEITEM FindTopLevelCard(HWND tree, const CardRecord& card);  // null when there is none
HTREEITEM FirstMaster(HWND tree);
HTREEITEM NextMaster(HWND tree, HTREEITEM master);

// The text of a card's item: its name and its clock source, unless that is the link.
inline constexpr int ItemTextLength = NameLength + 30;
void FormatItemText(const CardRecord& card, DWORD source, WCHAR (&text)[ItemTextLength]);

}  // namespace kestvox
