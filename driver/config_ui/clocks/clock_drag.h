// A card that is dragged through the clock tree. A process has one such drag at a time, as it captures the
// mouse.
#pragma once

#include <windows.h>
#include <commctrl.h>

namespace kestvox {

bool IsDraggingCard(HWND page);

// TVN_BEGINDRAGW: selects the item and, when it is a card without slaves, takes the mouse and the cursor.
void BeginCardDrag(HWND page, HTREEITEM item);

// The mouse is at x, y of the page: marks the item where the card would be dropped, the root when there is
// none.
void TrackCardDrag(HWND page, int x, int y);

// The button is released: moves the card unless a rule forbids it. True when it was moved.
bool DropCard(HWND page);

// Nothing moves.
void CancelCardDrag(HWND page);

}  // namespace kestvox
