// The monitor mixer: what leaves a connector is the sum of four sources, each at its own gain.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "simulator/channels/frame.h"

namespace simulator {

inline constexpr unsigned MixerSources = 4;  // analog in, digital in, analog playback, digital playback

// Gains are 128ths. A source that is null is silent. `count` frames of each source are read.
void MixFrames(const std::array<const Frame*, MixerSources>& sources,
               const std::array<uint8_t, MixerSources>& gains, size_t count, Frame* out);

}  // namespace simulator
