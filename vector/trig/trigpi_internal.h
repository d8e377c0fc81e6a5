// The pi- and degree-scaled sine, cosine and tangent (Sinpi, Cospi, Tanpi,
// SinCospi, Sind, Cosd, Tand), written once on the width-generic register
// vocabulary for double registers, float registers and float lanes widened
// to double.
//
// Reduction, exact in binary: for the pi forms q = round(2|x|) and
// r = |x| - q/2 (|r| <= 1/4), for degrees q = round(|x|/90) and
// r = |x| - 90 q (|r| <= 45 and a hair). Both subtractions are exact (the
// operands are multiples of the ulp of |x| and r is small), below 2^50 in
// double and 2^21 in single; larger arguments are integers or half-integers
// (pi forms) and go through the callout, which reduces them with an exact
// fmod by the period. Then u = r K (K = pi or pi/180), |u| <= pi/4, and
// sin(pi x) or sin(x degrees) is +-sin u or +-cos u by q mod 4.
//
// Tiers: HA (double) forms u as a double-double (Dekker's product of r
// with the head of K) and evaluates sin and cos with the leading terms exact,
// so one rounding dominates; HA single evaluates in double and rounds once;
// LA and EP evaluate in the data's precision with polynomials of the
// accuracy they need (2^-26 relative for double EP, 2^-11 for single EP).
// Tangent is the quotient, with a double-double division in HA double.
//
// Zeros and poles follow the exact values: sin(pi n) = +0 for n >= 0 (then
// the sign of x), cos(pi (n + 1/2)) = +0, tan(pi n) = +0 for even and -0 for
// odd n >= 0, tan(pi (n + 1/2)) = +infinity for even and -infinity for odd
// n >= 0 (the tangent is odd in x).
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/simd/vec.h"

// The native register types carry a may_alias attribute that template
// arguments drop (harmless here).
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wignored-attributes"

