// Attributes of the vector routines, and their accesses to memory.
#pragma once

#include "convert/routines.h"

#ifdef KESTVOX_VECTOR_UNIT

#include <tmmintrin.h>

// The rest of the library is compiled for processors without these instructions. A 32-bit caller keeps its
// stack aligned to 4 bytes only, and vectors that are spilled to it need 16.
#define VECTOR_ROUTINE __attribute__((target("ssse3"), force_align_arg_pointer))
#define VECTOR_INLINE __attribute__((target("ssse3"), always_inline)) inline

namespace kestvox {

// At any alignment.
VECTOR_INLINE __m128i Load(const void* place) {
    return _mm_loadu_si128(static_cast<const __m128i*>(place));
}

VECTOR_INLINE void Store(void* place, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(place), value);
}

// The lower eight bytes.
VECTOR_INLINE __m128i LoadHalf(const void* place) {
    return _mm_loadl_epi64(static_cast<const __m128i*>(place));
}

VECTOR_INLINE void StoreHalf(void* place, __m128i value) {
    _mm_storel_epi64(static_cast<__m128i*>(place), value);
}

}  // namespace kestvox

#endif
