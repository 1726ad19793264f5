#include "config_ui/configuration_sheet.h"

#include <windows.h>
#include <mmsystem.h>
#include <mmddk.h>
#include <prsht.h>

#include <iterator>

#include "card/card_identity.h"
#include "card/card_table.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "settings/card_settings_store.h"

namespace kestvox {

namespace {

constexpr int TextLength = 256;  // of the caption and of a tab's title

struct PageSource {
    UINT Dialog;
    UINT Title;  // string; a format for the card's name on pages of one card
    DLGPROC Procedure;
};

// In the order of their tabs: these for each card of the table, ...
constexpr PageSource CardPages[] = {
    {IDD_CONFIGURATION, IDS_CONFIGURATION_TITLE, ConfigurationPage},
    {IDD_MONITOR, IDS_MONITOR_TITLE, MonitorPage},
    {IDD_VERSION, IDS_VERSION_TITLE, VersionPage},
};
// ... then these for all cards together.
constexpr PageSource CommonPages[] = {
    {IDD_CLOCKS, IDS_CLOCKS_TITLE, ClocksPage},
    {IDD_BUFFER_SIZES, IDS_BUFFER_SIZES_TITLE, AsioEasiPage},
};

constexpr UINT MostPages = MaxCards * std::size(CardPages) + std::size(CommonPages);

struct SheetPages {
    HPROPSHEETPAGE Handles[MostPages];
    UINT Count;
};

PROPSHEETPAGEW DescribePage(const PageSource& source, const WCHAR* title) {
    PROPSHEETPAGEW page = {};
    page.dwSize = PROPSHEETPAGEW_V1_SIZE;
    page.dwFlags = PSP_USETITLE | PSP_HASHELP;
    page.hInstance = ModuleHandle;
    page.pszTemplate = MAKEINTRESOURCEW(source.Dialog);
    page.pszTitle = title;
    page.pfnDlgProc = source.Procedure;
    return page;
}

// A page that cannot be made is left out, as is one too many: other processes write the table of cards.
void AddPage(const PROPSHEETPAGEW& description, SheetPages& pages) {
    const HPROPSHEETPAGE page = CreatePropertySheetPageW(&description);
    if (page == nullptr) {
        return;
    }
    if (pages.Count == MostPages) {
        DestroyPropertySheetPage(page);
        return;
    }
    pages.Handles[pages.Count] = page;
    ++pages.Count;
}

// The Version page has nothing to show of a card whose identity could not be read.
bool HasPage(const CardRecord& card, const PageSource& source) {
    return source.Procedure != VersionPage || card.BoardRevisionLetter != UnknownBoardRevision;
}

// Titles carry the saved name.
void AddCardPage(const CardRecord& card, const PageSource& source, SheetPages& pages) {
    WCHAR format[TextLength];
    WCHAR title[TextLength];
    LoadText(source.Title, format);
    wsprintfW(title, format, card.Name);
    PROPSHEETPAGEW page = DescribePage(source, title);
    page.dwFlags |= PSP_USECALLBACK;
    page.lParam = static_cast<LPARAM>(card.Ordinal);
    page.pfnCallback = CardPageCallback;
    AddPage(page, pages);
}

void AddPages(SheetPages& pages) {
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        for (const PageSource& source : CardPages) {
            if (HasPage(*card, source)) {
                AddCardPage(*card, source, pages);
            }
        }
    }
    for (const PageSource& source : CommonPages) {
        AddPage(DescribePage(source, MAKEINTRESOURCEW(source.Title)), pages);
    }
}

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
    WCHAR caption[TextLength];
    LoadText(IDS_SHEET_CAPTION, caption);
    if (configurationInfo == nullptr) {
        if (const HWND open = FindWindowW(nullptr, caption)) {
            BringToFront(open);
            return DRVCNF_OK;
        }
    }
    if (FirstCard() == nullptr) {
        return DRVCNF_CANCEL;
    }
    SheetPages pages = {};
    AddPages(pages);
    PROPSHEETHEADERW sheet = {};
    sheet.dwSize = PROPSHEETHEADERW_V1_SIZE;
    sheet.dwFlags = PSH_HASHELP;
    sheet.hwndParent = owner;
    sheet.hInstance = instance;
    sheet.pszCaption = caption;
    sheet.nPages = pages.Count;
    sheet.phpage = pages.Handles;
    const INT_PTR result = PropertySheetW(&sheet);
    ShowUnsavedSettings();
    return SheetResult(result);
}

}  // namespace kestvox
