// Lane operations of the trigonometric kernels that the common helpers do
// not offer: table rows of four doubles picked by integer lanes, the low
// bits of a rounding shifter's sum as lane masks, and the widening of four
// floats to two registers of doubles and back. Each has its scalar
// equivalent in the comment.
#pragma once

#include <emmintrin.h>

#include <cstdint>

namespace orv::vec::trig_ops {

// The 64-bit integer lanes of a double register (the bits of t).
inline __m128i ibits(__m128d t) { return _mm_castpd_si128(t); }

// i + k in each 64-bit lane.
inline __m128i add_i64(__m128i i, int64_t k) { return _mm_add_epi64(i, _mm_set1_epi64x(k)); }

// Two rows of four doubles, row j = low bits of each lane under mask:
// {c0, c1, c2, c3} = table[j] lane for lane.
inline void rows4(const double (*table)[4], __m128i t, int mask, __m128d* c0, __m128d* c1,
                  __m128d* c2, __m128d* c3) {
    const int j0 = _mm_cvtsi128_si32(t) & mask;
    const int j1 = _mm_cvtsi128_si32(_mm_unpackhi_epi64(t, t)) & mask;
    const __m128d a0 = _mm_load_pd(table[j0]), a1 = _mm_load_pd(table[j1]);
    const __m128d b0 = _mm_load_pd(table[j0] + 2), b1 = _mm_load_pd(table[j1] + 2);
    *c0 = _mm_unpacklo_pd(a0, a1);
    *c1 = _mm_unpackhi_pd(a0, a1);
    *c2 = _mm_unpacklo_pd(b0, b1);
    *c3 = _mm_unpackhi_pd(b0, b1);
}

// All ones in the lanes where bit b of the 64-bit integer is set:
// (i >> b) & 1 ? ~0 : 0.
inline __m128d bit_mask(__m128i i, int b) {
    const __m128i m = _mm_and_si128(i, _mm_set1_epi64x(int64_t(1) << b));
    const __m128i z = _mm_cmpeq_epi32(m, _mm_setzero_si128());
    return _mm_castsi128_pd(_mm_xor_si128(_mm_shuffle_epi32(z, _MM_SHUFFLE(2, 2, 0, 0)),
                                          _mm_set1_epi32(-1)));
}

// Bit b of the integer moved to the sign bit: ((i >> b) & 1) << 63.
inline __m128d bit_to_sign(__m128i i, int b) {
    return _mm_castsi128_pd(
        _mm_and_si128(_mm_slli_epi64(i, 63 - b), _mm_set1_epi64x(int64_t(1ull << 63))));
}

// y with its sign flipped where s has the sign bit: y ^ (s & signbit).
inline __m128d xor_sign(__m128d y, __m128d s) {
    return _mm_xor_pd(y, _mm_and_pd(s, _mm_castsi128_pd(_mm_set1_epi64x(int64_t(1ull << 63)))));
}
inline double xor_sign(double y, double s) {
    return __builtin_bit_cast(double, __builtin_bit_cast(uint64_t, y) ^
                                          (__builtin_bit_cast(uint64_t, s) & (1ull << 63)));
}

// |x|: x with the sign bit cleared.
inline __m128d abs(__m128d x) {
    return _mm_and_pd(x, _mm_castsi128_pd(_mm_set1_epi64x(0x7FFFFFFFFFFFFFFFll)));
}

inline double abs(double x) { return __builtin_fabs(x); }

// mask ? a : b, lane by lane.
inline __m128d select(__m128d mask, __m128d a, __m128d b) {
    return _mm_or_pd(_mm_and_pd(mask, a), _mm_andnot_pd(mask, b));
}

// Two lanes to memory and back (16-byte aligned), and two integers as the
// 64-bit lanes of a register.
inline void store(double* p, __m128d v) { _mm_store_pd(p, v); }
inline __m128d load(const double* p) { return _mm_load_pd(p); }
inline __m128i make_i64(int64_t lane0, int64_t lane1) { return _mm_set_epi64x(lane1, lane0); }

// Floats 0, 1 and 2, 3 as doubles, and back: (double)x[i], (float)y[i].
inline __m128d widen_lo(__m128 x) { return _mm_cvtps_pd(x); }
inline __m128d widen_hi(__m128 x) { return _mm_cvtps_pd(_mm_movehl_ps(x, x)); }
inline __m128 narrow(__m128d lo, __m128d hi) {
    return _mm_movelh_ps(_mm_cvtpd_ps(lo), _mm_cvtpd_ps(hi));
}

// A bit a lane: the high word of |x| above bound (signed compare).
inline int above_hi(__m128d x, int32_t bound_hi) {
    const __m128i hw = _mm_and_si128(_mm_shuffle_epi32(_mm_castpd_si128(x), _MM_SHUFFLE(3, 3, 1, 1)),
                                     _mm_set1_epi32(0x7FFFFFFF));
    return _mm_movemask_pd(_mm_castsi128_pd(_mm_cmpgt_epi32(hw, _mm_set1_epi32(bound_hi))));
}

}  // namespace orv::vec::trig_ops
