// Scalar callouts of the inverse trigonometric and hyperbolic kernels: the
// lanes the block leaves (domain errors, overflow, zeros and infinities of
// Atan2), and the one-element-a-round Asinh, Acosh and Atanh. In range they
// run the block's register cores on a splatted value, so that a lane gives
// the same result whichever path it takes.
#include <cmath>
#include <cstring>

#include "vector/atrig/atrig_internal.h"

namespace orv::atrig {
namespace {

using orv::vec::bitops::bits_of;
using orv::explog::Dd;

inline bool is_nan(double x) { return x != x; }
inline double cs(double mag, double sign_src) { return std::copysign(mag, sign_src); }

// Non-finite and |x| > 1 lanes of Asin, Acos and their pi forms.
inline bool unit_domain(double x, double* r, int32_t* st) {
    if (is_nan(x)) {
        *r = x + x;
        *st = kOk;
    } else if (std::isinf(x)) {
        *r = x / x;
        *st = kDomain;
    } else if (std::fabs(x) > 1.0) {
        *r = (x - x) / (x - x);
        *st = kDomain;
    } else {
        return false;
    }
    return true;
}

// Atan2 (pi false) or Atan2pi (pi true) of the lanes outside the core's
// range; no status in any case.
double atan2_any(double y, double x, bool pi) {
    const double half = pi ? 0.5 : kPio2Hi, whole = pi ? 1.0 : kPiHi;
    const double quarter = pi ? 0.25 : kAtanOneHi, three = pi ? 0.75 : 2.356194490192345;
    if (is_nan(x) || is_nan(y)) return orv::vec::simd::first_nan(x, x + y);  // whatever the operand order
    const bool neg_x = std::signbit(x);
    if (y == 0.0) return cs(neg_x ? whole : 0.0, y);
    if (x == 0.0) return cs(half, y);
    if (std::isinf(y)) return cs(std::isinf(x) ? (neg_x ? three : quarter) : half, y);
    if (std::isinf(x)) return cs(neg_x ? whole : 0.0, y);
    const double ay = std::fabs(y), ax = std::fabs(x);
    int ey, ex;
    std::frexp(ay, &ey);
    std::frexp(ax, &ex);
    if (ey - ex < -60) {  // |y/x| < 2^-59: atan t = t to far below half an ulp
        if (neg_x) return cs(whole, y);
        if (!pi) return y / x;
        const long double q = (long double)y / (long double)x;
        return double(q * 0.318309886183790671537767526745028724L);
    }
    if (ey - ex > 60) return cs(half, y);
    const int k = -std::max(ey, ex);  // both scaled near 1, neither underflows
    const V ys = splat(std::ldexp(ay, k)), xs = splat(std::ldexp(ax, k));
    const DdV v = atan2_core(ys, xs, simd::negative(splat(x)));
    return cs(lane0(pi ? times_inv_pi(v) : v.hi + v.lo), y);
}

}  // namespace

int32_t asin_d(double x, double* r) {
    int32_t st;
    if (unit_domain(x, r, &st)) return st;
    const DdV v = asin_core(splat(x));
    *r = lane0(v.hi + v.lo);
    return kOk;
}
int32_t acos_d(double x, double* r) {
    int32_t st;
    if (unit_domain(x, r, &st)) return st;
    const DdV v = acos_core(splat(x));
    *r = lane0(v.hi + v.lo);
    return kOk;
}
int32_t asinpi_d(double x, double* r) {
    int32_t st;
    if (unit_domain(x, r, &st)) return st;
    *r = lane0(times_inv_pi(asin_core(splat(x))));
    return kOk;
}
int32_t acospi_d(double x, double* r) {
    int32_t st;
    if (unit_domain(x, r, &st)) return st;
    *r = lane0(times_inv_pi(acos_core(splat(x))));
    return kOk;
}
int32_t atan2_d(double y, double x, double* r) {
    *r = atan2_any(y, x, false);
    return kOk;
}
int32_t atan2pi_d(double y, double x, double* r) {
    *r = atan2_any(y, x, true);
    return kOk;
}

// ---- Sinh and Cosh ----

inline constexpr double kSinhMax = 710.4758600739439;  // above: sinh and cosh overflow

int32_t sinh_d(double x, double* r) {
    if (is_nan(x)) {
        *r = x * x;
        return kOk;
    }
    const double a = std::fabs(x);
    if (std::isinf(x)) {
        *r = x;
        return kOk;
    }
    if (a > kSinhMax) {
        *r = cs(HUGE_VAL, x);
        return kOverflow;
    }
    *r = cs(lane0(sinh_core(splat(a))), x);
    return kOk;
}
int32_t cosh_d(double x, double* r) {
    if (is_nan(x)) {
        *r = x * x;
        return kOk;
    }
    const double a = std::fabs(x);
    if (std::isinf(x)) {
        *r = a;
        return kOk;
    }
    if (a > kSinhMax) {
        *r = HUGE_VAL;
        return kOverflow;
    }
    *r = lane0(cosh_core(splat(a)));
    return kOk;
}

// Single: the tiny and huge lanes of the extended-precision block; lanes in
// range take the block's own computation.
int32_t sinh_s(float x, float* r) {
    if (x != x) {
        *r = x * x;
        return kOk;
    }
    const float a = std::fabs(x);
    if (std::isinf(x) || a < 0.0003f) {
        *r = x;
        return kOk;
    }
    if (a >= 89.41599f) {
        *r = cs(HUGE_VALF, x);
        return kOverflow;
    }
    *r = sinh_cosh_x87(x, false);
    return kOk;
}
int32_t cosh_s(float x, float* r) {
    if (x != x) {
        *r = x * x;
        return kOk;
    }
    const float a = std::fabs(x);
    if (std::isinf(x)) {
        *r = a;
        return kOk;
    }
    if (a < 1.17549435e-38f) {
        *r = 1.0f;
        return kOk;
    }
    if (a >= 89.41599f) {
        *r = HUGE_VALF;
        return kOverflow;
    }
    *r = sinh_cosh_x87(x, true);
    return kOk;
}

// ---- Asinh, Acosh, Atanh ----
// Double: series below 1/8, else the logarithm of an argument formed in
// double-double, by the exponential kernels' ln_dd, with the argument's low
// part added as lo/hi.

namespace {

// asinh(x) = x + x^3 Q(x^2) with the series' own coefficients
// (-1)^k (2k)! / (4^k (k!)^2 (2k+1)), k = 1..14: 9 terms for x^2 <= 1/64 and
// all 14 for acosh's z <= 1/16 leave the next term below 2^-58 of the result.
inline constexpr double kAsinhQ[14] = {
    -0.16666666666666666, 0.075, -0.044642857142857144, 0.030381944444444444, -0.022372159090909092, 0.017352764423076924, -0.01396484375, 0.011551800896139705, -0.009761609529194078, 0.008390335809616815, -0.0073125258735988454, 0.006447210311889649, -0.005740037670841924, 0.005153309682319905};
inline double series_q(double z, int terms) {
    double p = kAsinhQ[terms - 1];
    for (int i = terms - 2; i >= 0; --i) p = p * z + kAsinhQ[i];
    return p;
}

// ln(hi + lo) for hi positive normal, |lo| below an ulp of hi.
inline double ln_sum(double hi, double lo, int kadj = 0) {
    const Dd l = orv::explog::ln_dd(bits_of(hi), kadj);
    return l.hi + (l.lo + lo / hi);
}

// sqrt(hi + lo) as a double-double
inline Dd sqrt_dd(double hi, double lo) {
    const double s = std::sqrt(hi);
    const Dd p = dd::two_prod(s, s);
    return {s, ((hi - p.hi) - p.lo + lo) / (s + s)};
}

}  // namespace

int32_t asinh_d(const double* xp, double* r) {
    const double x = *xp, a = std::fabs(x);
    if (!(a < 0x1p28)) {  // NaN, infinity, or where sqrt(x^2 + 1) = |x|
        *r = (is_nan(x) || std::isinf(x)) ? x + x : cs(ln_sum(a, 0.0, 1), x);
        return kOk;
    }
    if (a < 0x1p-28) {  // asinh x = x to below 2^-56 of it; keeps -0
        *r = x;
        return kOk;
    }
    if (a < 0.125) {
        *r = x + x * (x * x) * series_q(x * x, 9);
        return kOk;
    }
    // S = a + sqrt(a^2 + 1)
    const Dd a2 = dd::two_prod(a, a);
    double e;
    const double h = dd::two_sum(a2.hi, 1.0, &e);
    const Dd s = sqrt_dd(h, e + a2.lo);
    const double sh = dd::two_sum(a, s.hi, &e);
    *r = cs(ln_sum(sh, e + s.lo), x);
    return kOk;
}

int32_t acosh_d(const double* xp, double* r) {
    const double x = *xp;
    if (is_nan(x)) {
        *r = x + x;
        return kOk;
    }
    if (!(x >= 1.0)) {
        *r = std::numeric_limits<double>::quiet_NaN();
        return kDomain;
    }
    if (x >= 0x1p28) {
        *r = std::isinf(x) ? x : ln_sum(x, 0.0, 1);
        return kOk;
    }
    if (x < 1.125) {
        // acosh(1 + t) = sqrt(2t) (1 + (t/2) Q(t/2)), t = x - 1 exact
        const double t = x - 1.0;
        if (t == 0.0) {
            *r = 0.0;
            return kOk;
        }
        const Dd s = sqrt_dd(2.0 * t, 0.0);
        const double z = 0.5 * t;
        *r = s.hi + (s.lo + s.hi * z * series_q(z, 14));
        return kOk;
    }
    // S = x + sqrt(x^2 - 1)
    const Dd x2 = dd::two_prod(x, x);
    double e;
    const double h = dd::two_sum(x2.hi, -1.0, &e);
    const Dd s = sqrt_dd(h, e + x2.lo);
    const double sh = dd::two_sum(x, s.hi, &e);
    *r = ln_sum(sh, e + s.lo);
    return kOk;
}

int32_t atanh_d(const double* xp, double* r) {
    const double x = *xp, a = std::fabs(x);
    if (is_nan(x)) {
        *r = x + x;
        return kOk;
    }
    if (a >= 1.0) {
        if (a == 1.0) {
            *r = cs(HUGE_VAL, x);
            return kPole;
        }
        *r = std::numeric_limits<double>::quiet_NaN();
        return kDomain;
    }
    if (a < 0.125) {
        // x + x^3 (1/3 + x^2/5 + ...), truncated below 2^-60 of the result
        const double z = x * x;
        double p = 1.0 / 23;
        for (int k = 10; k >= 1; --k) p = p * z + 1.0 / (2 * k + 1);
        *r = x + x * z * p;
        return kOk;
    }
    // 0.5 ln((1 + a)/(1 - a)) with the quotient in double-double
    double ne, de;
    const double nh = dd::two_sum(1.0, a, &ne), dh = dd::two_sum(1.0, -a, &de);
    const double q = nh / dh;
    const Dd p = dd::two_prod(q, dh);
    const double ql = (((nh - p.hi) - p.lo) + ne - q * de) / dh;
    *r = cs(0.5 * ln_sum(q, ql), x);
    return kOk;
}

// Single: the same forms in double, rounded once; the errors of the double
// evaluation are far below half an ulp of float.
int32_t asinh_s(const float* xp, float* r) {
    const double x = *xp;
    double d;
    const int32_t st = asinh_d(&x, &d);
    *r = float(d);
    return st;
}
int32_t acosh_s(const float* xp, float* r) {
    const double x = *xp;
    double d;
    const int32_t st = acosh_d(&x, &d);
    *r = float(d);
    return st;
}
int32_t atanh_s(const float* xp, float* r) {
    const double x = *xp;
    double d;
    const int32_t st = atanh_d(&x, &d);
    *r = float(d);
    return st;
}

}  // namespace orv::atrig
