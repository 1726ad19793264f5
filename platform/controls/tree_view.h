// The tree view. Its items are in tree_items.h; tree_view.cpp keeps them, the selection and what is
// expanded; tree_view_geometry.cpp says where they stand; tree_view_input.cpp follows mouse and keys;
// tree_view_messages.cpp has the table of the messages.
#pragma once

#include "platform/controls/control.h"
#include "platform/controls/tree_items.h"

namespace platform {

class TreeView final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    // Messages, by their two words
    LRESULT OnGetDialogCode(WPARAM, LPARAM);
    LRESULT OnSetFocus(WPARAM, LPARAM);
    LRESULT OnKillFocus(WPARAM, LPARAM);
    LRESULT OnKeyDown(WPARAM key, LPARAM details);
    LRESULT OnSystemKeyDown(WPARAM key, LPARAM details);
    LRESULT OnDestroy(WPARAM, LPARAM);
    LRESULT OnInsertItem(WPARAM, LPARAM insertion);
    LRESULT OnDeleteItem(WPARAM, LPARAM handle);
    LRESULT OnGetItem(WPARAM, LPARAM description);
    LRESULT OnSetItem(WPARAM, LPARAM description);
    LRESULT OnGetItemState(WPARAM handle, LPARAM mask);
    LRESULT OnGetCount(WPARAM, LPARAM);
    LRESULT OnGetNextItem(WPARAM relation, LPARAM handle);
    LRESULT OnSelectItem(WPARAM what, LPARAM handle);
    LRESULT OnExpand(WPARAM action, LPARAM handle);
    LRESULT OnEnsureVisible(WPARAM, LPARAM handle);
    LRESULT OnSetImageList(WPARAM kind, LPARAM list);
    LRESULT OnGetImageList(WPARAM kind, LPARAM);
    HIMAGELIST* ImagesOf(WPARAM kind);
    LRESULT OnHitTest(WPARAM, LPARAM information);
    LRESULT OnGetItemRect(WPARAM textOnly, LPARAM rectangle);
    LRESULT OnGetItemHeight(WPARAM, LPARAM);
    LRESULT OnGetVisibleCount(WPARAM, LPARAM);

    struct MessageRow {
        UINT Message;
        LRESULT (TreeView::*Answer)(WPARAM first, LPARAM second);
    };
    static const MessageRow MessageTable[];

    // Items
    HTREEITEM Insert(const TVINSERTSTRUCTW& insertion);
    bool Delete(HTREEITEM handle);
    void DeleteUnder(TreeItem& item);
    void DeleteAlone(TreeItem& item);
    TreeItem* Neighbour(const TreeItem& item) const;
    bool Get(TVITEMW& item);
    bool Set(const TVITEMW& item);
    void Fill(TreeItem& item, const TVITEMW& from);
    std::u16string TextOf(const TreeItem& item);
    const TreeItem* SortedPlace(const TreeItem& parent, const TreeItem& item);
    TreeItem* Related(WPARAM relation, HTREEITEM handle);

    // Selection and expansion. "Action" is the TVC_ value that the parent is told.
    bool SelectByMessage(WPARAM what, HTREEITEM handle);
    bool Select(TreeItem* item, UINT action);
    void HighlightDropTarget(TreeItem* item);
    bool Expand(TreeItem& item, UINT action, bool byUser);
    bool TellExpansion(UINT code, UINT action, const TreeItem& item) const;
    void ShowAncestors(TreeItem& item);
    bool EnsureVisible(TreeItem& item);
    LRESULT NotifyOfItems(UINT code, UINT action, const TreeItem* before, const TreeItem* now) const;
    LRESULT NotifyOfDrag(UINT code, const TreeItem& item, POINT from) const;

    // Geometry, in client coordinates
    int ItemHeight() const;
    int RowsInView() const;
    int RowOf(const TreeItem& item) const;
    void LimitScrolling();
    int ImageWidth() const;
    int ImageLeft(const TreeItem& item) const;
    int TextWidth(const TreeItem& item);
    TreeItem* ItemAt(POINT point, UINT* flags);
    UINT PartAt(int x, const TreeItem& item);
    bool ItemRect(const TreeItem& item, bool textOnly, RECT& place);
    TreeItem* NeighbourRow(const TreeItem& item, int step) const;

    // Input
    bool HandleMouse(UINT message, POINT point);
    void Press(UINT message, POINT point);
    void Drag(POINT point);
    void Release(UINT message);
    void DoubleClick(POINT point);
    void TellRightClick();
    void Key(WPARAM key, LPARAM details);
    void Climb(TreeItem& item);
    void Descend(TreeItem& item);
    void SelectRow(int row);
    void TakeFocus();

    // Where a mouse button went down, until it comes up or the drag begins.
    struct Pressed {
        UINT Message = 0;  // WM_LBUTTONDOWN, WM_RBUTTONDOWN or none
        POINT Place{};
        HTREEITEM Item = nullptr;  // null when it was on none
    };

    TreeItems items_;
    TreeItem* selected_ = nullptr;
    TreeItem* dropTarget_ = nullptr;
    HIMAGELIST images_ = nullptr;  // the creator's, as are the other
    HIMAGELIST stateImages_ = nullptr;
    int firstRow_ = 0;  // the row at the top of the view
    Pressed pressed_;
};

}  // namespace platform
