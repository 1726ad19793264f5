// Every set of conversion routines does what the rule says of one sample after the other: for each count, at
// changing alignments, without a byte outside its buffers.
#include "convert/routines.h"

#include <cstring>
#include <numeric>

#include "tests/support/wave_player.h"
#include "tests/support/wave_sound.h"

namespace {

using namespace kestvox;

constexpr size_t MostSamples = 70;
constexpr size_t Alignments = 16;
constexpr BYTE Guard = 0x5A;

// One sample, of that index in the buffer, and `count` samples. The state is that of a dither.
using Rule = std::function<void(BYTE* destination, const BYTE* source, size_t index, DitherState& state)>;
using Convert = std::function<void(BYTE* destination, const BYTE* source, size_t count, DitherState& state)>;

// What a routine may rely on, by the bytes of a sample.
constexpr size_t AlignmentOf(size_t size) {
    return size == 3 ? 1 : size;
}

// What stands before and behind the destination is watched for writing; the source ends with its last byte,
// so that an address checker notices a reading past it.
void ExpectByRule(size_t sourceSize, size_t destinationSize, const Rule& rule, const Convert& convert,
                  const std::vector<BYTE>& samples, size_t count, const DitherState& start = {}) {
    for (const size_t alignment : {size_t{0}, 1 + count % (Alignments - 1)}) {
        const size_t from = alignment - alignment % AlignmentOf(sourceSize);
        const size_t furthest = Alignments - 1 - alignment;
        const size_t to = furthest - furthest % AlignmentOf(destinationSize);
        std::vector<BYTE> source(from + count * sourceSize);
        std::copy_n(samples.begin(), count * sourceSize, source.begin() + static_cast<ptrdiff_t>(from));
        std::vector<BYTE> expected(to + count * destinationSize + Alignments, Guard);
        std::vector<BYTE> converted = expected;
        DitherState expectedState = start;
        DitherState state = start;
        for (size_t i = 0; i < count; ++i) {
            rule(&expected[to + i * destinationSize], &source[from + i * sourceSize], i, expectedState);
        }
        convert(converted.data() + to, source.data() + from, count, state);
        ASSERT_EQ(converted, expected) << count << " samples from " << from << " to " << to;
        ASSERT_EQ(memcmp(&state, &expectedState, sizeof state), 0) << count;
    }
}

// The routines of one set.
struct RoutineSet {
    const char* Name;
    decltype(&portable::ExpandCompanded) ExpandCompanded;
    decltype(&portable::ExpandPacked24) ExpandPacked24;
    decltype(&portable::PackCapture24) PackCapture24;
    decltype(&portable::DitherCapture8) DitherCapture8;
    decltype(&portable::DitherCapture16) DitherCapture16;
};

// Those that this processor can do.
std::vector<RoutineSet> Sets() {
    std::vector<RoutineSet> sets;
    sets.push_back({"portable", portable::ExpandCompanded, portable::ExpandPacked24, portable::PackCapture24,
                    portable::DitherCapture8, portable::DitherCapture16});
    if (vector::IsSupported()) {
        sets.push_back({"vector", vector::ExpandCompanded, vector::ExpandPacked24, vector::PackCapture24,
                        vector::DitherCapture8, vector::DitherCapture16});
    }
    return sets;
}

TEST(RoutinesTest, ExpandEveryCode) {
    const WaveFormat aLaw = TaggedFormat(WAVE_FORMAT_ALAW, 8000, 1, 8);
    const WaveFormat muLaw = TaggedFormat(WAVE_FORMAT_MULAW, 8000, 1, 8);
    std::vector<BYTE> codes(256);
    std::iota(codes.begin(), codes.end(), BYTE{0});
    for (const RoutineSet& set : Sets()) {
        SCOPED_TRACE(set.Name);
        for (const auto& [table, law] : {std::pair(&ALawTable, aLaw), std::pair(&MuLawTable, muLaw)}) {
            const std::vector<simulator::Frame> sound = Sound(law, codes);
            const Rule rule = [&sound](BYTE* to, const BYTE* from, size_t, DitherState&) {
                const auto value = static_cast<int16_t>(sound[*from].Left >> 16);
                memcpy(to, &value, sizeof value);
            };
            const Convert convert = [&set, values = table](BYTE* to, const BYTE* from, size_t count,
                                                           DitherState&) {
                set.ExpandCompanded(reinterpret_cast<int16_t*>(to), from, *values, count);
            };
            for (size_t count = 0; count <= codes.size(); ++count) {
                ExpectByRule(1, 2, rule, convert, codes, count);
            }
        }
    }
    const auto sample = [](const WaveFormat& law, BYTE code) { return Sound(law, {code})[0].Left >> 16; };
    EXPECT_EQ(sample(muLaw, 0x00), -32124);
    EXPECT_EQ(sample(muLaw, 0x7F), 0);
    EXPECT_EQ(sample(aLaw, 0xD5), 8);
    EXPECT_EQ(sample(aLaw, 0xAA), 32256);
}

TEST(RoutinesTest, ExpandAndPack24) {
    const Rule expanded = [](BYTE* to, const BYTE* from, size_t, DitherState&) {
        const BYTE slot[] = {0, from[0], from[1], from[2]};
        memcpy(to, slot, sizeof slot);
    };
    const Rule packed = [](BYTE* to, const BYTE* from, size_t, DitherState&) { memcpy(to, from + 1, 3); };
    for (const RoutineSet& set : Sets()) {
        SCOPED_TRACE(set.Name);
        const Convert expand = [&set](BYTE* to, const BYTE* from, size_t count, DitherState&) {
            set.ExpandPacked24(reinterpret_cast<uint32_t*>(to), from, count);
        };
        const Convert pack = [&set](BYTE* to, const BYTE* from, size_t count, DitherState&) {
            set.PackCapture24(to, reinterpret_cast<const uint32_t*>(from), count);
        };
        for (size_t count = 0; count <= MostSamples; ++count) {
            ExpectByRule(3, 4, expanded, expand, Pattern(MostSamples * 3), count);
            ExpectByRule(4, 3, packed, pack, Pattern(MostSamples * 4), count);
        }
    }
}

// --- dither --------------------------------------------------------------------------------------

struct DitherKind {
    int Bits;
    uint32_t Type;
    unsigned Channels;
};

// One sample by the rule, in wide arithmetic; only sums that the rule wraps at 32 bits do so.
int64_t DitherByRule(const DitherKind& kind, int32_t sample, size_t channel, DitherState& state) {
    const int shift = 32 - kind.Bits;
    if (kind.Type < DitherRectangular || kind.Type > DitherTriangularShaped) {
        return sample >> shift;
    }
    const bool shaped = kind.Type == DitherRectangularShaped || kind.Type == DitherTriangularShaped;
    const int32_t carried = state.ShapingError[shaped ? channel : 0];
    int64_t dither = carried;
    for (int draws = kind.Type < DitherTriangular ? 1 : 2; draws > 0; --draws) {
        state.Random = state.Random * 2147001325u + 715136305u;
        dither += static_cast<int32_t>(state.Random) >> kind.Bits;
    }
    int64_t value = sample + int64_t{static_cast<int32_t>(dither)};
    if (value != static_cast<int32_t>(value)) {
        value = sample >= 0 ? 0x7FFFFF00 : -0x80000000LL;
    }
    if (shaped) {
        const int64_t written = value >> shift << shift;
        state.ShapingError[channel] = static_cast<int32_t>(sample + int64_t{carried} - written) >> 1;
    }
    return value >> shift;
}

// Recordings that stay within the range, that fill it, and that lie at its ends for a while.
std::vector<std::vector<BYTE>> Recordings(size_t samples) {
    std::vector<std::vector<BYTE>> recordings(3, Pattern(samples * 4));
    for (size_t i = 0; i < samples; ++i) {
        int32_t slot = 0;
        memcpy(&slot, &recordings[1][4 * i], sizeof slot);
        const int32_t quiet = slot >> 3;
        const int32_t loud = (slot >> 8) ^ (i % 3 == 0 ? 0x7FFFFFFF : -0x7FFFFFFF - 1);
        memcpy(&recordings[0][4 * i], &quiet, sizeof quiet);
        memcpy(&recordings[2][4 * i], i % 200 < 90 ? &quiet : &loud, sizeof loud);
    }
    return recordings;
}

// Every count up to a few blocks, and one long enough for every way through a buffer.
void ExpectDitheredByRule(const RoutineSet& set, const DitherKind& kind, const std::vector<BYTE>& recording,
                          const DitherState& start) {
    const auto size = static_cast<size_t>(kind.Bits / 8);
    const Rule rule = [&](BYTE* to, const BYTE* from, size_t index, DitherState& state) {
        int32_t slot = 0;
        memcpy(&slot, from, sizeof slot);
        const int64_t sample = DitherByRule(kind, slot, index % kind.Channels, state) + (size == 1 ? 128 : 0);
        memcpy(to, &sample, size);
    };
    const Convert convert = [&](BYTE* to, const BYTE* from, size_t count, DitherState& state) {
        const auto* slots = reinterpret_cast<const int32_t*>(from);
        if (size == 1) {
            set.DitherCapture8(to, slots, count, kind.Type, kind.Channels, state);
        } else {
            set.DitherCapture16(reinterpret_cast<int16_t*>(to), slots, count, kind.Type, kind.Channels,
                                state);
        }
    };
    for (size_t count = 0; count <= MostSamples; count += kind.Channels) {
        ExpectByRule(4, size, rule, convert, recording, count, start);
    }
    ExpectByRule(4, size, rule, convert, recording, recording.size() / 4, start);
}

void ExpectDitheredByRule(const RoutineSet& set, const std::vector<BYTE>& recording) {
    const DitherState starts[] = {// that may be left by the buffer before, whatever its type was
                                  {0, {0, 0}},
                                  {1, {0x40000000, -0x40000000}},
                                  {0xFFFFFFFF, {-0x7FFFFFFF - 1, 0x7FFFFFFF}}};
    for (const uint32_t type : {0u, 1u, 2u, 3u, 4u, 5u, 0xFFFFFFFFu}) {
        for (const auto& [bits, channels] : {std::pair{8, 1u}, {8, 2u}, {16, 1u}, {16, 2u}}) {
            SCOPED_TRACE(testing::Message() << bits << " bits, type " << type << ", " << channels);
            for (const DitherState& start : starts) {
                ExpectDitheredByRule(set, {bits, type, channels}, recording, start);
            }
        }
    }
}

TEST(RoutinesTest, DitherRecordings) {
    for (const RoutineSet& set : Sets()) {
        SCOPED_TRACE(set.Name);
        for (const std::vector<BYTE>& recording : Recordings(3000)) {
            ExpectDitheredByRule(set, recording);
        }
    }
}

}  // namespace
