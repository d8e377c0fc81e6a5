// Register helpers of the inverse trigonometric and hyperbolic kernels that
// the shared vocabulary lacks, at the vocabulary's width: the sign bit moved
// between registers, the minimum with the second operand's NaN rule, 2^N put
// into the exponent field, and the rows of the atan reduction. Each has its
// scalar equivalent in the comment.
#pragma once

#include <cstdint>

#include "vector/simd/vec.h"

namespace orv::vec::atrig_ops {

namespace simd = orv::vec::simd;
using simd::VD;
using simd::VI64;
using simd::VU64;

inline constexpr uint64_t kSignBit = 0x8000000000000000ull;

// The sign bit of x alone: x & 0x8000...
inline VD sign_of(VD x) { return simd::as<VD>(simd::as<VU64>(x) & kSignBit); }
// |x|: x & 0x7FFF...
inline VD abs_of(VD x) { return simd::as<VD>(simd::as<VU64>(x) & ~kSignBit); }
// x with its sign bit flipped where s has it: x ^ (s & 0x8000...)
inline VD xor_sign(VD x, VD s) { return simd::bxor(x, sign_of(s)); }
// a < b ? a : b, so b is taken when either is NaN (and for equal values)
inline VD min_or_b(VD a, VD b) { return simd::select(simd::lt(a, b), a, b); }

// y * 2^N where N is held in the bits of t above its low 6 bits (t the sum
// of a rounding shifter whose mantissa ends in 64 N + j, N below 4096): the
// integer N << 52 added to the bits of y. No overflow or underflow check.
inline VD scale_by_shifter64(VD y, VD t) {
    return simd::as<VD>(simd::as<VI64>(y) + ((simd::as<VI64>(t) & 0x3FFC0) << 46));
}

// The number of all-ones lanes among four comparison masks, per 64-bit lane:
// -(m1 + m2 + m3 + m4) as integers.
inline VI64 count_masks(VD m1, VD m2, VD m3, VD m4) {
    return -(simd::as<VI64>(m1) + simd::as<VI64>(m2) + simd::as<VI64>(m3) + simd::as<VI64>(m4));
}

// The same six columns for a row chosen by nested masks (m4 implies m3
// implies m2 implies m1; the row is the number of masks set): blends of
// broadcast constants, no load a lane.
inline void select6(const double (*t)[8], VD m1, VD m2, VD m3, VD m4, VD* out) {
    for (int k = 0; k < 6; ++k) {
        const VD r01 = simd::select(m1, simd::fill<VD>(t[1][k]), simd::fill<VD>(t[0][k]));
        const VD r012 = simd::select(m2, simd::fill<VD>(t[2][k]), r01);
        const VD r0123 = simd::select(m3, simd::fill<VD>(t[3][k]), r012);
        out[k] = simd::select(m4, simd::fill<VD>(t[4][k]), r0123);
    }
}

// Six columns of a table with rows of 8 doubles, row i of each lane:
// out[k] = t[i][k] lane for lane, k < 6.
inline void gather6(const double (*t)[8], VI64 i, VD* out) {
    for (int k = 0; k < 6; ++k) out[k] = simd::gather<8>(&t[0][k], i);
}

}  // namespace orv::vec::atrig_ops
