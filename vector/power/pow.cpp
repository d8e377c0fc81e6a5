// Pow, Powr and Powx in single and double. The log-exp route. The double
// block step (dpow_step.h): ln x in double-double from its own 128-row
// table, times y split by masking, then a 128-row exponential. The
// callouts: ln x in double-double from the 128-row table of the logarithm
// kernels, times y with Dekker's exact product, then Tang's 64-row
// exponential with the low part folded into the reduced argument. The
// single block step is a table-driven log2 and exp2 in plain double,
// rounded once to float (pow_s_v below).
//
// Powx (one exponent for the whole vector) has a family-local loop below:
// the block driver has no shape with a scalar parameter yet.
#include <bit>
#include <cmath>
#include <limits>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/common/gather.h"
#include "vector/common/poly.h"
#include "vector/common/spow_ops.h"
#include "vector/power/dpow_step.h"
#include "vector/power/power_core.h"
#include "vector/power/spow_tables.h"
#include "vtm_kernels.h"

namespace orv::power {
namespace {

using orv::vec::power_ops::is_integer;
using orv::vec::power_ops::is_odd_integer;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// |x|^y for finite non-zero x and finite y, over the whole range, with the
// sign applied; status 3 or 4 where the result leaves the normal range of
// T (T float: the double result is rounded once, then classified).
template <typename T>
int32_t pow_finite(double ax, double y, bool negate, T* r) {
    int kadj = 0;
    if (ax < 0x1p-1022) {
        ax *= 0x1p60;
        kadj = -60;
    }
    const Dd l = ln_acc(bits_of(ax), kadj);
    double v;
    if (l.hi == 0.0) {
        v = 1.0;
    } else {
        const double ay = y < 0 ? -y : y;
        // Beyond 2^64 the product passes any limit (|ln x| >= 2^-54 here).
        const double big = ay > 0x1p64 ? (y * l.hi) : 0.0;
        if (big > 0)
            v = kInf;
        else if (big < 0)
            v = 0.0;
        else {
            const Dd p = dd::two_prod(y, l.hi);
            double e;
            const double h = dd::fast_two_sum(p.hi, p.lo + y * l.lo, &e);
            if (h > 710.0)
                v = kInf;
            else if (h < -746.0)
                v = 0.0;
            else {
                const ExpParts ep = exp_parts_dd(h, e);
                v = scale_any(ep.thi, ep.p, ep.n);
            }
        }
    }
    const T out = T(negate ? -v : v);
    *r = out;
    const T a = out < 0 ? -out : out;
    if (a == std::numeric_limits<T>::infinity()) return kOverflow;
    if (a < std::numeric_limits<T>::min()) return kUnderflow;
    return kOk;
}

// pow by the C standard's Annex F, every input.
template <typename T>
int32_t pow_callout(T xt, T yt, T* r) {
    const double x = xt, y = yt;
    if (y == 0.0 || x == 1.0) {  // pow(x, +-0) = 1 and pow(1, y) = 1, NaNs included
        *r = T(1);
        return kOk;
    }
    if (std::isnan(x) || std::isnan(y)) {
        *r = orv::vec::simd::first_nan(xt, xt + yt);  // the first NaN, whichever operand order the compiler picks
        return kOk;
    }
    const double ax = std::fabs(x);
    if (std::isinf(y)) {
        if (ax == 1.0)
            *r = T(1);
        else
            *r = T((ax < 1.0) == (y < 0) ? kInf : 0.0);
        return kOk;
    }
    const bool odd = is_odd_integer(y);
    if (x == 0.0) {
        if (y < 0) {
            *r = T(odd ? std::copysign(kInf, x) : kInf);
            return kPole;
        }
        *r = T(odd ? x : 0.0);
        return kOk;
    }
    if (std::isinf(x)) {
        const double m = y < 0 ? 0.0 : kInf;
        *r = T(odd && x < 0 ? -m : m);
        return kOk;
    }
    if (x < 0 && !is_integer(y)) {
        *r = T(kNaN);
        return kDomain;
    }
    return pow_finite<T>(ax, y, x < 0 && odd, r);
}

// powr(x, y) = exp(y ln x): negative bases, 0^0, inf^0 and 1^inf are
// invalid; the rest as pow on x >= 0.
template <typename T>
int32_t powr_callout(T xt, T yt, T* r) {
    const double x = xt, y = yt;
    if (std::isnan(x) || std::isnan(y)) {  // powr(1, NaN) = 1, as pow has it
        *r = x == 1.0 ? T(1) : orv::vec::simd::first_nan(xt, xt + yt);
        return kOk;
    }
    if (x < 0) {
        *r = T(kNaN);
        return kDomain;
    }
    if ((y == 0.0 && (x == 0.0 || std::isinf(x))) || (x == 1.0 && std::isinf(y))) {
        *r = T(kNaN);
        return kDomain;
    }
    if (x == 0.0 && y < 0 && !std::isinf(y)) {
        *r = T(kInf);
        return kPole;
    }
    return pow_callout<T>(std::fabs(xt), yt, r);  // +0 for a zero base, as powr asks
}

// ---- block steps ----

// The lanes the block step computes: positive normal finite x, finite y,
// and |y log2 x| below the bound, so that the result is normal.
template <typename T>
bool pow_special(T x, T y) {
    using F = orv::vec::Fmt<T>;
    const auto bx = orv::vec::bits(x);
    if (bx - F::kMinNormal >= F::kExpMask - F::kMinNormal) return true;  // <= 0, denormal, inf, NaN
    if ((orv::vec::bits(y) & F::kAbs) >= F::kExpMask) return true;
    if constexpr (sizeof(T) == 8) {
        // as pow_special_v, lane for lane
        const int32_t hi = static_cast<int32_t>((bx - 0x3FF0000000000000ull) >> 32);
        const double a = double(hi) * 0x1p-20;
        return std::fabs(y) * (std::fabs(a) + 0.0862) > 1000.0;
    }
    return log2_bound(double(x), double(y)) > 125.0;
}

// The same test on a register of doubles, all ones in the flagged
// lanes; log2 x is bounded from the high word of bits(x) - bits(1), which
// is log2 x to within 0.0862 in units of 2^-20.
inline orv::vec::simd::VD pow_special_v(orv::vec::simd::VD x, orv::vec::simd::VD y) {
    namespace sd = orv::vec::simd;
    const auto bad_x = sd::outside(x, 0x00100000u, 0x7FE00000u);
    const auto bad_y = sd::outside(sd::band(y, orv::vec::simd::Reg<double>::bits(0x7FFFFFFFFFFFFFFFull)),
                                      0u, 0x7FF00000u);
    const auto a = orv::vec::power_ops::hi_words_to_double(
                          orv::vec::power_ops::sub64(orv::vec::power_ops::ibits(x),
                                                     orv::vec::power_ops::splat64(0x3FF0000000000000ull))) *
                      orv::vec::bitops::splat(0x1p-20);
    const auto abs = orv::vec::simd::Reg<double>::bits(0x7FFFFFFFFFFFFFFFull);
    const auto bound = sd::band(y, abs) * (sd::band(a, abs) + orv::vec::bitops::splat(0.0862));
    return sd::bor(sd::bor(bad_x, bad_y), sd::lt(orv::vec::bitops::splat(1000.0), bound));
}

template <typename T_, int32_t (*Callout)(T_, T_, T_*)>
struct PowBase {
    using T = T_;
    static constexpr int kArity = 2;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static bool special(T x, T y) { return pow_special(x, y); }
    static int32_t callout(T x, T y, T* r) { return Callout(x, y, r); }
};

// Register types of the block steps.
namespace po = orv::vec::power_ops;
using V2 = orv::vec::simd::VD;
using orv::vec::simd::VF;
namespace simd = orv::vec::simd;
inline V2 splat(double v) { return orv::vec::bitops::splat(v); }

struct PowD : PowBase<double, pow_callout<double>> {
    static V2 specialv(V2 x, V2 y) { return pow_special_v(x, y); }
    static double fast(double x, double y) { return dpow::pow_step<dpow::Scalar>(x, y); }
    static V2 fastv(V2 x, V2 y) { return dpow::pow_step<dpow::Vector>(x, y); }
};
// Single on registers: x^y for float lanes, each half of the register
// widened to double, in plain double (no double-double: the error of
// 2^(y log2 x) stays below about 2^-30.5 relative for |y log2 x| <= 126, far
// under a float's half ulp of 2^-24), then one rounding to float. The table-driven
// log2: x = 2^k z with z in [0x1.65p-1, 0x1.65p0), split on the float bits
// of the whole register (k, z and the row at once), a 128-row table of 1/c
// (24 bits, so that z/c - 1 is exact) and log2 c, log2(1 + r) by a
// degree-4 polynomial (all scaled by S = 32, exactly, to give S y log2 x
// at once); then 2^t from 2^(m/S) (32 rows) times a degree-3 polynomial,
// scaled by adding m to the entry's bits. Tables and coefficients:
// vector/power/spow_tables.h (tools/gen_spow_tables.py).
// Q and P: the log2 and exp2 polynomials (HA: kSpowQ3, kSpowP2).
constexpr double kSpowShift = 0x1.8p52;  // its ulp is 1: m = round(S t) in the low bits
constexpr int kSpowScaleBits = std::countr_zero(unsigned(kSpowScale));

// S y log2 x on one half, from z, S k and the row's 1/c and -S log2(1/c).
template <const auto& Q>
inline V2 spow_ts(V2 z, V2 ks, V2 invc, V2 logc, V2 y) {
    const V2 r = z * invc - splat(1.0);  // exact
    return y * ((ks + logc) + r * orv::vec::poly::horner(r, Q, splat));
}
// 2^(ts / S) on one half, given kd = ts + kSpowShift and the row e of m.
template <const auto& P>
inline V2 spow_exp2(V2 ts, V2 kd, V2 e) {
    const V2 u = ts - (kd - splat(kSpowShift));  // |u| <= 1/2, exact
    const po::VI64 m = po::ibits(kd);
    const V2 s = po::dbits(po::add64(po::ibits(e), simd::as<po::VI64>(simd::as<po::VU64>(m) << (52 - kSpowScaleBits))));
    return s * (orv::vec::poly::horner(u, P, splat) * u) + s;
}
template <const auto& Q = kSpowQ3, const auto& P = kSpowP2>
inline VF pow_s_v(VF x, VF y) {
    namespace so = orv::vec::spow_ops;
    const simd::VU32 ix = simd::as<simd::VU32>(x);
    const simd::VU32 tmp = ix - kSpowOff;
    // S k: the exponent field of tmp (arithmetic shift), times S
    const simd::VI32 ks = (simd::as<simd::VI32>(tmp) >> (23 - kSpowScaleBits)) & -kSpowScale;
    const VF z = simd::as<VF>(ix - (tmp & 0xFF800000u));
    V2 invc_lo, logc_lo, invc_hi, logc_hi;
    so::rows<128, kSpowLog, kSpowRowShift>(simd::as<simd::VI32>(tmp), &invc_lo, &logc_lo, &invc_hi, &logc_hi);
    const V2 t_lo = spow_ts<Q>(simd::widen_lo(z), so::lo_to_double(ks), invc_lo, logc_lo, simd::widen_lo(y));
    const V2 t_hi = spow_ts<Q>(simd::widen_hi(z), so::hi_to_double(ks), invc_hi, logc_hi, simd::widen_hi(y));
    const V2 kd_lo = t_lo + splat(kSpowShift), kd_hi = t_hi + splat(kSpowShift);
    V2 e_lo, e_hi;
    so::col(kSpowExp2, kd_lo, kd_hi, &e_lo, &e_hi);
    return simd::narrow(spow_exp2<P>(t_lo, kd_lo, e_lo), spow_exp2<P>(t_hi, kd_hi, e_hi));
}

// pow_special on a register of floats, lane for lane. First a cheap
// estimate in float, scaled by 2^23, from b = bits(x) - kSpowOff (which the
// step computes too): (|b| + (0x3F800000 - kSpowOff) + 0.0861 2^23) (|y| + 1)
// is at least log2_bound (within 2^-20 relative) and at least 125.3 2^23 in
// every lane with a zero, denormal, negative, infinite or NaN x; NaN and
// infinite y give NaN or infinity. Only a register with a lane at or above
// 124.99 2^23 takes the exact test: the classes of x and y, and the bound
// in double from a = (bits(x) - bits(1)) 2^-23, which is the scalar test's
// value exactly for normal x.
inline VF pow_special_vf(VF x, VF y) {
    using RF = simd::Reg<float>;
    const VF absf = RF::bits(0x7FFFFFFFu);
    const VF ayf = simd::band(y, absf);
    const simd::VI32 b = simd::as<simd::VI32>(simd::as<simd::VU32>(x) - kSpowOff);
    constexpr float kSlack = float(0x3F800000u - kSpowOff) + 0.0861f * 0x1p23f;
    const VF est = (simd::band(simd::to_float(b), absf) + RF::set1(kSlack)) * (ayf + RF::set1(1.0f));
    if (orv::vec::spow_ops::lanes_not_below(est, RF::set1(124.99f * 0x1p23f)) == 0) return simd::bandnot(est, est);  // no lane
    const simd::VI32 a = simd::as<simd::VI32>(x) - 0x3F800000;
    const VF bad_x = simd::outside(x, 0x00800000u, 0x7F000000u);
    const VF bad_y = simd::outside(ayf, 0u, 0x7F800000u);
    const V2 abs = simd::Reg<double>::bits(0x7FFFFFFFFFFFFFFFull);
    auto over = [&](V2 ad, V2 yd) {
        const V2 ay = simd::band(yd, abs);
        return simd::lt(splat(125.0), simd::band(ad * splat(0x1p-23), abs) * ay + splat(0.0861) * ay);
    };
    // The double masks narrowed to float lanes: all ones becomes a NaN of
    // the same sign, so the sign bits, which the lane test reads, are kept.
    const VF big = simd::narrow(over(po::int_lo_to_double(a), simd::widen_lo(y)),
                                over(po::int_hi_to_double(a), simd::widen_hi(y)));
    return simd::bor(simd::bor(bad_x, bad_y), big);
}

struct PowS : PowBase<float, pow_callout<float>> {
    static VF specialv(VF x, VF y) { return pow_special_vf(x, y); }
    static VF fastv(VF x, VF y) { return pow_s_v(x, y); }
};
struct PowrD : PowBase<double, powr_callout<double>> {
    static V2 specialv(V2 x, V2 y) { return pow_special_v(x, y); }
    static double fast(double x, double y) { return dpow::pow_step<dpow::Scalar>(x, y); }
    static V2 fastv(V2 x, V2 y) { return dpow::pow_step<dpow::Vector>(x, y); }
};
struct PowrS : PowBase<float, powr_callout<float>> {
    static VF specialv(VF x, VF y) { return pow_special_vf(x, y); }
    static VF fastv(VF x, VF y) { return pow_s_v(x, y); }
};

// Cheaper steps of Powx. Double LA: the logarithm's polynomial one degree
// shorter, no tail of the exponential's table. Double EP: the same, with
// y ln x as two plain products (dpow_step.h).
struct PowxLaD : PowD {
    static double fast(double x, double y) { return dpow::pow_step<dpow::Scalar, true>(x, y); }
    static V2 fastv(V2 x, V2 y) { return dpow::pow_step<dpow::Vector, true>(x, y); }
};
struct PowxEpD : PowBase<double, pow_callout<double>> {
    static V2 specialv(V2 x, V2 y) { return pow_special_v(x, y); }
    static double fast(double x, double y) { return dpow::pow_step<dpow::Scalar, true, true>(x, y); }
    static V2 fastv(V2 x, V2 y) { return dpow::pow_step<dpow::Vector, true, true>(x, y); }
};
// Single LA and EP: the same step with shorter polynomials. LA: exp2 to
// 2^-23.2 relative (below 2 ulp added); EP: log2 to 2^-28.0 as well
// (below 2^-21 relative in the result with both for |y log2 x| <= 126, the bound is
// 2^-11).
struct PowxLaS : PowS {
    static VF fastv(VF x, VF y) { return pow_s_v<kSpowQ3, kSpowP1>(x, y); }
};
struct PowxEpS : PowS {
    static VF fastv(VF x, VF y) { return pow_s_v<kSpowQ2, kSpowP1>(x, y); }
};

// Powx: blocks of the driver's size, the block step on every lane, then the
// callout on the special lanes (single: found by the register test) in
// ascending order with the error entry
// (inputs a and a, as for a unary kernel, since b is a single value).
template <typename K, bool Strided>
void powx_run(int n, const typename K::T* a, long inca, typename K::T b, typename K::T* r,
              long incr, const char* name) {
    using T = typename K::T;
    constexpr int kB = orv::vec::kBlock;
    for (long i0 = 0; i0 < n; i0 += kB) {
        const int cnt = n - i0 < kB ? int(n - i0) : kB;
        using R = orv::vec::simd::Reg<T>;
        T x[kB + R::kWidth], z[kB + R::kWidth];
        for (int l = 0; l < cnt; ++l) x[l] = a[(i0 + l) * inca];
        for (int l = cnt; l < kB + R::kWidth; ++l) x[l] = T(0.75);  // the filler of a short tail
        uint64_t mask = 0;  // the special lanes
        for (int l = 0; l < cnt; l += R::kWidth) {
            const auto xv = R::load(x + l);
            R::store(z + l, K::fastv(xv, R::set1(b)));
            if constexpr (sizeof(T) == 4) mask |= uint64_t(orv::vec::simd::lanes(K::specialv(xv, R::set1(b)))) << l;
        }
        if constexpr (sizeof(T) == 4) mask &= cnt < 64 ? (uint64_t(1) << cnt) - 1 : ~uint64_t(0);
        for (int l = 0; l < cnt; ++l) {
            if constexpr (sizeof(T) == 4) {
                if (!(mask >> l & 1)) continue;
            } else if (!K::special(x[l], b)) {
                continue;
            }
            const int32_t st = K::callout(x[l], b, &z[l]);
            if (st == 0) continue;
            T& slot = r[(i0 + l) * incr];
            slot = z[l];
            const long i = i0 + l;
            if constexpr (Strided)
                frame::report_error(st, int32_t(i), a, int32_t(inca), a, int32_t(inca), r,
                                    int32_t(incr), r, int32_t(incr), name);
            else
                frame::report_error(st, int32_t(i), a, a, r, r, name);
            z[l] = slot;
        }
        for (int l = 0; l < cnt; ++l) r[(i0 + l) * incr] = z[l];
    }
}

template <typename K>
void powx_plain(int n, const typename K::T* a, typename K::T b, typename K::T* r, const char* name) {
    const frame::FpGuard guard = orv::vec::enter(true);
    powx_run<K, false>(n, a, 1, b, r, 1, name);
}

template <typename K, typename Fn>
void powx_strided(Fn* const* plain_table, int slot, int n, const typename K::T* a, int inca,
                  typename K::T b, typename K::T* r, int incr, const char* name) {
    if (inca == 1 && incr == 1) {
        plain_table[slot](n, a, b, r);
        return;
    }
    const frame::FpGuard guard = orv::vec::enter(true);
    powx_run<K, true>(n, a, inca, b, r, incr, name);
}

}  // namespace
}  // namespace orv::power

