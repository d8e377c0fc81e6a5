// Table gathers for the SSE2 kernels: rows of {hi, lo} pairs picked by the
// low bits of integer lanes, returned as one register of the hi parts and
// one of the lo parts, lane for lane.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace orv::vec::gather {

// Four float pairs by the low bits of t under mask (rows a power of two).
inline void pairs(const float (*table)[2], __m128i t, int32_t mask, __m128* hi, __m128* lo) {
    alignas(16) int32_t j[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(j), _mm_and_si128(t, _mm_set1_epi32(mask)));
    const __m128 r0 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[j[0]])));
    const __m128 r1 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[j[1]])));
    const __m128 r2 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[j[2]])));
    const __m128 r3 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[j[3]])));
    const __m128 a01 = _mm_unpacklo_ps(r0, r1);  // h0 h1 l0 l1
    const __m128 a23 = _mm_unpacklo_ps(r2, r3);  // h2 h3 l2 l3
    *hi = _mm_movelh_ps(a01, a23);
    *lo = _mm_movehl_ps(a23, a01);
}

// Two double pairs (16-byte aligned rows) by the low bits of the two 64-bit
// lanes of t under mask.
inline void pairs(const double (*table)[2], __m128i t, int32_t mask, __m128d* hi, __m128d* lo) {
    const int j0 = _mm_cvtsi128_si32(t) & mask;
    const int j1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(t, t)) & mask;
    const __m128d r0 = _mm_load_pd(table[j0]);
    const __m128d r1 = _mm_load_pd(table[j1]);
    *hi = _mm_unpacklo_pd(r0, r1);
    *lo = _mm_unpackhi_pd(r0, r1);
}

}  // namespace orv::vec::gather
