#include <commctrl.h>

#include "card/card_table.h"
#include "config_ui/clocks/clock_choices.h"
#include "config_ui/clocks/clock_drag.h"
#include "config_ui/clocks/clock_menu.h"
#include "config_ui/clocks/clock_moves.h"
#include "config_ui/clocks/clock_rules.h"
#include "config_ui/clocks/clock_tree.h"
#include "config_ui/clocks/clock_tree_settings.h"
#include "config_ui/page_label.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"

namespace kestvox {

namespace {

constexpr ControlHelp TreeHelp[] = {{IDC_CLOCK_TREE, IDC_CLOCK_TREE, HELP_CLOCK_TREE}};
constexpr PageHelp Help = {HELP_PAGE_CLOCKS, TreeHelp};

constexpr RECT Hint = {12, 197, 215, 213};  // below the tree, in dialog units

enum class ClocksConcerned { OfTheCard, All };

void ChooseSource(HWND page, HTREEITEM item, WORD source) {
    ChooseClockSource(page, *CardOfItem(ClockTree(page), item), source);
}

// The commands that change the selected card.
struct CardCommand {
    WORD Number;
    ClocksConcerned Clocks;
    void (*Run)(HWND page, HTREEITEM item, WORD number);
};
constexpr CardCommand CardCommands[] = {
    {InternalClock, ClocksConcerned::OfTheCard, ChooseSource},
    {DigitalInputClock, ClocksConcerned::OfTheCard, ChooseSource},
    {PllClock, ClocksConcerned::OfTheCard, ChooseSource},
    {AutomaticClock, ClocksConcerned::OfTheCard, ChooseSource},
    {BecomeMasterCommand, ClocksConcerned::All,
     [](HWND page, HTREEITEM item, WORD) { BecomeMaster(page, item); }},
    {StopBeingMasterCommand, ClocksConcerned::All,
     [](HWND page, HTREEITEM item, WORD) { StopBeingMaster(page, item); }},
    {StopBeingSlaveCommand, ClocksConcerned::All,
     [](HWND page, HTREEITEM item, WORD) { StopBeingSlave(page, item); }},
};

void ReportClockChange(HWND page) {
    ReportChange(page);
    InvalidateRect(ClockTree(page), nullptr, TRUE);
    UpdateWindow(ClockTree(page));
}

void RunCardCommand(HWND page, const CardCommand& command) {
    const HWND tree = ClockTree(page);
    const HTREEITEM item = TreeView_GetSelection(tree);
    const CardRecord* card = CardOfItem(tree, item);
    if (card == nullptr ||
        !MayChangeClocks(page, command.Clocks == ClocksConcerned::OfTheCard ? card : nullptr)) {
        return;
    }
    command.Run(page, item, command.Number);
    ReportClockChange(page);
}

void ResetDriver(HWND page) {
    WCHAR warning[256];
    WCHAR caption[50];
    LoadText(IDS_RESET_WARNING, warning);
    LoadText(IDS_PRODUCT, caption);
    if (MessageBoxW(page, warning, caption, MB_YESNO | MB_ICONEXCLAMATION | MB_DEFBUTTON2 | MB_SYSTEMMODAL) ==
        IDYES) {
        SoftResetCards();
    }
}

INT_PTR OnCommand(HWND page, WORD notification, WORD number) {
    if (notification != 0) {
        return FALSE;
    }
    if (number == ResetDriverCommand) {
        ResetDriver(page);
        return TRUE;
    }
    for (const CardCommand& command : CardCommands) {
        if (command.Number == number) {
            RunCardCommand(page, command);
            return TRUE;
        }
    }
    return FALSE;
}

INT_PTR OnGetItemText(HWND page, NMTVDISPINFOW& request) {
    const auto* card = reinterpret_cast<const CardRecord*>(request.item.lParam);
    if ((request.item.mask & TVIF_TEXT) != 0 && card != nullptr) {
        WCHAR text[ItemTextLength];
        const bool slave = IsSlave(ClockTree(page), request.item.hItem);
        FormatItemText(*card, slave ? LinkClock : ChosenClockSource(page, *card), text);
        lstrcpynW(request.item.pszText, text, request.item.cchTextMax);
    }
    return TRUE;
}

// The tree stays open: a group that is folded away could not be seen or changed.
INT_PTR OnItemExpanding(HWND page, const NMTREEVIEWW& expansion) {
    return AnswerNotification(page, expansion.action != TVE_EXPAND);
}

// Some versions of the tree view fold an item away whatever the page answers.
INT_PTR OnItemExpanded(HWND page, const NMTREEVIEWW& expansion) {
    if (expansion.action == TVE_COLLAPSE) {
        TreeView_Expand(ClockTree(page), expansion.itemNew.hItem, TVE_EXPAND);
    }
    return TRUE;
}

INT_PTR OnKeyDown(HWND page, const NMTVKEYDOWN& key) {
    if (key.wVKey == VK_F10 && GetKeyState(VK_SHIFT) < 0 && !IsDraggingCard(page)) {
        ShowMenuOfSelectedItem(page);
    }
    return TRUE;
}

INT_PTR OnRightClick(HWND page) {
    POINT cursor = {};
    GetCursorPos(&cursor);
    ShowClockMenu(page, cursor);
    return AnswerNotification(page, TRUE);
}

// The page goes, and the mouse must not stay with it.
void GiveUpDrag(HWND page) {
    if (IsDraggingCard(page)) {
        CancelCardDrag(page);
    }
}

INT_PTR OnQueryCancel(HWND page) {
    if (!IsDraggingCard(page)) {
        return FALSE;
    }
    CancelCardDrag(page);
    return AnswerNotification(page, TRUE);  // the sheet stays open
}

INT_PTR OnApply(HWND page) {
    return AnswerNotification(page, ApplyClockTree(page) ? PSNRET_NOERROR : PSNRET_INVALID_NOCHANGEPAGE);
}

INT_PTR OnNotify(HWND page, NMHDR& notification) {
    switch (notification.code) {
    case TVN_GETDISPINFOW:
        return OnGetItemText(page, reinterpret_cast<NMTVDISPINFOW&>(notification));
    case TVN_BEGINDRAGW:
        BeginCardDrag(page, reinterpret_cast<NMTREEVIEWW&>(notification).itemNew.hItem);
        return TRUE;
    case TVN_ITEMEXPANDINGW:
        return OnItemExpanding(page, reinterpret_cast<NMTREEVIEWW&>(notification));
    case TVN_ITEMEXPANDEDW:
        return OnItemExpanded(page, reinterpret_cast<NMTREEVIEWW&>(notification));
    case TVN_KEYDOWN:
        return OnKeyDown(page, reinterpret_cast<NMTVKEYDOWN&>(notification));
    case NM_RCLICK:
        return OnRightClick(page);
    case PSN_HELP:
        return ShowPageHelp(page, Help);
    case PSN_QUERYCANCEL:
        return OnQueryCancel(page);
    case PSN_KILLACTIVE:
        GiveUpDrag(page);
        return FALSE;
    case PSN_RESET:
        RestoreClockSources();
        return TRUE;
    case PSN_APPLY:
        return OnApply(page);
    default:
        return FALSE;
    }
}

INT_PTR OnMouseMove(HWND page, int x, int y) {
    if (!IsDraggingCard(page)) {
        return FALSE;
    }
    TrackCardDrag(page, x, y);
    return TRUE;
}

INT_PTR OnButtonUp(HWND page) {
    if (!IsDraggingCard(page)) {
        return FALSE;
    }
    if (DropCard(page)) {
        ReportClockChange(page);
    }
    return TRUE;
}

INT_PTR OnCaptureChanged(HWND page) {
    if (!IsDraggingCard(page)) {
        return FALSE;
    }
    CancelCardDrag(page);
    return TRUE;
}

}  // namespace

INT_PTR CALLBACK ClocksPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        MakeClockChoices(page);
        PrepareClockTree(ClockTree(page));
        AddLabel(page, IDS_CLOCK_HINT, Hint, LabelSide::Centre);
        FillClockTree(page);
        return TRUE;
    case WM_NOTIFY:
        return OnNotify(page, *reinterpret_cast<NMHDR*>(lParam));
    case WM_COMMAND:
        return OnCommand(page, HIWORD(wParam), LOWORD(wParam));
    case WM_MOUSEMOVE:
        return OnMouseMove(page, LOWORD(lParam), HIWORD(lParam));
    case WM_LBUTTONUP:
        return OnButtonUp(page);
    case WM_CAPTURECHANGED:
        return OnCaptureChanged(page);
    case WM_DESTROY:
        GiveUpDrag(page);
        ClearClockTree(ClockTree(page));
        [[fallthrough]];
    default:
        return AnswerPageMessage(page, Help, message, lParam);
    }
}

}  // namespace kestvox
