#include "convert/expand.h"

namespace kestvox {

namespace {

// Both laws: a sign, a 3-bit segment and a 4-bit step, sent with some bits inverted.

// A-law sends every even bit inverted; a set sign bit is positive. 13-bit values, so x 8.
constexpr int DecodeALaw(int code) {
    const int bits = code ^ 0x55;
    const int segment = (bits >> 4) & 7;
    const int step = bits & 0x0F;
    // Half a step is added; segments above the first have a leading one and double each time.
    const int magnitude = segment == 0 ? (step << 4) + 8 : ((step << 4) + 0x108) << (segment - 1);
    return (bits & 0x80) != 0 ? magnitude : -magnitude;
}

// Mu-law sends every bit inverted; a set sign bit (after that) is negative. 14-bit values, so x 4.
constexpr int DecodeMuLaw(int code) {
    const int bits = ~code & 0xFF;
    const int segment = (bits >> 4) & 7;
    const int step = bits & 0x0F;
    const int magnitude = (((step << 3) + 0x84) << segment) - 0x84;
    return (bits & 0x80) != 0 ? -magnitude : magnitude;
}

constexpr CompandingTable Generate(int (*decode)(int)) {
    CompandingTable table = {};
    for (int code = 0; code < 256; ++code) {
        table.Samples[code] = static_cast<int16_t>(decode(code));
    }
    return table;
}

}  // namespace

constexpr CompandingTable ALawTable = Generate(DecodeALaw);
constexpr CompandingTable MuLawTable = Generate(DecodeMuLaw);

void ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table,
                     size_t count) {
    for (size_t i = 0; i < count; ++i) {
        destination[i] = table.Samples[source[i]];
    }
}

}  // namespace kestvox
