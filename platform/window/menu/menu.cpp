#include "platform/window/menu/menu.h"

#include <mutex>

#include "platform/window/user_object.h"

namespace platform {

namespace {

class MenuObject : public UserObject {
public:
    static constexpr UserObjectKind OwnKind = UserObjectKind::Menu;

    MenuObject() : UserObject(OwnKind) {}

    std::mutex Lock;  // guards Items
    std::vector<MenuItem> Items;
};

}  // namespace

std::vector<MenuItem> MenuItems(HMENU handle) {
    const auto menu = FindUserObject<MenuObject>(handle);
    if (!menu) {
        return {};
    }
    const std::lock_guard hold(menu->Lock);
    return menu->Items;
}

}  // namespace platform

using namespace platform;

HMENU WINAPI CreatePopupMenu() {
    return static_cast<HMENU>(OpenUserHandle(std::make_shared<MenuObject>()));
}

BOOL WINAPI DestroyMenu(HMENU handle) {
    return CloseUserHandle(handle, UserObjectKind::Menu) ? TRUE : FALSE;
}

BOOL WINAPI AppendMenuW(HMENU handle, UINT flags, UINT_PTR id, LPCWSTR text) {
    const auto menu = FindUserObject<MenuObject>(handle);
    if (!menu) {
        SetLastError(ERROR_INVALID_MENU_HANDLE);
        return FALSE;
    }
    const std::lock_guard hold(menu->Lock);
    menu->Items.push_back({flags, id, text ? text : u""});
    return TRUE;
}

int WINAPI GetMenuItemCount(HMENU menu) {
    return static_cast<int>(MenuItems(menu).size());
}

// By position.
UINT WINAPI GetMenuState(HMENU menu, UINT which, UINT) {
    return MenuItems(menu).at(which).Flags;
}

// By position, into a buffer that has room.
int WINAPI GetMenuStringW(HMENU menu, UINT which, LPWSTR buffer, int size, UINT) {
    lstrcpynW(buffer, MenuItems(menu).at(which).Text.c_str(), size);
    return lstrlenW(buffer);
}
