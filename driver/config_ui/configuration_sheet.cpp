#include "config_ui/configuration_sheet.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>

#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "config_ui/sheet_pages.h"

namespace kestvox {

namespace {

constexpr int CaptionLength = 256;

void BringToFront(HWND sheet) {
    if (IsIconic(sheet)) {
        ShowWindow(sheet, SW_RESTORE);
        return;
    }
    ShowWindow(sheet, SW_SHOW);
    // Above every window, then back among them: it stays on top without covering the others for good.
    for (HWND place : {HWND_TOPMOST, HWND_NOTOPMOST}) {
        SetWindowPos(sheet, place, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_SHOWWINDOW);
    }
}

LONG SheetResult(INT_PTR result) {
    if (result == ID_PSREBOOTSYSTEM || result == ID_PSRESTARTWINDOWS) {
        return DRVCNF_RESTART;
    }
    return result >= 0 ? DRVCNF_OK : DRVCNF_CANCEL;
}

}  // namespace

LONG ShowConfigurationSheet(HWND owner, HINSTANCE instance, const void* configurationInfo) {
    WCHAR caption[CaptionLength];
    LoadText(IDS_SHEET_CAPTION, caption);
    if (configurationInfo == nullptr) {
        if (const HWND open = FindWindowW(nullptr, caption)) {
            BringToFront(open);
            return DRVCNF_OK;
        }
    }
    HPROPSHEETPAGE pages[MaxSheetPages] = {};
    PROPSHEETHEADERW sheet = {};
    sheet.dwSize = PROPSHEETHEADERW_V1_SIZE;
    sheet.dwFlags = PSH_HASHELP;
    sheet.hwndParent = owner;
    sheet.hInstance = instance;
    sheet.pszCaption = caption;
    sheet.phpage = pages;
    if (!AddConfigurationPages(AddSheetPage, sheet)) {
        return DRVCNF_CANCEL;
    }
    return SheetResult(PropertySheetW(&sheet));
}

}  // namespace kestvox
