// Where the items of a tree view stand, and what mouse and keyboard do to them.
#include <algorithm>
#include <climits>
#include <cstdlib>
#include <utility>

#include "platform/controls/tree_view.h"

namespace platform {

namespace {

// Nothing is drawn, but places depend on the size of pictures and text.
constexpr int RowHeight = 16;
constexpr int Indent = 19;
constexpr int PictureWidth = 19;
constexpr int DragDistance = 4;

}  // namespace

int TreeView::RowOf(const TreeItem& item) const {
    const std::vector<TreeItem*> rows = items_.Rows();
    const auto found = std::find(rows.begin(), rows.end(), &item);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

TreeItem* TreeView::ItemAt(POINT point) const {
    RECT client{};
    GetClientRect(Window(), &client);
    const std::vector<TreeItem*> rows = items_.Rows();
    const auto row = static_cast<size_t>(point.y / RowHeight);
    return PtInRect(&client, point) && row < rows.size() ? rows[row] : nullptr;
}

bool TreeView::TextRect(const TreeItem& item, RECT& place) const {
    const int row = RowOf(item);
    const int left = Indent * items_.Level(item) + PictureWidth;
    const int width = static_cast<int>(TextOf(item).size()) * CharacterWidth;
    place = {left, row * RowHeight, left + width, (row + 1) * RowHeight};
    return row >= 0;
}

void TreeView::Press(POINT point) {
    SetFocus(Window());
    const TreeItem* const item = ItemAt(point);
    pressed_ = item ? item->Handle() : nullptr;
    pressedAt_ = point;
}

// A drag begins when the mouse has left the spot where it went down on an item.
void TreeView::Drag(POINT point) {
    const bool moved =
        std::abs(point.x - pressedAt_.x) >= DragDistance || std::abs(point.y - pressedAt_.y) >= DragDistance;
    if (pressed_ && moved) {
        NotifyOf(TVN_BEGINDRAGW, 0, *items_.Find(std::exchange(pressed_, nullptr)));
    }
}

void TreeView::Release() {
    if (pressed_) {
        Select(TVGN_CARET, std::exchange(pressed_, nullptr));
    }
}

void TreeView::TakeFocus() {
    if (!selected_) {
        selected_ = items_.FirstChild(items_.Root());
    }
}

void TreeView::Climb(TreeItem& item) {
    if (item.Expanded) {
        ExpandByUser(item, TVE_COLLAPSE);
    } else if (TreeItem* const parent = items_.Parent(item)) {
        selected_ = parent;
    }
}

void TreeView::Descend(TreeItem& item) {
    if (!item.Expanded) {
        ExpandByUser(item, TVE_EXPAND);
    } else if (TreeItem* const child = items_.FirstChild(item)) {
        selected_ = child;
    }
}

// A row beyond either end means the one at that end.
void TreeView::SelectRow(int row) {
    const std::vector<TreeItem*> rows = items_.Rows();
    selected_ = rows[static_cast<size_t>(std::clamp(row, 0, static_cast<int>(rows.size()) - 1))];
}

void TreeView::Key(WPARAM key) {
    NMTVKEYDOWN notification{};
    notification.wVKey = static_cast<WORD>(key);
    Notify(TVN_KEYDOWN, notification.hdr);
    if (!selected_) {
        return;
    }
    switch (key) {
    case VK_UP:
        SelectRow(RowOf(*selected_) - 1);
        break;
    case VK_DOWN:
        SelectRow(RowOf(*selected_) + 1);
        break;
    case VK_HOME:
        SelectRow(0);
        break;
    case VK_END:
        SelectRow(INT_MAX);
        break;
    case VK_LEFT:
        Climb(*selected_);
        break;
    case VK_RIGHT:
        Descend(*selected_);
        break;
    case VK_SUBTRACT:
        ExpandByUser(*selected_, TVE_COLLAPSE);
        break;
    default:
        break;
    }
}

LRESULT TreeView::HandleInput(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_SETFOCUS:
        TakeFocus();
        return 0;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        Key(first);
        return 0;
    case WM_LBUTTONDOWN:
        Press(PointOf(second));
        return 0;
    case WM_MOUSEMOVE:
        Drag(PointOf(second));
        return 0;
    case WM_LBUTTONUP:
        Release();
        return 0;
    case WM_RBUTTONUP:
        Notify(NM_RCLICK);
        return 0;
    default:
        return Default(message, first, second);
    }
}

}  // namespace platform
