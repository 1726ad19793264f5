// The Clocks + Sync page in its user's hands: what the tree shows, and the mouse, the keys and the menu on
// it. Cards are named by the card's name, the root by its text; Space is where no item is.
#pragma once

#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "config_ui/resource.h"
#include "tests/support/sheet.h"

class ClockTreeUser {
public:
    static constexpr const char16_t* Root = u"Sample Clock";
    static constexpr const char16_t* Space = u"";

    explicit ClockTreeUser(HWND page) : page_(page), tree_(page_.Control(IDC_CLOCK_TREE)) {}

    // "A (internal clock) [B, C]; D (automatic clock selection)": top-level cards with their slaves, in
    // the order of the tree. Items that are folded away are left out.
    std::u16string Outline() const { return Row(TreeView_GetChild(tree_, TreeView_GetRoot(tree_)), u"; "); }
    // The text of the selected item, and of that where a card would be dropped; empty when there is none.
    std::u16string Selected() const { return Text(TreeView_GetSelection(tree_)); }
    std::u16string Highlighted() const { return Text(TreeView_GetDropHilight(tree_)); }
    void Select(const std::u16string& item) const { TreeView_SelectItem(tree_, Find(item)); }

    // A drag from press to release, or its three parts. The display's real pointer moves when it likes, and
    // the page that has the mouse hears of it: so a move and what is to be seen or done at that place are
    // one action on the page's thread, with no other message between them.
    void Drag(const std::u16string& item, const std::u16string& place) const {
        PickUp(item);
        Drop(place);
    }
    void PickUp(const std::u16string& item) const;
    std::u16string DragTo(const std::u16string& place) const;  // what is highlighted there
    void Drop(const std::u16string& place) const;

    // Opens a menu, which stays open, and tells its lines: "-" is a separator, a grayed text stands in
    // parentheses, a checked one behind an asterisk. None when there is no menu.
    std::vector<std::u16string> RightClick(const std::u16string& place) const;
    std::vector<std::u16string> ShiftRightClick(const std::u16string& place) const;
    std::vector<std::u16string> ShiftF10() const;
    // The entry with that letter underlined; '\x1B' gives the menu up.
    void Choose(char16_t letter) const;
    // By the item's menu.
    void Command(const std::u16string& item, char16_t letter) const {
        RightClick(item);
        Choose(letter);
    }

    void PressKey(WORD key) const {
        PostMessageW(tree_, WM_KEYDOWN, key, 0);
        OnItsThread([] {});
    }
    void OnItsThread(const std::function<void()>& action) const { page_.OnItsThread(action); }

private:
    // The item's text, empty when there is none, and whether what is below it is shown.
    std::pair<std::u16string, bool> TextAndFold(HTREEITEM item) const;
    std::u16string Text(HTREEITEM item) const { return TextAndFold(item).first; }
    // The item and what follows it beside it, each with its slaves.
    std::u16string Row(HTREEITEM item, const char16_t* between) const;
    HTREEITEM Find(const std::u16string& name) const;
    POINT PlaceInTree(const std::u16string& place) const;
    void SendMouse(UINT message, const std::u16string& place) const;
    void PostToTree(UINT message, WPARAM buttons, POINT place) const {
        PostMessageW(tree_, message, buttons, MAKELPARAM(place.x, place.y));
    }
    void HoldShift(bool down) const;
    std::vector<std::u16string> OpenedMenu() const;

    SheetPage page_;
    HWND tree_;
};
