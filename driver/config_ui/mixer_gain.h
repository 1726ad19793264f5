// Fader positions of the monitor mixers, in the card's terms and in the user's.
#pragma once

#include "card/card_record.h"

namespace kestvox {

inline constexpr DWORD LowestGainCode = 18;   // silence, as all codes below
inline constexpr DWORD HighestGainCode = 83;  // unity

// Gain for the card, 0..128, 128 = 0 dB. A code above the highest counts as the highest, here and below.
DWORD GainOfCode(DWORD code);

// The same gain in tenths of a decibel; MinusInfinity for silence.
inline constexpr int MinusInfinity = -9999;
int TenthsOfDecibel(DWORD code);

// Sets one input of a block to a code and the gain that goes with it. The working block is read by streams
// of all processes meanwhile.
void SetGainCode(MonitorBlock& block, unsigned input, DWORD code);

// The code of one input, read in one access.
DWORD GainCodeOf(MonitorBlock& block, unsigned input);

// Copies a whole block, each word in one access.
void CopyGains(const MonitorBlock& from, MonitorBlock& to);

}  // namespace kestvox
