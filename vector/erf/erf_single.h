// Register steps of the single Erf, Erfc and CdfNorm kernels: plain double
// on the two double halves of a float register, rounded once to float. A
// relative error near 2^-30 before that rounding leaves the float result
// within about 0.53 ULP, so no double-double steps are needed. With a = |z|:
//   a < 3/4:        erf(z) = z P(z^2), erfc(z) = 1 - z P(z^2)
//   3/4 <= a <= 9:  erfc(a) = exp(-a^2) t G(t), t = 2/(2 + a),
//                   erf(z) = +-(1 - erfc(a)), erfc(-a) = 2 - erfc(a)
// with a clamped to 9 beyond (erf is then 1, erfc(-a) is 2). exp(-a^2) is
// 2^-k exp(r), k = round(a^2/ln2), r = k ln2 - a^2, and t from a float
// division refined by one Newton step in double.
// P, G and exp(r) are minimax fits (erf_single_tables.h) at two sets of
// degrees: the accurate set (about 2^-30 each) and the EP set (below 2^-14).
// Every lane runs both forms unless all lanes of the register are small
// (a test on the mix would be mispredicted on mixed inputs).
#pragma once

#include <cstring>

#include "vector/erf/erf_single_tables.h"
#include "vector/erf/erf_vec.h"

namespace orv::erfk::single {

namespace simd = orv::vec::simd;
namespace poly = orv::vec::poly;
using simd::as;
using simd::VD;
using simd::VI64;
using v::splat;

struct SetHa {
    static constexpr const auto& small = kErfSmallS;
    static constexpr const auto& g = kErfcxGS;
    static constexpr const auto& e = kExpS;
};
struct SetEp {
    static constexpr const auto& small = kErfSmallSEp;
    static constexpr const auto& g = kErfcxGSEp;
    static constexpr const auto& e = kExpSEp;
};

inline constexpr double kCut = 0.75;
inline constexpr double kEnd = 9.0;
inline constexpr double kInvLn2 = 1.4426950408889634;
// ln2 in two parts, the first of 32 bits (k ln2 exact for k < 2^20).
inline constexpr double kLn2Hi = 6.93147180369123816490e-01;
inline constexpr double kLn2Lo = 1.90821492927058770002e-10;

// exp(-u) for 9/16 <= u <= 81: 2^-k exp(r), r = k ln2 - u (k ln2 and u are
// within a factor two, so the first difference is exact).
template <class S>
[[gnu::always_inline]] inline VD exp_neg(VD u) {
    const VD sh = splat(orv::explog::kShiftD);
    const VD t = u * splat(kInvLn2) + sh;
    const VD k = t - sh;
    const VI64 ki = as<VI64>(t) - as<VI64>(sh);
    const VD r = (k * splat(kLn2Hi) - u) + k * splat(kLn2Lo);
    return poly::horner(r, S::e, splat) * v::pow2v(-ki);
}

// 2/(2 + a) from its float guess g by one Newton step (relative error
// 2^-23 before, 2^-46 after): a double division costs more than the
// float one for twice the lanes and the step.
inline VD two_over(VD a, VD g) {
    const VD d = splat(1.0) + splat(0.5) * a;  // the reciprocal's argument
    return g + g * (splat(1.0) - d * g);
}

// erfc(a) for 3/4 <= a <= 9, g the float guess of 2/(2 + a).
template <class S>
[[gnu::always_inline]] inline VD erfc_big(VD a, VD g) {
    const VD t = two_over(a, g);
    return exp_neg<S>(a * a) * (t * poly::horner(t, S::g, splat));
}

// z P(z^2), erf(z) for |z| < 3/4.
template <class S>
[[gnu::always_inline]] inline VD erf_small(VD z) {
    return z * poly::horner(z * z, S::small, splat);
}

// The lanes below the cut, and whether all of them are.
struct Split {
    VD small;
    uint32_t m;
    bool all() const { return m == v::all_lanes(); }
};
inline Split split(VD a) {
    const VD s = simd::lt(a, splat(kCut));
    return {s, simd::lanes(s)};
}

// erf(x) for finite x (g: guess_of(x)).
template <class S>
[[gnu::always_inline]] inline VD erf(VD x, VD g) {
    const VD a = v::abs_of(x);
    const Split sp = split(a);
    if (sp.all()) return erf_small<S>(x);
    const VD big = simd::bor(splat(1.0) - erfc_big<S>(v::clamp(a, kCut, kEnd), g), v::sign_of(x));
    return simd::select(sp.small, erf_small<S>(x), big);
}

// erfc(x) for x < 9 (or any x that is not NaN, where erfc rounds to 2 or
// the lane is a callout).
template <class S>
[[gnu::always_inline]] inline VD erfc(VD x, VD g) {
    const VD a = v::abs_of(x);
    const Split sp = split(a);
    if (sp.all()) return splat(1.0) - erf_small<S>(x);
    const VD e = erfc_big<S>(v::clamp(a, kCut, kEnd), g);
    const VD big = simd::select(simd::negative(x), splat(2.0) - e, e);
    return simd::select(sp.small, splat(1.0) - erf_small<S>(x), big);
}

// Phi(x) = erfc(-x/sqrt 2)/2 for x > -12.7, with -x/sqrt 2 rounded once
// (its error moves the result by under 2^-45 relative); g the guess for
// x/sqrt 2 in float.
template <class S>
[[gnu::always_inline]] inline VD cdfnorm(VD x, VD g) {
    return splat(0.5) * erfc<S>(x * splat(-0.7071067811865476), g);
}

// The float guess of 2/(2 + a), a = |x| clamped to [3/4, 9] (the lanes
// outside take the clamped value in double too).
inline simd::VF guess_of(simd::VF x) {
    using simd::VF;
    const VF a = simd::bandnot(simd::fill<VF>(-0.0f), x);
    const VF lo = simd::fill<VF>(float(kCut)), hi = simd::fill<VF>(float(kEnd));
    const VF c = simd::select(simd::lt(a, hi), simd::select(simd::lt(a, lo), lo, a), hi);
    return simd::fill<VF>(2.0f) / (simd::fill<VF>(2.0f) + c);
}

// F(x, g) on the float lanes x with their guesses g, both widened to
// double, rounded once on the way back.
template <VD (*F)(VD, VD)>
inline simd::VF on_halves(simd::VF x, simd::VF g) {
    simd::VDW w = simd::widen(x);
    const simd::VDW wg = simd::widen(g);
    VD h[2], hg[2];
    std::memcpy(h, &w, sizeof w);
    std::memcpy(hg, &wg, sizeof wg);
    h[0] = F(h[0], hg[0]);
    h[1] = F(h[1], hg[1]);
    std::memcpy(&w, h, sizeof w);
    return simd::narrow(w);
}

// The kernels' register steps.
template <class S>
inline simd::VF erf_f(simd::VF x) { return on_halves<erf<S>>(x, guess_of(x)); }
template <class S>
inline simd::VF erfc_f(simd::VF x) { return on_halves<erfc<S>>(x, guess_of(x)); }
template <class S>
inline simd::VF cdfnorm_f(simd::VF x) {
    return on_halves<cdfnorm<S>>(x, guess_of(x * simd::fill<simd::VF>(0.70710677f)));
}

}  // namespace orv::erfk::single
