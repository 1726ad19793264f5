// From application samples to samples that the card plays. Channels stay interleaved: every routine
// works on a flat run of samples. Source and destination do not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kestvox {

// A companding law. A code is a sign, a 3-bit segment and a 4-bit step; within a segment the sample grows by
// the same amount from step to step. Samples are scaled to 16 bits.
struct CompandingTable {
    uint8_t InvertedSteps;  // bits of the step that are sent inverted
    int16_t Origin[16];     // sample at step 0, by sign and segment as sent (the code's upper four bits)
    int16_t StepSize[16];
    int16_t Samples[256];  // by code
};
extern const CompandingTable ALawTable;   // ITU-T G.711, full scale +-32256
extern const CompandingTable MuLawTable;  // ITU-T G.711, full scale +-32124

// Writes `count` 16-bit samples: the table's sample for each of `count` codes. The destination is 2-byte
// aligned.
void ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table, size_t count);

// Writes `count` 32-bit little-endian slots: each packed 3-byte sample in the upper three bytes, zero in
// the lowest. Reads exactly 3 x `count` bytes at any alignment; the destination is 4-byte aligned.
void ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count);

}  // namespace kestvox
