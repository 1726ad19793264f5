#include "platform/controls/tree_view.h"

#include <algorithm>

#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr int LongestTextOnDemand = 260;  // in characters, with the terminator

// What a notification says of an item.
TVITEMW Describe(const TreeItem* item) {
    TVITEMW description{};
    if (item) {
        description.mask = TVIF_HANDLE | TVIF_PARAM | TVIF_STATE | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
        description.hItem = item->Handle();
        description.lParam = item->Data;
        description.state = item->State;
        description.iImage = item->Image;
        description.iSelectedImage = item->SelectedImage;
    }
    return description;
}

}  // namespace

LRESULT TreeView::NotifyOfItems(UINT code, UINT action, const TreeItem* before, const TreeItem* now) const {
    NMTREEVIEWW notification{};
    notification.action = action;
    notification.itemOld = Describe(before);
    notification.itemNew = Describe(now);
    return Notify(code, notification.hdr);
}

LRESULT TreeView::NotifyOfDrag(UINT code, const TreeItem& item, POINT from) const {
    NMTREEVIEWW notification{};
    notification.itemNew = Describe(&item);
    notification.ptDrag = from;
    return Notify(code, notification.hdr);
}

std::u16string TreeView::TextOf(const TreeItem& item) {
    if (!item.TextOnDemand) {
        return item.Text;
    }
    WCHAR buffer[LongestTextOnDemand] = {};
    NMTVDISPINFOW request{};
    request.item.mask = TVIF_TEXT;
    request.item.hItem = item.Handle();
    request.item.lParam = item.Data;
    request.item.state = item.State;
    request.item.pszText = buffer;
    request.item.cchTextMax = LongestTextOnDemand;
    Notify(TVN_GETDISPINFOW, request.hdr);
    return request.item.pszText ? request.item.pszText : std::u16string();
}

void TreeView::Fill(TreeItem& item, const TVITEMW& from) {
    if ((from.mask & TVIF_TEXT) != 0) {
        item.TextOnDemand = from.pszText == LPSTR_TEXTCALLBACKW;
        item.Text = item.TextOnDemand || !from.pszText ? TEXT("") : from.pszText;
    }
    if ((from.mask & TVIF_IMAGE) != 0) {
        item.Image = from.iImage;
    }
    if ((from.mask & TVIF_SELECTEDIMAGE) != 0) {
        item.SelectedImage = from.iSelectedImage;
    }
    if ((from.mask & TVIF_PARAM) != 0) {
        item.Data = from.lParam;
    }
    if ((from.mask & TVIF_STATE) != 0) {
        item.State = (item.State & ~from.stateMask) | (from.state & from.stateMask);
    }
}

// The first of the parent's children whose text comes after the item's; null when none does.
const TreeItem* TreeView::SortedPlace(const TreeItem& parent, const TreeItem& item) {
    const std::u16string text = TextOf(item);
    for (const auto& child : parent.Children) {
        if (lstrcmpW(text.c_str(), TextOf(*child).c_str()) < 0) {
            return child.get();
        }
    }
    return nullptr;
}

HTREEITEM TreeView::Insert(const TVINSERTSTRUCTW& insertion) {
    TreeItem* const parent = items_.Find(insertion.hParent);
    if (!parent) {
        return nullptr;
    }
    auto item = std::make_unique<TreeItem>();
    Fill(*item, insertion.item);
    const TreeItem* before = nullptr;
    if (insertion.hInsertAfter == TVI_FIRST) {
        before = items_.FirstChild(*parent);
    } else if (insertion.hInsertAfter == TVI_SORT) {
        before = SortedPlace(*parent, *item);
    } else if (insertion.hInsertAfter != TVI_LAST) {
        const TreeItem* const after = items_.Find(insertion.hInsertAfter);
        before = after && after->Parent == parent ? items_.Next(*after) : nullptr;
    }
    return items_.Insert(*parent, before, std::move(item)).Handle();
}

// Where the selection goes when it is lost with the item.
TreeItem* TreeView::Neighbour(const TreeItem& item) const {
    if (TreeItem* const next = items_.Next(item)) {
        return next;
    }
    TreeItem* const previous = items_.Previous(item);
    return previous ? previous : items_.Parent(item);
}

void TreeView::DeleteUnder(TreeItem& item) {
    while (!item.Children.empty()) {
        DeleteAlone(*item.Children.front());
    }
}

void TreeView::DeleteAlone(TreeItem& item) {
    DeleteUnder(item);
    NotifyOfItems(TVN_DELETEITEMW, 0, &item, nullptr);
    if (selected_ == &item) {
        selected_ = nullptr;
    }
    if (dropTarget_ == &item) {
        dropTarget_ = nullptr;
    }
    items_.Remove(item);
}

bool TreeView::Delete(HTREEITEM handle) {
    TreeItem* const item = items_.Find(handle);
    if (!item) {
        return false;
    }
    if (items_.IsRoot(item)) {
        DeleteUnder(*item);
        LimitScrolling();
        return true;
    }
    TreeItem* const neighbour = Neighbour(*item);
    const bool takesSelection = selected_ && items_.IsWithin(*selected_, *item);
    DeleteAlone(*item);
    LimitScrolling();
    if (takesSelection) {
        Select(neighbour, TVC_UNKNOWN);
    }
    return true;
}

