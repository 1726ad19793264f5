// Messages of user32 that the SDK does not name.
#pragma once

#include <windows.h>

namespace platform {

constexpr UINT HelpKeyMessage = 0x004D;  // F1 was pressed; the default is WM_HELP
constexpr UINT GetMenuMessage = 0x01E1;  // to a popup menu's window: its HMENU

}  // namespace platform
