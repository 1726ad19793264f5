// The tree view. Its items are in tree_items.h; tree_view.cpp keeps them, the selection and what is
// expanded; tree_view_input.cpp says where they stand, and follows mouse and keys.
#pragma once

#include "platform/controls/control.h"
#include "platform/controls/tree_items.h"

namespace platform {

class TreeView final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override;

private:
    // Items
    HTREEITEM Insert(const TVINSERTSTRUCTW& insertion);
    bool Delete(HTREEITEM handle);
    void Remove(TreeItem& item);
    bool Get(TVITEMW& item);
    std::u16string TextOf(const TreeItem& item) const;
    const TreeItem* SortedPlace(const TreeItem& parent, const TreeItem& item) const;
    TreeItem* Related(WPARAM relation, HTREEITEM handle);

    // Selection and expansion. The parent is asked and told only of what the user expands.
    bool Select(WPARAM what, HTREEITEM handle);
    bool ExpandByProgram(HTREEITEM handle);
    void ExpandByUser(TreeItem& item, UINT action);
    LRESULT NotifyOf(UINT code, UINT action, const TreeItem& item) const;

    // Geometry, in client coordinates: one row for each item
    int RowOf(const TreeItem& item) const;  // -1 when an ancestor is collapsed
    TreeItem* ItemAt(POINT point) const;
    bool TextRect(const TreeItem& item, RECT& place) const;

    // Input
    LRESULT HandleInput(UINT message, WPARAM first, LPARAM second);
    void Press(POINT point);
    void Drag(POINT point);
    void Release();
    void Key(WPARAM key);
    void Climb(TreeItem& item);
    void Descend(TreeItem& item);
    void SelectRow(int row);
    void TakeFocus();

    TreeItems items_;
    TreeItem* selected_ = nullptr;
    TreeItem* dropTarget_ = nullptr;
    HIMAGELIST images_ = nullptr;  // the creator's, as are the other
    HIMAGELIST stateImages_ = nullptr;
    HTREEITEM pressed_ = nullptr;  // where the left button went down, until it comes up or a drag begins
    POINT pressedAt_{};
};

}  // namespace platform
