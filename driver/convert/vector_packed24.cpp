// Samples of three bytes, to and from the card's 32-bit slots.
#include "convert/vector_unit.h"

#ifdef KESTVOX_VECTOR_UNIT

namespace kestvox {

namespace {

constexpr size_t GroupSamples = 16;  // four vectors of slots, three of packed bytes
constexpr size_t SampleBytes = 3;

}  // namespace

VECTOR_ROUTINE void vector::ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count) {
    // Four samples from the first twelve bytes, and from the last twelve.
    const __m128i fromStart = _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
    const __m128i fromEnd =
        _mm_add_epi8(fromStart, _mm_setr_epi8(0, 4, 4, 4, 0, 4, 4, 4, 0, 4, 4, 4, 0, 4, 4, 4));
    const uint8_t* const end = source + count / GroupSamples * GroupSamples * SampleBytes;
    for (; source != end; source += GroupSamples * SampleBytes, destination += GroupSamples) {
        Store(destination, _mm_shuffle_epi8(Load(source), fromStart));
        Store(destination + 4, _mm_shuffle_epi8(Load(source + 12), fromStart));
        Store(destination + 8, _mm_shuffle_epi8(Load(source + 24), fromStart));
        Store(destination + 12, _mm_shuffle_epi8(Load(source + 32), fromEnd));
    }
    portable::ExpandPacked24(destination, source, count % GroupSamples);
}

VECTOR_ROUTINE void vector::PackCapture24(uint8_t* destination, const uint32_t* source, size_t count) {
    const __m128i topThree = _mm_setr_epi8(1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, -1, -1, -1, -1);
    const uint32_t* const end = source + count / GroupSamples * GroupSamples;
    for (; source != end; source += GroupSamples, destination += GroupSamples * SampleBytes) {
        const __m128i first = _mm_shuffle_epi8(Load(source), topThree);
        const __m128i second = _mm_shuffle_epi8(Load(source + 4), topThree);
        const __m128i third = _mm_shuffle_epi8(Load(source + 8), topThree);
        const __m128i fourth = _mm_shuffle_epi8(Load(source + 12), topThree);
        Store(destination, _mm_or_si128(first, _mm_slli_si128(second, 12)));
        Store(destination + 16, _mm_or_si128(_mm_srli_si128(second, 4), _mm_slli_si128(third, 8)));
        Store(destination + 32, _mm_or_si128(_mm_srli_si128(third, 8), _mm_slli_si128(fourth, 4)));
    }
    portable::PackCapture24(destination, source, count % GroupSamples);
}

}  // namespace kestvox

#endif
