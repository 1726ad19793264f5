// The samples of a file as numbers.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <span>
#include <vector>

#include "simulator/channels/frame.h"

namespace kestvox {

constexpr double FullScale = 2147483648.0;  // of a sample as a connector has it, of 32 bits

// Whether they are PCM, floating point or one of the two laws, in one or two channels.
bool HasKnownSamples(const WAVEFORMATEX& format);

// Appends whole frames of a format with known samples, each sample at the top of 32 bits. Floating point is
// rounded and limited to full scale. A single channel is on both sides.
void AppendFrames(const WAVEFORMATEX& format, std::span<const char> bytes,
                  std::vector<simulator::Frame>& frames);

}  // namespace kestvox
