#include <commctrl.h>

#include <algorithm>

#include "card/card_handle.h"
#include "card/registers.h"
#include "config_ui/mixer_gain.h"
#include "config_ui/page_label.h"
#include "config_ui/pages.h"
#include "config_ui/property_page.h"
#include "config_ui/resource.h"
#include "config_ui/saved_meanwhile.h"

namespace kestvox {

namespace {

constexpr ControlHelp MixerHelp[] = {{IDC_FIRST_MIXER_SLIDER, IDC_LAST_MIXER_VALUE, HELP_MIXER}};
constexpr PageHelp Help = {HELP_PAGE_MONITOR, MixerHelp};

// 0.0, -5.8, -11.7 and -24.0 dB
constexpr DWORD TickMarks[] = {83, 69, 57, 39};

constexpr int GroupTops[] = {4, 108};  // of the two mixers, in dialog units

// What the sliders showed when the page was made or last applied, and the saved gain codes behind that.
struct PageState {
    DWORD Loaded[MixerInputs];
    DWORD Shown[MixerInputs];
};

// Where a mixer input's sound comes from; the gain matters to the hardware while that device is open.
struct MixerSource {
    SharedWord (CardRecord::*OpenFlags)[PortCount];
    unsigned Port;
    bool Playback;  // its gains are the user's only with advanced monitoring
};
constexpr MixerSource Sources[] = {
    {&CardRecord::InputOpen, 0, false},
    {&CardRecord::InputOpen, 1, false},
    {&CardRecord::OutputOpen, 0, true},
    {&CardRecord::OutputOpen, 1, true},
};

// Both mixers have the same sources in the same order.
const MixerSource& SourceOf(unsigned input) {
    return Sources[input % std::size(Sources)];
}

int SliderOf(unsigned input) {
    return IDC_FIRST_MIXER_SLIDER + 2 * static_cast<int>(input);
}

int ValueOf(unsigned input) {
    return SliderOf(input) + 1;
}

// The gain code at which an input's slider stands.
DWORD SliderCode(HWND page, unsigned input) {
    return static_cast<DWORD>(SendDlgItemMessageW(page, SliderOf(input), TBM_GETPOS, 0, 0));
}

void ShowGain(HWND page, unsigned input, DWORD code) {
    WCHAR format[20];
    WCHAR text[20];
    int tenths = TenthsOfDecibel(code);
    if (tenths == MinusInfinity) {
        LoadText(IDS_GAIN_OFF, text);
    } else {
        const char sign = tenths > 0 ? '+' : tenths < 0 ? '-' : ' ';
        tenths = tenths < 0 ? -tenths : tenths;
        LoadText(IDS_GAIN_DECIBELS, format);
        wsprintfW(text, format, sign, tenths / 10, tenths % 10);
    }
    ShowSliderValue(page, SliderOf(input), text);
}

// The gain of a device that is not open is left to its open.
void WriteGain(CardRecord& card, unsigned input, DWORD gain) {
    const MixerSource& source = SourceOf(input);
    if ((card.*source.OpenFlags)[source.Port] != 0) {
        BorrowedHandle handle(card);
        SetMixerGain(handle.Get(), input, gain);
    }
}

enum class Hardware { Leave, Follow };

// Takes a slider's position into the working settings, the text beside it and, if wanted, the card.
void UpdateMixerChannel(CardRecord& card, HWND page, unsigned input, Hardware hardware) {
    const DWORD code = SliderCode(page, input);
    SetGainCode(card.WorkingMonitor, input, code);
    ShowGain(page, input, code);
    if (hardware == Hardware::Follow) {
        WriteGain(card, input, GainOfCode(code));
    }
}

// A code outside the slider's range ends at the nearest position. The slider takes positions as signed
// numbers.
void PlaceSlider(HWND page, unsigned input, DWORD code) {
    const auto position = static_cast<LPARAM>(std::min(code, HighestGainCode));
    SendDlgItemMessageW(page, SliderOf(input), TBM_SETPOS, TRUE, position);
}

void MoveSlider(CardRecord& card, HWND page, unsigned input, DWORD code, Hardware hardware) {
    PlaceSlider(page, input, code);
    UpdateMixerChannel(card, page, input, hardware);
}

// Takes what another page did to the working settings into the sliders and the card; true when there was
// anything.
bool FollowWorkingSettings(CardRecord& card, HWND page) {
    bool moved = false;
    for (unsigned input = 0; input < MixerInputs; ++input) {
        const DWORD code = GainCodeOf(card.WorkingMonitor, input);
        if (code != SliderCode(page, input)) {
            MoveSlider(card, page, input, code, Hardware::Follow);
            moved = true;
        }
    }
    return moved;
}

void Remember(CardRecord& card, HWND page) {
    if (auto* state = FindPageState<PageState>(page)) {
        for (unsigned input = 0; input < MixerInputs; ++input) {
            state->Loaded[input] = GainCodeOf(card.Settings.Monitor, input);
            state->Shown[input] = SliderCode(page, input);
        }
    }
}

bool IsInputSavedElsewhere(CardRecord& card, HWND page, unsigned input) {
    const auto* state = FindPageState<PageState>(page);
    return state != nullptr &&
           IsSavedElsewhere(SliderCode(page, input), state->Shown[input], state->Loaded[input],
                            GainCodeOf(card.Settings.Monitor, input));
}

// Working playback routes that were reset are left to the activation, which takes them into the sliders.
void ShowSavedGains(CardRecord& card, HWND page) {
    const bool reset = SendMessageW(GetParent(page), PSM_QUERYSIBLINGS, AreRoutesReset,
                                    reinterpret_cast<LPARAM>(&card)) != 0;
    for (unsigned input = 0; input < MixerInputs; ++input) {
        const DWORD code = GainCodeOf(card.Settings.Monitor, input);
        if (reset && SourceOf(input).Playback) {
            PlaceSlider(page, input, code);
            ShowGain(page, input, code);
        } else {
            MoveSlider(card, page, input, code, Hardware::Leave);
        }
    }
}

void EnableChannel(HWND page, unsigned input, BOOL enable) {
    EnableWindow(GetDlgItem(page, SliderOf(input)), enable);
    EnableWindow(GetDlgItem(page, ValueOf(input)), enable);
}

void DrawScale(HWND page, unsigned input) {
    const HWND slider = GetDlgItem(page, SliderOf(input));
    SendMessageW(slider, TBM_SETRANGE, TRUE, MAKELONG(LowestGainCode, HighestGainCode));
    for (const DWORD mark : TickMarks) {
        SendMessageW(slider, TBM_SETTIC, 0, static_cast<LPARAM>(mark));
    }
}

INT_PTR OnInitDialog(HWND page) {
    CardRecord* card = KeepPageCard(page);
    MakePageState<PageState>(page);
    for (const int top : GroupTops) {
        LabelSliderEnds(page, IDS_GAIN_LOWEST, IDS_GAIN_HIGHEST, top);
    }
    for (unsigned input = 0; input < MixerInputs; ++input) {
        DrawScale(page, input);
        if (card == nullptr) {
            EnableChannel(page, input, FALSE);
        }
    }
    if (card != nullptr) {
        ShowSavedGains(*card, page);
        Remember(*card, page);
    }
    return TRUE;
}

INT_PTR OnActivate(CardRecord& card, HWND page) {
    const BOOL advanced = card.WorkingAdvancedMonitoring != 0;
    for (unsigned input = 0; input < MixerInputs; ++input) {
        if (SourceOf(input).Playback) {
            EnableChannel(page, input, advanced);
        }
    }
    if (FollowWorkingSettings(card, page)) {
        ReportChange(page);
    }
    return AnswerNotification(page, 0);
}

INT_PTR OnApply(CardRecord& card, HWND page) {
    FollowWorkingSettings(card, page);
    for (unsigned input = 0; input < MixerInputs; ++input) {
        if (!IsInputSavedElsewhere(card, page, input)) {
            SetGainCode(card.Settings.Monitor, input, SliderCode(page, input));
        }
    }
    SaveCard(page, card);
    CopyGains(card.Settings.Monitor, card.WorkingMonitor);
    FollowWorkingSettings(card, page);
    Remember(card, page);
    return AnswerNotification(page, PSNRET_NOERROR);
}

INT_PTR OnReset(CardRecord& card, HWND page) {
    for (unsigned input = 0; input < MixerInputs; ++input) {
        MoveSlider(card, page, input, GainCodeOf(card.Settings.Monitor, input), Hardware::Follow);
    }
    return TRUE;
}

INT_PTR OnScroll(HWND page, HWND slider) {
    CardRecord* card = PageCard(page);
    const int number = GetDlgCtrlID(slider);
    if (card == nullptr || number < IDC_FIRST_MIXER_SLIDER || number > IDC_LAST_MIXER_VALUE) {
        return FALSE;
    }
    UpdateMixerChannel(*card, page, static_cast<unsigned>(number - IDC_FIRST_MIXER_SLIDER) / 2,
                       Hardware::Follow);
    ReportChange(page);
    return TRUE;
}

INT_PTR OnNotify(HWND page, const NMHDR& notification) {
    if (notification.code == PSN_HELP) {
        return ShowPageHelp(page, Help);
    }
    CardRecord* card = PageCard(page);
    if (card == nullptr) {
        return FALSE;
    }
    switch (notification.code) {
    case PSN_SETACTIVE:
        return OnActivate(*card, page);
    case PSN_APPLY:
        return OnApply(*card, page);
    case PSN_RESET:
        return OnReset(*card, page);
    default:
        return FALSE;
    }
}

}  // namespace

INT_PTR CALLBACK MonitorPage(HWND page, UINT message, WPARAM, LPARAM lParam) {
    switch (message) {
    case WM_INITDIALOG:
        return OnInitDialog(page);
    case WM_HSCROLL:
        return OnScroll(page, reinterpret_cast<HWND>(lParam));
    case WM_NOTIFY:
        return OnNotify(page, *reinterpret_cast<const NMHDR*>(lParam));
    default:
        return AnswerPageMessage(page, Help, message, lParam);
    }
}

}  // namespace kestvox
