#include "convert/vector_dither.h"

#include "convert/routines.h"
#include "convert/vector_draws.h"

#ifdef KESTVOX_VECTOR_UNIT

namespace kestvox {

namespace {

// In steps of the output: what lies below a step is added to the dither first, so no sum leaves the
// range, and packing saturates.
template <typename Output>
VECTOR_INLINE __m128i Quantise(__m128i slots, __m128i dither) {
    const __m128i below = _mm_and_si128(slots, _mm_set1_epi32((1 << Output::Shift) - 1));
    return _mm_add_epi32(_mm_srai_epi32(slots, Output::Shift),
                         _mm_srai_epi32(_mm_add_epi32(below, dither), Output::Shift));
}

// Whole groups only.
template <typename Output, bool TwoDraws>
VECTOR_ROUTINE void DitherGroups(typename Output::Sample* destination, const int32_t* source, size_t count,
                                 DitherState& state) {
    GroupDither<Output, TwoDraws> next(state.Random);
    for (const int32_t* const end = source + count; source != end; source += DitherGroup) {
        __m128i first;
        __m128i second;
        next.Next(first, second);
        StoreGroup(destination, _mm_packs_epi32(Quantise<Output>(Load(source), first),
                                                Quantise<Output>(Load(source + 4), second)));
        destination += DitherGroup;
    }
    state.Random = next.Random();
}

// How many samples it has done, in whole groups; the rest goes one by one.
template <typename Output>
size_t DitherWholeGroups(typename Output::Sample* destination, const int32_t* source, size_t count,
                         uint32_t type, unsigned channels, DitherState& state) {
    const size_t whole = count / DitherGroup * DitherGroup;
    if (type == DitherRectangularShaped || type == DitherTriangularShaped) {
        ShapeWholeGroups(destination, source, whole, type, channels, state);
        return whole;
    }
    // An error that an earlier type has left is added to every sample: too rare to be worth its price.
    if ((type != DitherRectangular && type != DitherTriangular) || state.ShapingError[0] != 0) {
        return 0;
    }
    const auto ditherGroups =
        type == DitherTriangular ? DitherGroups<Output, true> : DitherGroups<Output, false>;
    ditherGroups(destination, source, whole, state);
    return whole;
}

}  // namespace

void vector::DitherCapture8(uint8_t* destination, const int32_t* source, size_t count, uint32_t type,
                            unsigned channels, DitherState& state) {
    const size_t done = DitherWholeGroups<To8>(destination, source, count, type, channels, state);
    portable::DitherCapture8(destination + done, source + done, count - done, type, channels, state);
}

void vector::DitherCapture16(int16_t* destination, const int32_t* source, size_t count, uint32_t type,
                             unsigned channels, DitherState& state) {
    const size_t done = DitherWholeGroups<To16>(destination, source, count, type, channels, state);
    portable::DitherCapture16(destination + done, source + done, count - done, type, channels, state);
}

}  // namespace kestvox

#endif
