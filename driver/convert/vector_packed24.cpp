#include "convert/vector_unit.h"

#ifdef KESTVOX_VECTOR_UNIT
namespace kestvox {

VECTOR_ROUTINE void vector::ExpandPacked24(uint32_t* destination, const uint8_t* source, size_t count) {
    constexpr size_t groupSize = 16;  // samples: three vectors in, four out
    // Four samples from the first twelve bytes, and from the last twelve.
    const __m128i fromStart = _mm_setr_epi8(-1, 0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11);
    const __m128i fromEnd =
        _mm_add_epi8(fromStart, _mm_setr_epi8(0, 4, 4, 4, 0, 4, 4, 4, 0, 4, 4, 4, 0, 4, 4, 4));
    const uint8_t* const end = source + count / groupSize * groupSize * 3;
    for (; source != end; source += groupSize * 3, destination += groupSize) {
        Store(destination, _mm_shuffle_epi8(Load(source), fromStart));
        Store(destination + 4, _mm_shuffle_epi8(Load(source + 12), fromStart));
        Store(destination + 8, _mm_shuffle_epi8(Load(source + 24), fromStart));
        Store(destination + 12, _mm_shuffle_epi8(Load(source + 32), fromEnd));
    }
    portable::ExpandPacked24(destination, source, count % groupSize);
}

}  // namespace kestvox

#endif
