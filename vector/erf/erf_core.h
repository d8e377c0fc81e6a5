// Scalar core of the error-function family, in double and double-double.
//
// erfc(z) for z >= 1/2 is exp(-z^2) erfcx(z): exp(-z^2) from the 64-row
// exponential table with z^2 split exactly (Dekker's product), erfcx from
// 92 polynomial rows of width 1/8 on [1/2, 12) and an asymptotic form in
// 1/z^2 beyond. Both factors are carried as hi + lo, and the power of two
// of the exponential is kept apart, so that results deep in the tail are
// rounded once. On |z| < 1/2, erf(z) = z + z P(z^2). Arguments may carry a
// low part (z = zh + zl), which the normal distribution's z = -x/sqrt 2
// needs.
#pragma once

#include <cmath>
#include <cstdint>

#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/erf/erf_tables.h"
#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::erfk {

namespace dd = orv::vec::dd;
using orv::vec::bitops::bits_of;
using orv::vec::bitops::double_of;

inline constexpr int32_t kOk = 0, kDomain = 1, kPole = 2, kOverflow = 3, kUnderflow = 4;

inline constexpr double kTwoOverSqrtPi = 1.1283791670955126;
// 1/sqrt(pi), 1/sqrt(2), sqrt(2) and 1/sqrt(2 pi) as hi + lo.
inline constexpr double kInvSqrtPiHi = 0.5641895835477563, kInvSqrtPiLo = 7.66772980658294e-18;
inline constexpr double kInvSqrt2Hi = 0.7071067811865476, kInvSqrt2Lo = -4.833646656726457e-17;
inline constexpr double kSqrt2 = 1.4142135623730951;
inline constexpr double kInvSqrt2Pi = 0.3989422804014327;

// Where the paths change: the small form below, the rows up to kAsym, and
// beyond kTailEnd erfc is below half the least denormal.
inline constexpr double kSmall = 0.5, kAsym = 12.0, kTailEnd = 27.3;

// A value (hi + lo) 2^n.
struct Scaled {
    double hi, lo;
    int n;
};

template <std::size_t N>
inline double horner(const double (&c)[N], double x) {
    double p = c[0];
    for (std::size_t i = 1; i < N; ++i) p = p * x + c[i];
    return p;
}

// 2^k for k in the normal exponent range.
inline double pow2(int k) { return double_of(uint64_t(k + 1023) << 52); }

// (hi + lo) 2^n rounded once, also when the result is denormal.
inline double unscale(double hi, double lo, int n) {
    const double v = hi + lo;
    if (n >= -1000 && n <= 1000) return v * pow2(n);
    if (n > 1000) return v * pow2(n - 1000) * pow2(1000);
    return v * pow2(n + 200) * pow2(-200);
}

// exp(ah + al) for |ah| <= 746 as (hi + lo) 2^n: Tang's reduction by ln 2/64,
// the reduced argument carrying al, the table row's two parts kept.
inline Scaled exp_dd(double ah, double al) {
    using namespace orv::explog;
    const double t = ah * kInvLn2x64 + kShiftD;
    const double k = t - kShiftD;
    const int ki = static_cast<int>(static_cast<int64_t>(bits_of(t) << 13) >> 13);
    const double r = (k * kNegLn2by64Hi + ah) + (k * kNegLn2by64Lo + al);
    const double q = r + r * r * (0.5 + r * (kE3 + r * (kE4 + r * (kE5 + r * kE6))));
    const double th = kExp64D[ki & 63][0], tl = kExp64D[ki & 63][1];
    double lo;
    const double hi = dd::fast_two_sum(th, tl + th * q, &lo);
    return {hi, lo, ki >> 6};
}

// exp(-z^2) for z = zh + zl, z^2 split exactly.
inline Scaled exp_neg_sq(double zh, double zl) {
    const dd::Dd p = dd::two_prod(zh, zh);
    return exp_dd(-p.hi, -(p.lo + 2.0 * zh * zl));
}

