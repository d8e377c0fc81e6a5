// Scalar cores of the power and root kernels, shared by the block steps (one
// lane at a time) and the callouts. Each core takes the inputs its block
// step admits (positive normal bases, finite exponents, results in the
// normal range) and has no branch.
#pragma once

#include <cstdint>

#include "vector/common/dd.h"
#include "vector/common/power_ops.h"
#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::power {

using orv::explog::Dd;
using orv::vec::bitops::bits_of;
using orv::vec::bitops::double_of;
namespace dd = orv::vec::dd;

inline constexpr int32_t kOk = 0, kDomain = 1, kPole = 2, kOverflow = 3, kUnderflow = 4;

// exp(h + e) as the parts of Tang's 64-row reduction: the result is
// (thi + p) 2^n with thi + p in [0.98, 2.02). |h| below 746, |e| below an
// ulp of h. The low part e is added to the reduced argument, where it is
// small against nothing that cancels. kDeg5 keeps the sixth-order term.
struct ExpParts {
    double thi, p;
    int64_t n;
};
template <bool kDeg5 = true>
inline ExpParts exp_parts_dd(double h, double e) {
    using namespace orv::explog;
    const double t = h * kInvLn2x64 + kShiftD;
    const double k = t - kShiftD;
    const double r = ((k * kNegLn2by64Hi + h) + k * kNegLn2by64Lo) + e;
    const int64_t m = static_cast<int64_t>(bits_of(t) - bits_of(kShiftD));
    const double* row = kExp64D[m & 63];
    const double c = kDeg5 ? (r * kE6 + kE5) : kE5;
    const double q = (((c * r + kE4) * r + kE3) * r + 0.5) * r * r + r;
    return {row[0], q * row[0] + row[1], m >> 6};
}

// (thi + p) 2^n over the whole range: two steps above 2^1023. Below the
// normal range the sum, exact in double-double and scaled by 2^(n + 1022)
// to below 1, is added to 1: the sum rounds there at the grid of 2^-52,
// which the exact scaling by 2^-1022 turns into the denormal grid, so the
// result rounds once.
inline double scale_any(double thi, double p, int64_t n) {
    if (n > 1023) return (thi + p) * 0x1p1023 * double_of(uint64_t(n) << 52);  // 2^(n-1023)
    const double v = thi + p;
    if (n >= -1021 || (n == -1022 && v >= 1.0)) return v * double_of(uint64_t(n + 1023) << 52);
    if (n == -1023 && v >= 2.0) return (v * 0.5) * 0x1p-1022;
    if (n < -1200) return 0.0;
    double vl;
    const double vh = dd::two_sum(thi, p, &vl);
    const double s = double_of(uint64_t(n + 2045) << 52);  // 2^(n + 1022), at least 2^-178
    const double a = vh * s;                                // exact, at most 1
    const double hi = 1.0 + a;
    const double lo = ((1.0 - hi) + a) + vl * s;
    return ((hi + lo) - 1.0) * 0x1p-1022;
}

// ln x in double-double, to about 2^-68 relative, for a positive normal x
// given by its bits (kadj added to its exponent). The reduction of the
// logarithm kernels: x = 2^k z, z R - 1 = r + r_l exactly with R a 21-bit
// reciprocal from the 128-row table; then ln x = k ln 2 - ln R + ln(1 + r)
// with r - r^2/2 kept exact in double-double and the rest of the series,
// r^3 (1/3 - r/4 + ... - r^7/10), in double (its first neglected term is
// below 2^-77 for |r| <= 2^-6.7).
inline Dd ln_acc(uint64_t ix, int kadj) {
    using namespace orv::explog;
    const uint64_t tmp = ix - kLogBase;
    const int i = static_cast<int>((tmp >> 45) & 127);
    const int k = static_cast<int>(static_cast<int64_t>(tmp) >> 52) + kadj;
    const double z = double_of(ix - (tmp & 0xFFF0000000000000ull));
    const double* row = kLogD[i];
    const double zh = double_of(bits_of(z) & ~0x1FFFFFull);  // 32 bits: zh R is exact
    double rl;
    const double r = dd::two_sum(zh * row[0] - 1.0, (z - zh) * row[0], &rl);
    const Dd sq = dd::two_prod(r, r);
    const double p =
        ((((((-0.1 * r + 1.0 / 9) * r - 0.125) * r + 1.0 / 7) * r - 1.0 / 6) * r + 0.2) * r - 0.25) * r +
        1.0 / 3;
    const double tail = sq.hi * r * p - r * rl;  // r^3 p(r), and the cross term of r_l in -r^2/2
    const double dk = k;
    const double s0 = dk * kLn2Hi + row[1];  // exact: both are multiples of 2^-43
    double e1, e2;
    const double s1 = dd::two_sum(s0, r, &e1);
    const double s2 = dd::two_sum(s1, -0.5 * sq.hi, &e2);
    const double lo = ((e1 + e2) + (rl - 0.5 * sq.lo)) + (tail + (dk * kLn2Lo + row[2]));
    double e;
    const double hi = dd::two_sum(s2, lo, &e);
    return {hi, e};
}

// An upper bound of |y log2 x| for positive finite x, from the bits of x:
// a = (bits - bits(1)) 2^-52 lies within [log2 x - 0.0861, log2 x].
inline double log2_bound(double x, double y) {
    const double a = double(static_cast<int64_t>(bits_of(x) - 0x3FF0000000000000ull)) * 0x1p-52;
    return (a < 0 ? -a : a) * (y < 0 ? -y : y) + 0.0861 * (y < 0 ? -y : y);
}

