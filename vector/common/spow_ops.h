// Table lookups of the single-precision pow step, which works on the two
// halves of a float register widened to double: the rows for all the float
// lanes of one register are read at once and handed back as the low and
// high halves. Each width reads the same rows its own way (scalar loads in
// the narrow builds, register permutes in the AVX-512 build: no gather
// instructions); the values are the same.
#pragma once

#include <cstdint>

#include "vector/common/gather.h"
#include "vector/simd/vec.h"

namespace orv::vec::spow_ops {

namespace simd = orv::vec::simd;
using simd::VD;
using simd::VI32;
using simd::VI64;

// Makes the compiler treat the array as written by an unseen store, so that
// its elements are read back by scalar loads rather than moved out of the
// register it was stored from lane by lane.
template <typename A>
inline void keep_in_memory(A& a) {
    __asm__("" : "+m"(a));
}

// The low and high halves of 32-bit integer lanes converted to double
// (exact): lo[i] = double(k[i]), hi[i] = double(k[i + W/2]) for W lanes.
inline VD lo_to_double(VI32 k) {
#if ORV_SIMD_BYTES == 16
    return _mm_cvtepi32_pd((__m128i)k);
#elif ORV_SIMD_BYTES == 32
    return _mm256_cvtepi32_pd(_mm256_castsi256_si128((__m256i)k));
#else
    return _mm512_cvtepi32_pd(_mm512_castsi512_si256((__m512i)k));
#endif
}
inline VD hi_to_double(VI32 k) {
#if ORV_SIMD_BYTES == 16
    return _mm_cvtepi32_pd(_mm_unpackhi_epi64((__m128i)k, (__m128i)k));
#elif ORV_SIMD_BYTES == 32
    return _mm256_cvtepi32_pd(_mm256_extracti128_si256((__m256i)k, 1));
#else
    return _mm512_cvtepi32_pd(_mm512_extracti64x4_epi64((__m512i)k, 1));
#endif
}

// One bit a lane: lane l set where !(a[l] < b[l]) (so also where either is
// NaN), by one compare.
inline uint32_t lanes_not_below(simd::VF a, simd::VF b) {
#if ORV_SIMD_BYTES == 16
    return uint32_t(_mm_movemask_ps(_mm_cmpnlt_ps(a, b)));
#elif ORV_SIMD_BYTES == 32
    return uint32_t(_mm256_movemask_ps(_mm256_cmp_ps(a, b, _CMP_NLT_UQ)));
#else
    return uint32_t(_mm512_cmp_ps_mask(a, b, _CMP_NLT_UQ));
#endif
}

// Scalar meaning, for W float lanes and row(l) = (v[l] >> Shift) & (Rows - 1):
//   a_lo[i] = table[row(i)][0], b_lo[i] = table[row(i)][1],
//   a_hi[i] = table[row(i + W/2)][0], b_hi[i] = table[row(i + W/2)][1].
// The table has Rows rows of two doubles (a power of two), 64-byte
// aligned. The AVX-512 build needs the first entries to be floats and the
// second ones sums of two floats (checked at compile time).
template <int Rows, const double (&Table)[Rows][2], int Shift>
inline void rows(VI32 v, VD* a_lo, VD* b_lo, VD* a_hi, VD* b_hi) {
    static_assert((Rows & (Rows - 1)) == 0 && Rows >= 16);
    constexpr uint32_t kOffMask = uint32_t(Rows - 1) << 4;  // byte offset of the row
#if ORV_SIMD_BYTES == 16
    // Byte offsets of the rows, stored once and read back as four scalars
    // (fewer instructions than moving each lane out), then one 16-byte
    // load a row.
    alignas(16) uint32_t k[4];
    const VI32 off = simd::as<VI32>((simd::as<simd::VU32>(v) >> (Shift - 4)) & kOffMask);
    _mm_store_si128(reinterpret_cast<__m128i*>(k), (__m128i)off);
    keep_in_memory(k);
    const char* base = reinterpret_cast<const char*>(&Table[0][0]);
    const __m128d r0 = _mm_load_pd(reinterpret_cast<const double*>(base + k[0]));
    const __m128d r1 = _mm_load_pd(reinterpret_cast<const double*>(base + k[1]));
    const __m128d r2 = _mm_load_pd(reinterpret_cast<const double*>(base + k[2]));
    const __m128d r3 = _mm_load_pd(reinterpret_cast<const double*>(base + k[3]));
    *a_lo = _mm_unpacklo_pd(r0, r1);
    *b_lo = _mm_unpackhi_pd(r0, r1);
    *a_hi = _mm_unpacklo_pd(r2, r3);
    *b_hi = _mm_unpackhi_pd(r2, r3);
#elif ORV_SIMD_BYTES == 32
    alignas(32) uint32_t k[8];
    const VI32 off = simd::as<VI32>((simd::as<simd::VU32>(v) >> (Shift - 4)) & kOffMask);
    _mm256_store_si256(reinterpret_cast<__m256i*>(k), (__m256i)off);
    keep_in_memory(k);
    const char* base = reinterpret_cast<const char*>(&Table[0][0]);
    auto row = [&](int l) { return _mm_load_pd(reinterpret_cast<const double*>(base + k[l])); };
    auto four = [&](int l, VD* a, VD* b) {  // rows l .. l + 3: rows l, l + 2 and l + 1, l + 3 paired
        const __m256d a02 = _mm256_insertf128_pd(_mm256_castpd128_pd256(row(l)), row(l + 2), 1);
        const __m256d a13 = _mm256_insertf128_pd(_mm256_castpd128_pd256(row(l + 1)), row(l + 3), 1);
        *a = _mm256_unpacklo_pd(a02, a13);
        *b = _mm256_unpackhi_pd(a02, a13);
    };
    four(0, a_lo, b_lo);
    four(4, a_hi, b_hi);
#else
    // Three float columns (the first entries, and the second ones split
    // into a high float and the exact rest), looked up for all sixteen
    // lanes at once by permutes of 32 rows and blends; widened to the
    // halves, the split entries added back exactly.
    struct Cols {
        alignas(64) float a[Rows];
        alignas(64) float hi[Rows];
        alignas(64) float lo[Rows];
        bool exact;
    };
    static constexpr Cols cols = [] {
        Cols c{};
        c.exact = true;
        for (int i = 0; i < Rows; ++i) {
            c.a[i] = float(Table[i][0]);
            c.hi[i] = float(Table[i][1]);
            c.lo[i] = float(Table[i][1] - double(c.hi[i]));
            c.exact = c.exact && double(c.a[i]) == Table[i][0] && double(c.hi[i]) + double(c.lo[i]) == Table[i][1];
        }
        return c;
    }();
    static_assert(cols.exact, "table entries not representable by the float columns");
    const __m512i j = _mm512_srli_epi32((__m512i)v, Shift);
    const __m512 a = gather::column_lookup<0, Rows>(cols.a, j);
    const __m512 h = gather::column_lookup<0, Rows>(cols.hi, j);
    const __m512 l = gather::column_lookup<0, Rows>(cols.lo, j);
    *a_lo = _mm512_cvtps_pd(_mm512_castps512_ps256(a));
    *a_hi = _mm512_cvtps_pd(_mm512_extractf32x8_ps(a, 1));
    *b_lo = _mm512_add_pd(_mm512_cvtps_pd(_mm512_castps512_ps256(h)), _mm512_cvtps_pd(_mm512_castps512_ps256(l)));
    *b_hi = _mm512_add_pd(_mm512_cvtps_pd(_mm512_extractf32x8_ps(h, 1)), _mm512_cvtps_pd(_mm512_extractf32x8_ps(l, 1)));
#endif
}

// Scalar meaning: lo[i] = table[bits(klo[i]) & (Rows - 1)],
// hi[i] = table[bits(khi[i]) & (Rows - 1)]. The table has Rows doubles (a
// power of two, 16 or 32), 64-byte aligned.
template <int Rows>
inline void col(const double (&table)[Rows], VD klo, VD khi, VD* lo, VD* hi) {
    static_assert(Rows == 16 || Rows == 32);
#if ORV_SIMD_BYTES == 16
    // The low words of both registers in one, one store, scalar loads.
    alignas(16) uint32_t k[4];
    const __m128i m = _mm_and_si128(_mm_castps_si128(_mm_shuffle_ps(_mm_castpd_ps(klo), _mm_castpd_ps(khi), 0x88)),
                                    _mm_set1_epi32(Rows - 1));
    _mm_store_si128(reinterpret_cast<__m128i*>(k), m);
    keep_in_memory(k);
    *lo = _mm_loadh_pd(_mm_load_sd(table + k[0]), table + k[1]);
    *hi = _mm_loadh_pd(_mm_load_sd(table + k[2]), table + k[3]);
#elif ORV_SIMD_BYTES == 32
    alignas(32) int64_t k[8];
    const __m256i mask = _mm256_set1_epi64x(Rows - 1);
    _mm256_store_si256(reinterpret_cast<__m256i*>(k), _mm256_and_si256(_mm256_castpd_si256(klo), mask));
    _mm256_store_si256(reinterpret_cast<__m256i*>(k + 4), _mm256_and_si256(_mm256_castpd_si256(khi), mask));
    keep_in_memory(k);
    auto four = [&](int l) {
        const __m128d p = _mm_loadh_pd(_mm_load_sd(table + k[l]), table + k[l + 1]);
        const __m128d q = _mm_loadh_pd(_mm_load_sd(table + k[l + 2]), table + k[l + 3]);
        return _mm256_insertf128_pd(_mm256_castpd128_pd256(p), q, 1);
    };
    *lo = four(0);
    *hi = four(4);
#else
    // One two-register permute reads the index's low 4 bits; 32 rows
    // blend two of them by bit 4.
    *lo = gather::column_lookup<0, Rows>(table, _mm512_castpd_si512(klo));
    *hi = gather::column_lookup<0, Rows>(table, _mm512_castpd_si512(khi));
#endif
}

}  // namespace orv::vec::spow_ops
