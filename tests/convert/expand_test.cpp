// From application samples to the card's.
#include "convert/expand.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/wave_player.h"
#include "tests/support/wave_sound.h"

namespace {

using namespace kestvox;

TEST(Companding, TablesAreThoseOfTheRule) {
    for (int code = 0; code < 256; ++code) {
        EXPECT_EQ(ALawTable.Samples[code], ALawSample(static_cast<BYTE>(code))) << code;
        EXPECT_EQ(MuLawTable.Samples[code], MuLawSample(static_cast<BYTE>(code))) << code;
    }
    struct Value {
        int Code;
        int Sample;
    };
    for (const Value& value :
         {Value{0x00, -32124}, {0x80, 32124}, {0x7F, 0}, {0xFF, 0}, {0x7E, -8}, {0x0F, -16764}}) {
        EXPECT_EQ(MuLawTable.Samples[value.Code], value.Sample) << value.Code;
    }
    for (const Value& value : {Value{0xD5, 8},
                               {0x55, -8},
                               {0x80, 5504},
                               {0x00, -5504},
                               {0xAA, 32256},
                               {0x2A, -32256},
                               {0xFF, 848}}) {
        EXPECT_EQ(ALawTable.Samples[value.Code], value.Sample) << value.Code;
    }
}

TEST(Companding, EveryCountWritesSoManySamples) {
    const std::vector<BYTE> source = Pattern(16);
    for (size_t count = 0; count <= 9; ++count) {
        std::vector<int16_t> expected(12, 0x5A5A);
        for (size_t i = 0; i < count; ++i) {
            expected[i] = static_cast<int16_t>(MuLawSample(source[i]));
        }
        std::vector<int16_t> samples(12, 0x5A5A);
        ExpandCompanded(samples.data(), source.data(), MuLawTable, count);
        EXPECT_EQ(samples, expected) << count;
    }
}

TEST(Packed24, ASampleStandsAtTheTopOfItsSlot) {
    const BYTE source[] = {0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x80};
    uint32_t slots[3] = {};
    ExpandPacked24(slots, source, 3);
    EXPECT_EQ(slots[0], 0x12345600u);
    EXPECT_EQ(slots[1], 0xFFFFFF00u);
    EXPECT_EQ(slots[2], 0x80000000u);
}

// Each count at each alignment, in a block that ends with the last byte, so that a reading past it is
// noticed by whoever watches memory.
TEST(Packed24, EveryCountIsLikeOneSampleAtATime) {
    const WaveFormat format = PcmFormat(44100, 1, 24);
    for (size_t count = 0; count <= 13; ++count) {
        for (size_t shift = 0; shift < 4; ++shift) {
            std::vector<BYTE> block = Pattern(shift + 3 * count, static_cast<unsigned>(count + 1));
            const std::vector<BYTE> source(block.begin() + static_cast<long>(shift), block.end());
            std::vector<uint32_t> expected;
            for (const simulator::Frame& frame : Sound(format, source)) {
                expected.push_back(static_cast<uint32_t>(frame.Left));
            }
            expected.resize(count + 3, 0x5A5A5A5A);
            std::vector<uint32_t> slots(count + 3, 0x5A5A5A5A);
            ExpandPacked24(slots.data(), block.data() + shift, count);
            EXPECT_EQ(slots, expected) << count << " samples, shifted by " << shift;
        }
    }
}

}  // namespace
