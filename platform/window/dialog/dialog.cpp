#include "platform/window/dialog/dialog.h"

#include "platform/loader/resources.h"
#include "platform/window/window_object.h"

namespace platform {

namespace {

// The base units of 8-point MS Shell Dlg at 96 dots to the inch. Other fonts are taken to have the same
// proportions.
constexpr LONG DefaultUnitWidth = 6;
constexpr LONG DefaultUnitHeight = 13;
constexpr WORD UnitPoints = 8;
constexpr LONG UnitsAcross = 4;  // a base unit's width is 4 dialog units, its height 8
constexpr LONG UnitsDown = 8;
constexpr LONG DotsPerInch = 96;
constexpr LONG PointsPerInch = 72;

constexpr WCHAR NumberMark = 0xFFFF;

// Rounded to the nearest, halves away from 0.
LONG Scale(LONG value, LONG numerator, LONG denominator) {
    const LONG product = value * numerator;
    return (product + (product < 0 ? -denominator : denominator) / 2) / denominator;
}

struct Units {
    LONG Width;
    LONG Height;

    RECT ToPixels(const RECT& area) const {
        return {Scale(area.left, Width, UnitsAcross), Scale(area.top, Height, UnitsDown),
                Scale(area.right, Width, UnitsAcross), Scale(area.bottom, Height, UnitsDown)};
    }
};

Units UnitsOf(const DialogTemplate& dialog) {
    const LONG points = dialog.FontHeight != 0 ? dialog.FontHeight : UnitPoints;
    return {Scale(DefaultUnitWidth, points, UnitPoints), Scale(DefaultUnitHeight, points, UnitPoints)};
}

HFONT MakeFont(const DialogTemplate& dialog) {
    if ((dialog.Style & DS_SETFONT) == 0) {
        return nullptr;
    }
    LOGFONTW font{};
    font.lfHeight = -Scale(dialog.FontHeight, DotsPerInch, PointsPerInch);
    font.lfWeight = FW_NORMAL;
    font.lfCharSet = DEFAULT_CHARSET;
    lstrcpynW(font.lfFaceName, dialog.FontFace.c_str(), LF_FACESIZE);
    return CreateFontIndirectW(&font);
}

// What the steps of making one dialog share.
struct Making {
    HINSTANCE Instance;
    const DialogTemplate& Template;
    HWND Owner;
    Units BaseUnits;
    HFONT Font;
};

// Where the frame lies: beside the owner's client area, in the middle of the screen, or as given.
RECT FrameOf(const Making& making, DWORD style, DWORD exStyle) {
    const RECT pixels = making.BaseUnits.ToPixels(making.Template.Place);
    RECT frame = {0, 0, pixels.right, pixels.bottom};
    AdjustWindowRectEx(&frame, style, FALSE, exStyle);
    OffsetRect(&frame, -frame.left, -frame.top);
    if ((style & DS_CENTER) != 0) {
        OffsetRect(&frame, (GetSystemMetrics(SM_CXSCREEN) - frame.right) / 2,
                   (GetSystemMetrics(SM_CYSCREEN) - frame.bottom) / 2);
        return frame;
    }
    POINT corner = {pixels.left, pixels.top};
    const bool child = (style & WS_CHILD) != 0;
    if (!child && making.Owner && (style & DS_ABSALIGN) == 0) {
        ClientToScreen(making.Owner, &corner);
    }
    OffsetRect(&frame, corner.x, corner.y);
    return frame;
}

HWND MakeFrame(const Making& making) {
    const DialogTemplate& dialog = making.Template;
    const DWORD style = dialog.Style & ~DWORD{WS_VISIBLE};
    DWORD exStyle = dialog.ExStyle;
    if ((style & DS_MODALFRAME) != 0) {
        exStyle |= WS_EX_DLGMODALFRAME;
    }
    if ((style & DS_CONTROL) != 0) {
        exStyle |= WS_EX_CONTROLPARENT;
    }
    const RECT frame = FrameOf(making, style, exStyle);
    const LPCWSTR named = dialog.Class.IsNumber() ? MAKEINTATOM(dialog.Class.Number) : u"#32770";
    const LPCWSTR className = dialog.Class.Text.empty() ? named : dialog.Class.Text.c_str();
    return CreateWindowExW(exStyle, className, dialog.Title.c_str(), style, frame.left, frame.top,
                           frame.right - frame.left, frame.bottom - frame.top, making.Owner, nullptr,
                           making.Instance, nullptr);
}

bool BecomeDialog(HWND window, const Making& making) {
    const LockedWindow found(window);
    if (!found || found->Extra.size() < static_cast<size_t>(DLGWINDOWEXTRA)) {
        return false;
    }
    found->Dialog = std::make_unique<DialogState>();
    found->Dialog->Font = making.Font;
    found->Dialog->UnitWidth = making.BaseUnits.Width;
    found->Dialog->UnitHeight = making.BaseUnits.Height;
    return true;
}

HWND MakeControl(HWND dialog, const Making& making, const TemplateControl& control) {
    const RECT place = making.BaseUnits.ToPixels(control.Place);
    const WCHAR number[] = {NumberMark, static_cast<WCHAR>(control.Text.Number), 0};
    const LPCWSTR text = control.Text.IsNumber() ? number : control.Text.Text.c_str();
    const std::u16string className = control.ClassName();
    const HWND window =
        CreateWindowExW(control.ExStyle | WS_EX_NOPARENTNOTIFY, className.c_str(), text,
                        control.Style | WS_CHILD, place.left, place.top, place.right, place.bottom, dialog,
                        reinterpret_cast<HMENU>(static_cast<ULONG_PTR>(control.Id)), making.Instance,
                        control.Data.empty() ? nullptr : const_cast<BYTE*>(control.Data.data()));
    if (!window) {
        return nullptr;
    }
    if (making.Font) {
        SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(making.Font), FALSE);
    }
    if ((SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0) {
        const LockedWindow found(dialog);
        if (found && found->Dialog && found->Dialog->DefaultId == 0) {
            found->Dialog->DefaultId = control.Id;
        }
    }
    return window;
}

bool MakeControls(HWND dialog, const Making& making) {
    for (const TemplateControl& control : making.Template.Controls) {
        if (!MakeControl(dialog, making, control) && (making.Template.Style & DS_NOFAILCREATE) == 0) {
            return false;
        }
    }
    return true;
}

HWND FirstControl(HWND dialog) {
    const HWND first = GetNextDlgTabItem(dialog, nullptr, FALSE);
    return first ? first : GetNextDlgGroupItem(dialog, nullptr, FALSE);
}

// A dialog that answers TRUE has its focus set for it; a page in another dialog does not take the focus.
void Initialize(HWND dialog, DWORD style, LPARAM parameter) {
    const auto focus = reinterpret_cast<WPARAM>(FirstControl(dialog));
    const bool wantsFocus = SendMessageW(dialog, WM_INITDIALOG, focus, parameter) != 0;
    const bool page = (style & DS_CONTROL) != 0 && (style & WS_VISIBLE) == 0;
    if (!wantsFocus || page || !IsWindow(dialog)) {
        return;
    }
    if (const HWND control = FirstControl(dialog)) {
        FocusControl(control);
    } else if ((style & WS_CHILD) == 0) {
        SetFocus(dialog);
    }
}

// A modal dialog's owner is disabled while it runs. EnableWindow tells whether this call disabled it.
INT_PTR RunDialog(HWND dialog, HWND owner) {
    const bool disabled = owner && !EnableWindow(owner, FALSE);
    ShowWindow(dialog, SW_SHOW);
    const auto ended = [dialog] {
        const LockedWindow found(dialog);
        return !found || !found->Dialog || found->Dialog->Ended;
    };
    RunModalLoop(ended, [dialog](MSG* message) { return HandleDialogMessage(dialog, message); });
    INT_PTR result = 0;
    {
        const LockedWindow found(dialog);
        if (found && found->Dialog) {
            result = found->Dialog->Result;
        }
    }
    if (disabled) {
        EnableWindow(owner, TRUE);
    }
    DestroyWindow(dialog);
    return result;
}

INT_PTR RunTemplate(HINSTANCE instance, const std::optional<DialogTemplate>& dialog, HWND owner,
                    DLGPROC procedure, LPARAM parameter) {
    if (!dialog) {
        return -1;
    }
    const HWND top = TopLevelOf(owner);
    const HWND window = CreateDialogFrom(instance, *dialog, top, procedure, parameter);
    return window ? RunDialog(window, top) : -1;
}

}  // namespace

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

HWND CreateDialogFrom(HINSTANCE instance, const DialogTemplate& dialog, HWND owner, DLGPROC procedure,
                      LPARAM parameter) {
    const Making making = {instance, dialog, owner, UnitsOf(dialog), MakeFont(dialog)};
    const HWND window = MakeFrame(making);
    if (!window || !BecomeDialog(window, making)) {
        DeleteObject(making.Font);
        if (window) {
            DestroyWindow(window);
        }
        return nullptr;
    }
    SetWindowLongPtrW(window, static_cast<int>(DWLP_DLGPROC), reinterpret_cast<LONG_PTR>(procedure));
    if (making.Font) {
        SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(making.Font), 0);
    }
    if (!MakeControls(window, making)) {
        DestroyWindow(window);
        return nullptr;
    }
    if (procedure) {
        Initialize(window, dialog.Style, parameter);
    }
    if ((dialog.Style & WS_VISIBLE) != 0 && IsWindow(window)) {
        ShowWindow(window, SW_SHOWNORMAL);
    }
    return IsWindow(window) ? window : nullptr;
}

}  // namespace platform

