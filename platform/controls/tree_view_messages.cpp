// The messages of a tree view, each with the function that answers it.
#include <utility>

#include "platform/controls/tree_view.h"

namespace platform {

const TreeView::MessageRow TreeView::MessageTable[] = {
    {WM_GETDLGCODE, &TreeView::OnGetDialogCode},
    {WM_SETFOCUS, &TreeView::OnSetFocus},
    {WM_KILLFOCUS, &TreeView::OnKillFocus},
    {WM_KEYDOWN, &TreeView::OnKeyDown},
    {WM_SYSKEYDOWN, &TreeView::OnSystemKeyDown},
    {WM_DESTROY, &TreeView::OnDestroy},
    {TVM_INSERTITEMW, &TreeView::OnInsertItem},
    {TVM_DELETEITEM, &TreeView::OnDeleteItem},
    {TVM_GETITEMW, &TreeView::OnGetItem},
    {TVM_SETITEMW, &TreeView::OnSetItem},
    {TVM_GETITEMSTATE, &TreeView::OnGetItemState},
    {TVM_GETCOUNT, &TreeView::OnGetCount},
    {TVM_GETNEXTITEM, &TreeView::OnGetNextItem},
    {TVM_SELECTITEM, &TreeView::OnSelectItem},
    {TVM_EXPAND, &TreeView::OnExpand},
    {TVM_ENSUREVISIBLE, &TreeView::OnEnsureVisible},
    {TVM_SETIMAGELIST, &TreeView::OnSetImageList},
    {TVM_GETIMAGELIST, &TreeView::OnGetImageList},
    {TVM_HITTEST, &TreeView::OnHitTest},
    {TVM_GETITEMRECT, &TreeView::OnGetItemRect},
    {TVM_GETITEMHEIGHT, &TreeView::OnGetItemHeight},
    {TVM_GETVISIBLECOUNT, &TreeView::OnGetVisibleCount},
};

LRESULT TreeView::Handle(UINT message, WPARAM first, LPARAM second) {
    if (HandleMouse(message, PointOf(second))) {
        return 0;
    }
    for (const MessageRow& row : MessageTable) {
        if (row.Message == message) {
            return (this->*row.Answer)(first, second);
        }
    }
    return Default(message, first, second);
}

namespace {

HTREEITEM ItemHandle(LPARAM parameter) {
    return reinterpret_cast<HTREEITEM>(parameter);
}

LRESULT HandleOrNull(const TreeItem* item) {
    return item ? reinterpret_cast<LRESULT>(item->Handle()) : 0;
}

}  // namespace

LRESULT TreeView::OnGetDialogCode(WPARAM, LPARAM) {
    return DLGC_WANTARROWS | DLGC_WANTCHARS;
}

LRESULT TreeView::OnSetFocus(WPARAM, LPARAM) {
    TakeFocus();
    return 0;
}

LRESULT TreeView::OnKillFocus(WPARAM, LPARAM) {
    Notify(NM_KILLFOCUS);
    return 0;
}

LRESULT TreeView::OnKeyDown(WPARAM key, LPARAM details) {
    Key(key, details);
    return 0;
}

LRESULT TreeView::OnSystemKeyDown(WPARAM key, LPARAM details) {
    Key(key, details);
    return Default(WM_SYSKEYDOWN, key, details);
}

LRESULT TreeView::OnDestroy(WPARAM, LPARAM) {
    DeleteUnder(items_.Root());
    return 0;
}

LRESULT TreeView::OnInsertItem(WPARAM, LPARAM insertion) {
    return reinterpret_cast<LRESULT>(Insert(*reinterpret_cast<const TVINSERTSTRUCTW*>(insertion)));
}

LRESULT TreeView::OnDeleteItem(WPARAM, LPARAM handle) {
    return Delete(ItemHandle(handle));
}

LRESULT TreeView::OnGetItem(WPARAM, LPARAM description) {
    return Get(*reinterpret_cast<TVITEMW*>(description));
}

LRESULT TreeView::OnSetItem(WPARAM, LPARAM description) {
    return Set(*reinterpret_cast<const TVITEMW*>(description));
}

// Here the handle is the first word, and the mask of the states the second.
LRESULT TreeView::OnGetItemState(WPARAM handle, LPARAM mask) {
    const TreeItem* const item = items_.Find(reinterpret_cast<HTREEITEM>(handle));
    return item ? item->State & static_cast<UINT>(mask) : 0;
}

LRESULT TreeView::OnGetCount(WPARAM, LPARAM) {
    return static_cast<LRESULT>(items_.Count());
}

LRESULT TreeView::OnGetNextItem(WPARAM relation, LPARAM handle) {
    return HandleOrNull(Related(relation, ItemHandle(handle)));
}

LRESULT TreeView::OnSelectItem(WPARAM what, LPARAM handle) {
    return SelectByMessage(what, ItemHandle(handle));
}

LRESULT TreeView::OnExpand(WPARAM action, LPARAM handle) {
    TreeItem* const item = items_.Find(ItemHandle(handle));
    return item && Expand(*item, static_cast<UINT>(action), false);
}

LRESULT TreeView::OnEnsureVisible(WPARAM, LPARAM handle) {
    TreeItem* const item = items_.Find(ItemHandle(handle));
    return item && EnsureVisible(*item);
}

HIMAGELIST* TreeView::ImagesOf(WPARAM kind) {
    return kind == TVSIL_NORMAL ? &images_ : kind == TVSIL_STATE ? &stateImages_ : nullptr;
}

LRESULT TreeView::OnSetImageList(WPARAM kind, LPARAM list) {
    HIMAGELIST* const images = ImagesOf(kind);
    return images ? reinterpret_cast<LRESULT>(std::exchange(*images, reinterpret_cast<HIMAGELIST>(list))) : 0;
}

LRESULT TreeView::OnGetImageList(WPARAM kind, LPARAM) {
    const HIMAGELIST* const images = ImagesOf(kind);
    return images ? reinterpret_cast<LRESULT>(*images) : 0;
}

LRESULT TreeView::OnHitTest(WPARAM, LPARAM information) {
    auto& hit = *reinterpret_cast<TVHITTESTINFO*>(information);
    const TreeItem* const item = ItemAt(hit.pt, &hit.flags);
    hit.hItem = item ? item->Handle() : nullptr;
    return HandleOrNull(item);
}

// The caller puts the item's handle where the rectangle will be written.
LRESULT TreeView::OnGetItemRect(WPARAM textOnly, LPARAM rectangle) {
    auto& place = *reinterpret_cast<RECT*>(rectangle);
    const TreeItem* const item = items_.Find(*reinterpret_cast<HTREEITEM*>(rectangle));
    return item && ItemRect(*item, textOnly != FALSE, place);
}

LRESULT TreeView::OnGetItemHeight(WPARAM, LPARAM) {
    return ItemHeight();
}

LRESULT TreeView::OnGetVisibleCount(WPARAM, LPARAM) {
    return RowsInView();
}

}  // namespace platform
