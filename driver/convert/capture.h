// From the 32-bit slots that the card records, sample left-justified, to the client's layout. Channels
// stay interleaved. Every routine reads and writes exactly `count` samples; buffers do not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestvox {

// Writes the top three bytes of each slot, least significant first: no rounding, no dither.
void PackCapture24(uint8_t* destination, const uint32_t* source, size_t count);

// Values of the `DitherADC` setting. A draw spans half an output step either side of zero.
enum DitherType : uint32_t {
    NoDither = 0,
    DitherRectangular = 1,  // one draw
    DitherRectangularShaped = 2,
    DitherTriangular = 3,  // the sum of two draws
    DitherTriangularShaped = 4,
};

// What a stream carries from one buffer to the next; zero at first and after a reset.
struct DitherState {
    uint32_t Random;          // linear congruential generator
    int32_t ShapingError[2];  // of the left or only channel, and of the right one
};

// Whole frames only: every buffer begins with the left channel. A type outside 1 to 4 truncates and
// leaves the state alone; a mono stream never touches the second error.
// 8-bit samples are unsigned, 128 = silence. The destination needs no alignment.
void DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                    unsigned channels, DitherState& state);
void DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                     unsigned channels, DitherState& state);

}  // namespace kestvox
