#include "platform/controls/tree_view.h"

#include <utility>

#include "platform/controls/control_classes.h"

namespace platform {

namespace {

constexpr int LongestTextOnDemand = 260;  // in characters, with the terminator

HTREEITEM ItemHandle(LPARAM parameter) {
    return reinterpret_cast<HTREEITEM>(parameter);
}

LRESULT HandleOrNull(const TreeItem* item) {
    return item ? reinterpret_cast<LRESULT>(item->Handle()) : 0;
}

}  // namespace

std::u16string TreeView::TextOf(const TreeItem& item) const {
    if (!item.TextOnDemand) {
        return item.Text;
    }
    WCHAR buffer[LongestTextOnDemand] = {};
    NMTVDISPINFOW request{};
    request.item.mask = TVIF_TEXT;
    request.item.hItem = item.Handle();
    request.item.lParam = item.Data;
    request.item.pszText = buffer;
    request.item.cchTextMax = LongestTextOnDemand;
    Notify(TVN_GETDISPINFOW, request.hdr);
    return request.item.pszText;
}

// The first of the parent's children whose text comes after the item's; null when none does.
const TreeItem* TreeView::SortedPlace(const TreeItem& parent, const TreeItem& item) const {
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
    item->TextOnDemand = insertion.item.pszText == LPSTR_TEXTCALLBACKW;
    item->Text = item->TextOnDemand ? TEXT("") : insertion.item.pszText;
    item->Data = insertion.item.lParam;
    const TreeItem* before = nullptr;
    if (insertion.hInsertAfter == TVI_FIRST) {
        before = items_.FirstChild(*parent);
    } else if (insertion.hInsertAfter == TVI_SORT) {
        before = SortedPlace(*parent, *item);
    }
    return items_.Insert(*parent, before, std::move(item)).Handle();
}

void TreeView::Remove(TreeItem& item) {
    while (TreeItem* const child = items_.FirstChild(item)) {
        Remove(*child);
    }
    selected_ = selected_ == &item ? nullptr : selected_;
    dropTarget_ = dropTarget_ == &item ? nullptr : dropTarget_;
    pressed_ = pressed_ == item.Handle() ? nullptr : pressed_;
    items_.Remove(item);
}

bool TreeView::Delete(HTREEITEM handle) {
    TreeItem* const item = items_.Find(handle);
    if (items_.IsRoot(item)) {
        while (TreeItem* const child = items_.FirstChild(*item)) {
            Remove(*child);
        }
    } else if (item) {
        Remove(*item);
    }
    return item != nullptr;
}

bool TreeView::Get(TVITEMW& item) {
    const TreeItem* const found = items_.Find(item.hItem);
    if (!found || items_.IsRoot(found)) {
        return false;
    }
    if ((item.mask & TVIF_TEXT) != 0) {
        CopyText(TextOf(*found), item.pszText, static_cast<size_t>(item.cchTextMax));
    }
    if ((item.mask & TVIF_STATE) != 0) {
        item.state = (found->Expanded ? TVIS_EXPANDED : 0) & item.stateMask;
    }
    item.lParam = (item.mask & TVIF_PARAM) != 0 ? found->Data : item.lParam;
    return true;
}

TreeItem* TreeView::Related(WPARAM relation, HTREEITEM handle) {
    TreeItem* const item = items_.Find(handle);
    switch (relation) {
    case TVGN_ROOT:
        return items_.FirstChild(items_.Root());
    case TVGN_CARET:
        return selected_;
    case TVGN_DROPHILITE:
        return dropTarget_;
    case TVGN_CHILD:
        return item ? items_.FirstChild(*item) : nullptr;
    default:
        break;
    }
    if (!item || items_.IsRoot(item)) {
        return nullptr;
    }
    switch (relation) {
    case TVGN_NEXT:
        return items_.Next(*item);
    case TVGN_PARENT:
        return items_.Parent(*item);
    case TVGN_NEXTVISIBLE: {
        const std::vector<TreeItem*> rows = items_.Rows();
        const auto next = static_cast<size_t>(RowOf(*item) + 1);
        return next < rows.size() ? rows[next] : nullptr;
    }
    default:
        return nullptr;
    }
}

bool TreeView::Select(WPARAM what, HTREEITEM handle) {
    TreeItem* const item = handle ? items_.Find(handle) : nullptr;
    if (handle && !item) {
        return false;
    }
    (what == TVGN_CARET ? selected_ : dropTarget_) = item;
    return true;
}

bool TreeView::ExpandByProgram(HTREEITEM handle) {
    TreeItem* const item = items_.Find(handle);
    if (!item || item->Children.empty()) {
        return false;
    }
    item->Expanded = true;
    return true;
}

void TreeView::ExpandByUser(TreeItem& item, UINT action) {
    const bool expand = action == TVE_EXPAND;
    if (!item.Children.empty() && item.Expanded != expand &&
        NotifyOf(TVN_ITEMEXPANDINGW, action, item) == FALSE) {
        item.Expanded = expand;
        NotifyOf(TVN_ITEMEXPANDEDW, action, item);
    }
}

LRESULT TreeView::NotifyOf(UINT code, UINT action, const TreeItem& item) const {
    NMTREEVIEWW notification{};
    notification.action = action;
    notification.itemNew.mask = TVIF_HANDLE | TVIF_PARAM;
    notification.itemNew.hItem = item.Handle();
    notification.itemNew.lParam = item.Data;
    return Notify(code, notification.hdr);
}

LRESULT TreeView::Handle(UINT message, WPARAM first, LPARAM second) {
    switch (message) {
    case TVM_INSERTITEMW:
        return reinterpret_cast<LRESULT>(Insert(*reinterpret_cast<const TVINSERTSTRUCTW*>(second)));
    case TVM_DELETEITEM:
        return Delete(ItemHandle(second));
    case TVM_GETITEMW:
        return Get(*reinterpret_cast<TVITEMW*>(second));
    case TVM_GETNEXTITEM:
        return HandleOrNull(Related(first, ItemHandle(second)));
    case TVM_SELECTITEM:
        return Select(first, ItemHandle(second));
    case TVM_EXPAND:
        return ExpandByProgram(ItemHandle(second));
    case TVM_SETIMAGELIST: {
        HIMAGELIST& images = first == TVSIL_STATE ? stateImages_ : images_;
        return reinterpret_cast<LRESULT>(std::exchange(images, reinterpret_cast<HIMAGELIST>(second)));
    }
    case TVM_HITTEST:
        return HandleOrNull(ItemAt(reinterpret_cast<TVHITTESTINFO*>(second)->pt));
    case TVM_GETITEMRECT: {
        // The caller puts the item's handle where the rectangle will be written.
        const TreeItem* const item = items_.Find(*reinterpret_cast<HTREEITEM*>(second));
        return item && !items_.IsRoot(item) && TextRect(*item, *reinterpret_cast<RECT*>(second));
    }
    default:
        return HandleInput(message, first, second);
    }
}

WNDPROC TreeViewProcedure() {
    return ControlProcedure<TreeView>;
}

}  // namespace platform
