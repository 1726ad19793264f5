#include "platform/controls/control_classes.h"

#include <commctrl.h>

namespace platform {

namespace {

// Every control keeps a pointer to its state in its window.
void RegisterControl(LPCWSTR name, WNDPROC procedure) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof(description);
    description.style = CS_GLOBALCLASS | CS_DBLCLKS;
    description.lpfnWndProc = procedure;
    description.cbWndExtra = sizeof(void*);
    description.lpszClassName = name;
    RegisterClassExW(&description);
}

}  // namespace

void RegisterUserControls() {
    RegisterControl(TEXT("Button"), ButtonProcedure());
    RegisterControl(TEXT("Edit"), EditProcedure());
    RegisterControl(TEXT("Static"), StaticProcedure());
    RegisterControl(TEXT("ComboBox"), ComboBoxProcedure());
}

}  // namespace platform

void WINAPI InitCommonControls() {
    using namespace platform;
    RegisterControl(TRACKBAR_CLASSW, TrackbarProcedure());
    RegisterControl(WC_TABCONTROLW, TabControlProcedure());
    RegisterControl(WC_TREEVIEWW, TreeViewProcedure());
}
