// Table gathers: rows of {hi, lo} pairs picked by the low bits of integer
// lanes, returned as one register of the hi parts and one of the lo parts,
// lane for lane. Rows are a power of two in number.
#pragma once

#include <cstdint>

#include "vector/simd/vec.h"

namespace orv::vec::gather {

// Float pairs by the low bits of the 32-bit lanes of t under mask. t is any
// register-sized vector (its bits are read as 32-bit lanes).
template <typename I>
inline void pairs(const float (*table)[2], I t, int32_t mask, simd::VF* hi, simd::VF* lo) {
    const simd::VI32 j = simd::as<simd::VI32>(t) & mask;
#if ORV_SIMD_BYTES == 16
    // Each row is one 8-byte load; two unpacks sort hi and lo parts.
    alignas(16) int32_t k[4];
    _mm_store_si128(reinterpret_cast<__m128i*>(k), (__m128i)j);
    const __m128 r0 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[k[0]])));
    const __m128 r1 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[k[1]])));
    const __m128 r2 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[k[2]])));
    const __m128 r3 = _mm_castpd_ps(_mm_load_sd(reinterpret_cast<const double*>(table[k[3]])));
    const __m128 a01 = _mm_unpacklo_ps(r0, r1);  // h0 h1 l0 l1
    const __m128 a23 = _mm_unpacklo_ps(r2, r3);  // h2 h3 l2 l3
    *hi = _mm_movelh_ps(a01, a23);
    *lo = _mm_movehl_ps(a23, a01);
#else
    *hi = simd::gather<2>(&table[0][0], j);
    *lo = simd::gather<2>(&table[0][1], j);
#endif
}

// Double pairs (16-byte aligned rows) by the low bits of the 64-bit lanes
// of t under mask.
template <typename I>
inline void pairs(const double (*table)[2], I t, int32_t mask, simd::VD* hi, simd::VD* lo) {
#if ORV_SIMD_BYTES == 16
    const __m128i ti = (__m128i)t;
    const int j0 = _mm_cvtsi128_si32(ti) & mask;
    const int j1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(ti, ti)) & mask;
    const __m128d r0 = _mm_load_pd(table[j0]);
    const __m128d r1 = _mm_load_pd(table[j1]);
    *hi = _mm_unpacklo_pd(r0, r1);
    *lo = _mm_unpackhi_pd(r0, r1);
#else
    const simd::VI64 j = simd::as<simd::VI64>(t) & int64_t(mask);
    *hi = simd::gather<2>(&table[0][0], j);
    *lo = simd::gather<2>(&table[0][1], j);
#endif
}

}  // namespace orv::vec::gather
