// Sizes that stand in a WAV file, in bytes.
#pragma once

#include <cstdint>

namespace kestvox {

constexpr uint32_t UnknownSize = 0xFFFFFFFF;  // of a chunk that had not ended when its head was written
constexpr uint32_t SmallestFormat = 16;       // a format chunk without cbSize

}  // namespace kestvox
