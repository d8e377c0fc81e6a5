// Lane operations of the trigonometric kernels that the common helpers do
// not offer, on registers of the vocabulary's width: table rows of four
// doubles picked by integer lanes, the low bits of a rounding shifter's sum
// as lane masks, signs, and the lane masks of the pairs of the large-argument
// path. Each has its scalar equivalent in the comment.
#pragma once

#include <cstdint>
#include <cstring>

#include "vector/simd/vec.h"

namespace orv::vec::trig_ops {

namespace simd = orv::vec::simd;
using simd::VD;
using simd::VI64;
using simd::VU64;

inline constexpr uint64_t kSignBit = 0x8000000000000000ull;
inline constexpr int kLanesD = simd::Reg<double>::kWidth;

// The 64-bit integer lanes of a double register (the bits of t).
inline VI64 ibits(VD t) { return simd::as<VI64>(t); }

// Rows of four doubles, row j = low bits of each lane under mask:
// {c0, c1, c2, c3} = table[j] lane for lane.
// In the wide builds each row is one 32-byte load and the rows are
// transposed by unpacks and permutes, which is faster than four gather
// instructions; the values are the same. (In SSE2 row loads made Tan slower.)
inline void rows4(const double (*table)[4], VI64 t, int mask, VD* c0, VD* c1, VD* c2, VD* c3) {
    const VI64 j = t & int64_t(mask);
#if ORV_SIMD_BYTES == 64
    alignas(64) int64_t k[8];
    _mm512_store_si512(k, (__m512i)j);
    auto two = [&](int l) {  // rows l and l + 1 side by side
        return _mm512_insertf64x4(_mm512_castpd256_pd512(_mm256_loadu_pd(table[k[l]])),
                                  _mm256_loadu_pd(table[k[l + 1]]), 1);
    };
    const __m512d a01 = two(0), a23 = two(2), a45 = two(4), a67 = two(6);
    // Per 128-bit part: {r0[0] r2[0]} {r0[2] r2[2]} {r1[0] r3[0]} {r1[2] r3[2]} (lo), [1] and [3] (hi).
    const __m512d lo03 = _mm512_unpacklo_pd(a01, a23), hi03 = _mm512_unpackhi_pd(a01, a23);
    const __m512d lo47 = _mm512_unpacklo_pd(a45, a67), hi47 = _mm512_unpackhi_pd(a45, a67);
    const __m512i even = _mm512_set_epi64(13, 9, 12, 8, 5, 1, 4, 0);
    const __m512i odd = _mm512_set_epi64(15, 11, 14, 10, 7, 3, 6, 2);
    *c0 = _mm512_permutex2var_pd(lo03, even, lo47);
    *c1 = _mm512_permutex2var_pd(hi03, even, hi47);
    *c2 = _mm512_permutex2var_pd(lo03, odd, lo47);
    *c3 = _mm512_permutex2var_pd(hi03, odd, hi47);
#elif ORV_SIMD_BYTES == 32
    alignas(32) int64_t k[4];
    _mm256_store_si256(reinterpret_cast<__m256i*>(k), (__m256i)j);
    const __m256d r0 = _mm256_loadu_pd(table[k[0]]), r1 = _mm256_loadu_pd(table[k[1]]);
    const __m256d r2 = _mm256_loadu_pd(table[k[2]]), r3 = _mm256_loadu_pd(table[k[3]]);
    const __m256d t0 = _mm256_unpacklo_pd(r0, r1), t1 = _mm256_unpackhi_pd(r0, r1);
    const __m256d t2 = _mm256_unpacklo_pd(r2, r3), t3 = _mm256_unpackhi_pd(r2, r3);
    *c0 = _mm256_permute2f128_pd(t0, t2, 0x20);
    *c1 = _mm256_permute2f128_pd(t1, t3, 0x20);
    *c2 = _mm256_permute2f128_pd(t0, t2, 0x31);
    *c3 = _mm256_permute2f128_pd(t1, t3, 0x31);
#else
    *c0 = simd::gather<4>(&table[0][0], j);
    *c1 = simd::gather<4>(&table[0][1], j);
    *c2 = simd::gather<4>(&table[0][2], j);
    *c3 = simd::gather<4>(&table[0][3], j);
#endif
}

// All ones in the lanes where bit b of the 64-bit integer is set:
// (i >> b) & 1 ? ~0 : 0.
inline VD bit_mask(VI64 i, int b) { return simd::as<VD>(-((i >> b) & 1)); }

// Bit b of the integer moved to the sign bit: ((i >> b) & 1) << 63.
inline VD bit_to_sign(VI64 i, int b) {
    return simd::as<VD>((simd::as<VU64>(i) << (63 - b)) & kSignBit);
}

// y with its sign flipped where s has the sign bit: y ^ (s & signbit).
inline VD xor_sign(VD y, VD s) {
    return simd::as<VD>(simd::as<VU64>(y) ^ (simd::as<VU64>(s) & kSignBit));
}
inline double xor_sign(double y, double s) {
    return __builtin_bit_cast(double, __builtin_bit_cast(uint64_t, y) ^
                                          (__builtin_bit_cast(uint64_t, s) & kSignBit));
}

// |x|: x with the sign bit cleared.
inline VD abs(VD x) { return simd::as<VD>(simd::as<VU64>(x) & ~kSignBit); }
inline double abs(double x) { return __builtin_fabs(x); }

// mask ? a : b, lane by lane.
inline VD select(VD mask, VD a, VD b) { return simd::select(mask, a, b); }

// The lanes of a one-bit-a-lane mask widened to their aligned pairs: lane l
// is set when lane l or its neighbour l ^ 1 is. The large-argument paths
// work on pairs of lanes, so that every register width gives each lane the
// same path.
inline uint32_t pairs_of(uint32_t m) { return m | ((m & 0x55555555u) << 1) | ((m >> 1) & 0x55555555u); }

// a in the lanes whose bit is set in m, b in the others: m >> l & 1 ? a : b.
inline VD select_lanes(uint32_t m, VD a, VD b) {
    double av[kLanesD], bv[kLanesD];
    std::memcpy(av, &a, sizeof a);
    std::memcpy(bv, &b, sizeof b);
    for (int l = 0; l < kLanesD; ++l)
        if (m >> l & 1) bv[l] = av[l];
    std::memcpy(&b, bv, sizeof b);
    return b;
}

}  // namespace orv::vec::trig_ops
