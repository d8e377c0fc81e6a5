// Row loads of the error-function family: the first 4 K coefficients of
// each lane's table row, one register a coefficient.
//
// Scalar meaning: out[i][l] = base[idx[l] * Stride + i] for i < 4 K.
//
// The AVX2 and AVX-512 forms load each lane's row whole and transpose the
// rows in registers (4 x 4 and 8 x 8 blocks of doubles), which costs far
// less than one gather a coefficient; the SSE2 form reads the two lanes'
// rows pairwise. Only data moves, so every width gives the same lanes.
#pragma once

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "vector/simd/vec.h"

namespace orv::vec::erfops {

namespace simd = orv::vec::simd;

template <int Stride, int K>
inline void rows_of(const double* base, simd::VI64 idx, simd::VD (&out)[4 * K]) {
    static_assert(Stride >= 4 * K);
#if ORV_SIMD_BYTES == 64
    // The masked forms with every lane set: GCC 12 reports the plain ones'
    // undefined sources as uninitialised.
    constexpr __mmask8 m = 0xFF;
    alignas(64) int64_t ix[8];
    _mm512_store_si512(ix, (__m512i)idx);
    const double* r[8];
    for (int l = 0; l < 8; ++l) r[l] = base + ix[l] * Stride;
    // Blocks of eight coefficients (the last block ends at 4 K and may
    // overlap the one before it). Unrolled, so that the rows stay in
    // registers (a rolled loop copies them through memory).
#pragma GCC unroll 4
    for (int b = 0; b < 4 * K; b += 8) {
        const int o = b + 8 <= 4 * K ? b : 4 * K - 8;
        __m512d v[8];
        for (int l = 0; l < 8; ++l) v[l] = _mm512_mask_loadu_pd(_mm512_setzero_pd(), m, r[l] + o);
        __m512d t[8];
        for (int l = 0; l < 8; l += 2) {
            t[l] = _mm512_mask_unpacklo_pd(v[l], m, v[l], v[l + 1]);      // c0 c2 c4 c6 of lanes l, l+1
            t[l + 1] = _mm512_mask_unpackhi_pd(v[l], m, v[l], v[l + 1]);  // c1 c3 c5 c7
        }
        __m512d u[8];
        for (int h = 0; h < 2; ++h) {
            for (int p = 0; p < 2; ++p) {
                // lanes 4h .. 4h+3 of c(p), c(p+4) and c(p+2), c(p+6)
                u[4 * h + 2 * p] = _mm512_mask_shuffle_f64x2(t[4 * h + p], m, t[4 * h + p], t[4 * h + 2 + p], 0x88);
                u[4 * h + 2 * p + 1] = _mm512_mask_shuffle_f64x2(t[4 * h + p], m, t[4 * h + p], t[4 * h + 2 + p], 0xDD);
            }
        }
        __m512d c[8];
        for (int p = 0; p < 2; ++p) {
            c[p] = _mm512_mask_shuffle_f64x2(u[2 * p], m, u[2 * p], u[4 + 2 * p], 0x88);
            c[p + 4] = _mm512_mask_shuffle_f64x2(u[2 * p], m, u[2 * p], u[4 + 2 * p], 0xDD);
            c[p + 2] = _mm512_mask_shuffle_f64x2(u[2 * p + 1], m, u[2 * p + 1], u[4 + 2 * p + 1], 0x88);
            c[p + 6] = _mm512_mask_shuffle_f64x2(u[2 * p + 1], m, u[2 * p + 1], u[4 + 2 * p + 1], 0xDD);
        }
#pragma GCC unroll 8
        for (int i = b - o; i < 8; ++i) out[o + i] = c[i];
    }
#elif ORV_SIMD_BYTES == 32
    const double* r[4];
    for (int l = 0; l < 4; ++l) r[l] = base + idx[l] * Stride;
    for (int b = 0; b < 4 * K; b += 4) {
        const __m256d v0 = _mm256_loadu_pd(r[0] + b), v1 = _mm256_loadu_pd(r[1] + b);
        const __m256d v2 = _mm256_loadu_pd(r[2] + b), v3 = _mm256_loadu_pd(r[3] + b);
        const __m256d t0 = _mm256_unpacklo_pd(v0, v1), t1 = _mm256_unpackhi_pd(v0, v1);
        const __m256d t2 = _mm256_unpacklo_pd(v2, v3), t3 = _mm256_unpackhi_pd(v2, v3);
        out[b] = _mm256_permute2f128_pd(t0, t2, 0x20);
        out[b + 1] = _mm256_permute2f128_pd(t1, t3, 0x20);
        out[b + 2] = _mm256_permute2f128_pd(t0, t2, 0x31);
        out[b + 3] = _mm256_permute2f128_pd(t1, t3, 0x31);
    }
#else
    const double* r0 = base + idx[0] * Stride;
    const double* r1 = base + idx[1] * Stride;
    for (int i = 0; i < 4 * K; i += 2) {
        const __m128d a = _mm_loadu_pd(r0 + i), b = _mm_loadu_pd(r1 + i);
        out[i] = _mm_unpacklo_pd(a, b);
        out[i + 1] = _mm_unpackhi_pd(a, b);
    }
#endif
}


// Lane sorting (CdfNormInv, Erf and Erfc run each path on registers of its
// own lanes).
//
// compress_store: scalar meaning: the lanes l of v with bit l of m set, in
// lane order, go to dst[0], dst[1], ...; dst must have room for a whole
// register (the lanes past the count are written with unspecified values).
// expand_load: scalar meaning: r[l] = src[k++] for the lanes l with bit l
// of m set (k from 0, in lane order), r[l] = other[l] for the rest; a
// whole register may be read from src.
#if ORV_SIMD_BYTES == 32
// Per 4-bit mask: the 32-bit lane pairs that pick the set lanes in order
// (compress), and that give lane l the element of its rank (expand).
struct SortTables {
    alignas(32) int32_t compress[16][8];
    alignas(32) int32_t expand[16][8];
};
inline constexpr SortTables kSortTables = [] {
    SortTables t{};
    for (int m = 0; m < 16; ++m) {
        int k = 0;
        for (int l = 0; l < 4; ++l) {
            t.expand[m][2 * l] = 2 * k, t.expand[m][2 * l + 1] = 2 * k + 1;
            if (m >> l & 1) t.compress[m][2 * k] = 2 * l, t.compress[m][2 * k + 1] = 2 * l + 1, ++k;
        }
        for (; k < 4; ++k) t.compress[m][2 * k] = 0, t.compress[m][2 * k + 1] = 1;
    }
    return t;
}();
#endif

inline void compress_store(double* dst, simd::VD v, uint32_t m) {
#if ORV_SIMD_BYTES == 64
    _mm512_storeu_pd(dst, _mm512_maskz_compress_pd(__mmask8(m), (__m512d)v));
#elif ORV_SIMD_BYTES == 32
    const __m256i ix = _mm256_load_si256((const __m256i*)kSortTables.compress[m]);
    _mm256_storeu_pd(dst, _mm256_castps_pd(_mm256_permutevar8x32_ps(_mm256_castpd_ps((__m256d)v), ix)));
#else
    // Branch-free: lane 1 goes to dst[1] after lane 0, else to dst[0].
    _mm_storel_pd(dst, (__m128d)v);
    _mm_storeh_pd(dst + (m & 1), (__m128d)v);
#endif
}

inline simd::VD expand_load(const double* src, uint32_t m, simd::VD other) {
#if ORV_SIMD_BYTES == 64
    return (simd::VD)_mm512_mask_expandloadu_pd((__m512d)other, __mmask8(m), src);
#elif ORV_SIMD_BYTES == 32
    const __m256i ix = _mm256_load_si256((const __m256i*)kSortTables.expand[m]);
    const __m256d e = _mm256_castps_pd(_mm256_permutevar8x32_ps(_mm256_loadu_ps((const float*)src), ix));
    const __m256i sel = _mm256_slli_epi64(_mm256_srlv_epi64(_mm256_set1_epi64x(m), _mm256_setr_epi64x(0, 1, 2, 3)), 63);
    return (simd::VD)_mm256_blendv_pd((__m256d)other, e, _mm256_castsi256_pd(sel));
#else
    // Branch-free: lane 1 reads src[1] after lane 0, else src[0].
    const __m128d e = _mm_loadh_pd(_mm_load_sd(src), src + (m & 1));
    const __m128i sel = _mm_set_epi64x(-int64_t(m >> 1 & 1), -int64_t(m & 1));
    return (simd::VD)_mm_or_pd(_mm_and_pd(_mm_castsi128_pd(sel), e), _mm_andnot_pd(_mm_castsi128_pd(sel), (__m128d)other));
#endif
}

// Set bits of a lane mask of at most 8 bits (the baseline has no popcnt
// instruction, and the library call costs more than this).
inline int count8(uint32_t m) {
    m = m - ((m >> 1) & 0x55);
    m = (m & 0x33) + ((m >> 2) & 0x33);
    return int((m + (m >> 4)) & 0x0F);
}

// n elements (n a multiple of the register width, at most Max; out may be
// in) with their lanes sorted by path: the lanes whose bit of first(x) is
// set are compressed into one run, the others into a second; run_a(run, k)
// and run_b(run, k) compute the k elements of each run in place on whole
// registers (each run is followed by two registers of pad_a or pad_b, so a
// step may take two registers at a time); the results are expanded back to
// their lanes. Only data moves, so each lane gets what its path computes.
template <int Max, typename First, typename RunA, typename RunB>
inline void by_path(const double* in, double* out, int n, First first, double pad_a, double pad_b, RunA run_a,
                    RunB run_b) {
    using R = simd::Reg<double>;
    constexpr int kW = R::kWidth;
    constexpr uint32_t kAll = (1u << kW) - 1;
    alignas(64) double pa[Max + 2 * kW], pb[Max + 2 * kW];
    uint32_t mask[Max / kW];
    int na = 0, nb = 0;
    for (int j = 0; j * kW < n; ++j) {
        const simd::VD x = R::load(in + j * kW);
        const uint32_t m = simd::lanes(first(x));
        mask[j] = m;
        compress_store(pa + na, x, m);
        compress_store(pb + nb, x, m ^ kAll);
        na += count8(m);
        nb += kW - count8(m);
    }
    for (int k = 0; k < 2; ++k) R::store(pa + na + k * kW, R::set1(pad_a)), R::store(pb + nb + k * kW, R::set1(pad_b));
    run_a(pa, na);
    run_b(pb, nb);
    int oa = 0, ob = 0;
    for (int j = 0; j * kW < n; ++j) {
        const uint32_t m = mask[j];
        const simd::VD t = expand_load(pb + ob, m ^ kAll, R::set1(0.0));
        R::store(out + j * kW, expand_load(pa + oa, m, t));
        oa += count8(m);
        ob += kW - count8(m);
    }
}

}  // namespace orv::vec::erfops