using namespace orv::power;

ORV_BINARY_KERNELS(sPow, PowS)
ORV_BINARY_KERNELS(dPow, PowD)
ORV_BINARY_KERNELS(sPowr, PowrS)
ORV_BINARY_KERNELS(dPowr, PowrD)

#define ORV_POWX_TIER(FN, SFX, SLOT, K)                                                        \
    extern "C" void orv_kern_##FN##SFX(int n, const K::T* a, K::T b, K::T* r) {                 \
        powx_plain<K>(n, a, b, r, orv::vtm::kName_##FN);                                        \
    }                                                                                           \
    extern "C" void orv_kern_##FN##I##SFX(int n, const K::T* a, int inca, K::T b, K::T* r,      \
                                          int incr) {                                           \
        powx_strided<K>(orv_vtm_kernel_##FN##_ttab, SLOT, n, a, inca, b, r, incr,               \
                        orv::vtm::kName_##FN##I);                                               \
    }

ORV_POWX_TIER(sPowx, _la, 0, PowxLaS)
ORV_POWX_TIER(sPowx, _ha, 1, PowS)
ORV_POWX_TIER(sPowx, _ep, 2, PowxEpS)
ORV_POWX_TIER(dPowx, _la, 0, PowxLaD)
ORV_POWX_TIER(dPowx, _ha, 1, PowD)
ORV_POWX_TIER(dPowx, _ep, 2, PowxEpD)
