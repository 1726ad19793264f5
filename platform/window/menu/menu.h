// The items of a menu and the window of an open one.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace platform {

struct MenuItem {
    UINT Flags;  // MF_
    UINT_PTR Id;
    std::u16string Text;

    bool IsSeparator() const { return (Flags & MF_SEPARATOR) != 0; }
    bool CanBeChosen() const { return (Flags & (MF_SEPARATOR | MF_GRAYED | MF_DISABLED)) == 0; }
};

// None when there is no such menu.
std::vector<MenuItem> MenuItems(HMENU menu);

// The procedure of the window of an open menu, whose class is "#32768".
LRESULT CALLBACK MenuWindowProcedure(HWND window, UINT message, WPARAM first, LPARAM second);

}  // namespace platform
