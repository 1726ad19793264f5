// When clocks may be changed, and how the user learns that they may not.
#pragma once

#include <windows.h>

#include "card/card_record.h"

namespace kestvox {

// Whether no audio runs on the card's clock, or that of any card when it is null; else the user is told.
// Audio of a stream of this process in direct mode does not count.
BOOL MayChangeClocks(HWND page, const CardRecord* card);

// A text of the string table in a message box of the page, with the stop sign.
void ShowClockRefusal(HWND page, UINT text);

}  // namespace kestvox
