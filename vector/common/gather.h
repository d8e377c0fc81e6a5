// Table gathers: rows of {hi, lo} pairs picked by the low bits of integer
// lanes, returned as one register of the hi parts and one of the lo parts,
// lane for lane. Rows are a power of two in number.
#pragma once

#include <cstdint>
#include <type_traits>

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

// The same from a table known at compile time (a constexpr array of static
// storage). In the AVX-512 build, tables of at most 128 float or 64 double
// rows are looked up by register permutes over their columns instead of
// gather instructions, which are slow on some processors; the values are
// the same rows either way.
template <typename E, int Rows>
struct Columns {
    alignas(64) E hi[Rows];
    alignas(64) E lo[Rows];
};
template <typename E, int Rows>
constexpr Columns<E, Rows> columns_of(const E (&table)[Rows][2]) {
    Columns<E, Rows> c{};
    for (int i = 0; i < Rows; ++i) {
        c.hi[i] = table[i][0];
        c.lo[i] = table[i][1];
    }
    return c;
}

template <const auto& Table, typename I, typename V>
inline void pairs_of(I t, int32_t mask, V* hi, V* lo) {
#if ORV_SIMD_BYTES == 64
    using E = std::remove_cvref_t<decltype(Table[0][0])>;
    constexpr int kRows = int(sizeof(Table) / sizeof(Table[0]));
    constexpr int kPer = 64 / int(sizeof(E));  // rows in one register
    if constexpr (kRows <= 8 * kPer && (kRows & (kRows - 1)) == 0 && kRows >= 2 * kPer) {
        static constexpr Columns<E, kRows> cols = columns_of(Table);
        if constexpr (sizeof(E) == 4) {
            const __m512i j = (__m512i)(simd::as<simd::VI32>(t) & mask);
            auto look = [&](const float* c) {
                __m512 r = _mm512_permutex2var_ps(_mm512_load_ps(c), j, _mm512_load_ps(c + 16));
                for (int b = 32; b < kRows; b *= 2) {  // rows b .. 2b-1 where bit b is set
                    __m512 u = _mm512_permutex2var_ps(_mm512_load_ps(c + b), j, _mm512_load_ps(c + b + 16));
                    for (int k = 32; k < b; k *= 2) {
                        const __m512 w = _mm512_permutex2var_ps(_mm512_load_ps(c + b + k), j,
                                                                _mm512_load_ps(c + b + k + 16));
                        u = _mm512_mask_blend_ps(_mm512_test_epi32_mask(j, _mm512_set1_epi32(k)), u, w);
                    }
                    r = _mm512_mask_blend_ps(_mm512_test_epi32_mask(j, _mm512_set1_epi32(b)), r, u);
                }
                return r;
            };
            *hi = look(cols.hi);
            *lo = look(cols.lo);
        } else {
            const __m512i j = (__m512i)(simd::as<simd::VI64>(t) & int64_t(mask));
            auto look = [&](const double* c) {
                __m512d r = _mm512_permutex2var_pd(_mm512_load_pd(c), j, _mm512_load_pd(c + 8));
                for (int b = 16; b < kRows; b *= 2) {
                    __m512d u = _mm512_permutex2var_pd(_mm512_load_pd(c + b), j, _mm512_load_pd(c + b + 8));
                    for (int k = 16; k < b; k *= 2) {
                        const __m512d w = _mm512_permutex2var_pd(_mm512_load_pd(c + b + k), j,
                                                                 _mm512_load_pd(c + b + k + 8));
                        u = _mm512_mask_blend_pd(_mm512_test_epi64_mask(j, _mm512_set1_epi64(k)), u, w);
                    }
                    r = _mm512_mask_blend_pd(_mm512_test_epi64_mask(j, _mm512_set1_epi64(b)), r, u);
                }
                return r;
            };
            *hi = look(cols.hi);
            *lo = look(cols.lo);
        }
        return;
    }
#endif
    pairs(Table, t, mask, hi, lo);
}

}  // namespace orv::vec::gather
