// Pow, Powr and Powx in single and double. The log-exp route. The double
// block step (dpow_step.h): ln x in double-double from its own 128-row
// table, times y split by masking, then a 128-row exponential. The
// callouts: ln x in double-double from the 128-row table of the logarithm
// kernels, times y with Dekker's exact product, then Tang's 64-row
// exponential with the low part folded into the reduced argument. The
// single block step is a table-driven log2 and exp2 in plain double,
// rounded once to float (spow_step below).
//
// Powx (one exponent for the whole vector) has a family-local loop below:
// the block driver has no shape with a scalar parameter yet.
#include <cmath>
#include <limits>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/common/gather.h"
#include "vector/common/poly.h"
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
// 2^(y log2 x) stays below 2^-31.5 relative for |y log2 x| <= 126, far under a
// float's half ulp of 2^-24), then one rounding to float. The table-driven
// log2: x = 2^k z with z in [0x1.66p-1, 0x1.66p0), a 16-row table of 1/c
// (28 bits, so that z/c - 1 is exact) and log2 c, log2(1 + r) by a degree-6
// polynomial (all scaled by 16, exactly, to give 16 y log2 x at once); then 2^t from 2^(m/16) (16 rows) times a degree-4
// polynomial, scaled by adding m to the entry's bits. Tables and
// coefficients: vector/power/spow_tables.h (tools/gen_spow_tables.py).
// Q and P: the log2 and exp2 polynomials (HA: kSpowQ5, kSpowP3).
template <const auto& Q, const auto& P>
inline V2 spow_step(V2 x, V2 y) {
    constexpr uint64_t kOff = 0x3FE6600000000000ull;  // bits of 0x1.66p-1
    constexpr double kShift = 0x1.8p52;
    const po::VI64 ix = po::ibits(x);
    const po::VI64 tmp = po::sub64(ix, po::splat64(kOff));
    const V2 k16 = po::sar52_times16(tmp);
    const V2 z = po::dbits(po::sub64(ix, po::and64(tmp, 0xFFF0000000000000ull)));
    V2 invc, logc;
    orv::vec::gather::pairs_of<kSpowLog>(po::srl64<48>(tmp), 15, &invc, &logc);
    const V2 r = z * invc - splat(1.0);  // exact
    const V2 t16 = y * ((k16 + logc) + r * orv::vec::poly::horner(r, Q, splat));  // 16 y log2 x
    const V2 kd = t16 + splat(kShift);
    const V2 u = t16 - (kd - splat(kShift));  // |u| <= 1/2, exact
    const po::VI64 m = po::ibits(kd);        // m = round(16 t) in the low bits
    V2 e, unused;
    orv::vec::gather::pairs_of<kSpowExp2>(m, 15, &e, &unused);
    const V2 s = po::dbits(po::add64(po::ibits(e), simd::as<po::VI64>(simd::as<simd::VU64>(m) << 48)));
    return s * (orv::vec::poly::horner(u, P, splat) * u) + s;
}
template <const auto& Q = kSpowQ5, const auto& P = kSpowP3>
inline VF pow_s_v(VF x, VF y) {
    return simd::narrow(spow_step<Q, P>(simd::widen_lo(x), simd::widen_lo(y)),
                      spow_step<Q, P>(simd::widen_hi(x), simd::widen_hi(y)));
}

// pow_special on a register of floats, lane for lane. The bound of
// log2_bound is first estimated in float (within 2^-20 relative of the
// double one); only a register with a lane near the limit takes the double
// test, from a = (bits(x) - bits(1)) 2^-23, which is the scalar test's
// value exactly for normal x.
inline VF pow_special_vf(VF x, VF y) {
    using RF = simd::Reg<float>;
    const VF bad_x = simd::outside(x, 0x00800000u, 0x7F000000u);
    const VF bad_y = simd::outside(simd::band(y, RF::bits(0x7FFFFFFFu)), 0u, 0x7F800000u);
    const VF bad = simd::bor(bad_x, bad_y);
    const simd::VI32 a = simd::as<simd::VI32>(x) - 0x3F800000;
    const VF absf = RF::bits(0x7FFFFFFFu), ayf = simd::band(y, absf);
    const VF est = simd::band(simd::to_float(a) * RF::set1(0x1p-23f), absf) * ayf + RF::set1(0.0861f) * ayf;
    if (simd::lanes(simd::lt(RF::set1(124.99f), est)) == 0) return bad;
    const V2 abs = simd::Reg<double>::bits(0x7FFFFFFFFFFFFFFFull);
    auto over = [&](V2 ad, V2 yd) {
        const V2 ay = simd::band(yd, abs);
        return simd::lt(splat(125.0), simd::band(ad * splat(0x1p-23), abs) * ay + splat(0.0861) * ay);
    };
    // The double masks narrowed to float lanes: all ones becomes a NaN of
    // the same sign, so the sign bits, which the lane test reads, are kept.
    const VF big = simd::narrow(over(po::int_lo_to_double(a), simd::widen_lo(y)),
                                over(po::int_hi_to_double(a), simd::widen_hi(y)));
    return simd::bor(bad, big);
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
// Single LA and EP: the same step with shorter polynomials. LA: log2 to
// 2^-31.9 and exp2 to 2^-28.7 relative, below 0.5 ulp added for |y log2 x|
// <= 126; EP: log2 to 2^-25.6 (2^-19 at most in the result, the bound is
// 2^-11).
struct PowxLaS : PowS {
    static VF fastv(VF x, VF y) { return pow_s_v<kSpowQ4, kSpowP2>(x, y); }
};
struct PowxEpS : PowS {
    static VF fastv(VF x, VF y) { return pow_s_v<kSpowQ3, kSpowP2>(x, y); }
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
