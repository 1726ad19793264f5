// The IEC 60958 channel status that the S/PDIF output sends. TRUE when every write worked; each step
// is made only when the one before it worked.
#pragma once

#include "card/card_handle.h"
#include "card/rates.h"

namespace kestvox {

// Format, non-audio, copy and pre-emphasis marks, from the card's settings. `forceNonAudio` marks the
// data as non-audio whatever the setting says.
BOOL SetDigitalOutputStatus(CardHandle* handle, const CardRecord& card, BOOL forceNonAudio);

// The sample-rate fields.
BOOL SetChannelStatusRate(CardHandle* handle, const CardRecord& card, const CardRate& rate);

}  // namespace kestvox
