// A WAV file that lies in memory.
#pragma once

#include <windows.h>
#include <mmsystem.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace front {

struct WaveSound {
    std::vector<BYTE> Format;  // a WAVEFORMATEX with its cbSize bytes
    std::vector<char> Samples;
};

// Nothing when the bytes are no whole WAV file with a format and samples. With `size` unknown, as for
// a sound that a program has in its memory, the file's own length is believed.
inline constexpr size_t UnknownSize = static_cast<size_t>(-1);
std::optional<WaveSound> ParseWaveImage(const BYTE* image, size_t size);

}  // namespace front
