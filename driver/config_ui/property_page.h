// What the pages of the configuration sheet do alike. `page` is a page's dialog, its parent the sheet.
#pragma once

#include <windows.h>
#include <prsht.h>

#include <span>
#include <type_traits>

#include "card/card_record.h"
#include "entry/module.h"

namespace kestvox {

// How a card's page learns its card: the sheet calls back with the page's description right before it
// makes the page's dialog, on the same thread, one page at a time.
extern DWORD PendingPageCard;  // Ordinal of the card whose page is about to be made
UINT CALLBACK CardPageCallback(HWND window, UINT message, PROPSHEETPAGEW* page);

// At WM_INITDIALOG: looks PendingPageCard up and keeps the card with the page. Null when the table has no
// such card.
CardRecord* KeepPageCard(HWND page);

// From then on: the card that was kept.
CardRecord* PageCard(HWND page);

// What a page remembers beside its card: plain data, zeroed when it is made at WM_INITDIALOG, gone with the
// page. Null when there was no memory for it.
void* MakePageMemory(HWND page, DWORD size);
void* FindPageMemory(HWND page);
template <typename State>
State* MakePageState(HWND page) {
    static_assert(std::is_trivially_copyable_v<State>);
    return static_cast<State*>(MakePageMemory(page, sizeof(State)));
}
template <typename State>
State* FindPageState(HWND page) {
    return static_cast<State*>(FindPageMemory(page));
}

// Questions of PSM_QUERYSIBLINGS, which a page asks the others of its sheet. `lParam` is the card.
enum SiblingQuestion : WPARAM {
    AreRoutesReset = 1,  // the working playback routes were reset, and neither applied nor cancelled yet
};

// Saves the card's settings. Cards that cannot be saved are told of, all in one box, when every page of the
// sheet has been applied.
void SaveCard(HWND page, CardRecord& card);

// A text of the string table in a message box of the page, with the stop sign.
void ShowRefusal(HWND page, UINT text);

// Tells the sheet that there is something to apply.
void ReportChange(HWND page);

// The answer to a notification, to be returned from the dialog procedure.
INT_PTR AnswerNotification(HWND page, LONG result);

// Shows what a slider's position means, in the edit whose identifier is the slider's plus 1.
void ShowSliderValue(HWND page, int slider, const WCHAR* text);

// Contexts of the help file.
struct ControlHelp {
    int First;  // identifiers of the controls, both included
    int Last;
    DWORD Context;
};
struct PageHelp {
    DWORD Context;
    std::span<const ControlHelp> Controls;
};

// PSN_HELP: the sheet's Help button.
INT_PTR ShowPageHelp(HWND page, const PageHelp& help);

// What a dialog procedure does not handle itself: WM_HELP, F1 on a control, and WM_DESTROY, the end of help
// and of what the page remembers. FALSE, for default processing, for any other message and for a control
// without help.
INT_PTR AnswerPageMessage(HWND page, const PageHelp& help, UINT message, LPARAM lParam);

// A text of the string table, cut to the buffer.
template <int Length>
void LoadText(UINT number, WCHAR (&text)[Length]) {
    text[0] = 0;
    LoadStringW(ModuleHandle, number, text, Length);
}

}  // namespace kestvox
