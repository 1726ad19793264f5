// From application samples to the card's.
#include "convert/expand.h"

#include <gtest/gtest.h>

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

TEST(Packed24, ASampleStandsAtTheTopOfItsSlot) {
    const BYTE source[] = {0x56, 0x34, 0x12, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x80};
    uint32_t slots[3] = {};
    ExpandPacked24(slots, source, 3);
    EXPECT_EQ(slots[0], 0x12345600u);
    EXPECT_EQ(slots[1], 0xFFFFFF00u);
    EXPECT_EQ(slots[2], 0x80000000u);
}

}  // namespace
