#include "convert/vector_unit.h"

#ifdef KESTVOX_VECTOR_UNIT
namespace kestvox {

namespace {

constexpr size_t GroupSize = 16;  // codes

// Sixteen 16-bit words, to be looked up by sixteen numbers below 16 at once: bytes by bytes.
class WordTable {
public:
    VECTOR_INLINE explicit WordTable(const int16_t (&words)[16]) {
        const __m128i first = Load(words);
        const __m128i second = Load(words + 8);
        const __m128i lowBytes = _mm_set1_epi16(0xFF);
        low_ = _mm_packus_epi16(_mm_and_si128(first, lowBytes), _mm_and_si128(second, lowBytes));
        high_ = _mm_packus_epi16(_mm_srli_epi16(first, 8), _mm_srli_epi16(second, 8));
    }

    VECTOR_INLINE void LookUp(__m128i numbers, __m128i& first, __m128i& second) const {
        const __m128i low = _mm_shuffle_epi8(low_, numbers);
        const __m128i high = _mm_shuffle_epi8(high_, numbers);
        first = _mm_unpacklo_epi8(low, high);
        second = _mm_unpackhi_epi8(low, high);
    }

private:
    __m128i low_;
    __m128i high_;
};

}  // namespace

// The law itself, segment and step: faster than to look samples up one by one.
VECTOR_ROUTINE void vector::ExpandCompanded(int16_t* destination, const uint8_t* source,
                                            const CompandingTable& table, size_t count) {
    const WordTable origins(table.Origin);
    const WordTable stepSizes(table.StepSize);
    const __m128i lowBits = _mm_set1_epi8(0x0F);
    const __m128i inverted = _mm_set1_epi8(static_cast<char>(table.InvertedSteps));
    const __m128i zero = _mm_setzero_si128();
    const uint8_t* const end = source + count / GroupSize * GroupSize;
    for (; source != end; source += GroupSize, destination += GroupSize) {
        const __m128i codes = Load(source);
        const __m128i steps = _mm_xor_si128(_mm_and_si128(codes, lowBits), inverted);
        const __m128i segments = _mm_and_si128(_mm_srli_epi16(codes, 4), lowBits);
        __m128i origin[2];
        __m128i size[2];
        origins.LookUp(segments, origin[0], origin[1]);
        stepSizes.LookUp(segments, size[0], size[1]);
        const __m128i first = _mm_mullo_epi16(_mm_unpacklo_epi8(steps, zero), size[0]);
        const __m128i second = _mm_mullo_epi16(_mm_unpackhi_epi8(steps, zero), size[1]);
        Store(destination, _mm_add_epi16(origin[0], first));
        Store(destination + 8, _mm_add_epi16(origin[1], second));
    }
    portable::ExpandCompanded(destination, source, table, count % GroupSize);
}

}  // namespace kestvox

#endif
