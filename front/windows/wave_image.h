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

// Empty when the bytes are not a whole WAV file with a format and samples. When `size` is UnknownSize, as for
// a sound in a program's memory, the length that the file itself states is taken.
inline constexpr size_t UnknownSize = static_cast<size_t>(-1);
std::optional<WaveSound> ParseWaveImage(const BYTE* image, size_t size);

}  // namespace front
