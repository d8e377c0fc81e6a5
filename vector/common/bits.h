// Bit views of floating-point values and the integer range tests of the
// special masks, on scalars and SSE2 registers; splat for either register.
#pragma once

#include <emmintrin.h>

#include <bit>
#include <cstdint>

namespace orv::vec::bitops {

inline uint64_t bits_of(double x) { return std::bit_cast<uint64_t>(x); }
inline uint32_t bits_of(float x) { return std::bit_cast<uint32_t>(x); }
inline double double_of(uint64_t b) { return std::bit_cast<double>(b); }

inline __m128 splat(float v) { return _mm_set1_ps(v); }
inline __m128d splat(double v) { return _mm_set1_pd(v); }

// One bit a lane: the bits of |x| (single) or the high word of |x|
// (double) above bound, as signed integers.
inline int above(__m128 x, int32_t bound) {
    const __m128i ax = _mm_and_si128(_mm_castps_si128(x), _mm_set1_epi32(0x7FFFFFFF));
    return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmpgt_epi32(ax, _mm_set1_epi32(bound))));
}
inline int above(__m128d x, int32_t bound_hi) {
    const __m128i hw = _mm_and_si128(_mm_shuffle_epi32(_mm_castpd_si128(x), _MM_SHUFFLE(3, 3, 1, 1)),
                                     _mm_set1_epi32(0x7FFFFFFF));
    return _mm_movemask_pd(_mm_castsi128_pd(_mm_cmpgt_epi32(hw, _mm_set1_epi32(bound_hi))));
}

}  // namespace orv::vec::bitops