namespace orv::trigpi {

namespace simd = orv::vec::simd;
using simd::as;
using simd::fill;
using simd::VD;
using simd::VDW;
using simd::VF;

inline constexpr int32_t kOk = 0, kDomain = 1;

// Minimax coefficients, highest first, made by tools/fit_trigpi.py (which
// states the fits); z = u^2, |u| <= pi/4 (1 + 2^-10).
// sin u = u + u^3 P(u^2), P degree 6, relative error 2^-57.1 (HA, LA double).
inline constexpr double kSin[7] = {-7.586583308547512e-13, 1.6058529692487753e-10,
                                   -2.5052106220327255e-08, 2.75573192193044e-06,
                                   -0.0001984126984126502, 0.008333333333333331,
                                   -0.16666666666666666};
// cos u = 1 - u^2/2 + u^4 Q(u^2), Q degree 5, relative error 2^-59.4 (HA double);
// kCosLa is 1 + u^2 (Q(u^2) u^2 - 1/2) for LA double.
#define ORV_TRIGPI_COSQ                                                                      \
    -1.1382468305789804e-11, 2.0876143999757625e-09, -2.755731726090338e-07,                 \
        2.4801587298744967e-05, -0.0013888888888887385, 0.041666666666666664
inline constexpr double kCosq[6] = {ORV_TRIGPI_COSQ};
inline constexpr double kCosLa[7] = {ORV_TRIGPI_COSQ, -0.5};
#undef ORV_TRIGPI_COSQ
// P degree 3 (2^-35.6) and cos u = 1 + u^2 C(u^2), C degree 4 (2^-41.5):
// single HA in double, double EP.
inline constexpr double kSin9[4] = {2.7249404413666437e-06, -0.00019840082828363783,
                                    0.008333331867798534, -0.16666666663838903};
inline constexpr double kCos10[5] = {-2.7236572496871907e-07, 2.4799856137152038e-05,
                                     -0.001388888507174604, 0.04166666663719914,
                                     -0.499999999999636};
// Float coefficients, P degree 2 (2^-26.2) and C degree 3 (2^-29.9): single LA.
inline constexpr float kSinf[3] = {-0.00019587516726460308f, 0.008332747034728527f,
                                   -0.166666641831398f};
inline constexpr float kCosf[4] = {2.446323196636513e-05f, -0.0013887585373595357f,
                                   0.04166664928197861f, -0.5f};
// P degree 1 (2^-17.2) and C degree 1 (2^-14.1): single EP.
inline constexpr float kSine[2] = {0.008211749605834484f, -0.16665731370449066f};
inline constexpr float kCose[2] = {0.04081766679883003f, -0.49993476271629333f};

// pi and pi/180: the double head, its tail, and the float value.
inline constexpr double kPiHi = 3.141592653589793, kPiLo = 1.2246467991473532e-16;
inline constexpr double kDegHi = 0.017453292519943295, kDegLo = 2.9486522708701687e-19;

enum class Fn { Sin, Cos, Tan };
enum class Unit { Pi, Deg };
enum class Tier { LA, HA, EP };

// Integer view and rounding shifter of each register kind.
using VI64W = int64_t __attribute__((vector_size(sizeof(VDW))));
template <typename V>
struct L;
template <>
struct L<VD> {
    using S = double;
    using I = simd::VI64;
    static constexpr double kShift = 6755399441055744.0;  // 1.5 * 2^52
};
template <>
struct L<VDW> {
    using S = double;
    using I = VI64W;
    static constexpr double kShift = 6755399441055744.0;
};
template <>
struct L<VF> {
    using S = float;
    using I = simd::VI32;
    static constexpr float kShift = 12582912.0f;  // 1.5 * 2^23
};

template <typename V>
inline V k(typename L<V>::S v) { return fill<V>(v); }

// Bitwise and comparison helpers on any of the three register kinds
// (the vocabulary's own take only its native registers).
template <typename V>
inline V band(V a, V b) {
    using I = typename L<V>::I;
    return as<V>(as<I>(a) & as<I>(b));
}
template <typename V>
inline V bxor(V a, V b) {
    using I = typename L<V>::I;
    return as<V>(as<I>(a) ^ as<I>(b));
}
template <typename V>
inline V eq(V a, V b) { return as<V>(a == b); }
// m ? a : b, lane by lane (m all ones or zero)
template <typename V>
inline V select(V m, V a, V b) {
    using I = typename L<V>::I;
    return as<V>((as<I>(m) & as<I>(a)) | (~as<I>(m) & as<I>(b)));
}

// All ones in the lanes where (i & bit) != 0.
template <typename V>
inline V has(typename L<V>::I i, int bit) { return as<V>((i & bit) != 0); }

// Horner, highest coefficient first.
template <typename V, typename S, std::size_t N>
inline V horner(V z, const S (&c)[N]) {
    V p = k<V>(c[0]);
    for (std::size_t i = 1; i < N; ++i) p = p * z + k<V>(c[i]);
    return p;
}

// r and q (in the low bits of the integer lanes) of a = |x|.
template <Unit U, typename V>
inline V reduce(V a, typename L<V>::I* q) {
    using S = typename L<V>::S;
    const V sh = k<V>(L<V>::kShift);
    if constexpr (U == Unit::Pi) {
        const V t = (a + a) + sh;
        *q = as<typename L<V>::I>(t);
        return a - (t - sh) * k<V>(S(0.5));
    } else {
        const V t = a * k<V>(S(1.0 / 90.0)) + sh;
        *q = as<typename L<V>::I>(t);
        return a - (t - sh) * k<V>(S(90.0));
    }
}

// sin u and cos u as hi + lo, u = r K with K = kh + kl (HA double).
inline void sincos_dd(VD r, double kh, double kl, VD* sh, VD* sl, VD* ch, VD* cl) {
    namespace dd = orv::vec::dd;
    VD e;
    const VD uh = dd::two_prod(r, k<VD>(kh), &e);
    // Below 2^-900 Dekker's product loses its exactness to underflow; there
    // uh alone is within half an ulp and a hair of r K.
    const VD big = as<VD>(simd::bandnot(k<VD>(-0.0), uh) >= k<VD>(0x1p-900));
    const VD ul = band(big, e + r * k<VD>(kl));
    // sin(uh + ul) = sin uh + ul cos uh, with cos uh = 1 - z/2 to this order.
    const VD z = uh * uh;
    *sh = uh;
    *sl = ul * (k<VD>(1.0) - k<VD>(0.5) * z) + uh * z * horner(z, kSin);
    // cos(uh + ul) = 1 - uh^2/2 + uh^4 Q - ul uh, uh^2 and 1 - uh^2/2 exact.
    VD z2l;
    const VD z2 = dd::two_prod(uh, uh, &z2l);
    VD c1e;
    const VD c1 = dd::fast_two_sum(k<VD>(1.0), k<VD>(-0.5) * z2, &c1e);
    *ch = c1;
    *cl = ((c1e - k<VD>(0.5) * z2l) - ul * uh) + z2 * z2 * horner(z2, kCosq);
}

// sin u and cos u for u = r K in the register's own precision, with the
// polynomials P (sine) and C (cosine, 1 + z C) of a tier.
template <typename V, typename S, std::size_t NP, std::size_t NC>
inline void sincos_plain(V r, S kk, const S (&p)[NP], const S (&c)[NC], V* s, V* co) {
    const V u = r * k<V>(kk);
    const V z = u * u;
    *s = u + u * z * horner(z, p);
    *co = k<V>(S(1)) + z * horner(z, c);
}

// The sine of the quadrant q and sin, cos of the remainder: q = 0: s,
// 1: c, 2: -s, 3: -c. The negation is 0 - v, so an exact zero stays +0.
template <typename V>
inline V quadrant_sin(typename L<V>::I q, V s, V c) {
    const V v = select(has<V>(q, 1), c, s);
    return select(has<V>(q, 2), k<V>(0) - v, v);
}

// tan from sin and cos of the remainder, q even: s/c, odd: -c/s. The zero
// sine of r = 0 gets the sign that makes tan(pi n) and the poles come out as
// stated above: negative where q ^ (q >> 1) is odd (q = 1 or 2 mod 4).
template <typename V>
inline V signed_zero_sine(typename L<V>::I q, V s) {
    const V flip = band(has<V>(q ^ (q >> 1), 1), eq(s, k<V>(0)));
    return bxor(s, band(flip, k<V>(-0.0)));
}
template <typename V>
inline V quadrant_tan(typename L<V>::I q, V s, V c) {
    s = signed_zero_sine(q, s);
    const V odd = has<V>(q, 1);
    const V t = select(odd, c, s) / select(odd, s, c);
    return bxor(t, band(odd, k<V>(-0.0)));
}

// The HA double value of F on a = |x| (no sign of x yet).
template <Fn F, Unit U>
inline VD value_ha(VD a) {
    simd::VI64 q;
    const VD r = reduce<U>(a, &q);
    VD sh, sl, ch, cl;
    sincos_dd(r, U == Unit::Pi ? kPiHi : kDegHi, U == Unit::Pi ? kPiLo : kDegLo, &sh, &sl, &ch,
              &cl);
    if constexpr (F == Fn::Sin) {
        return quadrant_sin<VD>(q, sh + sl, ch + cl);
    } else if constexpr (F == Fn::Cos) {
        return quadrant_sin<VD>(q + 1, sh + sl, ch + cl);
    } else {
        // Quotient of double-doubles n/d: q0 = nh/dh, then one correction
        // from the exact remainder (Dekker).
        namespace dd = orv::vec::dd;
        sh = dd::fast_two_sum(sh, sl, &sl);  // normalised: |lo| within half an ulp of hi
        ch = dd::fast_two_sum(ch, cl, &cl);
        sh = signed_zero_sine(q, sh);
        const VD odd = has<VD>(q, 1);
        const VD nh = select(odd, ch, sh), nl = select(odd, cl, sl);
        const VD dh = select(odd, sh, ch), dl = select(odd, sl, cl);
        const VD q0 = nh / dh;
        VD pe;
        const VD p = dd::two_prod(q0, dh, &pe);
        const VD t = q0 + ((((nh - p) - pe) + nl) - q0 * dl) / dh;
        // A pole or a zero (whose sign the correction would lose) is q0.
        const VD zero = k<VD>(0);
        const VD v = select(as<VD>(as<simd::VI64>(eq(dh, zero)) | as<simd::VI64>(eq(nh, zero))), q0, t);
        return bxor(v, band(odd, k<VD>(-0.0)));
    }
}

// The value of F on a = |x| in the register's own precision, polynomials
// of the tier.
template <Fn F, Unit U, typename V, typename S, std::size_t NP, std::size_t NC>
inline V value_plain(V a, const S (&p)[NP], const S (&c)[NC]) {
    typename L<V>::I q;
    const V r = reduce<U>(a, &q);
    const S kk = U == Unit::Pi ? S(kPiHi) : S(kDegHi);
    V s, co;
    sincos_plain(r, kk, p, c, &s, &co);
    if constexpr (F == Fn::Sin)
        return quadrant_sin<V>(q, s, co);
    else if constexpr (F == Fn::Cos)
        return quadrant_sin<V>(q + 1, s, co);
    else
        return quadrant_tan<V>(q, s, co);
}

// sin(pi a) and cos(pi a) together (SinCospi), HA.
inline void sincospi_ha(VD a, VD* s, VD* c) {
    simd::VI64 q;
    const VD r = reduce<Unit::Pi>(a, &q);
    VD sh, sl, ch, cl;
    sincos_dd(r, kPiHi, kPiLo, &sh, &sl, &ch, &cl);
    *s = quadrant_sin<VD>(q, sh + sl, ch + cl);
    *c = quadrant_sin<VD>(q + 1, sh + sl, ch + cl);
}
inline void sincospi_ha(VDW a, VDW* s, VDW* c) {
    VI64W q;
    const VDW r = reduce<Unit::Pi>(a, &q);
    VDW sv, cv;
    sincos_plain(r, kPiHi, kSin9, kCos10, &sv, &cv);
    *s = quadrant_sin<VDW>(q, sv, cv);
    *c = quadrant_sin<VDW>(q + 1, sv, cv);
}

}  // namespace orv::trigpi

#pragma GCC diagnostic pop