// (1/sqrt pi) / z as hi + lo (Dekker's division).
inline dd::Dd inv_sqrtpi_over(double zh, double zl) {
    const double qh = kInvSqrtPiHi / zh;
    const dd::Dd m = dd::two_prod(qh, zh);
    return {qh, (((kInvSqrtPiHi - m.hi) - m.lo) + kInvSqrtPiLo - qh * zl) / zh};
}

// erfcx(z) as hi + lo for 1/2 <= z < 12 (the rows) or z >= 12 (asymptotic,
// z below 2^500).
inline dd::Dd erfcx_pos(double zh, double zl) {
    double lo;
    if (zh < kAsym) {
        const int j = static_cast<int>(zh * 8.0) - 4;
        const double* c = kErfcxRows[j];
        const double s = (zh - (0.5625 + 0.125 * j)) + zl;
        double q = c[2];
        for (int i = 3; i < 12; ++i) q = q * s + c[i];
        const double hi = dd::fast_two_sum(c[0], c[1] + s * q, &lo);
        return {hi, lo};
    }
    const dd::Dd q = inv_sqrtpi_over(zh, zl);
    const double t = 1.0 / (zh * zh);
    const double g = t * horner(kErfcxAsym, t);
    const double hi = dd::fast_two_sum(q.hi, q.lo + q.hi * g, &lo);
    return {hi, lo};
}

// erfc(z) for 1/2 <= z <= kTailEnd as (hi + lo) 2^n, and exp(-z^2) 2^-n in e
// (for the derivative of the inverses).
inline Scaled erfc_pos(double zh, double zl, double* e = nullptr) {
    const Scaled x = exp_neg_sq(zh, zl);
    const dd::Dd f = erfcx_pos(zh, zl);
    const dd::Dd p = dd::two_prod(x.hi, f.hi);
    double lo;
    const double hi = dd::fast_two_sum(p.hi, p.lo + (x.hi * f.lo + x.lo * f.hi), &lo);
    if (e) *e = x.hi;
    return {hi, lo, x.n};
}

// erf(z) - z for |z| < 1/2, z = zh + zl (zl only moves the linear term).
inline double erf_small_tail(double zh) { return zh * horner(kErfSmall, zh * zh); }

// erf(z) as hi + lo for |z| < 1/2.
inline dd::Dd erf_small(double zh, double zl) {
    double lo;
    const double hi = dd::fast_two_sum(zh, zl + erf_small_tail(zh), &lo);
    return {hi, lo};
}

// erfc(z) for any finite z as (hi + lo) 2^n; 0 with n = 0 beyond kTailEnd.
// The e output is exp(-z^2) 2^-n (only for |z| <= kTailEnd).
inline Scaled erfc_any(double zh, double zl, double* e = nullptr) {
    const double az = std::fabs(zh);
    if (az < kSmall) {
        double se;
        const double sh = dd::two_sum(1.0, -zh, &se);
        double lo;
        const double hi = dd::fast_two_sum(sh, (se - zl) - erf_small_tail(zh), &lo);
        if (e) *e = std::exp(-zh * zh);
        return {hi, lo, 0};
    }
    if (zh > 0) {
        if (zh > kTailEnd) return {0.0, 0.0, 0};
        return erfc_pos(zh, zl, e);
    }
    // 2 - erfc(-z); erfc(6) is below a quarter ulp of 2.
    if (az >= 6.0) return {2.0, 0.0, 0};
    const Scaled m = erfc_pos(-zh, -zl, e);
    const double vh = m.hi * pow2(m.n), vl = m.lo * pow2(m.n);  // m.n >= -1076: exact or negligible
    double se;
    const double sh = dd::two_sum(2.0, -vh, &se);
    double lo;
    const double hi = dd::fast_two_sum(sh, se - vl, &lo);
    return {hi, lo, 0};
}

