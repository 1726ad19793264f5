// A WAV file as a card's connector carries it.
#pragma once

#include <windows.h>

#include <optional>
#include <vector>

#include "simulator/channels/frame.h"

namespace front {

struct SoundFrames {
    unsigned Rate;  // Hz
    std::vector<simulator::Frame> Frames;
};

// Full scale at 32 bits; mono on both sides. Nothing when the file is not there or is not PCM of one or two
// channels.
std::optional<SoundFrames> ReadSoundFrames(const WCHAR* path);

}  // namespace front
