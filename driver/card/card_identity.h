// A card's revisions and serial number, as its non-volatile memory has them.
#pragma once

#include "card/card_handle.h"

namespace kestvox {

inline constexpr char UnknownBoardRevision = '?';

// Fills the record's board, FPGA and serial numbers. A page that cannot be read or whose check does
// not come out leaves UnknownBoardRevision and zeros.
void ReadCardIdentity(CardHandle* handle, CardRecord& card);

}  // namespace kestvox
