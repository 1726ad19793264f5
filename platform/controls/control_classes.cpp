#include "platform/controls/control_classes.h"

#include <commctrl.h>

#include "platform/window/system_class.h"

namespace platform {

namespace {

// Every control keeps a pointer to its state in its window.
void RegisterControl(LPCWSTR name, WNDPROC procedure) {
    RegisterSystemClass({name, procedure, CS_GLOBALCLASS | CS_DBLCLKS, sizeof(void*)});
}

}  // namespace

void RegisterStandardControls() {
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
