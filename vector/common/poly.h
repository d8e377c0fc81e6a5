// Polynomial evaluation with the grouping stated, so that a kernel written
// with these helpers rounds in a known order. Coefficients are given highest
// degree first. V is a scalar or a register type with * and +.
#pragma once

#include <cstddef>

namespace orv::vec::poly {

// Horner: (((c[0] x + c[1]) x + c[2]) ... ) x + c[N-1].
template <typename V, typename S, std::size_t N>
inline V horner(V x, const S (&c)[N], V (*splat)(S)) {
    V p = splat(c[0]);
    for (std::size_t i = 1; i < N; ++i) p = p * x + splat(c[i]);
    return p;
}

// Estrin, degree 7 (eight coefficients, highest first): pairs
// q_i = c_lo + c_hi x, then (q3 x^2 + q2) x^4 + (q1 x^2 + q0) with x^2 and
// x^4 formed once. Shorter dependency chain than Horner, other rounding.
template <typename V, typename S>
inline V estrin7(V x, const S (&c)[8], V (*splat)(S)) {
    const V x2 = x * x;
    const V x4 = x2 * x2;
    const V q3 = splat(c[0]) * x + splat(c[1]);
    const V q2 = splat(c[2]) * x + splat(c[3]);
    const V q1 = splat(c[4]) * x + splat(c[5]);
    const V q0 = splat(c[6]) * x + splat(c[7]);
    return (q3 * x2 + q2) * x4 + (q1 * x2 + q0);
}

}  // namespace orv::vec::poly
