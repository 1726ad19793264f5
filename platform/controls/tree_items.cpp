#include "platform/controls/tree_items.h"

#include <algorithm>

namespace platform {

namespace {

void CollectRows(const TreeItem& parent, std::vector<TreeItem*>& rows) {
    for (const auto& child : parent.Children) {
        rows.push_back(child.get());
        if (child->Expanded) {
            CollectRows(*child, rows);
        }
    }
}

auto PlaceAmongSiblings(const TreeItem& item) {
    auto& siblings = item.Parent->Children;
    return std::find_if(siblings.begin(), siblings.end(),
                        [&item](const auto& sibling) { return sibling.get() == &item; });
}

}  // namespace

TreeItem* TreeItems::Find(HTREEITEM handle) {
    if (!handle || handle == TVI_ROOT) {
        return &root_;
    }
    auto* const item = reinterpret_cast<TreeItem*>(handle);
    return known_.contains(item) ? item : nullptr;
}

TreeItem& TreeItems::Insert(TreeItem& parent, const TreeItem* before, std::unique_ptr<TreeItem> item) {
    TreeItem& inserted = *item;
    inserted.Parent = &parent;
    known_.insert(&inserted);
    parent.Children.insert(before ? PlaceAmongSiblings(*before) : parent.Children.end(), std::move(item));
    return inserted;
}

void TreeItems::Remove(TreeItem& item) {
    while (!item.Children.empty()) {
        Remove(*item.Children.back());
    }
    known_.erase(&item);
    item.Parent->Children.erase(PlaceAmongSiblings(item));
}

TreeItem* TreeItems::FirstChild(const TreeItem& item) const {
    return item.Children.empty() ? nullptr : item.Children.front().get();
}

TreeItem* TreeItems::Next(const TreeItem& item) const {
    const auto next = PlaceAmongSiblings(item) + 1;
    return next != item.Parent->Children.end() ? next->get() : nullptr;
}

TreeItem* TreeItems::Parent(const TreeItem& item) const {
    return IsRoot(item.Parent) ? nullptr : item.Parent;
}

int TreeItems::Level(const TreeItem& item) const {
    int level = 0;
    for (const TreeItem* climb = item.Parent; !IsRoot(climb); climb = climb->Parent) {
        ++level;
    }
    return level;
}

std::vector<TreeItem*> TreeItems::Rows() const {
    std::vector<TreeItem*> rows;
    CollectRows(root_, rows);
    return rows;
}

}  // namespace platform
