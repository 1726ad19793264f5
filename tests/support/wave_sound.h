// What a client's data ought to sound like, by its format alone: as the report reads it, which knows nothing
// of the driver.
#pragma once

#include <vector>

#include "simulator/simulator.h"
#include "tests/support/wave_formats.h"

// The frames that `data` holds; what is left over of the last one is not heard. `side` is where a
// plain sample of 20 to 32 bits stands in its 4-byte container.
enum class Justified { Left, Right };
std::vector<simulator::Frame> Sound(const WAVEFORMATEX& format, const std::vector<BYTE>& data,
                                    Justified side = Justified::Left);

// The other way round: what a client receives of these frames, mono of the left ones.
std::vector<BYTE> ClientBytes(const WAVEFORMATEX& format, const std::vector<simulator::Frame>& frames,
                              Justified side = Justified::Left);

// `count` frames of a recognisable pattern.
std::vector<simulator::Frame> NoiseFrames(size_t count, unsigned seed = 1);
