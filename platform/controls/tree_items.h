// The items of a tree view: parents and children, their order, and which of them have a row at the moment.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace platform {

struct TreeItem {
    TreeItem* Parent = nullptr;  // the root, which is no item of its own, for those at the top
    std::vector<std::unique_ptr<TreeItem>> Children;
    std::u16string Text;
    bool TextOnDemand = false;
    LPARAM Data = 0;
    bool Expanded = false;

    HTREEITEM Handle() const { return reinterpret_cast<HTREEITEM>(const_cast<TreeItem*>(this)); }
};

// Used only on the thread of the control.
class TreeItems {
public:
    TreeItems() { root_.Expanded = true; }

    TreeItem& Root() { return root_; }
    bool IsRoot(const TreeItem* item) const { return item == &root_; }

    // The item of that handle; null when it does not exist any more. A null handle and TVI_ROOT are the root.
    TreeItem* Find(HTREEITEM handle);

    // Inserts the item before the given child of the parent, or as the last child when that is null.
    TreeItem& Insert(TreeItem& parent, const TreeItem* before, std::unique_ptr<TreeItem> item);

    // Removes the item with everything under it.
    void Remove(TreeItem& item);

    // Relations; null when there is none. The root is nobody's parent.
    TreeItem* FirstChild(const TreeItem& item) const;
    TreeItem* Next(const TreeItem& item) const;
    TreeItem* Parent(const TreeItem& item) const;
    int Level(const TreeItem& item) const;

    // The items whose ancestors are all expanded, from top to bottom.
    std::vector<TreeItem*> Rows() const;

private:
    TreeItem root_;
    std::unordered_set<const TreeItem*> known_;
};

}  // namespace platform
