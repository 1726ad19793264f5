#include "config_ui/card_options.h"

#include <commctrl.h>

#include <algorithm>

#include "config_ui/saved_meanwhile.h"

namespace kestvox {

namespace {

constexpr size_t SwitchCount = std::size(OptionSwitches);

size_t PlaceOf(int control) {
    size_t place = 0;
    while (OptionSwitches[place].On != control) {
        ++place;
    }
    return place;
}

DWORD& Of(CardOptions& options, int control) {
    return options.Switches[PlaceOf(control)];
}

bool IsOn(const CardOptions& options, int control) {
    return options.Switches[PlaceOf(control)] != 0;
}

void SetChecked(HWND page, int control, bool checked) {
    CheckDlgButton(page, control, checked ? BST_CHECKED : BST_UNCHECKED);
}

void Enable(HWND page, int control, bool enable) {
    EnableWindow(GetDlgItem(page, control), enable ? TRUE : FALSE);
}

void ShowSwitch(HWND page, const OptionSwitch& option, bool on) {
    SetChecked(page, option.On, on);
    if (option.Off != 0) {
        SetChecked(page, option.Off, !on);
    }
}

// Copies are the consumer format's affair, and that has no room for the pre-emphasis of data that is not
// audio.
bool MayCopyProtect(const CardOptions& options) {
    return !IsOn(options, IDC_PROFESSIONAL);
}
bool MayPreemphasize(const CardOptions& options) {
    return IsOn(options, IDC_PROFESSIONAL) || !IsOn(options, IDC_NON_AUDIO);
}

CardOptions WithoutWithdrawn(CardOptions options) {
    if (!MayCopyProtect(options)) {
        Of(options, IDC_COPY_PROTECT) = 0;
    }
    if (!MayPreemphasize(options)) {
        Of(options, IDC_PREEMPHASIS) = 0;
    }
    return options;
}

bool IsBlank(WCHAR character) {
    constexpr WCHAR NoBreakSpace = 0xA0;
    return character <= ' ' || character == NoBreakSpace;
}

}  // namespace

CardOptions ReadSavedOptions(const CardRecord& card) {
    CardOptions options = {};
    lstrcpynW(options.Name, card.Name, NameLength);
    for (size_t i = 0; i < SwitchCount; ++i) {
        options.Switches[i] = card.Settings.*OptionSwitches[i].Setting;
    }
    options.Dither = card.Settings.DitherADC;
    return options;
}

void WriteSavedOptions(const CardOptions& options, CardRecord& card) {
    lstrcpynW(card.Name, options.Name, NameLength);
    for (size_t i = 0; i < SwitchCount; ++i) {
        card.Settings.*OptionSwitches[i].Setting = options.Switches[i];
    }
    card.Settings.DitherADC = options.Dither;
}

void ShowOptions(HWND page, const CardOptions& options) {
    if (IsNameChanged(options, ReadShownOptions(page))) {
        SetDlgItemTextW(page, IDC_NAME, options.Name);
    }
    const CardOptions shown = WithoutWithdrawn(options);
    for (size_t i = 0; i < SwitchCount; ++i) {
        ShowSwitch(page, OptionSwitches[i], shown.Switches[i] != 0);
    }
    Enable(page, IDC_COPY_PROTECT, MayCopyProtect(options));
    Enable(page, IDC_PREEMPHASIS, MayPreemphasize(options));
    // A dither type that is not in the list leaves it without a selection.
    SendDlgItemMessageW(page, IDC_DITHER, CB_SETCURSEL, options.Dither, 0);
}

void ShowNoOptions(HWND page) {
    Enable(page, IDC_NAME, false);
    for (const OptionSwitch& option : OptionSwitches) {
        ShowSwitch(page, option, option.WithoutCard);
        Enable(page, option.On, false);
        if (option.Off != 0) {
            Enable(page, option.Off, false);
        }
    }
    SendDlgItemMessageW(page, IDC_DITHER, CB_SETCURSEL, 0, 0);
    Enable(page, IDC_DITHER, false);
}

CardOptions ReadShownOptions(HWND page) {
    CardOptions options = {};
    GetDlgItemTextW(page, IDC_NAME, options.Name, NameLength);
    for (size_t i = 0; i < SwitchCount; ++i) {
        options.Switches[i] = IsDlgButtonChecked(page, OptionSwitches[i].On) == BST_CHECKED;
    }
    options.Dither = static_cast<DWORD>(SendDlgItemMessageW(page, IDC_DITHER, CB_GETCURSEL, 0, 0));
    return options;
}

void WithdrawOption(HWND page, int option) {
    SetChecked(page, option, false);
    Enable(page, option, false);
}

void OfferOption(HWND page, int option, DWORD saved) {
    if (!IsWindowEnabled(GetDlgItem(page, option))) {
        Enable(page, option, true);
        SetChecked(page, option, saved != 0);
    }
}

CardOptions MergeOptions(const CardOptions& chosen, const CardOptions& shown, const CardOptions& loaded,
                         const CardOptions& saved) {
    CardOptions merged = chosen;
    if (!IsNameChanged(chosen, shown) && IsNameChanged(saved, loaded)) {
        lstrcpynW(merged.Name, saved.Name, NameLength);
    }
    for (size_t i = 0; i < SwitchCount; ++i) {
        if (IsSavedElsewhere(chosen.Switches[i], shown.Switches[i], loaded.Switches[i], saved.Switches[i])) {
            merged.Switches[i] = saved.Switches[i];
        }
    }
    if (chosen.Dither == shown.Dither) {
        merged.Dither = saved.Dither;
    }
    return WithoutWithdrawn(merged);
}

bool HasName(const CardOptions& options) {
    const WCHAR* end = options.Name + lstrlenW(options.Name);
    return !std::all_of(options.Name, end, IsBlank);
}

// Every character counts, also those that the system's comparison passes over.
bool IsNameChanged(const CardOptions& chosen, const CardOptions& shown) {
    int place = 0;
    while (chosen.Name[place] != 0 && chosen.Name[place] == shown.Name[place]) {
        ++place;
    }
    return chosen.Name[place] != shown.Name[place];
}

}  // namespace kestvox
