// Every set of conversion routines does what the plain one does with one frame after the other: for each
// count, at each alignment, without a byte outside its buffers.
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
    size_t Frame;  // samples that belong together
};

void ExpectLikeOneByOne(const Layout& layout, const Convert& plain, const Convert& convert,
                        const std::vector<BYTE>& samples) {
    for (size_t count = 0; count <= MostSamples; count += layout.Frame) {
        const std::vector<BYTE> data(samples.begin(),
                                     samples.begin() + static_cast<ptrdiff_t>(count * layout.SourceSize));
        for (size_t alignment = 0; alignment < Alignments; ++alignment) {
            const size_t from = alignment / layout.SourceAlignment * layout.SourceAlignment;
            const size_t to =
                (Alignments - 1 - alignment) / layout.DestinationAlignment * layout.DestinationAlignment;
            Buffer source = Buffer::Holding(data, from);
            Buffer expected(count * layout.DestinationSize, to, Alignments);
            Buffer converted = expected;
            for (size_t i = 0; i < count; i += layout.Frame) {
                plain(expected.As<BYTE>() + i * layout.DestinationSize,
                      source.As<BYTE>() + i * layout.SourceSize, layout.Frame);
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

Convert ExpandingCompanded(const RoutineSet& set, const CompandingTable& table) {
    return [&set, &table](BYTE* to, const BYTE* from, size_t count) {
        set.ExpandCompanded(reinterpret_cast<int16_t*>(to), from, table, count);
    };
}

TEST_P(Routines, ExpandEveryCode) {
    std::vector<BYTE> codes(256);
    for (size_t i = 0; i < codes.size(); ++i) {
        codes[i] = static_cast<BYTE>(i);
    }
    for (const CompandingTable* table : {&ALawTable, &MuLawTable}) {
        const Layout layout = {1, 2, 1, 2, 1};
        ExpectLikeOneByOne(layout, ExpandingCompanded(PortableSet, *table),
                           ExpandingCompanded(GetParam(), *table), Pattern(MostSamples));
        int16_t samples[256];
        GetParam().ExpandCompanded(samples, codes.data(), *table, codes.size());
        EXPECT_EQ(memcmp(samples, table->Samples, sizeof samples), 0);
    }
}

TEST(Companding, TablesAreThoseOfTheRule) {
    for (int code = 0; code < 256; ++code) {
        EXPECT_EQ(ALawTable.Samples[code], ALawSample(static_cast<BYTE>(code))) << code;
        EXPECT_EQ(MuLawTable.Samples[code], MuLawSample(static_cast<BYTE>(code))) << code;
    }
    EXPECT_EQ(MuLawTable.Samples[0x00], -32124);
    EXPECT_EQ(MuLawTable.Samples[0x7F], 0);
    EXPECT_EQ(ALawTable.Samples[0xD5], 8);
    EXPECT_EQ(ALawTable.Samples[0xAA], 32256);
}

TEST_P(Routines, ExpandPacked24) {
    const auto expanding = [](const RoutineSet& set) -> Convert {
        return [&set](BYTE* to, const BYTE* from, size_t count) {
            set.ExpandPacked24(reinterpret_cast<uint32_t*>(to), from, count);
        };
    };
    ExpectLikeOneByOne({3, 4, 1, 4, 1}, expanding(PortableSet), expanding(GetParam()),
                       Pattern(MostSamples * 3));
}

TEST_P(Routines, PackCapture24) {
    const auto packing = [](const RoutineSet& set) -> Convert {
        return [&set](BYTE* to, const BYTE* from, size_t count) {
            set.PackCapture24(to, reinterpret_cast<const uint32_t*>(from), count);
        };
    };
    ExpectLikeOneByOne({4, 3, 4, 1, 1}, packing(PortableSet), packing(GetParam()), Pattern(MostSamples * 4));
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
        for (uint32_t type = NoDither; type <= DitherTriangularShaped; ++type) {
            kinds.push_back({bits, type, 1});
            kinds.push_back({bits, type, 2});
        }
    }
    return kinds;
}

void Dither(const RoutineSet& set, const DitherKind& kind, BYTE* to, const BYTE* from, size_t count,
            DitherState& state) {
    const auto* slots = reinterpret_cast<const int32_t*>(from);
    if (kind.Bits == 8) {
        set.DitherCapture8(to, slots, count, kind.Type, kind.Channels, state);
    } else {
        set.DitherCapture16(reinterpret_cast<int16_t*>(to), slots, count, kind.Type, kind.Channels, state);
    }
}

// Recordings that stay within the range, that fill it, and that lie at its ends for a while.
std::vector<std::vector<BYTE>> Recordings(size_t samples) {
    std::vector<std::vector<BYTE>> recordings(3, Pattern(samples * 4));
    for (size_t i = 0; i < samples; ++i) {
        int32_t slot = 0;
        memcpy(&slot, &recordings[0][i * 4], sizeof slot);
        const int32_t quiet = slot >> 3;
        memcpy(&recordings[0][i * 4], &quiet, sizeof quiet);
        const int32_t loud = i % 200 < 90 ? quiet : (slot >> 8) ^ (i % 3 == 0 ? 0x7FFFFFFF : -0x7FFFFFFF - 1);
        memcpy(&recordings[2][i * 4], &loud, sizeof loud);
    }
    return recordings;
}

void ExpectSameDither(const RoutineSet& set, const DitherKind& kind, const std::vector<BYTE>& recording,
                      size_t count, const DitherState& start) {
    DitherState expectedState = start;
    DitherState state = start;
    const size_t offset = count % Alignments;
    std::vector<BYTE> expected(offset + count * 2 + Alignments, Guard);
    std::vector<BYTE> converted = expected;
    Dither(PortableSet, kind, expected.data() + offset, recording.data(), count, expectedState);
    Dither(set, kind, converted.data() + offset, recording.data(), count, state);
    ASSERT_EQ(converted, expected) << count;
    ASSERT_EQ(memcmp(&state, &expectedState, sizeof state), 0) << count;
}

// Every count up to a few blocks, and one long enough for every way through a buffer, from any state that may
// be left by the buffer before.
TEST_P(Routines, DitherRecordings) {
    constexpr size_t Samples = 3000;
    const DitherState starts[] = {
        {0, {0, 0}}, {1, {0x40000000, -0x40000000}}, {0xFFFFFFFF, {-0x7FFFFFFF - 1, 0x7FFFFFFF}}};
    for (const std::vector<BYTE>& recording : Recordings(Samples)) {
        for (const DitherKind& kind : DitherKinds()) {
            SCOPED_TRACE(testing::Message()
                         << kind.Bits << " bits, type " << kind.Type << ", " << kind.Channels);
            for (const DitherState& start : starts) {
                ExpectSameDither(GetParam(), kind, recording, Samples, start);
                for (size_t count = 0; count <= MostSamples; count += kind.Channels) {
                    ExpectSameDither(GetParam(), kind, recording, count, start);
                }
            }
        }
    }
}

}  // namespace
