// When clocks may be changed.
#pragma once

#include <windows.h>

#include "card/card_record.h"

namespace kestvox {

// Whether no audio runs on the card's clock, or that of any card when it is null; else the user is told.
// Audio of a stream of this process in direct mode does not count.
BOOL MayChangeClocks(HWND page, const CardRecord* card);

}  // namespace kestvox
