#include "convert/vector_unit.h"

#ifdef KESTVOX_VECTOR_UNIT

namespace kestvox {

VECTOR_ROUTINE void vector::PackCapture24(uint8_t* destination, const uint32_t* source, size_t count) {
    constexpr size_t groupSize = 16;  // slots: four vectors in, three out
    const __m128i topThree = _mm_setr_epi8(1, 2, 3, 5, 6, 7, 9, 10, 11, 13, 14, 15, -1, -1, -1, -1);
    const uint32_t* const end = source + count / groupSize * groupSize;
    for (; source != end; source += groupSize, destination += groupSize * 3) {
        const __m128i first = _mm_shuffle_epi8(Load(source), topThree);
        const __m128i second = _mm_shuffle_epi8(Load(source + 4), topThree);
        const __m128i third = _mm_shuffle_epi8(Load(source + 8), topThree);
        const __m128i fourth = _mm_shuffle_epi8(Load(source + 12), topThree);
        Store(destination, _mm_or_si128(first, _mm_slli_si128(second, 12)));
        Store(destination + 16, _mm_or_si128(_mm_srli_si128(second, 4), _mm_slli_si128(third, 8)));
        Store(destination + 32, _mm_or_si128(_mm_srli_si128(third, 8), _mm_slli_si128(fourth, 4)));
    }
    portable::PackCapture24(destination, source, count % groupSize);
}

}  // namespace kestvox

#endif
