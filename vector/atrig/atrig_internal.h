// Private pieces of the inverse trigonometric and hyperbolic kernels: the
// polynomial coefficients (tools/fit_atrig.py), the split constants, and the
// double-precision cores on one register of doubles. Each core returns
// its result as an unevaluated sum hi + lo, so that the single kernels round
// it once to float and the pi forms multiply it by 1/pi in double-double.
#pragma once

#include <cstdint>

#include "vector/block_driver.h"
#include "vector/common/atrig_ops.h"
#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/common/gather.h"
#include "vector/common/poly.h"
#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::atrig {

inline constexpr int32_t kOk = 0, kDomain = 1, kPole = 2, kOverflow = 3;

using V = orv::vec::simd::VD;
using orv::vec::bitops::splat;
namespace simd = orv::vec::simd;
namespace ops = orv::vec::atrig_ops;
namespace dd = orv::vec::dd;

struct DdV {
    V hi, lo;
};

// Minimax coefficients, highest first; made by tools/fit_atrig.py, which
// states each fit's interval, degree and error.
// atan: x + x^3 P(x^2), |x| <= 0.4375, P degree 10; relative error of the
// rounded polynomial 2.08e-17 = 2^-55.4
inline constexpr double kAtanP[11] = {-0.017604703263391884, 0.03788027347311374, -0.05036184625970919, 0.05848230200751886, -0.06663308184910033, 0.07692093160045825, -0.09090900494086238, 0.11111110909371481, -0.1428571428328076, 0.19999999999988538, -0.33333333333333326};
// asin: x + x^3 P(x^2), |x| <= 0.5, P degree 14; relative error of the
// rounded polynomial 2.3e-18 = 2^-58.6
inline constexpr double kAsinP[15] = {0.0309836440069422, -0.0244835314883199, 0.022914814626070222, 0.0002149041989225113, 0.008844846729237233, 0.008125553229689789, 0.009794237676831047, 0.011548935233021211, 0.013965020671714337, 0.017352756960872486, 0.02237215929579336, 0.030381944441063076, 0.04464285714288633, 0.0749999999999999, 0.16666666666666666};
// tanh: x + x^3 P(x^2), |x| <= 0.25, P degree 8; relative error of the
// rounded polynomial 1.16e-18 = 2^-59.6
inline constexpr double kTanhP[9] = {-0.00021361242619496456, 0.0005871042811216643, -0.0014556517923578513, 0.0035921213598477273, -0.008863235386182626, 0.021869488534415397, -0.05396825396824341, 0.1333333333333333, -0.3333333333333333};
// sinh: x + x^3 P(x^2), |x| <= 1, P degree 7; relative error of the
// rounded polynomial 8e-18 = 2^-56.8
inline constexpr double kSinhP[8] = {2.8445288905201917e-15, 7.646625275080331e-13, 1.6059048397541025e-10, 2.5052108364049923e-08, 2.7557319224040365e-06, 0.00019841269841269773, 0.008333333333333333, 0.16666666666666666};
// atanf: x + x^3 P(x^2), |x| <= 0.4375, P degree 5; relative error of the
// rounded polynomial 1.87e-10 = 2^-32.3
inline constexpr double kAtanfP[6] = {0.04836508844181185, -0.08538938609178695, 0.11059371213647792, -0.14283478469620736, 0.1999996437008203, -0.3333333324110695};
// asinf: x + x^3 P(x^2), |x| <= 0.5, P degree 6; relative error of the
// rounded polynomial 5.25e-11 = 2^-34.1
inline constexpr double kAsinfP[7] = {0.031197269325416655, 0.01040780357883047, 0.023658528855202168, 0.03026310708675669, 0.044648015560647125, 0.07499991655671637, 0.16666666688662654};
// tanhf: x + x^3 P(x^2), |x| <= 0.25, P degree 3; relative error of the
// rounded polynomial 6.33e-11 = 2^-33.9
inline constexpr double kTanhfP[4] = {0.020800674349547583, -0.05392703869745785, 0.13333282201589491, -0.3333333323409216};

