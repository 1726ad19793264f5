#include <windows.h>
#include <commctrl.h>

#include "card/card_table.h"
#include "config_ui/mixer_gain.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "settings/card_settings_store.h"

namespace kestvox {

namespace {

constexpr ControlHelp HelpOfControls[] = {
    {IDC_NAME, IDC_NAME, 904},
    {IDC_ADVANCED_MONITORING, IDC_ADVANCED_MONITORING, 918},
    {IDC_LEFT, IDC_RIGHT, 909},
    {IDC_PROFESSIONAL, IDC_CONSUMER, 912},
    {IDC_COPY_PROTECT, IDC_COPY_PROTECT, 913},
    {IDC_NON_AUDIO, IDC_NON_AUDIO, 914},
    {IDC_PREEMPHASIS, IDC_PREEMPHASIS, 915},
    {IDC_PUNCH_IN, IDC_LOCK_TO_PLAYBACK, 916},
    {IDC_CHECK_CLOCKS, IDC_CHECK_CLOCKS, 917},
    {IDC_DITHER, IDC_DITHER, 919},
};
constexpr PageHelp Help = {902, HelpOfControls};

// A setting that is on or off: a check box, or a pair of radio buttons.
struct Switch {
    int On;   // the control that is checked while the setting is on
    int Off;  // the one that is checked while it is off; 0 with a check box
    SharedWord CardSettings::*Setting;
    bool WithoutCard;  // what is shown then
};
constexpr Switch Switches[] = {
    {IDC_LEFT, IDC_RIGHT, &CardSettings::Left24, true},
    {IDC_ADVANCED_MONITORING, 0, &CardSettings::AdvancedMonitoring, false},
    {IDC_PUNCH_IN, IDC_LOCK_TO_PLAYBACK, &CardSettings::Punchin, true},
    {IDC_CHECK_CLOCKS, 0, &CardSettings::CheckClocks, true},
    {IDC_PROFESSIONAL, IDC_CONSUMER, &CardSettings::Professional, true},
    {IDC_COPY_PROTECT, 0, &CardSettings::CopyProtect, false},
    {IDC_NON_AUDIO, 0, &CardSettings::NonAudio, false},
    {IDC_PREEMPHASIS, 0, &CardSettings::Preemphasis, false},
};

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

bool IsChecked(HWND page, int control) {
    return IsDlgButtonChecked(page, control) == BST_CHECKED;
}

void SetChecked(HWND page, int control, bool checked) {
    CheckDlgButton(page, control, checked ? BST_CHECKED : BST_UNCHECKED);
}

void Disable(HWND page, int control) {
    EnableWindow(GetDlgItem(page, control), FALSE);
}

// An option that the others rule out counts as off.
void Withdraw(HWND page, int option) {
    SetChecked(page, option, false);
    Disable(page, option);
}

// One that was not withdrawn keeps what the user chose.
void Offer(HWND page, int option, DWORD saved) {
    const HWND control = GetDlgItem(page, option);
    if (!IsWindowEnabled(control)) {
        EnableWindow(control, TRUE);
        SetChecked(page, option, saved != 0);
    }
}

// The sheet's first page is the first to be made: while it is current, the sheet shows all its tabs in one
// row with arrows instead of stacking them.
void UseSingleTabRow(HWND page) {
    const auto tabs = reinterpret_cast<HWND>(SendMessageW(GetParent(page), PSM_GETTABCONTROL, 0, 0));
    if (SendMessageW(tabs, TCM_GETCURSEL, 0, 0) == 0) {
        const LONG_PTR style = GetWindowLongPtrW(tabs, GWL_STYLE);
        SetWindowLongPtrW(tabs, GWL_STYLE, style & ~LONG_PTR{TCS_MULTILINE});
    }
}

void ShowSwitch(HWND page, const Switch& control, bool on) {
    SetChecked(page, control.On, on);
    if (control.Off != 0) {
        SetChecked(page, control.Off, !on);
    }
}

void FillDitherList(HWND list) {
    SendMessageW(list, CB_RESETCONTENT, 0, 0);
    for (const UINT name : DitherNames) {
        WCHAR text[DitherNameLength];
        LoadText(name, text);
        SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
}

// A stored dither type that is not in the list leaves it without a selection.
void SelectDither(HWND page, DWORD type) {
    SendDlgItemMessageW(page, IDC_DITHER, CB_SETCURSEL, type, 0);
}

void ShowCard(HWND page, const CardRecord& card) {
    const CardSettings& settings = card.Settings;
    SendDlgItemMessageW(page, IDC_NAME, EM_LIMITTEXT, NameLength - 1, 0);
    SetDlgItemTextW(page, IDC_NAME, card.Name);
    for (const Switch& control : Switches) {
        ShowSwitch(page, control, settings.*control.Setting != 0);
    }
    SelectDither(page, settings.DitherADC);
    if (settings.Professional != 0) {
        Withdraw(page, IDC_COPY_PROTECT);
    } else if (settings.NonAudio != 0) {
        Withdraw(page, IDC_PREEMPHASIS);
    }
}

void ShowNoCard(HWND page) {
    Disable(page, IDC_NAME);
    for (const Switch& control : Switches) {
        ShowSwitch(page, control, control.WithoutCard);
        Disable(page, control.On);
        if (control.Off != 0) {
            Disable(page, control.Off);
        }
    }
    SelectDither(page, 0);
    Disable(page, IDC_DITHER);
}

void ReadName(HWND page, WCHAR (&name)[NameLength]) {
    GetDlgItemTextW(page, IDC_NAME, name, NameLength);
}

void ResetPlaybackRoutes(MonitorBlock& monitor) {
    for (const PlaybackRoute& route : StandardRoutes) {
        SetGainCode(monitor, route.Input, route.GainCode);
    }
    for (unsigned input = 0; input < MixerInputs; ++input) {
        SetGainCode(monitor, input, monitor.GainCode[input]);
    }
}

// The Monitor page follows these the next time it is shown or applied.
void OnAdvancedMonitoring(HWND page, CardRecord& card) {
    const bool on = IsChecked(page, IDC_ADVANCED_MONITORING);
    card.WorkingAdvancedMonitoring = on;
    if (!on) {
        ResetPlaybackRoutes(card.WorkingMonitor);
    }
}

void OnProfessional(HWND page, const CardSettings& saved) {
    Withdraw(page, IDC_COPY_PROTECT);
    Offer(page, IDC_PREEMPHASIS, saved.Preemphasis);
}

// Consumer channel status has no room for the pre-emphasis of data that is not audio.
void OnNonAudio(HWND page, const CardSettings& saved) {
    if (!IsChecked(page, IDC_CONSUMER)) {
        return;
    }
    if (IsChecked(page, IDC_NON_AUDIO)) {
        Withdraw(page, IDC_PREEMPHASIS);
    } else {
        Offer(page, IDC_PREEMPHASIS, saved.Preemphasis);
    }
}

void OnConsumer(HWND page, const CardSettings& saved) {
    Offer(page, IDC_COPY_PROTECT, saved.CopyProtect);
    if (IsChecked(page, IDC_NON_AUDIO)) {
        Withdraw(page, IDC_PREEMPHASIS);
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
    if (const CardRecord* card = FindCard(PendingPageCard)) {
        ShowCard(page, *card);
    } else {
        ShowNoCard(page);
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
        ReadName(page, card->WorkingName);
        return TRUE;
    }
    const bool changed = (control == IDC_NAME && notification == EN_CHANGE) ||
                         (control == IDC_DITHER && notification == CBN_SELCHANGE);
    if (changed) {
        ReportChange(page);
    }
    return changed;
}

void Store(HWND page, CardRecord& card) {
    CardSettings& settings = card.Settings;
    ReadName(page, card.Name);
    lstrcpynW(card.WorkingName, card.Name, NameLength);
    for (const Switch& control : Switches) {
        settings.*control.Setting = IsChecked(page, control.On);
    }
    card.WorkingAdvancedMonitoring = settings.AdvancedMonitoring.load();
    const LRESULT dither = SendDlgItemMessageW(page, IDC_DITHER, CB_GETCURSEL, 0, 0);
    if (dither != CB_ERR) {
        settings.DitherADC = static_cast<DWORD>(dither);
    }
    SaveCardSettings(card);
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
        CopyGains(card->Settings.Monitor, card->WorkingMonitor);
    }
    return TRUE;
}

INT_PTR OnNotify(HWND page, UINT code) {
    switch (code) {
    case PSN_HELP:
        return ShowPageHelp(page, Help);
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
    default:
        return AnswerHelpMessage(page, Help, message, lParam);
    }
}

}  // namespace kestvox
