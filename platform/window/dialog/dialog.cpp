#include "platform/window/dialog/dialog.h"

#include "platform/loader/resources.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// The base units of 8-point MS Shell Dlg at 96 dots to the inch, which all dialogs have.
constexpr LONG UnitWidth = 6;
constexpr LONG UnitHeight = 13;
constexpr LONG UnitsAcross = 4;  // a base unit's width is 4 dialog units, its height 8
constexpr LONG UnitsDown = 8;

// Rounded to the nearest.
LONG Scale(LONG value, LONG numerator, LONG denominator) {
    return (value * numerator + denominator / 2) / denominator;
}

bool MakeControl(HWND dialog, const TemplateControl& control) {
    const RECT place = DialogUnitsToPixels(control.Place);
    const HWND window =
        CreateWindowExW(0, control.ClassName.c_str(), control.Text.c_str(), control.Style | WS_CHILD,
                        place.left, place.top, place.right, place.bottom, dialog,
                        reinterpret_cast<HMENU>(static_cast<ULONG_PTR>(control.Id)), nullptr, nullptr);
    if (window && (SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0) {
        SendMessageW(dialog, DM_SETDEFID, control.Id, 0);
    }
    return window != nullptr;
}

bool MakeControls(HWND dialog, const DialogTemplate& made) {
    for (const TemplateControl& control : made.Controls) {
        if (!MakeControl(dialog, control)) {
            return false;
        }
    }
    return true;
}

}  // namespace

RECT DialogUnitsToPixels(const RECT& area) {
    return {Scale(area.left, UnitWidth, UnitsAcross), Scale(area.top, UnitHeight, UnitsDown),
            Scale(area.right, UnitWidth, UnitsAcross), Scale(area.bottom, UnitHeight, UnitsDown)};
}

std::optional<DialogTemplate> LoadDialogTemplate(HINSTANCE instance, LPCWSTR name) {
    Resource resource;
    if (!FindModuleResource(instance, RT_DIALOG, name, &resource)) {
        return std::nullopt;
    }
    std::optional<DialogTemplate> dialog = ReadDialogTemplate(resource.Data, resource.Size);
    if (!dialog) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
    }
    return dialog;
}

HWND CreateDialogFrom(const DialogTemplate& dialog, HWND owner, DLGPROC procedure, LPARAM parameter) {
    const RECT place = DialogUnitsToPixels(dialog.Place);
    const HWND window =
        CreateWindowExW(0, u"#32770", dialog.Title.c_str(), dialog.Style, place.left, place.top, place.right,
                        place.bottom, owner, nullptr, nullptr, nullptr);
    if (!window) {
        return nullptr;
    }
    SetWindowLongPtrW(window, static_cast<int>(DWLP_DLGPROC), reinterpret_cast<LONG_PTR>(procedure));
    if (!MakeControls(window, dialog)) {
        DestroyWindow(window);
        return nullptr;
    }
    const auto focus = reinterpret_cast<WPARAM>(GetNextDlgTabItem(window, nullptr, FALSE));
    SendMessageW(window, WM_INITDIALOG, focus, parameter);
    return window;
}

}  // namespace platform

BOOL WINAPI MapDialogRect(HWND dialog, LPRECT area) {
    *area = platform::DialogUnitsToPixels(*area);
    return IsWindow(dialog);
}
