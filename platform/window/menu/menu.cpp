#include "platform/window/menu/menu.h"

#include <algorithm>
#include <mutex>

#include "platform/window/user_object.h"

namespace platform {

namespace {

constexpr UINT NoSuchItem = 0xFFFFFFFF;  // the answer of calls that found no item
constexpr UINT ItemStates = MF_GRAYED | MF_DISABLED | MF_CHECKED | MF_SEPARATOR | MF_POPUP;

class MenuObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Menu;

    MenuObject() : UserObject(OwnKind) {}

    std::mutex Lock;  // guards Items
    std::vector<MenuItem> Items;
};

std::shared_ptr<MenuObject> FindMenu(HMENU handle) {
    auto menu = FindUserObject<MenuObject>(handle);
    if (!menu) {
        SetLastError(ERROR_INVALID_MENU_HANDLE);
    }
    return menu;
}

// REQUIRES: the menu's lock is held. Finds an item by its command, or with MF_BYPOSITION by its position.
// Null when there is none.
MenuItem* FindItem(MenuObject& menu, UINT which, UINT flags) {
    if ((flags & MF_BYPOSITION) != 0) {
        return which < menu.Items.size() ? &menu.Items[which] : nullptr;
    }
    const auto found = std::find_if(menu.Items.begin(), menu.Items.end(), [which](const MenuItem& item) {
        return item.Id == which && (item.Flags & (MF_SEPARATOR | MF_POPUP)) == 0;
    });
    return found != menu.Items.end() ? &*found : nullptr;
}

}  // namespace

std::optional<std::vector<MenuItem>> MenuItems(HMENU handle) {
    const std::shared_ptr<MenuObject> menu = FindMenu(handle);
    if (!menu) {
        return std::nullopt;
    }
    const std::lock_guard hold(menu->Lock);
    return menu->Items;
}

}  // namespace platform

using namespace platform;

HMENU WINAPI CreatePopupMenu() {
    return static_cast<HMENU>(OpenUserHandle(std::make_shared<MenuObject>()));
}

BOOL WINAPI IsMenu(HMENU menu) {
    return FindUserObject<MenuObject>(menu) ? TRUE : FALSE;
}

BOOL WINAPI DestroyMenu(HMENU handle) {
    const std::optional<std::vector<MenuItem>> items = MenuItems(handle);
    if (!items) {
        return FALSE;
    }
    for (const MenuItem& item : *items) {
        if ((item.Flags & MF_POPUP) != 0) {
            DestroyMenu(reinterpret_cast<HMENU>(item.Id));
        }
    }
    return CloseUserHandle(handle, UserObjectKind::Menu) ? TRUE : FALSE;
}

// Inserts before the item that `before` names, or at the end when there is no such item.
BOOL WINAPI InsertMenuW(HMENU handle, UINT before, UINT flags, UINT_PTR id, LPCWSTR text) {
    const std::shared_ptr<MenuObject> menu = FindMenu(handle);
    if (!menu) {
        return FALSE;
    }
    const MenuItem made = {flags & ItemStates, id, (flags & MF_SEPARATOR) == 0 && text ? text : u""};
    const std::lock_guard hold(menu->Lock);
    const MenuItem* const place = FindItem(*menu, before, flags);
    const auto offset = place ? place - menu->Items.data() : static_cast<ptrdiff_t>(menu->Items.size());
    menu->Items.insert(menu->Items.begin() + offset, made);
    return TRUE;
}

BOOL WINAPI AppendMenuW(HMENU handle, UINT flags, UINT_PTR id, LPCWSTR text) {
    return InsertMenuW(handle, NoSuchItem, flags | MF_BYPOSITION, id, text);
}

UINT WINAPI GetMenuState(HMENU handle, UINT which, UINT flags) {
    const std::shared_ptr<MenuObject> menu = FindMenu(handle);
    if (!menu) {
        return NoSuchItem;
    }
    const std::lock_guard hold(menu->Lock);
    const MenuItem* const item = FindItem(*menu, which, flags);
    return item ? item->Flags : NoSuchItem;
}

int WINAPI GetMenuItemCount(HMENU menu) {
    const std::optional<std::vector<MenuItem>> items = MenuItems(menu);
    return items ? static_cast<int>(items->size()) : -1;
}

int WINAPI GetMenuStringW(HMENU handle, UINT which, LPWSTR buffer, int size, UINT flags) {
    const std::shared_ptr<MenuObject> menu = FindMenu(handle);
    if (!menu) {
        return 0;
    }
    const std::lock_guard hold(menu->Lock);
    const MenuItem* const item = FindItem(*menu, which, flags);
    if (!item) {
        SetLastError(ERROR_MENU_ITEM_NOT_FOUND);
        return 0;
    }
    if (!buffer || size <= 0) {
        return static_cast<int>(item->Text.size());
    }
    const size_t length = item->Text.copy(buffer, static_cast<size_t>(size) - 1);
    buffer[length] = 0;
    return static_cast<int>(length);
}
