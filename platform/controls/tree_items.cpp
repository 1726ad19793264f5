#include "platform/controls/tree_items.h"

#include <algorithm>

namespace platform {

namespace {

void CollectRows(const TreeItem& parent, std::vector<TreeItem*>& rows) {
    for (const auto& child : parent.Children) {
        rows.push_back(child.get());
        if (child->IsExpanded()) {
            CollectRows(*child, rows);
        }
    }
}

}  // namespace

TreeItems::TreeItems() {
    root_.State = TVIS_EXPANDED;
}

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
    const auto place = std::find_if(parent.Children.begin(), parent.Children.end(),
                                    [before](const auto& child) { return child.get() == before; });
    parent.Children.insert(place, std::move(item));
    return inserted;
}

void TreeItems::Remove(TreeItem& item) {
    while (!item.Children.empty()) {
        Remove(*item.Children.back());
    }
    known_.erase(&item);
    auto& siblings = item.Parent->Children;
    siblings.erase(siblings.begin() + static_cast<std::ptrdiff_t>(IndexOf(item)));
}

size_t TreeItems::IndexOf(const TreeItem& item) const {
    const auto& siblings = item.Parent->Children;
    const auto found = std::find_if(siblings.begin(), siblings.end(),
                                    [&item](const auto& sibling) { return sibling.get() == &item; });
    return static_cast<size_t>(found - siblings.begin());
}

TreeItem* TreeItems::FirstChild(const TreeItem& item) const {
    return item.Children.empty() ? nullptr : item.Children.front().get();
}

TreeItem* TreeItems::Next(const TreeItem& item) const {
    const size_t next = IndexOf(item) + 1;
    return next < item.Parent->Children.size() ? item.Parent->Children[next].get() : nullptr;
}

TreeItem* TreeItems::Previous(const TreeItem& item) const {
    const size_t index = IndexOf(item);
    return index > 0 ? item.Parent->Children[index - 1].get() : nullptr;
}

TreeItem* TreeItems::Parent(const TreeItem& item) const {
    return IsRoot(item.Parent) ? nullptr : item.Parent;
}

bool TreeItems::IsWithin(const TreeItem& item, const TreeItem& ancestor) const {
    for (const TreeItem* climb = &item; climb; climb = climb->Parent) {
        if (climb == &ancestor) {
            return true;
        }
    }
    return false;
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