using namespace platform;

HWND WINAPI CreateDialogParamW(HINSTANCE instance, LPCWSTR name, HWND owner, DLGPROC procedure,
                               LPARAM parameter) {
    const std::optional<DialogTemplate> dialog = LoadDialogTemplate(instance, name);
    return dialog ? CreateDialogFrom(instance, *dialog, owner, procedure, parameter) : nullptr;
}

HWND WINAPI CreateDialogIndirectParamW(HINSTANCE instance, LPCDLGTEMPLATEW data, HWND owner,
                                       DLGPROC procedure, LPARAM parameter) {
    const std::optional<DialogTemplate> dialog = ReadDialogTemplate(data, SIZE_MAX);
    return dialog ? CreateDialogFrom(instance, *dialog, owner, procedure, parameter) : nullptr;
}

INT_PTR WINAPI DialogBoxIndirectParamW(HINSTANCE instance, LPCDLGTEMPLATEW data, HWND owner,
                                       DLGPROC procedure, LPARAM parameter) {
    return RunTemplate(instance, ReadDialogTemplate(data, SIZE_MAX), owner, procedure, parameter);
}

BOOL WINAPI EndDialog(HWND dialog, INT_PTR result) {
    {
        const LockedWindow found(dialog);
        if (!found || !found->Dialog) {
            return FALSE;
        }
        found->Dialog->Ended = true;
        found->Dialog->Result = result;
    }
    ShowWindow(dialog, SW_HIDE);
    PostMessageW(dialog, WM_NULL, 0, 0);
    return TRUE;
}

BOOL WINAPI MapDialogRect(HWND dialog, LPRECT area) {
    const LockedWindow found(dialog);
    if (!found || !found->Dialog) {
        return FALSE;
    }
    *area = Units{found->Dialog->UnitWidth, found->Dialog->UnitHeight}.ToPixels(*area);
    return TRUE;
}
