#include "config_ui/sheet_pages.h"

#include "card/card_identity.h"
#include "card/card_table.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

constexpr int TitleLength = 256;

struct PageSource {
    UINT Dialog;
    UINT Title;  // string; a format for the card's name on pages of one card
    DLGPROC Procedure;
};

constexpr PageSource ConfigurationSource = {IDD_CONFIGURATION, IDS_CONFIGURATION_TITLE, ConfigurationPage};
constexpr PageSource MonitorSource = {IDD_MONITOR, IDS_MONITOR_TITLE, MonitorPage};
constexpr PageSource VersionSource = {IDD_VERSION, IDS_VERSION_TITLE, VersionPage};
constexpr PageSource ClocksSource = {IDD_CLOCKS, IDS_CLOCKS_TITLE, ClocksPage};
constexpr PageSource AsioEasiSource = {IDD_BUFFER_SIZES, IDS_BUFFER_SIZES_TITLE, AsioEasiPage};

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

void AddPage(const PROPSHEETPAGEW& description, AddPageRoutine addPage, PROPSHEETHEADERW& sheet) {
    const HPROPSHEETPAGE page = CreatePropertySheetPageW(&description);
    if (page != nullptr && !addPage(page, sheet)) {
        DestroyPropertySheetPage(page);
    }
}

void AddCardPage(const CardRecord& card, const PageSource& source, AddPageRoutine addPage,
                 PROPSHEETHEADERW& sheet) {
    WCHAR format[TitleLength];
    WCHAR title[TitleLength];
    LoadText(source.Title, format);
    wsprintfW(title, format, card.Name);
    PROPSHEETPAGEW page = DescribePage(source, title);
    page.dwFlags |= PSP_USECALLBACK;
    page.lParam = static_cast<LPARAM>(card.Ordinal);
    page.pfnCallback = CardPageCallback;
    AddPage(page, addPage, sheet);
}

void AddCommonPage(const PageSource& source, AddPageRoutine addPage, PROPSHEETHEADERW& sheet) {
    AddPage(DescribePage(source, MAKEINTRESOURCEW(source.Title)), addPage, sheet);
}

}  // namespace

BOOL AddSheetPage(HPROPSHEETPAGE page, PROPSHEETHEADERW& sheet) {
    if (sheet.nPages >= MaxSheetPages) {
        return FALSE;
    }
    sheet.phpage[sheet.nPages] = page;
    ++sheet.nPages;
    return TRUE;
}

BOOL AddConfigurationPages(AddPageRoutine addPage, PROPSHEETHEADERW& sheet) {
    if (FirstCard() == nullptr) {
        return FALSE;
    }
    for (CardRecord* card = FirstCard(); card != nullptr; card = NextCard(card)) {
        AddCardPages(*card, addPage, sheet);
    }
    AddCommonPage(ClocksSource, addPage, sheet);
    AddCommonPage(AsioEasiSource, addPage, sheet);
    return TRUE;
}

void AddCardPages(const CardRecord& card, AddPageRoutine addPage, PROPSHEETHEADERW& sheet) {
    AddCardPage(card, ConfigurationSource, addPage, sheet);
    AddCardPage(card, MonitorSource, addPage, sheet);
    if (card.BoardRevisionLetter != UnknownBoardRevision) {
        AddCardPage(card, VersionSource, addPage, sheet);
    }
}

}  // namespace kestvox