// ---- cube roots ----

// x = m 2^(3k) with m in [1, 8) for positive normal x.
struct Thirds {
    double m;
    int64_t k;
};
inline Thirds split_thirds(double x) {
    const int64_t e = static_cast<int64_t>(bits_of(x) >> 52) - 1023;
    const int64_t k = (e + 3069) / 3 - 1023;  // floor(e / 3)
    return {double_of(bits_of(x) - (static_cast<uint64_t>(3 * k) << 52)), k};
}

// m^(-1/3) for m in [1, 8) to a few ulp: a quadratic start (relative
// error below 8.6 %, a weighted least-squares fit) and three steps of the
// series (1 + d)^(-1/3) = 1 - d/3 + 2 d^2/9 with d = m t^3 - 1, each of
// which about triples the correct bits (8.6e-2, 2.5e-3, 7.6e-8, 2^-52).
template <typename V>
inline V inv_cbrt_start(V m) {
    V t = (m * 0.0091 - 0.1387) * m + 1.0444;
    for (int i = 0; i < 3; ++i) {
        const V d = m * t * t * t - 1.0;
        t = t - t * d * (1.0 / 3.0 - d * (2.0 / 9.0));
    }
    return t;
}

// The following take doubles or registers of two doubles alike (Dekker's
// product by power_ops::two_prod; scalars mix with registers lane by lane).
using orv::vec::power_ops::two_prod;

// One Newton correction of t ~ m^(-1/3) with the residual 1 - m t^3 formed
// exactly in double-double: the result errs by about 0.5 ulp.
template <typename V>
inline V inv_cbrt_fix(V m, V t) {
    V sl, ul, vl;
    const V sh = two_prod(t, t, &sl);
    const V uh = two_prod(sh, t, &ul);
    ul = ul + sl * t;
    const V vh = two_prod(m, uh, &vl);
    const V e = (1.0 - vh) - (vl + m * ul);
    return t + t * (e * (1.0 / 3.0));
}

// c ~ m^(1/3) corrected with the exact residual m - c^3.
template <typename V>
inline V cbrt_fix(V m, V c) {
    V sl, ul;
    const V sh = two_prod(c, c, &sl);
    const V uh = two_prod(sh, c, &ul);
    ul = ul + sl * c;
    const V e = (m - uh) - ul;
    return c + e / (sh * 3.0);
}

// y ~ m^(2/3) corrected with the exact residual m^2 - y^3.
template <typename V>
inline V pow2o3_fix(V m, V y) {
    V m2l, sl, ul;
    const V m2h = two_prod(m, m, &m2l);
    const V sh = two_prod(y, y, &sl);
    const V uh = two_prod(sh, y, &ul);
    ul = ul + sl * y;
    const V e = (m2h - uh) + (m2l - ul);
    return y + e / (sh * 3.0);
}

inline double pow2(int64_t k) { return double_of(static_cast<uint64_t>(k + 1023) << 52); }

// Cube root, its reciprocal and the power 2/3 of a positive normal double.
inline double cbrt_pos(double x) {
    const Thirds r = split_thirds(x);
    const double t = inv_cbrt_start(r.m);
    return cbrt_fix(r.m, r.m * t * t) * pow2(r.k);
}
inline double inv_cbrt_pos(double x) {
    const Thirds r = split_thirds(x);
    return inv_cbrt_fix(r.m, inv_cbrt_start(r.m)) * pow2(-r.k);
}
inline double pow2o3_pos(double x) {
    const Thirds r = split_thirds(x);
    const double t = inv_cbrt_start(r.m);
    const double c = r.m * t * t;
    return pow2o3_fix(r.m, c * c) * pow2(2 * r.k);
}

// x^(3/2) for positive normal x whose result is normal: x = m 2^(2k), m in
// [1, 4); sqrt(m) as s + s_l with the exact residual, m s in double-double.
inline double pow3o2_pos(double x) {
    const int64_t e = static_cast<int64_t>(bits_of(x) >> 52) - 1023;
    const int64_t k = (e + 2048) / 2 - 1024;  // floor(e / 2)
    const double m = double_of(bits_of(x) - (static_cast<uint64_t>(2 * k) << 52));
    const double s = orv::vec::power_ops::sqrt(m);
    const Dd ss = dd::two_prod(s, s);
    const double sl = ((m - ss.hi) - ss.lo) / (s + s);
    const Dd p = dd::two_prod(m, s);
    const double v = p.hi + (p.lo + m * sl);
    return v * pow2(3 * k);  // 3k within the normal range for the admitted x
}

// sqrt(x^2 + y^2) for |x|, |y| with the larger in [2^-500, 2^500]: the
// squares exact in double-double, the root corrected once by its residual.
inline double hypot_core(double x, double y) {
    const Dd a = dd::two_prod(x, x);
    const Dd b = dd::two_prod(y, y);
    double e;
    const double h = dd::two_sum(a.hi, b.hi, &e);
    const double l = e + a.lo + b.lo;
    const double s = orv::vec::power_ops::sqrt(h);
    const Dd ss = dd::two_prod(s, s);
    return s + (((h - ss.hi) - ss.lo) + l) / (s + s);
}

}  // namespace orv::power