// erf(x) for finite x, rounded once.
inline double erf_value(double x) {
    const double ax = std::fabs(x);
    if (ax < kSmall) return x + erf_small_tail(x);
    if (ax >= 6.0) return std::copysign(1.0, x);  // erfc(6) < 2^-54
    const Scaled m = erfc_pos(ax, 0.0);
    const double vh = m.hi * pow2(m.n), vl = m.lo * pow2(m.n);
    double se;
    const double sh = dd::two_sum(1.0, -vh, &se);
    return std::copysign(sh + (se - vl), x);
}

// erfcx(x) for finite x, as (hi + lo) 2^n.
inline Scaled erfcx_any(double x) {
    if (x >= kSmall) {
        if (x > 0x1p500) {  // 1/(x sqrt pi), x scaled into range
            const dd::Dd f = inv_sqrtpi_over(x * 0x1p-600, 0.0);
            return {f.hi, f.lo, -600};
        }
        const dd::Dd f = erfcx_pos(x, 0.0);
        return {f.hi, f.lo, 0};
    }
    const dd::Dd p = dd::two_prod(x, x);
    const Scaled ex = exp_dd(p.hi, p.lo);
    if (x > -kSmall) {  // exp(x^2) erfc(x)
        const Scaled c = erfc_any(x, 0.0);
        const dd::Dd q = dd::two_prod(ex.hi, c.hi);
        double lo;
        const double hi = dd::fast_two_sum(q.hi, q.lo + (ex.hi * c.lo + ex.lo * c.hi), &lo);
        return {hi, lo, ex.n};
    }
    // 2 exp(x^2) - erfcx(-x), the second term scaled to the first's power.
    const dd::Dd f = erfcx_pos(-x, 0.0);
    const double k = ex.n < 1000 ? pow2(-ex.n) : 0.0;
    double se;
    const double sh = dd::two_sum(2.0 * ex.hi, -f.hi * k, &se);
    double lo;
    const double hi = dd::fast_two_sum(sh, se + (2.0 * ex.lo - f.lo * k), &lo);
    return {hi, lo, ex.n};
}

// z = -x/sqrt 2 as hi + lo.
inline dd::Dd neg_over_sqrt2(double x) {
    const dd::Dd p = dd::two_prod(x, kInvSqrt2Hi);
    double lo;
    const double hi = dd::fast_two_sum(-p.hi, -(p.lo + x * kInvSqrt2Lo), &lo);
    return {hi, lo};
}

// Phi(x) = erfc(-x/sqrt 2)/2 for finite x, rounded once.
inline double cdfnorm_value(double x) {
    if (x < -40.0) return 0.0;  // Phi(-38.5) is below half the least denormal
    if (x > 40.0) return 1.0;   // 1 - Phi(-9) is below a quarter ulp of 1
    const dd::Dd z = neg_over_sqrt2(x);
    const Scaled m = erfc_any(z.hi, z.lo);
    return unscale(m.hi, m.lo, m.n - 1);
}

// ---- inverses ----

// The first guess of erfinv: y P(y^2) for |y| <= 1/2, else from q = 1 - |y|
// (given exactly by the caller) R(sqrt(-ln q)) in four pieces of s.
template <int Kind>  // 0 full, 1 la, 2 ep
inline double guess_central(double u) {
    if constexpr (Kind == 0) return horner(kInvCentralFull, u);
    else if constexpr (Kind == 1) return horner(kInvCentralLa, u);
    else return horner(kInvCentralEp, u);
}

template <int Kind>
inline double guess_tail_piece(int k, double t) {
    if constexpr (Kind == 0) {
        switch (k) {
            case 0: return horner(kInvTailFull0, t);
            case 1: return horner(kInvTailFull1, t);
            case 2: return horner(kInvTailFull2, t);
            default: return horner(kInvTailFull3, t);
        }
    } else if constexpr (Kind == 1) {
        switch (k) {
            case 0: return horner(kInvTailLa0, t);
            case 1: return horner(kInvTailLa1, t);
            case 2: return horner(kInvTailLa2, t);
            default: return horner(kInvTailLa3, t);
        }
    } else {
        switch (k) {
            case 0: return horner(kInvTailEp0, t);
            case 1: return horner(kInvTailEp1, t);
            case 2: return horner(kInvTailEp2, t);
            default: return horner(kInvTailEp3, t);
        }
    }
}

