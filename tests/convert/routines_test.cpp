// Every set of conversion routines does what the rule says of one sample after the other: for each count, at
// each alignment, without a byte outside its buffers.
#include "convert/routines.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <ostream>
#include <vector>

#include "tests/support/wave_player.h"
#include "tests/support/wave_sound.h"

namespace {

using namespace kestvox;

constexpr size_t MostSamples = 70;
constexpr size_t Alignments = 16;
constexpr BYTE Guard = 0x5A;

// Begins at an offset from a 16-byte boundary. What stands before and behind it is watched for writing; the
// block of a source ends with its last byte, so that an address checker notices a reading past it.
class Buffer {
public:
    Buffer(size_t size, size_t offset, size_t behind)
        : bytes_(offset + size + behind, Guard), offset_(offset) {}
    static Buffer Holding(const std::vector<BYTE>& data, size_t offset) {
        Buffer buffer(data.size(), offset, 0);
        std::copy(data.begin(), data.end(), buffer.bytes_.begin() + static_cast<ptrdiff_t>(offset));
        return buffer;
    }

    template <typename T>
    T* As() {
        return reinterpret_cast<T*>(bytes_.data() + offset_);
    }
    const std::vector<BYTE>& Bytes() const { return bytes_; }

private:
    std::vector<BYTE> bytes_;
    size_t offset_;
};

// From `count` samples at the source to as many at the destination.
using Convert = std::function<void(BYTE* destination, const BYTE* source, size_t count)>;

struct Layout {
    size_t SourceSize;  // bytes a sample
    size_t DestinationSize;
    size_t SourceAlignment;  // what the routine may rely on
    size_t DestinationAlignment;
};

void ExpectEachByRule(const Layout& layout, const Convert& rule, const Convert& convert,
                      const std::vector<BYTE>& samples) {
    for (size_t count = 0; count <= MostSamples; ++count) {
        const std::vector<BYTE> data(samples.begin(),
                                     samples.begin() + static_cast<ptrdiff_t>(count * layout.SourceSize));
        for (size_t alignment = 0; alignment < Alignments; ++alignment) {
            const size_t from = alignment / layout.SourceAlignment * layout.SourceAlignment;
            const size_t to =
                (Alignments - 1 - alignment) / layout.DestinationAlignment * layout.DestinationAlignment;
            Buffer source = Buffer::Holding(data, from);
            Buffer expected(count * layout.DestinationSize, to, Alignments);
            Buffer converted = expected;
            for (size_t i = 0; i < count; ++i) {
                rule(expected.As<BYTE>() + i * layout.DestinationSize,
                     source.As<BYTE>() + i * layout.SourceSize, 1);
            }
            convert(converted.As<BYTE>(), source.As<BYTE>(), count);
            ASSERT_EQ(converted.Bytes(), expected.Bytes())
                << count << " samples from " << from << " to " << to;
        }
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

constexpr RoutineSet PortableSet = {"portable",
                                    portable::ExpandCompanded,
                                    portable::ExpandPacked24,
                                    portable::PackCapture24,
                                    portable::DitherCapture8,
                                    portable::DitherCapture16};
constexpr RoutineSet VectorSet = {"vector",
                                  vector::ExpandCompanded,
                                  vector::ExpandPacked24,
                                  vector::PackCapture24,
                                  vector::DitherCapture8,
                                  vector::DitherCapture16};

void PrintTo(const RoutineSet& set, std::ostream* stream) {
    *stream << set.Name;
}

class Routines : public testing::TestWithParam<RoutineSet> {
protected:
    void SetUp() override {
        if (GetParam().ExpandPacked24 == VectorSet.ExpandPacked24 && !vector::IsSupported()) {
            GTEST_SKIP() << "not on this processor";
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Sets, Routines, testing::Values(PortableSet, VectorSet),
                         [](const auto& test) { return test.param.Name; });

TEST_P(Routines, ExpandEveryCode) {
    std::vector<BYTE> codes(256);
    for (size_t i = 0; i < codes.size(); ++i) {
        codes[i] = static_cast<BYTE>(i);
    }
    for (const auto& [table, rule] :
         {std::pair(&ALawTable, &ALawSample), std::pair(&MuLawTable, &MuLawSample)}) {
        ExpectEachByRule(
            {1, 2, 1, 2},
            [rule](BYTE* to, const BYTE* from, size_t) {
                const auto sample = static_cast<int16_t>(rule(*from));
                memcpy(to, &sample, sizeof sample);
            },
            [table](BYTE* to, const BYTE* from, size_t count) {
                GetParam().ExpandCompanded(reinterpret_cast<int16_t*>(to), from, *table, count);
            },
            Pattern(MostSamples));
        int16_t samples[256];
        GetParam().ExpandCompanded(samples, codes.data(), *table, codes.size());
        for (const BYTE code : codes) {
            EXPECT_EQ(samples[code], rule(code)) << int{code};
        }
    }
    EXPECT_EQ(MuLawSample(0x00), -32124);
    EXPECT_EQ(MuLawSample(0x7F), 0);
    EXPECT_EQ(ALawSample(0xD5), 8);
    EXPECT_EQ(ALawSample(0xAA), 32256);
}

TEST_P(Routines, ExpandAndPack24) {
    ExpectEachByRule(
        {3, 4, 1, 4},
        [](BYTE* to, const BYTE* from, size_t) {
            const BYTE slot[] = {0, from[0], from[1], from[2]};
            memcpy(to, slot, sizeof slot);
        },
        [](BYTE* to, const BYTE* from, size_t count) {
            GetParam().ExpandPacked24(reinterpret_cast<uint32_t*>(to), from, count);
        },
        Pattern(MostSamples * 3));
    ExpectEachByRule(
        {4, 3, 4, 1}, [](BYTE* to, const BYTE* from, size_t) { memcpy(to, from + 1, 3); },
        [](BYTE* to, const BYTE* from, size_t count) {
            GetParam().PackCapture24(to, reinterpret_cast<const uint32_t*>(from), count);
        },
        Pattern(MostSamples * 4));
}

// --- dither --------------------------------------------------------------------------------------

struct DitherKind {
    int Bits;
    uint32_t Type;
    unsigned Channels;
};

std::vector<DitherKind> DitherKinds() {
    std::vector<DitherKind> kinds;
    for (const int bits : {8, 16}) {
        for (const uint32_t type : {0u, 1u, 2u, 3u, 4u, 5u, 0xFFFFFFFFu}) {
            kinds.push_back({bits, type, 1});
            kinds.push_back({bits, type, 2});
        }
    }
    return kinds;
}

// One sample by the rule, in wide arithmetic; only sums that the rule wraps at 32 bits do so.
int64_t DitherByRule(const DitherKind& kind, int32_t sample, size_t channel, DitherState& state) {
    const int shift = 32 - kind.Bits;
    if (kind.Type < DitherRectangular || kind.Type > DitherTriangularShaped) {
        return sample >> shift;
    }
    const bool shaped = kind.Type == DitherRectangularShaped || kind.Type == DitherTriangularShaped;
    const int32_t carried = state.ShapingError[channel];
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

void Dither(const RoutineSet& set, const DitherKind& kind, BYTE* to, const std::vector<int32_t>& slots,
            size_t count, DitherState& state) {
    if (kind.Bits == 8) {
        set.DitherCapture8(to, slots.data(), count, kind.Type, kind.Channels, state);
    } else {
        set.DitherCapture16(reinterpret_cast<int16_t*>(to), slots.data(), count, kind.Type, kind.Channels,
                            state);
    }
}

// Recordings that stay within the range, that fill it, and that lie at its ends for a while.
std::vector<std::vector<int32_t>> Recordings(size_t samples) {
    std::vector<std::vector<int32_t>> recordings(3, std::vector<int32_t>(samples));
    memcpy(recordings[1].data(), Pattern(samples * 4).data(), samples * 4);
    for (size_t i = 0; i < samples; ++i) {
        const int32_t slot = recordings[1][i];
        recordings[0][i] = slot >> 3;
        recordings[2][i] =
            i % 200 < 90 ? slot >> 3 : (slot >> 8) ^ (i % 3 == 0 ? 0x7FFFFFFF : -0x7FFFFFFF - 1);
    }
    return recordings;
}

void ExpectDitheredByRule(const RoutineSet& set, const DitherKind& kind,
                          const std::vector<int32_t>& recording, size_t count, const DitherState& start) {
    DitherState expectedState = start;
    DitherState state = start;
    const size_t offset = count % Alignments;
    std::vector<BYTE> expected(offset + count * 2 + Alignments, Guard);
    std::vector<BYTE> converted = expected;
    for (size_t i = 0; i < count; ++i) {
        const int64_t sample = DitherByRule(kind, recording[i], i % kind.Channels, expectedState);
        if (kind.Bits == 8) {
            expected[offset + i] = static_cast<BYTE>(sample + 128);
        } else {
            memcpy(&expected[offset + 2 * i], &sample, 2);
        }
    }
    Dither(set, kind, converted.data() + offset, recording, count, state);
    ASSERT_EQ(converted, expected) << count;
    ASSERT_EQ(memcmp(&state, &expectedState, sizeof state), 0) << count;
}

// Every count up to a few blocks, and one long enough for every way through a buffer, from any state that may
// be left by the buffer before.
TEST_P(Routines, DitherRecordings) {
    constexpr size_t Samples = 3000;
    const DitherState starts[] = {
        {0, {0, 0}}, {1, {0x40000000, -0x40000000}}, {0xFFFFFFFF, {-0x7FFFFFFF - 1, 0x7FFFFFFF}}};
    for (const std::vector<int32_t>& recording : Recordings(Samples)) {
        for (const DitherKind& kind : DitherKinds()) {
            SCOPED_TRACE(testing::Message()
                         << kind.Bits << " bits, type " << kind.Type << ", " << kind.Channels);
            for (DitherState start : starts) {
                if (kind.Type == DitherRectangular || kind.Type == DitherTriangular) {
                    start.ShapingError[0] = start.ShapingError[1] = 0;  // they leave none behind
                }
                ExpectDitheredByRule(GetParam(), kind, recording, Samples, start);
                for (size_t count = 0; count <= MostSamples; count += kind.Channels) {
                    ExpectDitheredByRule(GetParam(), kind, recording, count, start);
                }
            }
        }
    }
}

}  // namespace
