// The dither of eight samples at a time, and how eight results are stored. Only where
// KESTVOX_VECTOR_UNIT is defined.
#pragma once

#include <cstddef>

#include "convert/dither_steps.h"
#include "convert/vector_unit.h"

#ifdef KESTVOX_VECTOR_UNIT

namespace kestvox {

constexpr size_t DitherGroup = 8;  // samples: two vectors of slots

// So many steps of the generator at once.
struct Stride {
    uint32_t Multiplier;
    uint32_t Increment;

    explicit constexpr Stride(unsigned steps) : Multiplier(1), Increment(0) {
        for (; steps != 0; --steps) {
            Multiplier *= kestvox::Multiplier;
            Increment = Increment * kestvox::Multiplier + kestvox::Increment;
        }
    }
    constexpr uint32_t operator()(uint32_t state) const { return state * Multiplier + Increment; }

    // The lower halves of two 64-bit lanes; the upper ones are left undefined.
    VECTOR_INLINE __m128i operator()(__m128i states) const {
        return _mm_add_epi32(_mm_mul_epu32(states, _mm_set1_epi32(Wrap(Multiplier))),
                             _mm_set1_epi32(Wrap(Increment)));
    }
};

// The draws of four samples: a generator for each, which goes from group to group in one stride.
template <typename Output>
class FourDraws {
public:
    // `states` of the samples' draws in the first group.
    VECTOR_INLINE explicit FourDraws(const uint32_t* states)
        : even_(_mm_setr_epi32(Wrap(states[0]), 0, Wrap(states[2]), 0)),
          odd_(_mm_setr_epi32(Wrap(states[1]), 0, Wrap(states[3]), 0)) {}

    VECTOR_INLINE __m128i Take(Stride toNextGroup) {
        const __m128i draws = Draw(even_, odd_);
        even_ = toNextGroup(even_);
        odd_ = toNextGroup(odd_);
        return draws;
    }

    // Each draw and the one that follows it.
    VECTOR_INLINE __m128i TakePairs(Stride toNextGroup) {
        const __m128i following = Draw(Stride(1)(even_), Stride(1)(odd_));
        return _mm_add_epi32(Take(toNextGroup), following);
    }

private:
    static VECTOR_INLINE __m128i Draw(__m128i even, __m128i odd) {
        const __m128i lower = _mm_set1_epi64x(0xFFFFFFFF);
        const __m128i states = _mm_or_si128(_mm_and_si128(even, lower), _mm_slli_epi64(odd, 32));
        return _mm_srai_epi32(states, 32 - Output::Shift);
    }

    __m128i even_;  // in the lower half of each 64-bit lane
    __m128i odd_;
};

struct FirstStates {
    uint32_t States[DitherGroup];  // of each sample's first draw in a group

    FirstStates(uint32_t random, unsigned draws) {
        for (uint32_t& state : States) {
            state = Stride(1)(random);
            random = Stride(draws)(random);
        }
    }
};

// What is added to eight samples at a time.
template <typename Output, bool TwoDraws>
class GroupDither {
public:
    VECTOR_INLINE explicit GroupDither(uint32_t random) : GroupDither(random, FirstStates(random, Draws)) {}

    VECTOR_INLINE void Next(__m128i& first, __m128i& second) {
        constexpr Stride Group(DitherGroup * Draws);
        if constexpr (TwoDraws) {
            first = first_.TakePairs(Group);
            second = second_.TakePairs(Group);
        } else {
            first = first_.Take(Group);
            second = second_.Take(Group);
        }
        random_ = Group(random_);
    }

    uint32_t Random() const { return random_; }

private:
    static constexpr unsigned Draws = TwoDraws ? 2 : 1;  // for a sample

    VECTOR_INLINE GroupDither(uint32_t random, const FirstStates& start)
        : first_(start.States), second_(start.States + 4), random_(random) {}

    FourDraws<Output> first_;
    FourDraws<Output> second_;
    uint32_t random_;
};

// Eight 16-bit words, which are in the range of the output or beyond, at the end of it then.
VECTOR_INLINE void StoreGroup(uint8_t* destination, __m128i words) {
    const __m128i bytes = _mm_xor_si128(_mm_packs_epi16(words, words), _mm_set1_epi8(-128));
    StoreHalf(destination, bytes);
}

VECTOR_INLINE void StoreGroup(int16_t* destination, __m128i words) {
    Store(destination, words);
}

}  // namespace kestvox

#endif
