// Small helpers of the power and root kernels that the shared headers do
// not offer yet. Each is written for a scalar lane; the comment gives the
// plain scalar meaning.
#pragma once

#include <cstdint>

#include "vector/simd/vec.h"

namespace orv::vec::power_ops {

namespace simd = orv::vec::simd;

// The correctly rounded square root of x (IEEE 754 sqrt), without the C
// library's errno path.
inline double sqrt(double x) { return simd::sqrt(x); }

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

// ---- on registers of doubles of the vocabulary's width ----

using simd::VD;
using simd::VF;
using simd::VI64;
using simd::VU64;

// The 64-bit integer lanes of a register, and back (bit casts).
inline VI64 ibits(VD x) { return simd::as<VI64>(x); }
inline VD dbits(VI64 x) { return simd::as<VD>(x); }
// a - b, a + b (both modulo 2^64), a & m and a >> s (logical) on 64-bit lanes.
inline VI64 sub64(VI64 a, VI64 b) { return simd::as<VI64>(simd::as<VU64>(a) - simd::as<VU64>(b)); }
inline VI64 add64(VI64 a, VI64 b) { return simd::as<VI64>(simd::as<VU64>(a) + simd::as<VU64>(b)); }
inline VI64 and64(VI64 a, uint64_t m) { return a & int64_t(m); }
inline VI64 splat64(uint64_t v) { return simd::fill<VI64>(int64_t(v)); }
template <int S>
inline VI64 srl64(VI64 a) { return simd::as<VI64>(simd::as<VU64>(a) >> S); }
// double(int64_t(t) >> 52) for each lane (exact).
inline VD sar52_to_double(VI64 t) { return simd::small_int_to_double(t >> 52); }
// double(int32_t(t >> 32)) for each 64-bit lane: the high words (exact).
inline VD hi_words_to_double(VI64 t) { return simd::small_int_to_double(t >> 32); }
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
inline VD thirds(VD x, VI64* k52) {
    const VD q = (simd::small_int_to_double(ibits(x) >> 52) + 2046.5) * (1.0 / 3.0);
    const VI64 k = simd::trunc_small(q) - 1023;
    *k52 = simd::as<VI64>(simd::as<VU64>(k) << 52);
    return dbits(sub64(ibits(x), add64(add64(*k52, *k52), *k52)));
}
// The sign bits of x, and |x|.
inline VD sign_of(VD x) { return dbits(ibits(x) & int64_t(0x8000000000000000ull)); }
inline VD abs_of(VD x) { return dbits(ibits(x) & int64_t(0x7FFFFFFFFFFFFFFFull)); }
// All ones in the lanes holding a zero, a denormal, an infinity or a NaN.
inline VD not_normal(VD x) { return simd::outside(abs_of(x), 0x00100000u, 0x7FE00000u); }

// The low and high halves of 32-bit integer lanes converted to double
// (exact). Scalar meaning: lo[i] = double(k[i]), hi[i] = double(k[i + W/2])
// for W lanes of k.
using VIHalf = int32_t __attribute__((vector_size(simd::kBytes / 2)));
inline VD int_lo_to_double(simd::VI32 k) {
    VIHalf h;
    __builtin_memcpy(&h, &k, sizeof h);
    return __builtin_convertvector(h, VD);
}
inline VD int_hi_to_double(simd::VI32 k) {
    VIHalf h;
    __builtin_memcpy(&h, reinterpret_cast<const char*>(&k) + sizeof h, sizeof h);
    return __builtin_convertvector(h, VD);
}

}  // namespace orv::vec::power_ops
