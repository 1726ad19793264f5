// A card's options: as they are saved, and as the Configuration page has them on its controls.
#pragma once

#include <windows.h>

#include <iterator>

#include "card/card_record.h"
#include "config_ui/resource.h"

namespace kestvox {

// An option that is on or off: a check box, or a pair of radio buttons.
struct OptionSwitch {
    int On;   // the control that is checked while the option is on
    int Off;  // the one that is checked while it is off; 0 with a check box
    SharedWord CardSettings::*Setting;
    bool WithoutCard;  // what is shown then
};
inline constexpr OptionSwitch OptionSwitches[] = {
    {IDC_LEFT, IDC_RIGHT, &CardSettings::Left24, true},
    {IDC_ADVANCED_MONITORING, 0, &CardSettings::AdvancedMonitoring, false},
    {IDC_PUNCH_IN, IDC_LOCK_TO_PLAYBACK, &CardSettings::Punchin, true},
    {IDC_CHECK_CLOCKS, 0, &CardSettings::CheckClocks, true},
    {IDC_PROFESSIONAL, IDC_CONSUMER, &CardSettings::Professional, true},
    {IDC_COPY_PROTECT, 0, &CardSettings::CopyProtect, false},
    {IDC_NON_AUDIO, 0, &CardSettings::NonAudio, false},
    {IDC_PREEMPHASIS, 0, &CardSettings::Preemphasis, false},
};

struct CardOptions {
    WCHAR Name[NameLength];
    DWORD Switches[std::size(OptionSwitches)];  // not 0: on
    DWORD Dither;                               // entry of the list; CB_ERR: none
};

// Every word is read and written once: other sheets and programs do so, too.
CardOptions ReadSavedOptions(const CardRecord& card);
void WriteSavedOptions(const CardOptions& options, CardRecord& card);

// Fills the controls, and grays what the digital output options rule out. A name that is shown already is not
// set again.
void ShowOptions(HWND page, const CardOptions& options);
void ShowNoOptions(HWND page);
CardOptions ReadShownOptions(HWND page);

// An option that the others rule out is off, and its control grayed.
void WithdrawOption(HWND page, int option);
// One that was not withdrawn keeps what the user chose.
void OfferOption(HWND page, int option, DWORD saved);

// What is to be saved of `chosen`: all of it but for what the user left as it was `shown` while another sheet
// or program saved something else than the page had `loaded`; that stays as it is `saved` now.
CardOptions MergeOptions(const CardOptions& chosen, const CardOptions& shown, const CardOptions& loaded,
                         const CardOptions& saved);

bool HasName(const CardOptions& options);  // one that is not made of blanks
bool IsNameChanged(const CardOptions& chosen, const CardOptions& shown);

}  // namespace kestvox
