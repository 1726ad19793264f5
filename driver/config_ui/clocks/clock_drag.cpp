#include "config_ui/clocks/clock_drag.h"

#include "config_ui/clocks/clock_moves.h"
#include "config_ui/clocks/clock_rules.h"
#include "config_ui/clocks/clock_tree.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

struct CardDrag {
    HWND Page;  // null: no card is dragged
    HTREEITEM Item;
    HCURSOR Cursor;
    HCURSOR PreviousCursor;
    int OffsetX;  // of the tree in the page
    int OffsetY;
};
CardDrag ClockTreeDrag = {};

// Gives mouse and cursor back. The result is where the card would have been dropped.
HTREEITEM EndCardDrag(HWND page) {
    const HWND tree = ClockTree(page);
    const HTREEITEM target = TreeView_GetDropHilight(tree);
    TreeView_SelectDropTarget(tree, nullptr);
    const CardDrag ended = ClockTreeDrag;
    ClockTreeDrag = {};  // before the capture goes: its loss is no reason to cancel any more
    ReleaseCapture();
    SetCursor(ended.PreviousCursor);
    DestroyCursor(ended.Cursor);
    return target;
}

}  // namespace

bool IsDraggingCard(HWND page) {
    return ClockTreeDrag.Page == page;
}

void BeginCardDrag(HWND page, HTREEITEM item) {
    const HWND tree = ClockTree(page);
    TreeView_SelectItem(tree, item);
    if (CardOfItem(tree, item) == nullptr || HasSlaves(tree, item)) {
        return;
    }
    RECT pageArea = {};
    RECT treeArea = {};
    GetWindowRect(page, &pageArea);
    GetWindowRect(tree, &treeArea);
    const HCURSOR cursor = LoadCursorW(ModuleHandle, MAKEINTRESOURCEW(IDC_DRAG_CARD));
    const HCURSOR previous = SetCursor(cursor);
    SetCapture(page);
    ClockTreeDrag = {
        page, item, cursor, previous, treeArea.left - pageArea.left, treeArea.top - pageArea.top};
}

void TrackCardDrag(HWND page, int x, int y) {
    const HWND tree = ClockTree(page);
    TVHITTESTINFO hit = {};
    hit.pt = {x - ClockTreeDrag.OffsetX, y - ClockTreeDrag.OffsetY};
    const HTREEITEM item = TreeView_HitTest(tree, &hit);
    TreeView_SelectDropTarget(tree, item != nullptr ? item : ClockRoot(tree));
}

bool DropCard(HWND page) {
    const HTREEITEM item = ClockTreeDrag.Item;
    const HTREEITEM target = EndCardDrag(page);
    return MayChangeClocks(page, nullptr) && MoveCardItem(page, item, target) != nullptr;
}

void CancelCardDrag(HWND page) {
    EndCardDrag(page);
}

}  // namespace kestvox
