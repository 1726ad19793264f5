// Window classes of the system itself: every module may use them without registering them.
#pragma once

#include <windows.h>

namespace platform {

struct SystemClass {
    LPCWSTR Name;  // a text or MAKEINTATOM; lives for ever
    WNDPROC Procedure;
    UINT Style;      // CS_ bits
    int ExtraBytes;  // of each window, for Get- and SetWindowLongPtrW from index 0 on, zero at first
};

// Any thread; a class that is there already stays as it is.
void RegisterSystemClass(const SystemClass& windowClass);

}  // namespace platform
