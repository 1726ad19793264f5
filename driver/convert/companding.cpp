#include "convert/routines.h"

namespace kestvox {

namespace {

constexpr unsigned Segments = 8;

// What the rule says of a segment: the magnitude at step 0, and from one step to the next.
struct Segment {
    int Origin;
    int StepSize;
};

// 13-bit values, so x 8. Half a step is added; segments above the first have a leading one and double each
// time.
constexpr Segment ALawSegment(unsigned number) {
    return number == 0 ? Segment{8, 16} : Segment{0x108 << (number - 1), 16 << (number - 1)};
}

// 14-bit values, so x 4. A bias of 33 is taken off again.
constexpr Segment MuLawSegment(unsigned number) {
    return {(0x84 << number) - 0x84, 8 << number};
}

// `inverted`: the bits of a code that are sent inverted, below the sign. A set sign bit is positive.
constexpr CompandingTable Generate(Segment (*rule)(unsigned), unsigned inverted) {
    CompandingTable table = {};
    table.InvertedSteps = inverted & 0x0F;
    for (unsigned sent = 0; sent < 2 * Segments; ++sent) {
        const Segment segment = rule((sent ^ inverted >> 4) % Segments);
        const int sign = sent < Segments ? -1 : 1;
        table.Origin[sent] = static_cast<int16_t>(sign * segment.Origin);
        table.StepSize[sent] = static_cast<int16_t>(sign * segment.StepSize);
    }
    for (unsigned code = 0; code < 256; ++code) {
        const int step = (code & 0x0F) ^ table.InvertedSteps;
        table.Samples[code] =
            static_cast<int16_t>(table.Origin[code >> 4] + step * table.StepSize[code >> 4]);
    }
    return table;
}

}  // namespace

constexpr CompandingTable ALawTable = Generate(ALawSegment, 0x55);
constexpr CompandingTable MuLawTable = Generate(MuLawSegment, 0x7F);

void portable::ExpandCompanded(int16_t* destination, const uint8_t* source, const CompandingTable& table,
                               size_t count) {
    for (size_t i = 0; i < count; ++i) {
        destination[i] = table.Samples[source[i]];
    }
}

}  // namespace kestvox
