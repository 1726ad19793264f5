#include "config_ui/property_page.h"

#include "card/card_table.h"
#include "card/heap.h"
#include "settings/card_settings_store.h"

namespace kestvox {

namespace {

constexpr const WCHAR* HelpFile = TEXT("kestvox.hlp");
constexpr const WCHAR* HelpFileWindow = TEXT("kestvox.hlp>window");

constexpr UINT AllAreApplied =
    WM_APP;  // posted to a page, so it comes when the sheet is done with the others

INT_PTR ShowControlHelp(HWND page, const PageHelp& help, const HELPINFO& info) {
    if (info.cbSize < sizeof info || info.iContextType != HELPINFO_WINDOW) {
        return FALSE;
    }
    for (const ControlHelp& control : help.Controls) {
        if (control.First <= info.iCtrlId && info.iCtrlId <= control.Last) {
            WinHelpW(page, HelpFile, HELP_CONTEXTPOPUP, control.Context);
            return TRUE;
        }
    }
    return FALSE;
}

}  // namespace

DWORD PendingPageCard = NoCard;

UINT CALLBACK CardPageCallback(HWND, UINT message, PROPSHEETPAGEW* page) {
    if (message == PSPCB_CREATE) {
        PendingPageCard = static_cast<DWORD>(page->lParam);
    }
    return 1;
}

CardRecord* KeepPageCard(HWND page) {
    CardRecord* card = FindCard(PendingPageCard);
    SetWindowLongPtrW(page, DWLP_USER, reinterpret_cast<LONG_PTR>(card));
    return card;
}

CardRecord* PageCard(HWND page) {
    return reinterpret_cast<CardRecord*>(GetWindowLongPtrW(page, DWLP_USER));
}

void* MakePageMemory(HWND page, DWORD size) {
    void* memory = HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size);
    SetWindowLongPtrW(page, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(memory));
    return memory;
}

void* FindPageMemory(HWND page) {
    return reinterpret_cast<void*>(GetWindowLongPtrW(page, GWLP_USERDATA));
}

void SaveCard(HWND page, CardRecord& card) {
    if (!SaveCardSettings(card)) {
        PostMessageW(page, AllAreApplied, 0, 0);
    }
}

void ShowRefusal(HWND page, UINT text) {
    WCHAR message[256];
    LoadText(text, message);
    MessageBoxW(page, message, nullptr, MB_ICONHAND);
}

void ReportChange(HWND page) {
    SendMessageW(GetParent(page), PSM_CHANGED, reinterpret_cast<WPARAM>(page), 0);
}

INT_PTR AnswerNotification(HWND page, LONG result) {
    SetWindowLongPtrW(page, DWLP_MSGRESULT, result);
    return TRUE;
}

void ShowSliderValue(HWND page, int slider, const WCHAR* text) {
    const HWND value = GetDlgItem(page, slider + 1);
    // The edit is as wide as the longest text: with the margins that some fonts bring it would be cut.
    SendMessageW(value, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
    SetWindowTextW(value, text);
}

INT_PTR ShowPageHelp(HWND page, const PageHelp& help) {
    WinHelpW(page, HelpFileWindow, HELP_CONTEXT, help.Context);
    return TRUE;
}

INT_PTR AnswerPageMessage(HWND page, const PageHelp& help, UINT message, LPARAM lParam) {
    switch (message) {
    case WM_HELP:
        return ShowControlHelp(page, help, *reinterpret_cast<const HELPINFO*>(lParam));
    case AllAreApplied:
        ShowUnsavedSettings();
        return TRUE;
    case WM_DESTROY:
        WinHelpW(page, HelpFile, HELP_QUIT, 0);
        FreeHeapArray(FindPageMemory(page));
        SetWindowLongPtrW(page, GWLP_USERDATA, 0);
        return TRUE;
    default:
        return FALSE;
    }
}

}  // namespace kestvox
