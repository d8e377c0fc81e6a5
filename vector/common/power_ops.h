// Small helpers of the power and root kernels that the shared headers do
// not offer yet. Each is written for a scalar lane; the comment gives the
// plain scalar meaning.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace orv::vec::power_ops {

// The correctly rounded square root of x (IEEE 754 sqrt), without the C
// library's errno path.
inline double sqrt(double x) { return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x))); }

// x is an integer (finite x only): x == trunc(x). The largest doubles are
// all integers.
inline bool is_integer(double x) {
    const double ax = x < 0 ? -x : x;
    if (ax >= 0x1p52) return true;
    const double t = (ax + 0x1p52) - 0x1p52;  // rounds to nearest
    return t == ax;
}

// x is an odd integer (finite x only).
inline bool is_odd_integer(double x) {
    const double ax = x < 0 ? -x : x;
    if (ax >= 0x1p53 || !is_integer(ax)) return false;
    return (static_cast<int64_t>(ax) & 1) != 0;
}

}  // namespace orv::vec::power_ops

namespace orv::vec::power_ops {

// ---- on SSE2 registers of two doubles ----

// The 64-bit integer lanes of a register, and back (bit casts).
inline __m128i ibits(__m128d x) { return _mm_castpd_si128(x); }
inline __m128d dbits(__m128i x) { return _mm_castsi128_pd(x); }
// a - b, a + b, a & b and a >> s (logical) on 64-bit lanes.
inline __m128i sub64(__m128i a, __m128i b) { return _mm_sub_epi64(a, b); }
inline __m128i add64(__m128i a, __m128i b) { return _mm_add_epi64(a, b); }
inline __m128i and64(__m128i a, uint64_t m) { return _mm_and_si128(a, _mm_set1_epi64x(int64_t(m))); }
inline __m128i splat64(uint64_t v) { return _mm_set1_epi64x(int64_t(v)); }
template <int S>
inline __m128i srl64(__m128i a) { return _mm_srli_epi64(a, S); }
// double(int64_t(t) >> 52) for each lane: the arithmetic shift of the
// high word by 20, converted.
inline __m128d sar52_to_double(__m128i t) {
    const __m128i hi = _mm_srai_epi32(t, 20);
    return _mm_cvtepi32_pd(_mm_shuffle_epi32(hi, _MM_SHUFFLE(3, 3, 3, 1)));
}
// double(int32_t(t >> 32)) for each 64-bit lane: the high words, converted.
inline __m128d hi_words_to_double(__m128i t) {
    return _mm_cvtepi32_pd(_mm_shuffle_epi32(t, _MM_SHUFFLE(3, 3, 3, 1)));
}
// Rows of three doubles by the low 32 bits of each 64-bit lane of idx.
inline void gather3(const double (*table)[3], __m128i idx, __m128d* c0, __m128d* c1, __m128d* c2) {
    const int j0 = _mm_cvtsi128_si32(idx);
    const int j1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(idx, idx));
    const __m128d a01 = _mm_loadu_pd(table[j0]), b01 = _mm_loadu_pd(table[j1]);
    *c0 = _mm_unpacklo_pd(a01, b01);
    *c1 = _mm_unpackhi_pd(a01, b01);
    *c2 = _mm_loadh_pd(_mm_load_sd(table[j0] + 2), table[j1] + 2);
}
// Dekker's exact product: a b = hi + *lo (no overflow or underflow), on a
// double or on each lane of a register.
template <typename V>
inline V two_prod(V a, V b, V* lo) {
    const V ca = a * 134217729.0, cb = b * 134217729.0;  // 2^27 + 1
    const V ah = ca - (ca - a), bh = cb - (cb - b);
    const V al = a - ah, bl = b - bh;
    const V p = a * b;
    *lo = ((ah * bh - p) + ah * bl + al * bh) + al * bl;
    return p;
}
// For a positive normal double in each lane: returns m = x 2^(-3k) in
// [1, 8) with k = floor(e / 3), e the exponent of x, and sets *k52 to k
// shifted into the exponent field (k << 52, two's complement), so that a
// result is scaled by 2^k by adding *k52 to its bits. Scalar meaning:
// k = floor(e / 3), taken here as trunc((e + 1023 + 2046.5) / 3) - 1023.
inline __m128d thirds(__m128d x, __m128i* k52) {
    const __m128i eb = _mm_srli_epi32(_mm_shuffle_epi32(ibits(x), _MM_SHUFFLE(3, 3, 3, 1)), 20);
    const __m128d q = (_mm_cvtepi32_pd(eb) + 2046.5) * (1.0 / 3.0);
    const __m128i k = _mm_sub_epi32(_mm_cvttpd_epi32(q), _mm_set1_epi32(1023));
    *k52 = _mm_slli_epi64(_mm_unpacklo_epi32(k, _mm_srai_epi32(k, 31)), 52);
    return dbits(sub64(ibits(x), add64(add64(*k52, *k52), *k52)));
}
// All ones in the lanes holding a zero, a denormal, an infinity or a NaN.
inline __m128d not_normal(__m128d x) {
    const __m128i hi = _mm_and_si128(_mm_shuffle_epi32(ibits(x), _MM_SHUFFLE(3, 3, 1, 1)),
                                     _mm_set1_epi32(0x7FFFFFFF));
    const __m128i t = _mm_xor_si128(_mm_sub_epi32(hi, _mm_set1_epi32(0x00100000)),
                                    _mm_set1_epi32(int(0x80000000u)));
    return dbits(_mm_cmpgt_epi32(t, _mm_set1_epi32(int((0x7FE00000u - 1) ^ 0x80000000u))));
}
// The sign bits of x, and |x|.
inline __m128d sign_of(__m128d x) { return _mm_and_pd(x, dbits(splat64(0x8000000000000000ull))); }
inline __m128d abs_of(__m128d x) { return _mm_andnot_pd(dbits(splat64(0x8000000000000000ull)), x); }

// Lanes 0, 1 and lanes 2, 3 of a float register as doubles, and back.
inline __m128d widen_lo(__m128 x) { return _mm_cvtps_pd(x); }
inline __m128d widen_hi(__m128 x) { return _mm_cvtps_pd(_mm_movehl_ps(x, x)); }
inline __m128 narrow(__m128d lo, __m128d hi) { return _mm_movelh_ps(_mm_cvtpd_ps(lo), _mm_cvtpd_ps(hi)); }

// v 2^n with n in bits 6 to 17 of the lanes of t (two's complement), added
// to the exponent field: v and the result in the normal range.
inline __m128d scale_by_t(__m128d v, __m128i t) {
    return dbits(add64(ibits(v), _mm_slli_epi64(and64(t, 0x3FFC0), 46)));
}

}  // namespace orv::vec::power_ops