bool TreeView::Get(TVITEMW& item) {
    const TreeItem* const found = items_.Find(item.hItem);
    if (!found || items_.IsRoot(found)) {
        return false;
    }
    if ((item.mask & TVIF_TEXT) != 0) {
        CopyText(TextOf(*found), item.pszText, static_cast<size_t>(std::max(item.cchTextMax, 0)));
    }
    if ((item.mask & TVIF_STATE) != 0) {
        item.state = found->State & item.stateMask;
    }
    if ((item.mask & TVIF_CHILDREN) != 0) {
        item.cChildren = found->Children.empty() ? 0 : 1;
    }
    item.iImage = (item.mask & TVIF_IMAGE) != 0 ? found->Image : item.iImage;
    item.iSelectedImage = (item.mask & TVIF_SELECTEDIMAGE) != 0 ? found->SelectedImage : item.iSelectedImage;
    item.lParam = (item.mask & TVIF_PARAM) != 0 ? found->Data : item.lParam;
    return true;
}

bool TreeView::Set(const TVITEMW& item) {
    TreeItem* const found = items_.Find(item.hItem);
    if (!found || items_.IsRoot(found)) {
        return false;
    }
    Fill(*found, item);
    return true;
}

TreeItem* TreeView::Related(WPARAM relation, HTREEITEM handle) {
    switch (relation) {
    case TVGN_ROOT:
        return items_.FirstChild(items_.Root());
    case TVGN_CARET:
        return selected_;
    case TVGN_DROPHILITE:
        return dropTarget_;
    case TVGN_FIRSTVISIBLE: {
        const std::vector<TreeItem*> rows = items_.Rows();
        return rows.empty() ? nullptr : rows[static_cast<size_t>(firstRow_)];
    }
    default:
        break;
    }
    TreeItem* const item = items_.Find(handle);
    if (!item) {
        return nullptr;
    }
    if (relation == TVGN_CHILD) {
        return items_.FirstChild(*item);
    }
    if (items_.IsRoot(item)) {
        return nullptr;
    }
    switch (relation) {
    case TVGN_NEXT:
        return items_.Next(*item);
    case TVGN_PREVIOUS:
        return items_.Previous(*item);
    case TVGN_PARENT:
        return items_.Parent(*item);
    case TVGN_NEXTVISIBLE:
        return NeighbourRow(*item, 1);
    case TVGN_PREVIOUSVISIBLE:
        return NeighbourRow(*item, -1);
    default:
        return nullptr;
    }
}

bool TreeView::Select(TreeItem* item, UINT action) {
    if (item == selected_) {
        return true;
    }
    TreeItem* const before = selected_;
    if (NotifyOfItems(TVN_SELCHANGINGW, action, before, item) != FALSE) {
        return false;
    }
    if (before) {
        before->State &= ~UINT{TVIS_SELECTED};
    }
    selected_ = item;
    if (item) {
        item->State |= TVIS_SELECTED;
        EnsureVisible(*item);
    }
    NotifyOfItems(TVN_SELCHANGEDW, action, before, item);
    return true;
}

void TreeView::HighlightDropTarget(TreeItem* item) {
    if (dropTarget_) {
        dropTarget_->State &= ~UINT{TVIS_DROPHILITED};
    }
    dropTarget_ = item;
    if (item) {
        item->State |= TVIS_DROPHILITED;
    }
}

bool TreeView::SelectByMessage(WPARAM what, HTREEITEM handle) {
    TreeItem* const item = handle ? items_.Find(handle) : nullptr;
    if ((handle && !item) || items_.IsRoot(item)) {
        return false;
    }
    if (what == TVGN_CARET) {
        return Select(item, TVC_UNKNOWN);
    }
    if (what == TVGN_DROPHILITE) {
        HighlightDropTarget(item);
        return true;
    }
    return false;
}

bool TreeView::TellExpansion(UINT code, UINT action, const TreeItem& item) const {
    return NotifyOfItems(code, action, nullptr, &item) != FALSE;
}

// The parent is notified whenever the user expands an item, but only the first time when the program does.
bool TreeView::Expand(TreeItem& item, UINT action, bool byUser) {
    if (action == TVE_TOGGLE) {
        action = item.IsExpanded() ? TVE_COLLAPSE : TVE_EXPAND;
    }
    if (item.Children.empty()) {
        return false;
    }
    if (item.IsExpanded() == (action == TVE_EXPAND)) {
        return action == TVE_EXPAND;
    }
    const bool told = byUser || (item.State & TVIS_EXPANDEDONCE) == 0;
    if (told && TellExpansion(TVN_ITEMEXPANDINGW, action, item)) {
        return false;
    }
    if (action == TVE_EXPAND) {
        item.State |= TVIS_EXPANDED | TVIS_EXPANDEDONCE;
    } else {
        item.State &= ~UINT{TVIS_EXPANDED};
        if (selected_ && selected_ != &item && items_.IsWithin(*selected_, item)) {
            Select(&item, TVC_UNKNOWN);
        }
        LimitScrolling();
    }
    if (told) {
        TellExpansion(TVN_ITEMEXPANDEDW, action, item);
    }
    return true;
}

void TreeView::ShowAncestors(TreeItem& item) {
    if (TreeItem* const parent = items_.Parent(item)) {
        ShowAncestors(*parent);
        Expand(*parent, TVE_EXPAND, false);
    }
}

WNDPROC TreeViewProcedure() {
    return ControlProcedure<TreeView>;
}

}  // namespace platform
