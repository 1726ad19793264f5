#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

constexpr PageHelp Help = {HELP_PAGE_VERSION, {}};

constexpr int FieldLength = 50;

template <typename... Values>
void ShowField(HWND page, int control, const WCHAR* format, Values... values) {
    WCHAR text[FieldLength];
    wsprintfW(text, format, values...);
    SetDlgItemTextW(page, control, text);
}

constexpr int PictureWidth = 184;
constexpr int PictureHeight = 63;

// The system gives the control the size of its picture, frame included, and draws the picture smaller then.
void LeavePictureUnscaled(HWND page) {
    const HWND picture = GetWindow(page, GW_CHILD);
    RECT frame = {};
    RECT inside = {};
    GetWindowRect(picture, &frame);
    GetClientRect(picture, &inside);
    SetWindowPos(picture, nullptr, 0, 0, frame.right - frame.left - inside.right + PictureWidth,
                 frame.bottom - frame.top - inside.bottom + PictureHeight,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

INT_PTR OnInitDialog(HWND page) {
    LeavePictureUnscaled(page);
    if (const CardRecord* card = KeepPageCard(page)) {
        ShowField(page, IDC_PCI_REVISION, TEXT("%03u"), card->PciRevision);
        ShowField(page, IDC_BOARD_REVISION, TEXT("%hc.%02u"), card->BoardRevisionLetter, card->BoardRevision);
        ShowField(page, IDC_FPGA_REVISION, TEXT("%u"), card->FpgaRevision);
        ShowField(page, IDC_FPGA_VERSION, TEXT("%u.%02u.%04u"), card->FpgaVersionMajor,
                  card->FpgaVersionMinor, card->FpgaVersionBuild);
        ShowField(page, IDC_SERIAL_NUMBER, TEXT("01-20-%05u"), card->SerialNumber);
    }
    return TRUE;
}

INT_PTR OnNotify(HWND page, UINT code) {
    switch (code) {
    case PSN_HELP:
        return ShowPageHelp(page, Help);
    case PSN_APPLY:
        return AnswerNotification(page, PSNRET_NOERROR);
    default:
        return FALSE;
    }
}

}  // namespace

INT_PTR CALLBACK VersionPage(HWND page, UINT message, WPARAM, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog(page);
    case WM_NOTIFY:
        return OnNotify(page, reinterpret_cast<const NMHDR*>(lParam)->code);
    default:
        return AnswerPageMessage(page, Help, message, lParam);
    }
}

}  // namespace kestvox
