// What the Clocks + Sync page remembers of each card, beside the working settings that all sheets share.
#pragma once

#include <windows.h>

#include "card/card_record.h"

namespace kestvox {

struct CardClock {
    const CardRecord* Master;  // null: the card follows nobody
    DWORD Source;

    bool operator==(const CardClock&) const = default;
};

struct ClockChoice {
    DWORD Source;      // the card's own, as it was chosen last
    CardClock Loaded;  // saved when the tree was filled or last applied
    CardClock Shown;   // in the tree at that time
};

// WM_INITDIALOG: makes room for them.
void MakeClockChoices(HWND page);

// Null when there was no room.
ClockChoice* FindClockChoice(HWND page, const CardRecord& card);

// Gives a card a working clock source that the user or a rule of the tree has chosen.
void ChooseClockSource(HWND page, CardRecord& card, DWORD source);

// The clock source of a card that stands alone or leads. A stream that opens sets the working source to what
// is saved: a card that was freed on this page, and not applied yet, would be on the link again.
DWORD ChosenClockSource(HWND page, const CardRecord& card);

}  // namespace kestvox
