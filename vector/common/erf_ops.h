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
    // overlap the one before it).
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

}  // namespace orv::vec::erfops
