// Bit views of floating-point values and the integer range tests of the
// special masks, on scalars and registers of the vocabulary's width; splat
// for either register.
#pragma once

#include <bit>
#include <cstdint>

#include "vector/simd/vec.h"

namespace orv::vec::bitops {

inline uint64_t bits_of(double x) { return std::bit_cast<uint64_t>(x); }
inline uint32_t bits_of(float x) { return std::bit_cast<uint32_t>(x); }
inline double double_of(uint64_t b) { return std::bit_cast<double>(b); }

inline simd::VF splat(float v) { return simd::fill<simd::VF>(v); }
inline simd::VD splat(double v) { return simd::fill<simd::VD>(v); }
// The same for the double register holding one float register's lanes.
inline simd::VDW splat_wide(double v) { return simd::fill<simd::VDW>(v); }

// One bit a lane: the bits of |x| (single) or the high word of |x|
// (double) above bound, as signed integers.
inline uint32_t above(simd::VF x, int32_t bound) {
    const simd::VI32 ax = simd::as<simd::VI32>(x) & 0x7FFFFFFF;
    return simd::lanes(simd::as<simd::VF>(ax > bound));
}
// For doubles only the high word's comparison matters: its result fills the
// top of the 64-bit lane, whose sign bit gives the lane's bit.
// Where 64-bit comparisons exist (AVX2, AVX-512) one of them does the same:
// |x| > (bound_hi << 32 | 0xFFFFFFFF) exactly when the high word of |x| is
// above bound_hi.
inline uint32_t above(simd::VD x, int32_t bound_hi) {
#if ORV_SIMD_BYTES == 16
    const simd::VI32 ax = simd::as<simd::VI32>(x) & 0x7FFFFFFF;
    return simd::lanes(simd::as<simd::VD>(ax > bound_hi));
#else
    const simd::VI64 ax = simd::as<simd::VI64>(x) & INT64_MAX;
    return simd::lanes(simd::as<simd::VD>(ax > ((int64_t(bound_hi) << 32) | 0xFFFFFFFF)));
#endif
}

}  // namespace orv::vec::bitops
