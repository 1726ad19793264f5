// Where the items of a tree view stand: one row each, indented by their level.
#include <algorithm>

#include "platform/controls/tree_view.h"

namespace platform {

namespace {

constexpr int Indent = 19;
constexpr int AroundText = 3;  // above and below, and left and right of it, in all
constexpr int AfterImage = 3;

}  // namespace

int TreeView::ImageWidth() const {
    int width = 0;
    int height = 0;
    return images_ && ImageList_GetIconSize(images_, &width, &height) ? width + AfterImage : 0;
}

int TreeView::ItemHeight() const {
    int width = 0;
    int height = 0;
    if (images_) {
        ImageList_GetIconSize(images_, &width, &height);
    }
    return std::max(TextHeight + AroundText, height);
}

int TreeView::RowsInView() const {
    return std::max<int>(ClientArea().bottom / ItemHeight(), 1);
}

// -1 when an ancestor is collapsed.
int TreeView::RowOf(const TreeItem& item) const {
    const std::vector<TreeItem*> rows = items_.Rows();
    const auto found = std::find(rows.begin(), rows.end(), &item);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

// When there are fewer rows than before, the view must not begin behind the last of them.
void TreeView::LimitScrolling() {
    const int rows = static_cast<int>(items_.Rows().size());
    firstRow_ = std::clamp(firstRow_, 0, std::max(rows - RowsInView(), 0));
}

TreeItem* TreeView::NeighbourRow(const TreeItem& item, int step) const {
    const std::vector<TreeItem*> rows = items_.Rows();
    const int row = RowOf(item) + step;
    return row >= 0 && row < static_cast<int>(rows.size()) ? rows[static_cast<size_t>(row)] : nullptr;
}

int TreeView::ImageLeft(const TreeItem& item) const {
    const bool marksAtTop =
        (Style() & TVS_LINESATROOT) != 0 && (Style() & (TVS_HASLINES | TVS_HASBUTTONS)) != 0;
    return Indent * (items_.Level(item) + (marksAtTop ? 1 : 0));
}

int TreeView::TextWidth(const TreeItem& item) {
    return static_cast<int>(TextOf(item).size()) * CharacterWidth + AroundText;
}

UINT TreeView::PartAt(int x, const TreeItem& item) {
    const int image = ImageLeft(item);
    const int text = image + ImageWidth();
    if (x < image) {
        const bool onButton =
            (Style() & TVS_HASBUTTONS) != 0 && !item.Children.empty() && x >= image - Indent;
        return onButton ? TVHT_ONITEMBUTTON : TVHT_ONITEMINDENT;
    }
    if (x < text) {
        return TVHT_ONITEMICON;
    }
    return x < text + TextWidth(item) ? TVHT_ONITEMLABEL : TVHT_ONITEMRIGHT;
}

TreeItem* TreeView::ItemAt(POINT point, UINT* flags) {
    const RECT client = ClientArea();
    if (!PtInRect(&client, point)) {
        *flags = (point.x < 0 ? TVHT_TOLEFT : 0) | (point.x >= client.right ? TVHT_TORIGHT : 0) |
                 (point.y < 0 ? TVHT_ABOVE : 0) | (point.y >= client.bottom ? TVHT_BELOW : 0);
        return nullptr;
    }
    const std::vector<TreeItem*> rows = items_.Rows();
    const int row = firstRow_ + point.y / ItemHeight();
    if (row >= static_cast<int>(rows.size())) {
        *flags = TVHT_NOWHERE;
        return nullptr;
    }
    TreeItem* const item = rows[static_cast<size_t>(row)];
    *flags = PartAt(point.x, *item);
    return item;
}

bool TreeView::ItemRect(const TreeItem& item, bool textOnly, RECT& place) {
    const int row = RowOf(item);
    if (row < 0) {
        return false;
    }
    const int top = (row - firstRow_) * ItemHeight();
    place = {0, top, ClientArea().right, top + ItemHeight()};
    if (textOnly) {
        place.left = ImageLeft(item) + ImageWidth();
        place.right = place.left + TextWidth(item);
    }
    return true;
}

// True when the view had to move.
bool TreeView::EnsureVisible(TreeItem& item) {
    ShowAncestors(item);
    const int row = RowOf(item);
    const int before = firstRow_;
    firstRow_ = std::clamp(firstRow_, std::max(row - RowsInView() + 1, 0), std::max(row, 0));
    return firstRow_ != before;
}

}  // namespace platform