// erfc^-1(q) for 0 < q <= 1/2 (q may be denormal): x >= 0.47.
template <int Kind>
inline double guess_tail(double q) {
    const double s = std::sqrt(-std::log(q));
    const int k = s < 2.0 ? 0 : s < 4.0 ? 1 : s < 8.0 ? 2 : 3;
    return guess_tail_piece<Kind>(k, (s - kInvTailEdge[k][0]) * kInvTailEdge[k][1]);
}

// One Halley step for f(x) = erf(x) - y, |x| < 1/2 (f'' = -2x f').
inline double refine_central(double x, double y) {
    const dd::Dd e = erf_small(x, 0.0);
    const double f = (e.hi - y) + e.lo;
    const double u = f / (kTwoOverSqrtPi * std::exp(-x * x));
    return x - u / (1.0 + x * u);
}

// One Halley step for f(x) = erfc(x) - q, x > 0.4, q > 0.
inline double refine_tail(double x, double q) {
    double e;
    const Scaled m = erfc_any(x, 0.0, &e);
    const double qs = std::ldexp(q, -m.n);
    const double f = (m.hi - qs) + m.lo;
    const double u = f / (-kTwoOverSqrtPi * e);
    return x - u / (1.0 + x * u);
}

// erfinv(y) for |y| < 1; Refine adds the Halley step.
template <int Kind, bool Refine>
inline double erfinv_value(double y) {
    const double ay = std::fabs(y);
    if (ay <= 0.5) {
        const double x = y * guess_central<Kind>(y * y);
        return Refine ? refine_central(x, y) : x;
    }
    const double q = 1.0 - ay;  // exact
    const double x = guess_tail<Kind>(q);
    return std::copysign(Refine ? refine_tail(x, q) : x, y);
}

// erfc^-1(y) for 0 < y < 2.
template <int Kind, bool Refine>
inline double erfcinv_value(double y) {
    const bool neg = y > 1.0;
    const double q = neg ? 2.0 - y : y;  // exact
    if (q > 0.5) return erfinv_value<Kind, Refine>(1.0 - y);  // 1 - y exact here
    const double x = guess_tail<Kind>(q);
    const double r = Refine ? refine_tail(x, q) : x;
    return neg ? -r : r;
}

// Phi^-1(p) for 0 < p < 1: about the centre with d = p - 1/2 (exact), in the
// tails from q = 2 min(p, 1 - p); one Halley step on Phi (f'' = -x f').
template <int Kind, bool Refine>
inline double cdfnorminv_value(double p) {
    const double d = p - 0.5;
    if (std::fabs(d) < 0.25) {
        const double y = 2.0 * d;
        double x = kSqrt2 * (y * guess_central<Kind>(y * y));
        if (!Refine) return x;
        const dd::Dd z = neg_over_sqrt2(-x);  // x/sqrt 2
        const dd::Dd e = erf_small(z.hi, z.lo);
        const double f = (0.5 * e.hi - d) + 0.5 * e.lo;
        const double u = f / (kInvSqrt2Pi * std::exp(-0.5 * x * x));
        return x - u / (1.0 + 0.5 * x * u);
    }
    const bool upper = d > 0;
    const double pl = upper ? 1.0 - p : p;  // exact
    const double x0 = -kSqrt2 * guess_tail<Kind>(2.0 * pl);
    double x = x0;
    if (Refine) {
        const dd::Dd z = neg_over_sqrt2(x0);
        double e;
        const Scaled m = erfc_any(z.hi, z.lo, &e);
        const double ps = std::ldexp(pl, 1 - m.n);  // 2 p 2^-n
        const double f = (m.hi - ps) + m.lo;        // 2 (Phi(x) - p) 2^-n
        const double u = 0.5 * f / (kInvSqrt2Pi * e);
        x = x0 - u / (1.0 + 0.5 * x0 * u);
    }
    return upper ? -x : x;
}

}  // namespace orv::erfk
