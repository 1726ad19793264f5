#include "config_ui/clocks/clock_choices.h"

#include "card/card_table.h"
#include "config_ui/property_page.h"

namespace kestvox {

namespace {

struct PageState {
    ClockChoice Choices[MaxCards];  // in the order of the table
};

}  // namespace

void MakeClockChoices(HWND page) {
    MakePageState<PageState>(page);
}

ClockChoice* FindClockChoice(HWND page, const CardRecord& card) {
    auto* state = FindPageState<PageState>(page);
    return state != nullptr ? &state->Choices[&card - FirstCard()] : nullptr;
}

void ChooseClockSource(HWND page, CardRecord& card, DWORD source) {
    card.WorkingClockSource = source;
    if (ClockChoice* choice = FindClockChoice(page, card)) {
        choice->Source = source;
    }
}

DWORD ChosenClockSource(HWND page, const CardRecord& card) {
    const DWORD source = card.WorkingClockSource;
    const ClockChoice* choice = FindClockChoice(page, card);
    return source == LinkClock && choice != nullptr ? choice->Source : source;
}

}  // namespace kestvox
