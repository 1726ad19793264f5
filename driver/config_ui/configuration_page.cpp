#include <windows.h>
#include <commctrl.h>

#include "card/card_table.h"
#include "config_ui/card_options.h"
#include "config_ui/mixer_gain.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "config_ui/tab_row.h"

namespace kestvox {

namespace {

constexpr ControlHelp HelpOfControls[] = {
    {IDC_NAME, IDC_NAME, HELP_NAME},
    {IDC_ADVANCED_MONITORING, IDC_ADVANCED_MONITORING, HELP_ADVANCED_MONITORING},
    {IDC_LEFT, IDC_RIGHT, HELP_24_BIT_MODE},
    {IDC_PROFESSIONAL, IDC_CONSUMER, HELP_CHANNEL_STATUS},
    {IDC_COPY_PROTECT, IDC_COPY_PROTECT, HELP_COPY_PROTECT},
    {IDC_NON_AUDIO, IDC_NON_AUDIO, HELP_NON_AUDIO},
    {IDC_PREEMPHASIS, IDC_PREEMPHASIS, HELP_PREEMPHASIS},
    {IDC_PUNCH_IN, IDC_LOCK_TO_PLAYBACK, HELP_RECORD_MODE},
    {IDC_CHECK_CLOCKS, IDC_CHECK_CLOCKS, HELP_CHECK_CLOCKS},
    {IDC_DITHER, IDC_DITHER, HELP_DITHER},
};
constexpr PageHelp Help = {HELP_PAGE_CONFIGURATION, HelpOfControls};

constexpr UINT DitherNames[] = {IDS_DITHER_NONE, IDS_DITHER_TYPE_1, IDS_DITHER_TYPE_1_SHAPED,
                                IDS_DITHER_TYPE_2, IDS_DITHER_TYPE_2_SHAPED};
constexpr int DitherNameLength = 256;

// Where the playback streams go without advanced monitoring: each to the output of its own kind.
struct PlaybackRoute {
    unsigned Input;
    DWORD GainCode;
};
constexpr PlaybackRoute StandardRoutes[] = {
    {2, HighestGainCode},  // analog output, analog playback
    {3, 0},                // ..., digital playback
    {6, 0},                // digital output, analog playback
    {7, HighestGainCode},  // ..., digital playback
};

// What the page showed when it was made or last applied, and the saved options behind that.
struct PageState {
    CardOptions Loaded;
    CardOptions Shown;
    bool RoutesReset;  // the playback routes were reset, and neither applied nor cancelled yet
};

bool IsChecked(HWND page, int control) {
    return IsDlgButtonChecked(page, control) == BST_CHECKED;
}

void FillDitherList(HWND list) {
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const UINT name : DitherNames) {
        WCHAR text[DitherNameLength];
        LoadText(name, text);
        SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
}

// Shows what is saved, and remembers it.
void ShowCard(HWND page, const CardRecord& card) {
    const CardOptions saved = ReadSavedOptions(card);
    ShowOptions(page, saved);
    if (auto* state = FindPageState<PageState>(page)) {
        *state = {saved, ReadShownOptions(page), false};
    }
}

// A card without a name could not be told from the others any more.
bool IsNameRefused(HWND page) {
    const auto* state = FindPageState<PageState>(page);
    const CardOptions shown = ReadShownOptions(page);
    return !HasName(shown) && (state == nullptr || IsNameChanged(shown, state->Shown));
}

void ResetPlaybackRoutes(MonitorBlock& monitor) {
    for (const PlaybackRoute& route : StandardRoutes) {
        SetGainCode(monitor, route.Input, route.GainCode);
    }
    for (unsigned input = 0; input < MixerInputs; ++input) {
        SetGainCode(monitor, input, GainCodeOf(monitor, input));
    }
}

// The Monitor page follows these the next time it is shown or applied.
void OnAdvancedMonitoring(HWND page, CardRecord& card) {
    const bool on = IsChecked(page, IDC_ADVANCED_MONITORING);
    card.WorkingAdvancedMonitoring = on;
    if (!on) {
        ResetPlaybackRoutes(card.WorkingMonitor);
        if (auto* state = FindPageState<PageState>(page)) {
            state->RoutesReset = true;
        }
    }
}

void OnProfessional(HWND page, const CardSettings& saved) {
    WithdrawOption(page, IDC_COPY_PROTECT);
    OfferOption(page, IDC_PREEMPHASIS, saved.Preemphasis);
}

// Consumer channel status has no room for the pre-emphasis of data that is not audio.
void OnNonAudio(HWND page, const CardSettings& saved) {
    if (!IsChecked(page, IDC_CONSUMER)) {
        return;
    }
    if (IsChecked(page, IDC_NON_AUDIO)) {
        WithdrawOption(page, IDC_PREEMPHASIS);
    } else {
        OfferOption(page, IDC_PREEMPHASIS, saved.Preemphasis);
    }
}

void OnConsumer(HWND page, const CardSettings& saved) {
    OfferOption(page, IDC_COPY_PROTECT, saved.CopyProtect);
    if (IsChecked(page, IDC_NON_AUDIO)) {
        WithdrawOption(page, IDC_PREEMPHASIS);
    }
}

void OnClick(HWND page, CardRecord& card, int control) {
    switch (control) {
    case IDC_ADVANCED_MONITORING:
        OnAdvancedMonitoring(page, card);
        break;
    case IDC_PROFESSIONAL:
        OnProfessional(page, card.Settings);
        break;
    case IDC_CONSUMER:
        OnConsumer(page, card.Settings);
        break;
    case IDC_NON_AUDIO:
        OnNonAudio(page, card.Settings);
        break;
    default:
        break;
    }
    ReportChange(page);
}

INT_PTR OnInitDialog(HWND page) {
    UseSingleTabRow(page);
    FillDitherList(GetDlgItem(page, IDC_DITHER));
    SendDlgItemMessageW(page, IDC_NAME, EM_LIMITTEXT, NameLength - 1, 0);
    MakePageState<PageState>(page);
    if (const CardRecord* card = FindCard(PendingPageCard)) {
        ShowCard(page, *card);
    } else {
        ShowNoOptions(page);
    }
    // Only now: what was filled in above is no change to report.
    KeepPageCard(page);
    return TRUE;
}

INT_PTR OnCommand(HWND page, int control, UINT notification) {
    CardRecord* card = PageCard(page);
    if (card == nullptr) {
        return FALSE;
    }
    if (notification == BN_CLICKED) {
        OnClick(page, *card, control);
        return TRUE;
    }
    if (control == IDC_NAME && notification == EN_KILLFOCUS) {
        if (!IsNameRefused(page)) {
            lstrcpynW(card->WorkingName, ReadShownOptions(page).Name, NameLength);
        }
        return TRUE;
    }
    const bool changed = (control == IDC_NAME && notification == EN_CHANGE) ||
                         (control == IDC_DITHER && notification == CBN_SELCHANGE);
    if (changed) {
        ReportChange(page);
    }
    return changed;
}

// What switching advanced monitoring off did to the working gains outlasts the session as the switch does,
// whether the Monitor page has been shown or not. While it is off, they are the standard ones: another sheet
// may have put the stored gains back meanwhile.
void SavePlaybackRoutes(CardRecord& card, bool advanced) {
    if (!advanced) {
        ResetPlaybackRoutes(card.WorkingMonitor);
    }
    for (const PlaybackRoute& route : StandardRoutes) {
        SetGainCode(card.Settings.Monitor, route.Input, GainCodeOf(card.WorkingMonitor, route.Input));
    }
}

void Store(HWND page, CardRecord& card) {
    CardOptions options = ReadShownOptions(page);
    if (const auto* state = FindPageState<PageState>(page)) {
        options = MergeOptions(options, state->Shown, state->Loaded, ReadSavedOptions(card));
        if (state->RoutesReset) {
            SavePlaybackRoutes(card, IsChecked(page, IDC_ADVANCED_MONITORING));
        }
    }
    WriteSavedOptions(options, card);
    lstrcpynW(card.WorkingName, options.Name, NameLength);
    card.WorkingAdvancedMonitoring = card.Settings.AdvancedMonitoring.load();
    SaveCard(page, card);
    ShowCard(page, card);
}

// The sheet asks before it goes to another page and before it applies its pages.
INT_PTR OnLeave(HWND page) {
    if (PageCard(page) == nullptr || !IsNameRefused(page)) {
        return AnswerNotification(page, FALSE);
    }
    ShowRefusal(page, IDS_NAME_BLANK);
    SendMessageW(page, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(page, IDC_NAME)), TRUE);
    return AnswerNotification(page, TRUE);
}

INT_PTR OnApply(HWND page) {
    if (CardRecord* card = PageCard(page)) {
        Store(page, *card);
    }
    return AnswerNotification(page, PSNRET_NOERROR);
}

INT_PTR OnReset(HWND page) {
    if (CardRecord* card = PageCard(page)) {
        // The edit loses the focus when the sheet goes, and hands its text on once more.
        SetDlgItemTextW(page, IDC_NAME, card->Name);
        lstrcpynW(card->WorkingName, card->Name, NameLength);
        card->WorkingAdvancedMonitoring = card->Settings.AdvancedMonitoring.load();
        const auto* state = FindPageState<PageState>(page);
        if (state == nullptr || state->RoutesReset) {
            CopyGains(card->Settings.Monitor, card->WorkingMonitor);
        }
    }
    return TRUE;
}

// A page of the sheet asks its siblings.
INT_PTR OnQuery(HWND page, WPARAM question, LPARAM card) {
    const auto* state = FindPageState<PageState>(page);
    const bool yes = question == AreRoutesReset && reinterpret_cast<CardRecord*>(card) == PageCard(page) &&
                     state != nullptr && state->RoutesReset;
    return AnswerNotification(page, yes ? TRUE : FALSE);
}

INT_PTR OnNotify(HWND page, UINT code) {
    switch (code) {
    case PSN_HELP:
        return ShowPageHelp(page, Help);
    case PSN_KILLACTIVE:
        return OnLeave(page);
    case PSN_APPLY:
        return OnApply(page);
    case PSN_RESET:
        return OnReset(page);
    default:
        return FALSE;
    }
}

}  // namespace

INT_PTR CALLBACK ConfigurationPage(HWND page, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog(page);
    case WM_COMMAND:
        return OnCommand(page, LOWORD(wParam), HIWORD(wParam));
    case WM_NOTIFY:
        return OnNotify(page, reinterpret_cast<const NMHDR*>(lParam)->code);
    case PSM_QUERYSIBLINGS:
        return OnQuery(page, wParam, lParam);
    default:
        return AnswerPageMessage(page, Help, message, lParam);
    }
}

}  // namespace kestvox
