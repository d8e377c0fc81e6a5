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
