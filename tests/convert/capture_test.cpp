// From the slots that the card records to the client's samples.
#include "convert/capture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "tests/support/wave_player.h"

namespace {

using namespace kestvox;

std::vector<int32_t> RandomSlots(size_t count, unsigned seed = 1) {
    const std::vector<BYTE> bytes = Pattern(count * 4, seed);
    std::vector<int32_t> slots(count);
    if (count != 0) {
        memcpy(slots.data(), bytes.data(), bytes.size());
    }
    return slots;
}

std::vector<int> Dither(const std::vector<int32_t>& slots, int bits, uint32_t type, unsigned channels,
                        DitherState& state) {
    if (bits == 8) {
        std::vector<uint8_t> samples(slots.size());
        DitherCapture8(samples.data(), slots.data(), slots.size(), type, channels, state);
        return {samples.begin(), samples.end()};
    }
    std::vector<int16_t> samples(slots.size());
    DitherCapture16(samples.data(), slots.data(), slots.size(), type, channels, state);
    return {samples.begin(), samples.end()};
}

std::vector<int> Dither(const std::vector<int32_t>& slots, int bits, uint32_t type, unsigned channels = 1) {
    DitherState state = {};
    return Dither(slots, bits, type, channels, state);
}

TEST(Dither, SilenceGivesTheKnownSequences) {
    struct Case {
        int Bits;
        uint32_t Type;
        std::vector<int> Samples;
        uint32_t Random;
        int32_t Error;
    };
    const Case cases[] = {
        {16, DitherRectangular, {0, 0, -1, -1, -1, 0}, 319818298, 0},
        {16, DitherRectangularShaped, {0, 0, -1, 0, -1, 0}, 319818298, 20480},
        {16, DitherTriangular, {0, -1, -1, -1, 0, -1}, 4038919332, 0},
        {16, DitherTriangularShaped, {0, -1, 0, -1, 1, -1}, 4038919332, 26624},
        {8, DitherRectangular, {128, 128, 127, 127, 127, 128}, 319818298, 0},
        {8, DitherTriangularShaped, {128, 127, 128, 127, 129, 127}, 4038919332, 6815744},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::Message() << test.Bits << " bits, type " << test.Type);
        DitherState state = {};
        EXPECT_EQ(Dither(std::vector<int32_t>(6), test.Bits, test.Type, 1, state), test.Samples);
        EXPECT_EQ(state.Random, test.Random);
        EXPECT_EQ(state.ShapingError[0], test.Error);
        EXPECT_EQ(state.ShapingError[1], 0);
    }
}

TEST(Dither, EndsOfTheRangeDoNotOverflow) {
    constexpr int32_t Highest = 0x7FFFFFFF;
    constexpr int32_t Lowest = -0x7FFFFFFF - 1;
    for (uint32_t type = DitherRectangular; type <= DitherTriangularShaped; ++type) {
        SCOPED_TRACE(type);
        // Dither takes the highest value down by a step at most (its own truncation is one more), and
        // never across the range; shaping adds up to a step of its own.
        for (const int sample : Dither(std::vector<int32_t>(5000, Highest), 16, type)) {
            ASSERT_GE(sample, 32765);
        }
        for (const int sample : Dither(std::vector<int32_t>(5000, Lowest), 16, type)) {
            ASSERT_LE(sample, -32766);
        }
        for (const int sample : Dither(std::vector<int32_t>(5000, Highest), 8, type)) {
            ASSERT_GE(sample, 253);
        }
        for (const int sample : Dither(std::vector<int32_t>(5000, Lowest), 8, type)) {
            ASSERT_LE(sample, 2);
        }
    }
    // The first draw is positive, the third negative.
    EXPECT_EQ(Dither({Highest, Highest, Lowest, Lowest}, 16, DitherRectangular),
              (std::vector<int>{32767, 32767, -32768, -32768}));
    EXPECT_EQ(Dither({Highest, Highest, Lowest, Lowest}, 8, DitherRectangular),
              (std::vector<int>{255, 255, 0, 0}));
}

// What the shaping carries on after a sample at either end of the range.
TEST(Dither, SaturationLeavesTheErrorOfTheValueThatWasWritten) {
    DitherState state = {};
    Dither({0x7FFFFFFF}, 16, DitherRectangularShaped, 1, state);
    EXPECT_EQ(state.ShapingError[0], 0xFFFF / 2);
    state = {0, {-0x10000, 0}};  // takes the lowest value out of the range
    Dither({-0x7FFFFFFF - 1}, 16, DitherRectangularShaped, 1, state);
    EXPECT_EQ(state.ShapingError[0], -0x8000);
}

TEST(Dither, EachChannelCarriesItsOwnError) {
    const std::vector<int32_t> slots = RandomSlots(400);
    for (const uint32_t type : {DitherRectangularShaped, DitherTriangularShaped}) {
        SCOPED_TRACE(type);
        // The left channel does not hear of the right one: other samples there, the same draws.
        std::vector<int32_t> other = RandomSlots(400, 2);
        for (size_t i = 0; i < slots.size(); i += 2) {
            other[i] = slots[i];
        }
        DitherState first = {};
        DitherState second = {};
        const std::vector<int> one = Dither(slots, 16, type, 2, first);
        const std::vector<int> two = Dither(other, 16, type, 2, second);
        for (size_t i = 0; i < slots.size(); i += 2) {
            ASSERT_EQ(one[i], two[i]) << i;
        }
        EXPECT_EQ(first.ShapingError[0], second.ShapingError[0]);
        EXPECT_NE(first.ShapingError[1], second.ShapingError[1]);

        // A mono stream knows one error only.
        DitherState mono = {7, {11, 4711}};
        Dither(slots, 16, type, 1, mono);
        EXPECT_EQ(mono.ShapingError[1], 4711);
        EXPECT_NE(mono.ShapingError[0], 11);
    }
}

TEST(Dither, UnknownTypesTruncate) {
    const std::vector<int32_t> slots = {0x12345678, -1, 0x00FFFFFF, -0x01000000, 0x7FFFFFFF, -0x7FFFFFFF - 1};
    for (const uint32_t type : {0u, 5u, 0xFFFFFFFFu}) {
        for (const unsigned channels : {1u, 2u}) {
            DitherState state = {99, {5, 6}};
            EXPECT_EQ(Dither(slots, 16, type, channels, state),
                      (std::vector<int>{0x1234, -1, 0xFF, -0x100, 32767, -32768}));
            EXPECT_EQ(Dither(slots, 8, type, channels, state),
                      (std::vector<int>{0x12 + 128, 127, 128, 127, 255, 0}));
            EXPECT_EQ(state.Random, 99u);
            EXPECT_EQ(state.ShapingError[0], 5);
            EXPECT_EQ(state.ShapingError[1], 6);
        }
    }
}

}  // namespace
