// The underlined letter of a control's or menu item's text, which comes after an "&".
#pragma once

#include <windows.h>

#include <string_view>

namespace platform {

bool IsMnemonicOf(std::u16string_view text, WCHAR letter);

}  // namespace platform