// pi/2, pi and 1/pi in two parts.
inline constexpr double kPio2Hi = 1.5707963267948966, kPio2Lo = 6.123233995736766e-17;
inline constexpr double kPiHi = 3.141592653589793, kPiLo = 1.2246467991473532e-16;
inline constexpr double kInvPiHi = 0.3183098861837907, kInvPiLo = -1.9678676675182486e-17;
// atan(1/2), atan(1), atan(3/2) in two parts: the centres of the reduction.
inline constexpr double kAtanHalfHi = 0.4636476090008061, kAtanHalfLo = 2.2698777452961687e-17;
inline constexpr double kAtanOneHi = 0.7853981633974483, kAtanOneLo = 3.061616997868383e-17;
inline constexpr double kAtan3o2Hi = 0.982793723247329, kAtan3o2Lo = 1.3903311031230998e-17;

template <std::size_t N>
inline V hornerv(V x, const double (&c)[N]) {
    return orv::vec::poly::horner<V, double, N>(x, c, splat);
}

// hi + lo = (a + b) exactly
inline DdV two_sum(V a, V b) {
    V e;
    const V s = dd::two_sum(a, b, &e);
    return {s, e};
}
// hi + lo = a * b exactly (no overflow or underflow in the parts)
inline DdV two_prod(V a, V b) {
    const V ah = dd::split_hi(a), al = a - ah;
    const V bh = dd::split_hi(b), bl = b - bh;
    const V p = a * b;
    return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

// atan(u) - u = u^3 P(u^2) for |u| <= 7/16
inline V atan_tail(V u) {
    const V z = u * u;
    return u * z * hornerv(z, kAtanP);
}

// atan(a) for a = |x| >= 0 (NaN gives NaN, infinity pi/2), by the
// reduction to |u| <= 7/16: u = a, (2a - 1)/(2 + a), (a - 1)/(a + 1),
// (a - 3/2)/(1 + 3a/2) or -1/a by the range of a, and atan(a) = atan(c) + atan(u).
// The reduction rows by the range of a: num = a A + B, den = a C + D, and
// the centre atan(c) = H + L.
alignas(16) inline constexpr double kAtanRows[5][8] = {
    {1.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 0.0},
    {2.0, -1.0, 1.0, 2.0, kAtanHalfHi, kAtanHalfLo, 0.0, 0.0},
    {1.0, -1.0, 1.0, 1.0, kAtanOneHi, kAtanOneLo, 0.0, 0.0},
    {1.0, -1.5, 1.5, 1.0, kAtan3o2Hi, kAtan3o2Lo, 0.0, 0.0},
    {0.0, -1.0, 1.0, 0.0, kPio2Hi, kPio2Lo, 0.0, 0.0},
};
struct AtanReduced {
    V u, h, l;
};
inline AtanReduced atan_reduce(V a0) {
    const V a = ops::min_or_b(a0, splat(0x1p1000));  // keeps -1/a finite for infinity, NaN to row 4
    const V m1 = simd::le(splat(0.4375), a), m2 = simd::le(splat(0.6875), a);
    const V m3 = simd::le(splat(1.1875), a), m4 = simd::le(splat(2.4375), a);
    V c[6];
#if ORV_SIMD_BYTES == 16
    ops::gather6(kAtanRows, ops::count_masks(m1, m2, m3, m4), c);
#else
    ops::select6(kAtanRows, m1, m2, m3, m4, c);  // blends beat the gathers of wide registers
#endif
    return {(a * c[0] + c[1]) / (a * c[2] + c[3]), c[4], c[5]};
}
inline DdV atan_core(V a0) {
    const AtanReduced r = atan_reduce(a0);
    V e;
    const V s = dd::fast_two_sum(r.h, r.u, &e);
    return {s, e + (r.l + atan_tail(r.u))};
}
// The same to about 2^-32, for the single kernels (NaN lanes give a number).
inline V atan_light(V a0) {
    const AtanReduced r = atan_reduce(a0);
    const V z = r.u * r.u;
    return r.h + (r.u + r.u * z * hornerv(z, kAtanfP));
}

// atan2(|y|, |x|) in [0, pi/2] when both are finite, non-zero and within
// 2^-500..2^500 of each other's scale: t = min/max <= 1, reduced to
// |u| <= 7/16 with exact numerators (2n - d, n - d by Sterbenz) and the
// quotient's remainder folded back; swapped operands give pi/2 - atan t.
// neg_x adds the reflection pi - v.
inline DdV atan2_core(V ay, V ax, V neg_x) {
    using simd::select;
    const V swap = simd::lt(ax, ay);
    const V n = select(swap, ax, ay), d = select(swap, ay, ax);
    const V t = n / d;
    const V m1 = simd::le(splat(0.4375), t), m2 = simd::le(splat(0.6875), t);
    const V num = select(m2, n - d, select(m1, (n + n) - d, n));
    const V den = select(m2, d + n, select(m1, (d + d) + n, d));
    const V H = select(m2, splat(kAtanOneHi), select(m1, splat(kAtanHalfHi), splat(0.0)));
    const V L = select(m2, splat(kAtanOneLo), select(m1, splat(kAtanHalfLo), splat(0.0)));
    const V u = num / den;
    const DdV p = two_prod(u, den);
    const V ul = ((num - p.hi) - p.lo) / den;
    // v = H + L + u + ul + tail, then base +/- v
    // -1 when swapped or x < 0, not both: 0 + v, pi/2 - v, pi - v, pi/2 + v
    const V sign = select(swap, select(neg_x, splat(1.0), splat(-1.0)), select(neg_x, splat(-1.0), splat(1.0)));
    const V bhi = select(swap, splat(kPio2Hi), select(neg_x, splat(kPiHi), splat(0.0)));
    const V blo = select(swap, splat(kPio2Lo), select(neg_x, splat(kPiLo), splat(0.0)));
    const DdV k = two_sum(bhi, sign * H);
    const DdV r = two_sum(k.hi, sign * u);
    return {r.hi, r.lo + (k.lo + (blo + sign * ((L + ul) + atan_tail(u))))};
}

// asin(x) - x = x^3 P(x^2) for |x| <= 1/2
inline V asin_tail(V x, V z) { return x * z * hornerv(z, kAsinP); }

// One polynomial for both ranges of a = |x| <= 1: t = a and tl = 0 up to 1/2,
// else t + tl = sqrt((1 - a)/2) in double-double (the root corrected by its
// exact residual); p = asin(t) - t = t^3 P(t^2).
struct AsinArg {
    V t, tl, p, small;
};
inline AsinArg asin_arg(V a) {
    const V small = simd::le(a, splat(0.5));
    const V zb = (splat(1.0) - a) * splat(0.5);  // exact for a >= 1/2
    const V s = simd::sqrt(zb);
    const DdV ss = two_prod(s, s);
    const V sl = ((zb - ss.hi) - ss.lo) / ((s + s) + splat(1e-300));  // 0 when zb is 0
    const V t = simd::select(small, a, s);
    const V z = simd::select(small, a * a, zb);
    return {t, simd::bandnot(small, sl), asin_tail(t, z), small};
}

// asin(x) for |x| <= 1 (the sign of x kept): asin t, or pi/2 - 2 asin t
inline DdV asin_core(V x) {
    const AsinArg g = asin_arg(ops::abs_of(x));
    const V t2 = g.t + g.t, w = (g.tl + g.p) * splat(2.0);
    const DdV big = two_sum(splat(kPio2Hi), splat(0.0) - t2);
    const V hi = simd::select(g.small, g.t, big.hi);
    const V lo = simd::select(g.small, g.p, big.lo + (splat(kPio2Lo) - w));
    return {ops::xor_sign(hi, x), ops::xor_sign(lo, x)};
}

// acos(x) for |x| <= 1: pi/2 - asin x, 2 asin t, or pi - 2 asin t
inline DdV acos_core(V x) {
    using simd::select;
    const AsinArg g = asin_arg(ops::abs_of(x));
    const V neg = simd::negative(x);
    const V t2 = g.t + g.t, w = (g.tl + g.p) * splat(2.0);
    const DdV mid = two_sum(splat(kPio2Hi), splat(0.0) - x);
    const V mid_lo = mid.lo + (splat(kPio2Lo) - ops::xor_sign(g.p, x));
    const DdV left = two_sum(splat(kPiHi), splat(0.0) - t2);
    const V hi = select(g.small, mid.hi, select(neg, left.hi, t2));
    const V lo = select(g.small, mid_lo, select(neg, left.lo + (splat(kPiLo) - w), w));
    return {hi, lo};
}

// Single-grade Asin and Acos (relative error near 2^-33, for the single
// kernels): one polynomial on t = |x| or the half angle, no corrections.
struct AsinLight {
    V p, small;  // asin(t), and the lanes where t = |x| <= 1/2
};
inline AsinLight asin_light_t(V a) {
    const V small = simd::le(a, splat(0.5));
    const V zb = (splat(1.0) - a) * splat(0.5);
    const V t = simd::select(small, a, simd::sqrt(zb));
    const V z = simd::select(small, a * a, zb);
    return {t + t * z * hornerv(z, kAsinfP), small};
}
inline V asin_light(V x) {
    const AsinLight l = asin_light_t(ops::abs_of(x));
    return ops::xor_sign(simd::select(l.small, l.p, splat(kPio2Hi) - (l.p + l.p)), x);
}
inline V acos_light(V x) {
    const AsinLight l = asin_light_t(ops::abs_of(x));
    const V neg = simd::negative(x);
    const V mid = splat(kPio2Hi) - ops::xor_sign(l.p, x);
    return simd::select(l.small, mid, simd::select(neg, splat(kPiHi) - (l.p + l.p), l.p + l.p));
}
// Single-grade Atan2 of |y|, |x| (the signs as in atan2_core).
inline V atan2_light(V ay, V ax, V neg_x) {
    using simd::select;
    const V swap = simd::lt(ax, ay);
    const V v = atan_light(select(swap, ax, ay) / select(swap, ay, ax));
    const V sign = select(swap, select(neg_x, splat(1.0), splat(-1.0)), select(neg_x, splat(-1.0), splat(1.0)));
    const V base = select(swap, splat(kPio2Hi), select(neg_x, splat(kPiHi), splat(0.0)));
    return base + sign * v;
}

// (hi + lo) / pi, rounded once; values below 2^-900 are scaled up by 2^110
// first, so that the split products do not underflow.
inline V times_inv_pi(DdV v) {
    const V tiny = simd::lt(ops::abs_of(v.hi), splat(0x1p-900));
    const V up = simd::select(tiny, splat(0x1p110), splat(1.0));
    const V down = simd::select(tiny, splat(0x1p-110), splat(1.0));
    return dd::mul_dd(v.hi * up, v.lo * up, kInvPiHi, kInvPiLo) * down;
}

// exp(a)/2 for 0 <= a < 710.5 as hi + lo (relative error near 2^-60):
// Tang's reduction a = (64 N + j) ln2/64 + r with the exponential kernels'
// table of 2^(j/64) and their polynomial for exp(r) - 1.
inline DdV half_exp(V a) {
    using namespace orv::explog;
    const V t = a * splat(kInvLn2x64) + splat(kShiftD);
    const V n = t - splat(kShiftD);
    const V r = (n * splat(kNegLn2by64Hi) + a) + n * splat(kNegLn2by64Lo);
    V th, tl;
    orv::vec::gather::pairs_of<kExp64D>(simd::as<simd::VI64>(t), 63, &th, &tl);
    const V p = (((r * splat(kE6) + splat(kE5)) * r + splat(kE4)) * r + splat(kE3)) * r * r * r +
                r * r * splat(0.5) + r;
    V e;
    const V hi = dd::fast_two_sum(th, tl + th * p, &e);
    return {ops::scale_by_shifter64(hi * splat(0.5), t), ops::scale_by_shifter64(e * splat(0.5), t)};
}

// sinh(a) - a = a^3 P(a^2), |a| <= 1
inline V sinh_small(V a) {
    const V z = a * a;
    return a + a * z * hornerv(z, kSinhP);
}

// sinh(a) for 0 <= a <= 710.47 (sign applied by the caller)
inline V sinh_core(V a) {
    const DdV e = half_exp(a);
    const V q = splat(0.25) / e.hi;  // exp(-a)/2
    const DdV d = two_sum(e.hi, splat(0.0) - q);
    const V big = d.hi + (d.lo + e.lo + q * (e.lo / e.hi));
    return simd::select(simd::lt(a, splat(1.0)), sinh_small(a), big);
}

// cosh(a) for 0 <= a <= 710.47
inline V cosh_core(V a) {
    const DdV e = half_exp(a);
    const V q = splat(0.25) / e.hi;
    const DdV d = two_sum(e.hi, q);
    return d.hi + (d.lo + e.lo - q * (e.lo / e.hi));
}

// tanh(a) for a >= 0 or NaN: the polynomial below 1/4, else
// 1 - 2/(exp(2a) + 1) with the quotient in double-double; saturates to 1.
inline V tanh_core(V a) {
    const V z = a * a;
    const V small = a + a * z * hornerv(z, kTanhP);
    const V b = ops::min_or_b(a, splat(40.0));  // NaN lanes take 40 and are put back by the caller
    const DdV e = half_exp(b + b);  // exp(2b)/2
    const V e2h = e.hi + e.hi, e2l = e.lo + e.lo;
    const DdV den = two_sum(e2h, splat(1.0));
    const V dl = den.lo + e2l;
    const V q = splat(2.0) / den.hi;
    const DdV p = two_prod(q, den.hi);
    const V ql = (((splat(2.0) - p.hi) - p.lo) - q * dl) / den.hi;
    const DdV one = two_sum(splat(1.0), splat(0.0) - q);
    const V big = one.hi + (one.lo - ql);
    return simd::select(simd::lt(a, splat(0.25)), small, big);
}

// Single Sinh and Cosh in x87 extended precision, for 0.0003 <= |x| < 89.41599
// (Cosh also from the smallest normal): |x|/ln 2 = v + w with v a multiple
// of 1/64 (the float shifter 1.5 * 2^17), 2^v/2 = p and 2^-v/2 = q from the
// 65-row table of 2^(j/64), and the short polynomials in w of
// cosh(w ln 2) and sinh(w ln 2) combine them.
inline float sinh_cosh_x87(float x, bool cosh) {
    const long double a = x < 0 ? -(long double)x : (long double)x;
    const long double t = a * (long double)1.4426950408889634 + 196608.0L;
    const float v = float(t);
    const long double w = t - v;
    const int m = int((v - 196608.0f) * 64.0f);  // 64 k + j, exact
    const int k = m >> 6, j = m & 63;
    const double tj = j == 0 ? 1.0 : orv::explog::kExp64D[j][0];
    const double tq = j == 0 ? 2.0 : orv::explog::kExp64D[64 - j][0];
    const long double p = (long double)tj * (long double)orv::vec::bitops::double_of(uint64_t(k - 1 + 1023) << 52);
    const long double q = (long double)tq * (long double)orv::vec::bitops::double_of(uint64_t(-k - 2 + 1023) << 52);
    const long double ww = w * w;
    if (cosh)
        return float((p - q) * w * 0.693149721330121L + (p + q) * (ww * 0.24022606667644342L + 1.0000000000268727L));
    const long double s = (p - q) * (ww * 0.240227094003655L + 0.9999999999955212L) +
                          (p + q) * (ww * 0.05550423073674281L + 0.6931471805574618L) * w;
    return float(x < 0 ? -s : s);
}

// Single-grade Tanh of a >= 0: the short polynomial below 1/4, else
// 1 - 2/(exp(2a) + 1) in plain double.
inline V tanh_light(V a) {
    const V z = a * a;
    const V small = a + a * z * hornerv(z, kTanhfP);
    const V b = ops::min_or_b(a, splat(40.0));
    const V e2 = half_exp(b + b).hi * splat(2.0);
    return simd::select(simd::lt(a, splat(0.25)), small, splat(1.0) - splat(2.0) / (e2 + splat(1.0)));
}

// ---- scalar callouts (callouts.cpp) ----
int32_t asin_d(double x, double* r);
int32_t acos_d(double x, double* r);
int32_t atan2_d(double y, double x, double* r);
int32_t asinpi_d(double x, double* r);
int32_t acospi_d(double x, double* r);
int32_t atan2pi_d(double y, double x, double* r);
int32_t sinh_d(double x, double* r);
int32_t cosh_d(double x, double* r);
int32_t sinh_s(float x, float* r);
int32_t cosh_s(float x, float* r);
int32_t asinh_d(const double* x, double* r);
int32_t acosh_d(const double* x, double* r);
int32_t atanh_d(const double* x, double* r);
int32_t asinh_s(const float* x, float* r);
int32_t acosh_s(const float* x, float* r);
int32_t atanh_s(const float* x, float* r);

// Scalar use of a register core: x in both lanes, lane 0 back.
inline double lane0(V v) { return v[0]; }

}  // namespace orv::atrig
