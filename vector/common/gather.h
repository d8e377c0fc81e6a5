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
#elif ORV_SIMD_BYTES == 32
    // One 16-byte load a row, rows 0 2 and 1 3 paired, then unpacked.
    alignas(32) int64_t k[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(k), (__m256i)(simd::as<simd::VI64>(t) & int64_t(mask)));
    const __m256d a02 = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(table[k[0]])), _mm_load_pd(table[k[2]]), 1);
    const __m256d a13 = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(table[k[1]])), _mm_load_pd(table[k[3]]), 1);
    *hi = _mm256_unpacklo_pd(a02, a13);
    *lo = _mm256_unpackhi_pd(a02, a13);
#else
    // One 16-byte load a row, even and odd rows in two registers, then unpacked.
    alignas(64) int64_t k[8];
    _mm512_store_si512(k, (__m512i)(simd::as<simd::VI64>(t) & int64_t(mask)));
    auto four = [&](int l) {  // rows l, l + 2, l + 4, l + 6
        const __m256d a = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(table[k[l]])), _mm_load_pd(table[k[l + 2]]), 1);
        const __m256d b = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_load_pd(table[k[l + 4]])), _mm_load_pd(table[k[l + 6]]), 1);
        return _mm512_insertf64x4(_mm512_castpd256_pd512(a), b, 1);
    };
    const __m512d even = four(0), odd = four(1);
    *hi = _mm512_unpacklo_pd(even, odd);
    *lo = _mm512_unpackhi_pd(even, odd);
#endif
}

// Rows of three doubles: c0, c1, c2 get table[idx][0], [1] and [2] for the
// 64-bit index lanes idx (in range). In the AVX-512 build each row is one
// masked load of its three values and eight rows are transposed by permutes,
// which is faster than three gather instructions on some processors; the
// values are the same either way.
inline void rows3(const double (*table)[3], simd::VI64 idx, simd::VD* c0, simd::VD* c1,
                  simd::VD* c2) {
#if ORV_SIMD_BYTES == 64
    alignas(64) int64_t k[8];
    _mm512_store_si512(k, (__m512i)idx);
    auto two = [&](int l) {  // rows l and l + 1 as {v0 v1 v2 0 | v0 v1 v2 0}
        return _mm512_insertf64x4(_mm512_castpd256_pd512(_mm256_maskz_loadu_pd(0x7, table[k[l]])),
                                  _mm256_maskz_loadu_pd(0x7, table[k[l + 1]]), 1);
    };
    const __m512d a01 = two(0), a23 = two(2), a45 = two(4), a67 = two(6);
    const __m512i first = _mm512_set_epi64(13, 9, 5, 1, 12, 8, 4, 0);  // 4 rows' v0, then v1
    const __m512i third = _mm512_set_epi64(14, 10, 6, 2, 14, 10, 6, 2);  // 4 rows' v2, twice
    const __m512d x03 = _mm512_permutex2var_pd(a01, first, a23);
    const __m512d x47 = _mm512_permutex2var_pd(a45, first, a67);
    const __m512d y03 = _mm512_permutex2var_pd(a01, third, a23);
    const __m512d y47 = _mm512_permutex2var_pd(a45, third, a67);
    const __m512i low = _mm512_set_epi64(11, 10, 9, 8, 3, 2, 1, 0);
    const __m512i high = _mm512_set_epi64(15, 14, 13, 12, 7, 6, 5, 4);
    *c0 = _mm512_permutex2var_pd(x03, low, x47);
    *c1 = _mm512_permutex2var_pd(x03, high, x47);
    *c2 = _mm512_permutex2var_pd(y03, low, y47);
#elif ORV_SIMD_BYTES == 32
    alignas(32) int64_t k[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(k), (__m256i)idx);
    const __m256i three = _mm256_set_epi64x(0, -1, -1, -1);  // the row's three values, no read past it
    const __m256d r0 = _mm256_maskload_pd(table[k[0]], three), r1 = _mm256_maskload_pd(table[k[1]], three);
    const __m256d r2 = _mm256_maskload_pd(table[k[2]], three), r3 = _mm256_maskload_pd(table[k[3]], three);
    const __m256d t0 = _mm256_unpacklo_pd(r0, r1), t1 = _mm256_unpackhi_pd(r0, r1);
    const __m256d t2 = _mm256_unpacklo_pd(r2, r3), t3 = _mm256_unpackhi_pd(r2, r3);
    *c0 = _mm256_permute2f128_pd(t0, t2, 0x20);
    *c1 = _mm256_permute2f128_pd(t1, t3, 0x20);
    *c2 = _mm256_permute2f128_pd(t0, t2, 0x31);
#else
    *c0 = simd::gather<3>(&table[0][0], idx);
    *c1 = simd::gather<3>(&table[0][1], idx);
    *c2 = simd::gather<3>(&table[0][2], idx);
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

#if ORV_SIMD_BYTES == 64
// Rows [Base, Base + Len) of one column c, picked by the index lanes j: one
// two-register permute covers 2 kPer rows, and larger ranges choose between
// their halves by the index bit of the half's size. Written as a
// compile-time recursion so that the tree is straight-line code.
template <int Base, int Len>
inline __m512d column_lookup(const double* c, __m512i j) {
    if constexpr (Len == 16) {
        return _mm512_permutex2var_pd(_mm512_load_pd(c + Base), j, _mm512_load_pd(c + Base + 8));
    } else {
        const __m512d lo = column_lookup<Base, Len / 2>(c, j);
        const __m512d hi = column_lookup<Base + Len / 2, Len / 2>(c, j);
        return _mm512_mask_blend_pd(_mm512_test_epi64_mask(j, _mm512_set1_epi64(Len / 2)), lo, hi);
    }
}
template <int Base, int Len>
inline __m512 column_lookup(const float* c, __m512i j) {
    if constexpr (Len == 32) {
        return _mm512_permutex2var_ps(_mm512_load_ps(c + Base), j, _mm512_load_ps(c + Base + 16));
    } else {
        const __m512 lo = column_lookup<Base, Len / 2>(c, j);
        const __m512 hi = column_lookup<Base + Len / 2, Len / 2>(c, j);
        return _mm512_mask_blend_ps(_mm512_test_epi32_mask(j, _mm512_set1_epi32(Len / 2)), lo, hi);
    }
}
#endif

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
            *hi = column_lookup<0, kRows>(cols.hi, j);
            *lo = column_lookup<0, kRows>(cols.lo, j);
        } else {
            // One permute of two registers reads only the index's low 4 bits.
            const __m512i j = kRows == 16 && mask == 15 ? (__m512i)t : (__m512i)(simd::as<simd::VI64>(t) & int64_t(mask));
            *hi = column_lookup<0, kRows>(cols.hi, j);
            *lo = column_lookup<0, kRows>(cols.lo, j);
        }
        return;
    }
#endif
    pairs(Table, t, mask, hi, lo);
}

}  // namespace orv::vec::gather
