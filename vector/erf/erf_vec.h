// Vector form of the scalar core (erf_core.h) on double registers of the
// vocabulary's width: the same operations in the same order, so that each
// lane rounds as the scalar routine does. erfc(z) for 1/2 <= z < 12 is
// exp(-z^2) erfcx(z), the erfcx row picked per lane by floor(8 z) and its
// twelve coefficients loaded with the row (erf_ops.h); erf about zero is
// z + z P(z^2). The single kernels run these on the two double halves of a
// float register. Double CdfNormInv's refinement differs from the scalar
// routine's in rounding only.
#pragma once

#include <bit>
#include <cstring>

#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/common/erf_ops.h"
#include "vector/common/gather.h"
#include "vector/common/poly.h"
#include "vector/erf/erf_core.h"
#include "vector/simd/vec.h"

namespace orv::erfk::v {

namespace simd = orv::vec::simd;
namespace gather = orv::vec::gather;
namespace poly = orv::vec::poly;
// A double constant in every lane (the vocabulary's one-instruction fill).
inline simd::VD splat(double s) { return simd::fill<simd::VD>(s); }
using simd::as;
using simd::VD;
using simd::VF;
using simd::VI32;
using simd::VI64;
using simd::VU32;

// The sign bit and the rest of a double lane.
inline VD sign_of(VD x) { return simd::band(x, as<VD>(simd::fill<VI64>(INT64_MIN))); }
inline VD abs_of(VD x) { return simd::bandnot(as<VD>(simd::fill<VI64>(INT64_MIN)), x); }
// lo <= x <= hi lane by lane (a NaN gives hi).
inline VD clamp(VD x, double lo, double hi) {
    const VD c = simd::select(simd::lt(x, splat(hi)), x, splat(hi));
    return simd::select(simd::lt(c, splat(lo)), splat(lo), c);
}

// Bits of the lanes of a mask, and the bits of every lane of a register:
// a path none of a register's lanes takes is skipped (the lanes' results
// do not depend on it).
inline uint32_t all_lanes() { return simd::lanes(as<VD>(simd::fill<VI64>(-1))); }

// The largest double below 12, where the rows end.
inline constexpr double kRowsEnd = 0x1.7ffffffffffffp+3;

// 2^n for n in the normal exponent range.
inline VD pow2v(VI64 n) { return as<VD>((n + 1023) << 52); }

// floor(v) for 0 <= v < 2^31: rounded by the shifter, less one where that
// went up.
inline VI64 floor_int(VD v) {
    const VD sh = splat(orv::explog::kShiftD);
    const VD t = v + sh;
    return (as<VI64>(t) - as<VI64>(sh)) + as<VI64>(simd::lt(v, t - sh));
}

// A value (hi + lo) 2^n lane by lane.
struct ScaledV {
    VD hi, lo;
    VI64 n;
};

// exp(ah + al) for |ah| <= 700 (erf_core.h's exp_dd).
inline ScaledV exp_dd(VD ah, VD al) {
    using namespace orv::explog;
    const VD t = ah * splat(kInvLn2x64) + splat(kShiftD);
    const VD k = t - splat(kShiftD);
    const VI64 ki = (as<VI64>(t) << 13) >> 13;
    const VD r = (k * splat(kNegLn2by64Hi) + ah) + (k * splat(kNegLn2by64Lo) + al);
    const VD q = r + r * r * (splat(0.5) + r * (splat(kE3) + r * (splat(kE4) + r * (splat(kE5) + r * splat(kE6)))));
    VD th, tl;
    gather::pairs_of<kExp64D>(ki, 63, &th, &tl);
    VD lo;
    const VD hi = dd::fast_two_sum(th, tl + th * q, &lo);
    return {hi, lo, ki >> 6};
}

// erfcx(z) as hi + lo for 1/2 <= zh < 12 from the rows of width 1/8 (each
// lane's row loaded whole).
inline void erfcx_rows(VD zh, VD zl, VD* hi, VD* lo) {
    const VI64 j = floor_int(zh * splat(8.0)) - 4;
    const VD s = (zh - (splat(0.5625) + splat(0.125) * simd::small_int_to_double(j))) + zl;
    VD c[12];
    orv::vec::erfops::rows_of<12, 3>(&kErfcxRows[0][0], j, c);
    VD q = c[2];
    for (int i = 3; i < 12; ++i) q = q * s + c[i];
    *hi = dd::fast_two_sum(c[0], c[1] + s * q, lo);
}

// erfc(z) for 1/2 <= zh < 12 as (hi + lo) 2^n; exp(-z^2) 2^-n in e.
inline ScaledV erfc_pos(VD zh, VD zl, VD* e = nullptr) {
    VD pl;
    const VD p = dd::two_prod(zh, zh, &pl);
    const ScaledV x = exp_dd(-p, -(pl + splat(2.0) * zh * zl));
    VD fh, fl;
    erfcx_rows(zh, zl, &fh, &fl);
    VD ql;
    const VD q = dd::two_prod(x.hi, fh, &ql);
    VD lo;
    const VD hi = dd::fast_two_sum(q, ql + (x.hi * fl + x.lo * fh), &lo);
    if (e) *e = x.hi;
    return {hi, lo, x.n};
}

// erf(z) - z for |z| < 1/2.
inline VD erf_small_tail(VD z) { return z * poly::horner(z * z, kErfSmall, splat); }

// 1 - z - tail as hi + lo for |z| < 1/2 (erfc about zero).
inline VD erfc_small(VD zh, VD zl, VD* lo) {
    VD se;
    const VD sh = dd::two_sum(splat(1.0), -zh, &se);
    return dd::fast_two_sum(sh, (se - zl) - erf_small_tail(zh), lo);
}

// c - (hi + lo) 2^n rounded once, for erfc(z) below 1/4 of c in {1, 2}.
inline VD from_const(double c, const ScaledV& m) {
    const VD s = pow2v(m.n);
    const VD vh = m.hi * s, vl = m.lo * s;
    VD se;
    const VD sh = dd::two_sum(splat(c), -vh, &se);
    if (c == 1.0) return sh + (se - vl);
    VD lo;
    const VD hi = dd::fast_two_sum(sh, se - vl, &lo);
    return hi + lo;
}

// erf(x) for 2^-1000 <= |x| and x finite.
inline VD erf_d(VD x) {
    const VD ax = abs_of(x);
    const VD small = x + erf_small_tail(x);
    const ScaledV m = erfc_pos(clamp(ax, 0.5, 6.0), splat(0.0));
    const VD big = simd::select(simd::lt(ax, splat(6.0)), from_const(1.0, m), splat(1.0));
    return simd::select(simd::lt(ax, splat(0.5)), small, simd::bor(big, sign_of(x)));
}

// erfc(x) for finite x < 12.
inline VD erfc_d(VD x) {
    const VD ax = abs_of(x);
    VD sl;
    const VD small = erfc_small(x, splat(0.0), &sl) + sl;
    const ScaledV m = erfc_pos(clamp(ax, 0.5, kRowsEnd), splat(0.0));
    const VD pos = (m.hi + m.lo) * pow2v(m.n);
    const VD neg = simd::select(simd::lt(ax, splat(6.0)), from_const(2.0, m), splat(2.0));
    return simd::select(simd::lt(ax, splat(0.5)), small, simd::select(simd::negative(x), neg, pos));
}

// erfcx(z) as hi + lo for 12 <= z <= 2^500 (erf_core.h's asymptotic form:
// 1/(z sqrt pi) by Dekker's division, times 1 + t H(t), t = 1/z^2).
inline VD erfcx_asym(VD z, VD* lo) {
    const VD qh = splat(kInvSqrtPiHi) / z;
    VD ml;
    const VD mh = dd::two_prod(qh, z, &ml);
    const VD ql = (((splat(kInvSqrtPiHi) - mh) - ml) + splat(kInvSqrtPiLo)) / z;
    const VD t = splat(1.0) / (z * z);
    const VD g = t * poly::horner(t, kErfcxAsym, splat);
    return dd::fast_two_sum(qh, ql + qh * g, lo);
}

// erfcx(x) for -26 < x < 2^500 (erf_core.h's erfcx_any, lane for lane):
// for |x| >= 1/2 erfcx(|x|) from the rows (below 12) or the asymptotic form;
// x >= 1/2 takes it as it stands, x <= -1/2 as 2 exp(x^2) - erfcx(-x) with
// the second term scaled to the first's power of two, and |x| < 1/2 is
// exp(x^2) erfc(x). A path no lane of the register takes is skipped.
inline VD erfcx_d(VD x) {
    const VD ax = abs_of(x);
    VD fh = splat(0.0), fl = splat(0.0);
    const VD rows = simd::lt(ax, splat(12.0));
    const uint32_t rm = simd::lanes(rows);
    if (rm) erfcx_rows(clamp(ax, 0.5, kRowsEnd), splat(0.0), &fh, &fl);
    if (rm != all_lanes()) {
        VD al;
        const VD ah = erfcx_asym(clamp(ax, 12.0, 0x1p500), &al);
        fh = simd::select(rows, fh, ah);
        fl = simd::select(rows, fl, al);
    }
    const VD viaexp = simd::lt(x, splat(0.5));
    if (!simd::lanes(viaexp)) return fh + fl;
    const VD xe = clamp(x, -26.0, 0.5);
    VD pl;
    const VD p = dd::two_prod(xe, xe, &pl);
    const ScaledV ex = exp_dd(p, pl);
    // |x| < 1/2: exp(x^2) times 1 - x - tail.
    VD cl;
    const VD ch = erfc_small(clamp(x, -0.5, 0.5), splat(0.0), &cl);
    VD ql;
    const VD q = dd::two_prod(ex.hi, ch, &ql);
    VD sl;
    const VD sh = dd::fast_two_sum(q, ql + (ex.hi * cl + ex.lo * ch), &sl);
    // x <= -1/2: 2 exp(x^2) - erfcx(-x) 2^-n.
    const VD k = pow2v(-ex.n);
    VD ne;
    const VD nh0 = dd::two_sum(splat(2.0) * ex.hi, -fh * k, &ne);
    VD nl;
    const VD nh = dd::fast_two_sum(nh0, ne + (splat(2.0) * ex.lo - fl * k), &nl);
    const VD small = simd::lt(ax, splat(0.5));
    const VD e = (simd::select(small, sh, nh) + simd::select(small, sl, nl)) * pow2v(ex.n);
    return simd::select(viaexp, e, fh + fl);
}

// Phi(x) = erfc(-x/sqrt 2)/2 for finite x > -16.9, z carried as hi + lo;
// above 40 (where it is 1) x is taken as 40, so that the split stays finite.
inline VD cdfnorm_d(VD x_in) {
    const VD x = simd::select(simd::lt(x_in, splat(40.0)), x_in, splat(40.0));
    VD pl;
    const VD p = dd::two_prod(x, splat(kInvSqrt2Hi), &pl);
    VD zl;
    const VD zh = dd::fast_two_sum(-p, -(pl + x * splat(kInvSqrt2Lo)), &zl);
    const VD az = abs_of(zh);
    VD sl;
    const VD sh = erfc_small(zh, zl, &sl);
    const VD small = (sh + sl) * splat(0.5);
    const VD neg_z = simd::negative(zh);
    const ScaledV m = erfc_pos(clamp(az, 0.5, kRowsEnd), simd::bxor(zl, sign_of(zh)));
    const VD pos = (m.hi + m.lo) * pow2v(m.n - 1);
    const VD neg = simd::select(simd::lt(az, splat(6.0)), from_const(2.0, m), splat(2.0)) * splat(0.5);
    return simd::select(simd::lt(az, splat(0.5)), small, simd::select(neg_z, neg, pos));
}

// Phi(x) to about 2^-32 relative, in plain double (the EP tier, and the
// single LA and EP tiers after rounding): z = -x/sqrt 2 rounded once,
// exp(-z^2) by the 64 rows with a cubic, and erfcx by the rows cut after
// their s^6 term (the dropped terms are below 8e-11 of the row's value).
inline VD cdfnorm_ep_d(VD x_in) {
    using namespace orv::explog;
    const VD x = simd::select(simd::lt(x_in, splat(40.0)), x_in, splat(40.0));
    const VD z = x * splat(-kInvSqrt2Hi);
    const VD small = splat(0.5) - splat(0.5) * (z + erf_small_tail(z));
    const VD zc = clamp(abs_of(z), 0.5, kRowsEnd);
    const VD a = -(zc * zc);
    const VD t = a * splat(kInvLn2x64) + splat(kShiftD);
    const VD k = t - splat(kShiftD);
    const VI64 ki = (as<VI64>(t) << 13) >> 13;
    const VD r = (k * splat(kNegLn2by64Hi) + a) + k * splat(kNegLn2by64Lo);
    VD th, tl;
    gather::pairs_of<kExp64D>(ki, 63, &th, &tl);
    const VD e = (th + th * (r + r * r * (splat(0.5) + r * splat(1.0 / 6)))) * pow2v(ki >> 6);
    const VI64 j = floor_int(zc * splat(8.0)) - 4;
    const VD s = zc - (splat(0.5625) + splat(0.125) * simd::small_int_to_double(j));
    const double* c = &kErfcxRows[0][0];
    VD q = simd::gather<12>(c + 6, j);
    for (int i = 7; i < 12; ++i) q = q * s + simd::gather<12>(c + i, j);
    const VD half_erfc = splat(0.5) * (e * (simd::gather<12>(c, j) + s * q));
    const VD big = simd::select(simd::negative(z), splat(1.0) - half_erfc, half_erfc);
    return simd::select(simd::lt(abs_of(z), splat(0.5)), small, big);
}

// ---- inverses ----

// ln q for positive normal q: q = 2^k m with m in [sqrt 1/2, sqrt 2), and
// ln m = 2 atanh(f), f = (m - 1)/(m + 1), |f| <= 0.1716, by its series to
// f^19 (relative error below 1e-15; the guesses it feeds need 1e-9).
inline VD ln_v(VD q) {
    const VI64 u = as<VI64>(q) - int64_t(0x3FE6A09E667F3BCDull);
    const VI64 k = u >> 52;
    const VD m = as<VD>(as<VI64>(q) - (k << 52));
    const VD f = (m - splat(1.0)) / (m + splat(1.0));
    const VD f2 = f * f;
    static constexpr double c[9] = {1.0 / 19, 1.0 / 17, 1.0 / 15, 1.0 / 13, 1.0 / 11,
                                    1.0 / 9,  1.0 / 7,  1.0 / 5,  1.0 / 3};
    const VD lm = splat(2.0) * f + splat(2.0) * f * (f2 * poly::horner(f2, c, splat));
    return simd::small_int_to_double(k) * splat(0.6931471805599453) + lm;
}

// The first guesses of erf_core.h (Kind 0 full, 1 LA, 2 EP).
template <int Kind>
inline VD guess_central(VD u) {
    if constexpr (Kind == 0) return poly::horner(u, kInvCentralFull, splat);
    else if constexpr (Kind == 1) return poly::horner(u, kInvCentralLa, splat);
    else return poly::horner(u, kInvCentralEp, splat);
}
template <int Kind, int K>
constexpr const auto& tail_coef() {
    if constexpr (Kind == 0) {
        if constexpr (K == 0) return kInvTailFull0;
        else if constexpr (K == 1) return kInvTailFull1;
        else if constexpr (K == 2) return kInvTailFull2;
        else return kInvTailFull3;
    } else if constexpr (Kind == 1) {
        if constexpr (K == 0) return kInvTailLa0;
        else if constexpr (K == 1) return kInvTailLa1;
        else if constexpr (K == 2) return kInvTailLa2;
        else return kInvTailLa3;
    } else {
        if constexpr (K == 0) return kInvTailEp0;
        else if constexpr (K == 1) return kInvTailEp1;
        else if constexpr (K == 2) return kInvTailEp2;
        else return kInvTailEp3;
    }
}
template <int Kind, int K>
inline VD tail_piece(VD s) {
    const VD t = (s - splat(kInvTailEdge[K][0])) * splat(kInvTailEdge[K][1]);
    return poly::horner(t, tail_coef<Kind, K>(), splat);
}
// erfc^-1(q) for 2^-200 <= q <= 1/2 from s = sqrt(-ln q) in four pieces;
// each piece past s = 2 is evaluated only when a lane needs it.
template <int Kind>
inline VD guess_tail(VD q) {
    const VD s = simd::sqrt(-ln_v(q));
    VD x = tail_piece<Kind, 0>(s);
    const VD p1 = simd::not_lt(s, splat(2.0));
    if (!simd::lanes(p1)) return x;
    x = simd::select(p1, tail_piece<Kind, 1>(s), x);
    const VD p2 = simd::not_lt(s, splat(4.0));
    if (!simd::lanes(p2)) return x;
    x = simd::select(p2, tail_piece<Kind, 2>(s), x);
    const VD p3 = simd::not_lt(s, splat(8.0));
    if (!simd::lanes(p3)) return x;
    return simd::select(p3, tail_piece<Kind, 3>(s), x);
}

// exp(-a) for 0 <= a < 700, the plain value (derivatives of the steps).
inline VD exp_neg(VD a) {
    const ScaledV m = exp_dd(-a, splat(0.0));
    return m.hi * pow2v(m.n);
}

// erfc(z) for 0.4 < zh < 12 as (hi + lo) 2^n, and exp(-z^2) 2^-n in e.
inline ScaledV erfc_mid(VD zh, VD zl, VD* e) {
    VD sl;
    const VD sh = erfc_small(zh, zl, &sl);
    VD ep;
    const ScaledV m = erfc_pos(clamp(zh, 0.5, kRowsEnd), zl, &ep);
    const VD small = simd::lt(zh, splat(0.5));
    *e = simd::select(small, exp_neg(zh * zh), ep);
    return {simd::select(small, sh, m.hi), simd::select(small, sl, m.lo),
            as<VI64>(simd::bandnot(small, as<VD>(m.n)))};
}

// One Halley step for erfc(x) = q, x > 0.4 (erf_core.h's refine_tail).
inline VD refine_tail(VD x, VD q) {
    VD e;
    const ScaledV m = erfc_mid(x, splat(0.0), &e);
    const VD f = (m.hi - q * pow2v(-m.n)) + m.lo;
    const VD u = f / (splat(-kTwoOverSqrtPi) * e);
    return x - u / (splat(1.0) + x * u);
}


// erfinv(y) for |y| < 1 (|y| >= 2^-500 or zero).
template <int Kind, bool Refine>
inline VD erfinv_d(VD y) {
    const VD ay = abs_of(y);
    const VD central = simd::le(ay, splat(0.5));
    const uint32_t cm = simd::lanes(central);
    VD c = splat(0.0), t = splat(0.0);
    if (cm) {
        c = y * guess_central<Kind>(y * y);
        if constexpr (Refine) {  // Halley on erf(x) - y, f'' = -2x f'
            const VD eh = c + erf_small_tail(c);  // fast_two_sum(c, 0 + tail)
            const VD el = (c - eh) + erf_small_tail(c);
            const VD u = ((eh - y) + el) / (splat(kTwoOverSqrtPi) * exp_neg(c * c));
            c = c - u / (splat(1.0) + c * u);
        }
    }
    if (cm != all_lanes()) {
        const VD q = clamp(splat(1.0) - ay, 0x1p-200, 0.5);
        t = guess_tail<Kind>(q);
        if constexpr (Refine) t = refine_tail(t, q);
    }
    return simd::select(central, c, simd::bor(t, sign_of(y)));
}

// erfc^-1(y) for 2^-200 <= y < 2.
template <int Kind, bool Refine>
inline VD erfcinv_d(VD y) {
    const VD neg = simd::lt(splat(1.0), y);
    const VD q = simd::select(neg, splat(2.0) - y, y);
    const VD central = simd::lt(splat(0.5), q);
    const uint32_t cm = simd::lanes(central);
    VD c = splat(0.0), t = splat(0.0);
    if (cm) c = erfinv_d<Kind, Refine>(clamp(splat(1.0) - y, -0.5, 0.5));
    if (cm != all_lanes()) {
        const VD qc = clamp(q, 0x1p-200, 0.5);
        t = guess_tail<Kind>(qc);
        if constexpr (Refine) t = refine_tail(t, qc);
    }
    return simd::select(central, c, simd::bxor(t, simd::band(neg, splat(-0.0))));
}

// Phi^-1(p) for 2^-200 <= p < 1. The guess is erf_core.h's: sqrt 2 y P(y^2)
// with y = 2d, d = p - 1/2, about the centre (|d| < 1/4), and -sqrt 2
// erfc^-1(2 pl) with pl = min(p, 1 - p) in the tails (negated for the upper
// one at the end). Refine: one Halley step on Phi (f'' = -x f'): z = -x/sqrt 2
// as hi + lo, exp(-z^2) as (hi + lo) 2^n, and the residual
// 2 (Phi(x) - target) 2^-n from the lane's form: about the centre
// -erf(z) - 2d with erf(z) = z + z P(z^2) (2d is exact), in the tails
// erfc(z) - 2 pl with erfc(z) = 1 - z - z P(z^2) below z = 1/2 and
// exp(-z^2) erfcx(z) from the rows above. The step's u/(1 + x u/2) is
// u - (x u/2) u: x u/2 is below 2^-25 after the full guess, so the dropped
// terms are far below an ulp of the result. The central and tail forms
// are separate so that a block can run each on registers of its own lanes
// (cdfnorminv_block); a register of both kinds runs both.

// z = -x/sqrt 2 as hi + lo and exp(-z^2) as (hi + lo) 2^n.
inline ScaledV cdfnorminv_exp(VD x, VD* zh, VD* zl) {
    VD ql;
    const VD qp = dd::two_prod(x, splat(kInvSqrt2Hi), &ql);
    *zh = dd::fast_two_sum(-qp, -(ql + x * splat(kInvSqrt2Lo)), zl);
    VD sl;
    const VD sq = dd::two_prod(*zh, *zh, &sl);
    return exp_dd(-sq, -(sl + splat(2.0) * *zh * *zl));
}

// The step from x with the scaled residual f.
inline VD cdfnorminv_step(VD x, VD f, const ScaledV& ex) {
    const VD u = splat(0.5) * f / (splat(kInvSqrt2Pi) * ex.hi);
    return x - (u - (splat(0.5) * x * u) * u);
}

// The central form, for 1/4 < p < 3/4.
template <int Kind, bool Refine>
[[gnu::flatten]] inline VD cdfnorminv_central(VD p) {
    const VD d = p - splat(0.5);
    const VD y = splat(2.0) * d;
    const VD x = splat(kSqrt2) * (y * guess_central<Kind>(y * y));
    if constexpr (!Refine) return x;
    VD zh, zl;
    const ScaledV ex = cdfnorminv_exp(x, &zh, &zl);
    const VD zs = clamp(zh, -0.5, 0.5);
    VD el;
    const VD eh = dd::fast_two_sum(zs, zl + erf_small_tail(zs), &el);
    const VD f = ((-eh - splat(2.0) * d) - el) * pow2v(-ex.n);
    return cdfnorminv_step(x, f, ex);
}

// The tail form, for p <= 1/4 or p >= 3/4.
template <int Kind, bool Refine>
[[gnu::flatten]] inline VD cdfnorminv_tail(VD p) {
    const VD upper = simd::lt(splat(0.0), p - splat(0.5));
    const VD pl = clamp(simd::select(upper, splat(1.0) - p, p), 0x1p-200, 0.25);
    VD x = splat(-kSqrt2) * guess_tail<Kind>(splat(2.0) * pl);
    if constexpr (Refine) {
        VD zh, zl;
        const ScaledV ex = cdfnorminv_exp(x, &zh, &zl);
        const VD near = simd::lt(zh, splat(0.5));
        const uint32_t nm = simd::lanes(near);
        VD f = splat(0.0);
        if (nm) {
            const VD zs = clamp(zh, -0.5, 0.5);
            VD ce;
            const VD ch = dd::two_sum(splat(1.0), -zs, &ce);
            VD cl;
            const VD cs = dd::fast_two_sum(ch, (ce - zl) - erf_small_tail(zs), &cl);
            f = simd::select(near, (cs - splat(2.0) * pl) + cl, f);
        }
        f = f * pow2v(-ex.n);
        if (nm != all_lanes()) {
            VD fh, fl;
            erfcx_rows(clamp(zh, 0.5, kRowsEnd), zl, &fh, &fl);
            VD ml;
            const VD mq = dd::two_prod(ex.hi, fh, &ml);
            VD lo;
            const VD hi = dd::fast_two_sum(mq, ml + (ex.hi * fl + ex.lo * fh), &lo);
            f = simd::select(near, f, (hi - pl * pow2v(1 - ex.n)) + lo);
        }
        x = cdfnorminv_step(x, f, ex);
    }
    return simd::bxor(x, simd::band(upper, splat(-0.0)));
}

// Whether p takes the central form.
inline VD cdfnorminv_is_central(VD p) { return simd::lt(abs_of(p - splat(0.5)), splat(0.25)); }

// Phi^-1 on one register, each form computed only when a lane needs it.
template <int Kind, bool Refine>
inline VD cdfnorminv_d(VD p) {
    const VD central = cdfnorminv_is_central(p);
    const uint32_t cm = simd::lanes(central);
    if (cm == all_lanes()) return cdfnorminv_central<Kind, Refine>(p);
    const VD t = cdfnorminv_tail<Kind, Refine>(simd::select(central, splat(0.125), p));
    if (!cm) return t;
    return simd::select(central, cdfnorminv_central<Kind, Refine>(simd::select(central, p, splat(0.5))), t);
}

// Phi^-1 on n elements (n a multiple of the register width, at most
// vec::kBlockSpan; out may be in): the central and the tail lanes each on
// full registers of their own (erfops::by_path). Each lane's operations are
// those of cdfnorminv_d.
template <int Kind, bool Refine>
inline void cdfnorminv_block(const double* in, double* out, int n) {
    using R = simd::Reg<double>;
    orv::vec::erfops::by_path<orv::vec::kBlockSpan>(
        in, out, n, cdfnorminv_is_central, 0.5, 0.125,
        [](double* run, int k) {
            for (int l = 0; l < k; l += R::kWidth) R::store(run + l, cdfnorminv_central<Kind, Refine>(R::load(run + l)));
        },
        [](double* run, int k) {
            for (int l = 0; l < k; l += R::kWidth) R::store(run + l, cdfnorminv_tail<Kind, Refine>(R::load(run + l)));
        });
}

// One bit a lane: the high word of x (signed) at or above b, of |x| at or
// above b, of |x| below b, and of x (unsigned) at or above b.
inline uint32_t hw_ge(VD x, int32_t b) { return simd::lanes(as<VD>(as<VI32>(x) > b - 1)); }
inline uint32_t abs_hw_ge(VD x, int32_t b) { return hw_ge(abs_of(x), b); }
inline uint32_t abs_hw_lt(VD x, int32_t b) {
    return simd::lanes(as<VD>((as<VI32>(x) & 0x7FFFFFFF) < b));
}
inline uint32_t hw_uge(VD x, uint32_t b) { return simd::lanes(as<VD>(as<VU32>(x) > b - 1)); }
// The high word of x (double) or its bits (float) outside [lo, hi).
inline uint32_t not_in(VD x, uint32_t lo, uint32_t hi) { return simd::lanes(simd::outside(x, lo, hi - lo)); }
inline uint32_t not_in(VF x, uint32_t lo, uint32_t hi) { return simd::lanes(simd::outside(x, lo, hi - lo)); }
// The same on the bits of float lanes.
inline uint32_t ge(VF x, int32_t b) { return simd::lanes(as<VF>(as<VI32>(x) > b - 1)); }
inline uint32_t abs_ge(VF x, int32_t b) { return simd::lanes(as<VF>((as<VI32>(x) & 0x7FFFFFFF) > b - 1)); }
inline uint32_t abs_lt(VF x, int32_t b) { return simd::lanes(as<VF>((as<VI32>(x) & 0x7FFFFFFF) < b)); }
inline uint32_t uge(VF x, uint32_t b) { return simd::lanes(as<VF>(as<VU32>(x) > b - 1)); }

// F on the float lanes widened to double, rounded once on the way back.
template <VD (*F)(VD)>
inline VF on_halves(VF x) {
    simd::VDW w = simd::widen(x);
    VD h[2];
    std::memcpy(h, &w, sizeof w);
    h[0] = F(h[0]);
    h[1] = F(h[1]);
    std::memcpy(&w, h, sizeof w);
    return simd::narrow(w);
}

}  // namespace orv::erfk::v
