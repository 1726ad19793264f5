// What a card must be heard to play for a file's bytes, worked out from the definitions of the formats.
#pragma once

#include <string>
#include <vector>

#include "simulator/simulator.h"
#include "tests/tools/wav_bytes.h"

// `left24`: samples of up to 32 bits in 4 bytes lie at the top of their slot; otherwise the card takes
// the lowest 24 bits. (An extensible format always has them at the top.) Mono goes to both channels.
std::vector<simulator::Frame> DecodeSamples(const WavFormat& format, const std::string& bytes, bool left24);
