// The window classes, all of them the system's.
#include <commctrl.h>

#include <algorithm>

#include "platform/controls/control_classes.h"
#include "platform/text/case.h"
#include "platform/window/menu/menu.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

const WindowClass* AllClasses(size_t* count) {
    static const WindowClass classes[] = {
        {u"Button", ButtonProcedure(), sizeof(void*)},
        {u"Edit", EditProcedure(), sizeof(void*)},
        {u"Static", StaticProcedure(), sizeof(void*)},
        {u"ComboBox", ComboBoxProcedure(), sizeof(void*)},
        {TRACKBAR_CLASSW, TrackbarProcedure(), sizeof(void*)},
        {WC_TABCONTROLW, TabControlProcedure(), sizeof(void*)},
        {WC_TREEVIEWW, TreeViewProcedure(), sizeof(void*)},
        {u"#32770", DefDlgProcW, DLGWINDOWEXTRA},
        {u"#32768", MenuWindowProcedure, sizeof(void*)},
    };
    *count = std::size(classes);
    return classes;
}

}  // namespace

const WindowClass* FindClass(LPCWSTR name) {
    size_t count = 0;
    const WindowClass* const classes = AllClasses(&count);
    const WindowClass* const found = std::find_if(
        classes, classes + count,
        [name](const WindowClass& candidate) { return CompareIgnoringCase(candidate.Name, name) == 0; });
    if (found == classes + count) {
        SetLastError(ERROR_CANNOT_FIND_WND_CLASS);
        return nullptr;
    }
    return found;
}

}  // namespace platform

using namespace platform;

int WINAPI GetClassNameW(HWND window, LPWSTR buffer, int size) {
    const LockedWindow found(window);
    if (!found) {
        return 0;
    }
    lstrcpynW(buffer, found->Class->Name, size);
    return lstrlenW(buffer);
}
