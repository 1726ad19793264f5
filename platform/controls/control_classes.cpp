#include "platform/controls/control_classes.h"

#include <commctrl.h>

#include "platform/controls/control.h"

namespace platform {

namespace {

// A label or a picture; a picture is not loaded, as nothing is drawn.
class Static final : public Control {
public:
    using Control::Control;
    LRESULT Handle(UINT message, WPARAM first, LPARAM second) override {
        return message == WM_GETDLGCODE ? DLGC_STATIC : Default(message, first, second);
    }
};

}  // namespace

WNDPROC StaticProcedure() {
    return ControlProcedure<Static>;
}

}  // namespace platform

// The classes are there from the beginning.
void WINAPI InitCommonControls() {}
