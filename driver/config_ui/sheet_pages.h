// Which pages the configuration sheet has: three for each card, then two for all cards together.
#pragma once

#include <windows.h>
#include <prsht.h>

#include "card/card_record.h"

namespace kestvox {

// 16 cards have 50 pages.
inline constexpr UINT MaxSheetPages = 51;

// Adds a page to the sheet. FALSE when the sheet is full: the page stays the caller's.
using AddPageRoutine = BOOL (*)(HPROPSHEETPAGE page, PROPSHEETHEADERW& sheet);
BOOL AddSheetPage(HPROPSHEETPAGE page, PROPSHEETHEADERW& sheet);

// Adds the pages of all cards in table order, and those that concern all cards. A page that cannot be
// made, or added, is left out. FALSE when there is no card, and so nothing to show.
BOOL AddConfigurationPages(AddPageRoutine addPage, PROPSHEETHEADERW& sheet);

// Adds the card's Configuration and Monitor page and, when its identity is known, its Version page.
// Titles carry the saved name.
void AddCardPages(const CardRecord& card, AddPageRoutine addPage, PROPSHEETHEADERW& sheet);

}  // namespace kestvox
