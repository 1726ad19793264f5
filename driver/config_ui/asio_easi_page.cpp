#include <windows.h>
#include <commctrl.h>

#include <algorithm>
#include <optional>

#include "config_ui/page_label.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "config_ui/saved_meanwhile.h"
#include "settings/settings_key.h"

namespace kestvox {

namespace {

constexpr ControlHelp Controls[] = {
    {IDC_ASIO_BUFFER, IDC_ASIO_BUFFER_TIME, HELP_ASIO_BUFFER},
    {IDC_EASI_BUFFER, IDC_EASI_BUFFER_TIME, HELP_EASI_BUFFER},
};
constexpr PageHelp Help = {HELP_PAGE_BUFFER_SIZES, Controls};

constexpr const WCHAR* KeyPath = TEXT("Software\\Zephyr Harmonic Works\\Kestrelvox\\Configuration");

struct BufferSetting {
    int Slider;
    int GroupTop;        // of the box around it, in dialog units
    const WCHAR* Value;  // in the registry: the slider's position
};
constexpr BufferSetting Settings[] = {
    {IDC_ASIO_BUFFER, 4, TEXT("AsioBufferSize")},
    {IDC_EASI_BUFFER, 50, TEXT("EasiBufferSize")},
};

// The positions that were shown when the page was made or last applied: what was stored then.
struct PageState {
    DWORD Shown[std::size(Settings)];
};

// A position is worth 2 ms.
constexpr DWORD ShortestBuffer = 2;
constexpr DWORD LongestBuffer = 500;
constexpr DWORD StandardBuffer = 40;
constexpr DWORD TickDistance = 50;
constexpr UINT MillisecondsPerStep = 2;

constexpr int TimeLength = 20;

// Only a value that is exactly a number counts.
std::optional<DWORD> ReadBufferSize(const SettingsKey& key, const WCHAR* name) {
    DWORD size = 0;
    DWORD position = 0;
    if (!key.QuerySize(name, &size) || size != sizeof position ||
        !key.QueryBinary(name, &position, sizeof position)) {
        return std::nullopt;
    }
    return position;
}

DWORD SliderPosition(HWND slider) {
    return static_cast<DWORD>(SendMessageW(slider, TBM_GETPOS, 0, 0));
}

void SetScale(HWND slider) {
    SendMessageW(slider, TBM_SETRANGE, TRUE, MAKELPARAM(ShortestBuffer, LongestBuffer));
    SendMessageW(slider, TBM_SETTIC, 0, ShortestBuffer);
    for (DWORD tick = TickDistance; tick <= LongestBuffer; tick += TickDistance) {
        SendMessageW(slider, TBM_SETTIC, 0, static_cast<LPARAM>(tick));
    }
}

void ShowBufferTime(HWND page, HWND slider) {
    WCHAR format[TimeLength];
    WCHAR text[2 * TimeLength];
    LoadText(IDS_BUFFER_TIME, format);
    wsprintfW(text, format, SliderPosition(slider) * MillisecondsPerStep);
    ShowSliderValue(page, GetDlgCtrlID(slider), text);
}

DWORD PositionOf(DWORD size) {
    return std::clamp(size, ShortestBuffer, LongestBuffer);
}

// The slider takes positions as signed numbers and would move the largest to its left end.
void ShowBufferSize(HWND page, HWND slider, DWORD size) {
    SendMessageW(slider, TBM_SETPOS, TRUE, static_cast<LPARAM>(PositionOf(size)));
    ShowBufferTime(page, slider);
}

INT_PTR OnInitDialog(HWND page) {
    SettingsKey key(HKEY_LOCAL_MACHINE);
    key.SetPath(KeyPath);
    auto* state = MakePageState<PageState>(page);
    for (size_t i = 0; i < std::size(Settings); ++i) {
        const HWND slider = GetDlgItem(page, Settings[i].Slider);
        SetScale(slider);
        LabelSliderEnds(page, IDS_BUFFER_SHORTEST, IDS_BUFFER_LONGEST, Settings[i].GroupTop);
        ShowBufferSize(page, slider, ReadBufferSize(key, Settings[i].Value).value_or(StandardBuffer));
        if (state != nullptr) {
            state->Shown[i] = SliderPosition(slider);
        }
    }
    return TRUE;
}

INT_PTR OnSlider(HWND page, HWND slider) {
    ShowBufferTime(page, slider);
    ReportChange(page);
    return TRUE;
}

BOOL Store(SettingsKey& key, const BufferSetting& setting, DWORD position) {
    key.DeleteValue(setting.Value);
    return key.SetValue(setting.Value, &position, sizeof position, REG_BINARY);
}

// What cannot have been stored by such a page does not count: it is replaced.
bool IsSizeSavedElsewhere(DWORD position, DWORD shown, std::optional<DWORD> stored) {
    return stored && *stored == PositionOf(*stored) && IsSavedElsewhere(position, shown, shown, *stored);
}

INT_PTR OnApply(HWND page) {
    SettingsKey key(HKEY_LOCAL_MACHINE);
    key.SetPath(KeyPath);
    auto* state = FindPageState<PageState>(page);
    for (size_t i = 0; i < std::size(Settings); ++i) {
        const HWND slider = GetDlgItem(page, Settings[i].Slider);
        const DWORD position = SliderPosition(slider);
        const std::optional<DWORD> stored = ReadBufferSize(key, Settings[i].Value);
        const bool savedElsewhere =
            state != nullptr && IsSizeSavedElsewhere(position, state->Shown[i], stored);
        if (savedElsewhere) {
            ShowBufferSize(page, slider, *stored);
        }
        // What could not be stored is the user's choice still.
        if ((savedElsewhere || Store(key, Settings[i], position)) && state != nullptr) {
            state->Shown[i] = SliderPosition(slider);
        }
    }
    return AnswerNotification(page, PSNRET_NOERROR);
}

INT_PTR OnNotify(HWND page, UINT code) {
    switch (code) {
    case PSN_HELP:
        return ShowPageHelp(page, Help);
    case PSN_APPLY:
        return OnApply(page);
    default:
        return FALSE;
    }
}

}  // namespace

INT_PTR CALLBACK AsioEasiPage(HWND page, UINT message, WPARAM, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog(page);
    case WM_HSCROLL:
        return OnSlider(page, reinterpret_cast<HWND>(lParam));
    case WM_NOTIFY:
        return OnNotify(page, reinterpret_cast<const NMHDR*>(lParam)->code);
    default:
        return AnswerPageMessage(page, Help, message, lParam);
    }
}

}  // namespace kestvox
