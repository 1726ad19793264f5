// A tree view under mouse and keyboard.
#include <algorithm>
#include <cstdlib>

#include "platform/controls/tree_view.h"

namespace platform {

void TreeView::Press(UINT message, POINT point) {
    UINT part = 0;
    const TreeItem* const item = ItemAt(point, &part);
    SetFocus(Window());
    SetCapture(Window());
    const bool onItem = (part & TVHT_ONITEM) != 0;
    pressed_ = {message, point, onItem ? item->Handle() : nullptr};
}

// A drag begins when the mouse has left the spot where it went down on an item.
void TreeView::Drag(POINT point) {
    const bool mayDrag = pressed_.Item && (Style() & TVS_DISABLEDRAGDROP) == 0;
    const bool moved = std::abs(point.x - pressed_.Place.x) >= GetSystemMetrics(SM_CXDRAG) ||
                       std::abs(point.y - pressed_.Place.y) >= GetSystemMetrics(SM_CYDRAG);
    if (pressed_.Message == 0 || !mayDrag || !moved) {
        return;
    }
    const Pressed pressed = pressed_;
    pressed_ = {};
    ReleaseCapture();
    if (const TreeItem* const item = items_.Find(pressed.Item)) {
        NotifyOfDrag(pressed.Message == WM_LBUTTONDOWN ? TVN_BEGINDRAGW : TVN_BEGINRDRAGW, *item,
                     pressed.Place);
    }
}

void TreeView::Release(UINT message) {
    const Pressed pressed = pressed_;
    if (pressed.Message == 0 || (pressed.Message == WM_LBUTTONDOWN) != (message == WM_LBUTTONUP)) {
        return;
    }
    pressed_ = {};
    ReleaseCapture();
    if (message == WM_RBUTTONUP) {
        TellRightClick();
        return;
    }
    if (Notify(NM_CLICK) != FALSE || !pressed.Item) {
        return;
    }
    if (TreeItem* const item = items_.Find(pressed.Item)) {
        Select(item, TVC_BYMOUSE);
    }
}

// A right click that the parent does not answer becomes a request for a context menu.
void TreeView::TellRightClick() {
    if (Notify(NM_RCLICK) == FALSE) {
        SendMessageW(GetParent(Window()), WM_CONTEXTMENU, reinterpret_cast<WPARAM>(Window()),
                     static_cast<LPARAM>(GetMessagePos()));
    }
}

void TreeView::DoubleClick(POINT point) {
    UINT part = 0;
    TreeItem* const item = ItemAt(point, &part);
    if (Notify(NM_DBLCLK) == FALSE && item && (part & TVHT_ONITEM) != 0) {
        Expand(*item, TVE_TOGGLE, true);
    }
}

// False for messages that are not the mouse's.
bool TreeView::HandleMouse(UINT message, POINT point) {
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
        Press(message, point);
        return true;
    case WM_MOUSEMOVE:
        Drag(point);
        return true;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
        Release(message);
        return true;
    case WM_LBUTTONDBLCLK:
        DoubleClick(point);
        return true;
    case WM_CAPTURECHANGED:
        pressed_ = {};
        return true;
    default:
        return false;
    }
}

void TreeView::TakeFocus() {
    const std::vector<TreeItem*> rows = items_.Rows();
    if (!selected_ && !rows.empty()) {
        Select(rows[static_cast<size_t>(firstRow_)], TVC_UNKNOWN);
    }
    Notify(NM_SETFOCUS);
}

void TreeView::Climb(TreeItem& item) {
    if (item.IsExpanded() && !item.Children.empty()) {
        Expand(item, TVE_COLLAPSE, true);
    } else if (TreeItem* const parent = items_.Parent(item)) {
        Select(parent, TVC_BYKEYBOARD);
    }
}

void TreeView::Descend(TreeItem& item) {
    if (item.Children.empty()) {
        return;
    }
    if (item.IsExpanded()) {
        Select(items_.FirstChild(item), TVC_BYKEYBOARD);
    } else {
        Expand(item, TVE_EXPAND, true);
    }
}

// A row beyond either end means the one at that end.
void TreeView::SelectRow(int row) {
    const std::vector<TreeItem*> rows = items_.Rows();
    const int last = static_cast<int>(rows.size()) - 1;
    Select(rows[static_cast<size_t>(std::clamp(row, 0, last))], TVC_BYKEYBOARD);
}

void TreeView::Key(WPARAM key, LPARAM details) {
    NMTVKEYDOWN notification{};
    notification.wVKey = static_cast<WORD>(key);
    notification.flags = static_cast<UINT>(details);
    Notify(TVN_KEYDOWN, notification.hdr);
    if (!selected_) {
        return;
    }
    const int row = RowOf(*selected_);
    switch (key) {
    case VK_UP:
        SelectRow(row - 1);
        break;
    case VK_DOWN:
        SelectRow(row + 1);
        break;
    case VK_PRIOR:
        SelectRow(row - RowsInView());
        break;
    case VK_NEXT:
        SelectRow(row + RowsInView());
        break;
    case VK_HOME:
        SelectRow(0);
        break;
    case VK_END:
        SelectRow(static_cast<int>(items_.Count()));
        break;
    case VK_LEFT:
        Climb(*selected_);
        break;
    case VK_RIGHT:
        Descend(*selected_);
        break;
    case VK_ADD:
        Expand(*selected_, TVE_EXPAND, true);
        break;
    case VK_SUBTRACT:
        Expand(*selected_, TVE_COLLAPSE, true);
        break;
    case VK_RETURN:
        Notify(NM_RETURN);
        break;
    default:
        break;
    }
}

}  // namespace platform
