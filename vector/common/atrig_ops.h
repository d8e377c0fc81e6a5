// Register helpers of the inverse trigonometric and hyperbolic kernels that
// the shared vocabulary lacks: widening four floats to two registers of
// doubles and back, the sign bit moved between registers, and 2^N put into
// the exponent field. Each has its scalar equivalent in the comment.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace orv::vec::atrig_ops {

// double(x[0]), double(x[1])
inline __m128d widen_lo(__m128 x) { return _mm_cvtps_pd(x); }
// double(x[2]), double(x[3])
inline __m128d widen_hi(__m128 x) { return _mm_cvtps_pd(_mm_movehl_ps(x, x)); }
// {float(lo[0]), float(lo[1]), float(hi[0]), float(hi[1])}, each rounded once
inline __m128 narrow(__m128d lo, __m128d hi) { return _mm_movelh_ps(_mm_cvtpd_ps(lo), _mm_cvtpd_ps(hi)); }

// The sign bit of x alone: x & 0x8000...
inline __m128d sign_of(__m128d x) { return _mm_and_pd(x, _mm_castsi128_pd(_mm_set1_epi64x(int64_t(0x8000000000000000ull)))); }
// |x|: x & 0x7FFF...
inline __m128d abs_of(__m128d x) { return _mm_andnot_pd(_mm_castsi128_pd(_mm_set1_epi64x(int64_t(0x8000000000000000ull))), x); }
// x with its sign bit flipped where s has it: x ^ (s & 0x8000...)
inline __m128d xor_sign(__m128d x, __m128d s) { return _mm_xor_pd(x, sign_of(s)); }
// min(a, b) with b taken when a is NaN (the SSE2 minimum's rule)
inline __m128d min_or_b(__m128d a, __m128d b) { return _mm_min_pd(a, b); }

// y * 2^N where N is held in the bits of t above its low 6 bits (t the sum
// of a rounding shifter whose mantissa ends in 64 N + j, N below 4096): the
// integer N << 52 added to the bits of y. No overflow or underflow check.
inline __m128d scale_by_shifter64(__m128d y, __m128d t) {
    const __m128i e = _mm_slli_epi64(_mm_and_si128(_mm_castpd_si128(t), _mm_set1_epi64x(0x3FFC0)), 46);
    return _mm_castsi128_pd(_mm_add_epi64(_mm_castpd_si128(y), e));
}

// The low 32 bits of each 64-bit lane of t as int: {int(bits(t[0])), int(bits(t[1]))}
inline void low_words(__m128d t, int32_t* j0, int32_t* j1) {
    const __m128i ti = _mm_castpd_si128(t);
    *j0 = _mm_cvtsi128_si32(ti);
    *j1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(ti, ti));
}

// The number of all-ones lanes among four comparison masks, per 64-bit lane:
// i_l = -(m1[l] + m2[l] + m3[l] + m4[l]) as integers.
inline void count_masks(__m128d m1, __m128d m2, __m128d m3, __m128d m4, int32_t* i0, int32_t* i1) {
    const __m128i s = _mm_sub_epi64(
        _mm_sub_epi64(_mm_sub_epi64(_mm_sub_epi64(_mm_setzero_si128(), _mm_castpd_si128(m1)), _mm_castpd_si128(m2)),
                      _mm_castpd_si128(m3)),
        _mm_castpd_si128(m4));
    *i0 = _mm_cvtsi128_si32(s);
    *i1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(s, s));
}

// Six columns of a table with 16-byte aligned rows of 8 doubles, row i0 for
// lane 0 and i1 for lane 1: out[k] = {t[i0][k], t[i1][k]}, k < 6.
inline void gather6(const double (*t)[8], int32_t i0, int32_t i1, __m128d* out) {
    for (int k = 0; k < 6; k += 2) {
        const __m128d r0 = _mm_load_pd(&t[i0][k]), r1 = _mm_load_pd(&t[i1][k]);
        out[k] = _mm_unpacklo_pd(r0, r1);
        out[k + 1] = _mm_unpackhi_pd(r0, r1);
    }
}

}  // namespace orv::vec::atrig_ops
