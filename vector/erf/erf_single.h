// Register steps of the single Erf, Erfc, CdfNorm and Erfcx kernels: plain double
// on the two double halves of a float register, rounded once to float. A
// relative error near 2^-30 before that rounding leaves the float result
// within about 0.53 ULP, so no double-double steps are needed. With a = |z|:
//   a < 3/4:        erf(z) = z P(z^2), erfc(z) = 1 - z P(z^2)
//   3/4 <= a <= 9:  erfc(a) = exp(-a^2) t G(t), t = 2/(2 + a),
//                   erf(z) = +-(1 - erfc(a)), erfc(-a) = 2 - erfc(a)
// with a clamped to 9 beyond (erf is then 1, erfc(-a) is 2). exp(-a^2) is
// 2^-k exp(r), k = round(a^2/ln2), r = k ln2 - a^2.
// P, G and exp(r) are minimax fits (erf_single_tables.h) at three sets of
// degrees: the accurate set (about 2^-30 each), a shorter one for Erf
// (which needs erfc(a) only to 4 and to 2^-28) and the EP set (below 2^-14).
// Every lane runs both forms unless all lanes of the register are small
// (a test on the mix would be mispredicted on mixed inputs).
#pragma once

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
    static constexpr double end = 9.0;
};
// Erf: erfc(a) only to 3/4 <= a <= 4 and to 2^-28 (its error is absolute
// against erf, and at most 0.29 of it); beyond 4 erf rounds to 1.
struct SetErf {
    static constexpr const auto& small = kErfSmallS;
    static constexpr const auto& g = kErfcxG4S;
    static constexpr const auto& e = kExpS6;
    static constexpr double end = 4.0;
};
struct SetEp {
    static constexpr const auto& small = kErfSmallSEp;
    static constexpr const auto& g = kErfcxGSEp;
    static constexpr const auto& e = kExpSEp;
    static constexpr double end = 9.0;
};

inline constexpr double kCut = 0.75;
inline constexpr double kInvLn2 = 1.4426950408889634;
// ln2 in two parts, the first of 32 bits (k ln2 exact for k < 2^20).
inline constexpr double kLn2Hi = 6.93147180369123816490e-01;
inline constexpr double kLn2Lo = 1.90821492927058770002e-10;

// exp(-u) (Sign -1, 9/16 <= u <= 81) or exp(u) (Sign 1, 0 <= u <= 86):
// 2^(Sign k) exp(r), r = Sign (u - k ln2), k = round(u/ln2) (k ln2 and u
// are within a factor two or k is 0, so the first difference is exact).
template <class S, int Sign = -1>
[[gnu::always_inline]] inline VD exp_neg(VD u) {
    const VD sh = splat(orv::explog::kShiftD);
    const VD t = u * splat(kInvLn2) + sh;
    const VD k = t - sh;
    const VI64 ki = as<VI64>(t) - as<VI64>(sh);
    const VD r = Sign < 0 ? (k * splat(kLn2Hi) - u) + k * splat(kLn2Lo) : (u - k * splat(kLn2Hi)) - k * splat(kLn2Lo);
    return poly::horner(r, S::e, splat) * v::pow2v(Sign < 0 ? -ki : ki);
}

// erfc(a) for 3/4 <= a <= 9.
template <class S>
[[gnu::always_inline]] inline VD erfc_big(VD a) {
    const VD t = splat(2.0) / (splat(2.0) + a);
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

// erf(x) for finite x.
template <class S>
[[gnu::always_inline]] inline VD erf(VD x) {
    const VD a = v::abs_of(x);
    const Split sp = split(a);
    if (sp.all()) return erf_small<S>(x);
    const VD big = simd::bor(splat(1.0) - erfc_big<S>(v::clamp(a, kCut, S::end)), v::sign_of(x));
    return simd::select(sp.small, erf_small<S>(x), big);
}

// erfc(x) for x < 9 (or any x that is not NaN, where erfc rounds to 2 or
// the lane is a callout).
template <class S>
[[gnu::always_inline]] inline VD erfc(VD x) {
    const VD a = v::abs_of(x);
    const Split sp = split(a);
    if (sp.all()) return splat(1.0) - erf_small<S>(x);
    const VD e = erfc_big<S>(v::clamp(a, kCut, S::end));
    const VD big = simd::select(simd::negative(x), splat(2.0) - e, e);
    return simd::select(sp.small, splat(1.0) - erf_small<S>(x), big);
}

// Phi(x) = erfc(-x/sqrt 2)/2 for x > -12.7, with -x/sqrt 2 rounded once
// (its error moves the result by under 2^-45 relative).
template <class S>
[[gnu::always_inline]] inline VD cdfnorm(VD x) {
    return splat(0.5) * erfc<S>(x * splat(-0.7071067811865476));
}

// erfcx(x) for -9.25 < x < 2^124: t G(t) from
// the fit over all a >= 3/4 at and above 3/4; below, exp(x^2) times
// 1 - x P(x^2) (|x| < 3/4) or 2 exp(x^2) - erfcx(-x). The exponential is
// skipped when no lane of the register is below 3/4.
[[gnu::always_inline]] inline VD erfcx(VD x) {
    const VD a = v::clamp(v::abs_of(x), kCut, 0x1p124);
    const VD t = splat(2.0) / (splat(2.0) + a);
    const VD pos = t * poly::horner(t, kErfcxAllS, splat);
    const VD viaexp = simd::lt(x, splat(kCut));
    if (!simd::lanes(viaexp)) return pos;
    const VD xs = v::clamp(x, -9.25, kCut);
    const VD e = exp_neg<SetHa, 1>(xs * xs);
    const VD small = e * (splat(1.0) - erf_small<SetHa>(xs));
    const VD neg = splat(2.0) * e - pos;
    return simd::select(viaexp, simd::select(simd::lt(xs, splat(-kCut)), neg, small), pos);
}

// The kernels' register steps: on the two double halves of a float
// register, rounded once on the way back.
template <class S>
inline simd::VF erf_f(simd::VF x) { return v::on_halves<erf<S>>(x); }
template <class S>
inline simd::VF erfc_f(simd::VF x) { return v::on_halves<erfc<S>>(x); }
inline simd::VF erfcx_f(simd::VF x) { return v::on_halves<erfcx>(x); }
template <class S>
inline simd::VF cdfnorm_f(simd::VF x) { return v::on_halves<cdfnorm<S>>(x); }

}  // namespace orv::erfk::single
