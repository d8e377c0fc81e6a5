// Erf, Erfc, Erfcx, CdfNorm, ErfInv, ErfcInv and CdfNormInv in single and
// double, plain and strided, on whole registers (erf_vec.h), with the
// scalar routine of erf_core.h as the callout of the lanes an integer test
// flags (non-finite, tiny, far tails, outside the domain, near overflow).
// The single forms compute in double and
// round once (Erf, Erfc, CdfNorm and Erfcx by the short fits of erf_single.h). Statuses: domain 1 for an argument
// outside the inverse's range, pole 2 at its ends, overflow 3 for a finite
// argument with an infinite result, underflow 4 where the exact result is
// not zero and the returned one is denormal or zero.
#include <cfloat>
#include <cmath>
#include <limits>

#include "vector/block_driver.h"
#include "vector/erf/erf_core.h"
#include "vector/erf/erf_dvec.h"
#include "vector/erf/erf_single.h"
#include "vector/erf/erf_vec.h"

namespace orv::erfk {
namespace {

template <typename T>
constexpr T kInfT = std::numeric_limits<T>::infinity();

// Rounds v to T and classifies it; nonzero says the exact result is not 0.
template <typename T>
inline int32_t finish(double v, T* r, bool nonzero) {
    const T t = static_cast<T>(v);
    *r = t;
    if (std::isinf(t)) return kOverflow;
    if (nonzero && std::fabs(t) < std::numeric_limits<T>::min()) return kUnderflow;
    return kOk;
}

// erf of a double denormal: 2/sqrt(pi) x scaled up, rounded once on the way back.
inline double erf_tiny(double x) {
    const double y = x * 0x1p200;
    return (y + y * 0.1283791670955126) * 0x1p-200;  // 2/sqrt(pi) - 1
}

template <typename T>
int32_t erf_c(T x, T* r) {
    if (std::isnan(x)) return *r = x + x, kOk;
    if (std::isinf(x)) return *r = x > 0 ? T(1) : T(-1), kOk;
    const double xd = x;
    const double v = std::fabs(xd) < 0x1p-1000 ? erf_tiny(xd) : erf_value(xd);
    return finish(v, r, x != T(0));
}

template <typename T>
int32_t erfc_c(T x, T* r) {
    if (std::isnan(x)) return *r = x + x, kOk;
    if (std::isinf(x)) return *r = x > 0 ? T(0) : T(2), kOk;
    const Scaled m = erfc_any(double(x), 0.0);
    return finish(unscale(m.hi, m.lo, m.n), r, true);
}

template <typename T>
int32_t erfcx_c(T x, T* r) {
    if (std::isnan(x)) return *r = x + x, kOk;
    if (std::isinf(x)) return *r = x > 0 ? T(0) : kInfT<T>, kOk;
    if (x < T(-26.7)) return *r = kInfT<T>, kOverflow;
    const Scaled m = erfcx_any(double(x));
    return finish(unscale(m.hi, m.lo, m.n), r, true);
}

template <typename T>
int32_t cdfnorm_c(T x, T* r) {
    if (std::isnan(x)) return *r = x + x, kOk;
    if (std::isinf(x)) return *r = x > 0 ? T(1) : T(0), kOk;
    return finish(cdfnorm_value(double(x)), r, true);
}

// Kind: 0 full guess, 1 the LA guess, 2 the EP guess; Refine: Halley step.
template <typename T, int Kind, bool Refine>
int32_t erfinv_c(T y, T* r) {
    if (std::isnan(y)) return *r = y + y, kOk;
    const T ay = std::fabs(y);
    if (ay > T(1)) return *r = std::numeric_limits<T>::quiet_NaN(), kDomain;
    if (ay == T(1)) return *r = y > 0 ? kInfT<T> : -kInfT<T>, kPole;
    if (y == T(0)) return *r = y, kOk;
    const double yd = y;
    // Below 2^-500 the cubic term is far under an ulp: y sqrt(pi)/2, the
    // constant in two parts, scaled.
    double v;
    if (std::fabs(yd) < 0x1p-500) {
        const double ys = yd * 0x1p200;
        const dd::Dd p = dd::two_prod(ys, 0.886226925452758);
        v = (p.hi + (p.lo + ys * -3.8332932499128993e-17)) * 0x1p-200;
    } else {
        v = erfinv_value<Kind, Refine>(yd);
    }
    return finish(v, r, true);
}

template <typename T, bool Refine>
int32_t erfcinv_c(T y, T* r) {
    if (std::isnan(y)) return *r = y + y, kOk;
    if (!(y >= T(0) && y <= T(2))) return *r = std::numeric_limits<T>::quiet_NaN(), kDomain;
    if (y == T(0)) return *r = kInfT<T>, kPole;
    if (y == T(2)) return *r = -kInfT<T>, kPole;
    if (y == T(1)) return *r = T(0), kOk;
    return finish(erfcinv_value<0, Refine>(double(y)), r, true);
}

template <typename T, bool Refine>
int32_t cdfnorminv_c(T p, T* r) {
    if (std::isnan(p)) return *r = p + p, kOk;
    if (!(p >= T(0) && p <= T(1))) return *r = std::numeric_limits<T>::quiet_NaN(), kDomain;
    if (p == T(0)) return *r = -kInfT<T>, kPole;
    if (p == T(1)) return *r = kInfT<T>, kPole;
    if (p == T(0.5)) return *r = T(0), kOk;
    return finish(cdfnorminv_value<0, Refine>(double(p)), r, true);
}

// A kernel on whole registers: fastv on every lane, the callout C for the
// lanes the integer test flags.
template <typename T_, int32_t (*C)(T_, T_*), bool ReadsMode = true>
struct Blocked {
    using T = T_;
    using V = orv::vec::simd::VOf<T>;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = ReadsMode;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static int32_t callout(T x, T* r) { return C(x, r); }
};

// Callouts: non-finite and |x| below 2^-1000 (2^-125 single: the result
// may be denormal).
struct ErfD : Blocked<double, erf_c<double>> {
    static V fastv(V x) { return v::two_paths<v::ErfPaths>(x); }
#if ORV_SIMD_BYTES > 16
    static void fast_block(const T* x, T* z, int n) { v::two_paths_block<v::ErfPaths>(x, z, n); }
#else
    static void fast_block(const T* x, T* z, int n) { v::two_paths_pairs<v::ErfPaths, 4>(x, z, n); }
#endif
    static int special_lanes(V x) { return v::abs_hw_ge(x, 0x7FF00000) | v::abs_hw_lt(x, 0x01700000); }
};
struct ErfS : Blocked<float, erf_c<float>> {
    static V fastv(V x) { return single::erf_f<single::SetErf>(x); }
    static int special_lanes(V x) { return v::abs_ge(x, 0x7F800000) | v::abs_lt(x, 0x01000000); }
};
// Callouts: non-finite and x >= 26.5 (9 single), past which the result
// nears the denormals.
struct ErfcD : Blocked<double, erfc_c<double>> {
    static V fastv(V x) { return v::two_paths<v::ErfcPaths>(x); }
#if ORV_SIMD_BYTES > 16
    static void fast_block(const T* x, T* z, int n) { v::two_paths_block<v::ErfcPaths>(x, z, n); }
#else
    static void fast_block(const T* x, T* z, int n) { v::two_paths_pairs<v::ErfcPaths, 4>(x, z, n); }
#endif
    static int special_lanes(V x) { return v::abs_hw_ge(x, 0x7FF00000) | v::hw_ge(x, 0x403A8000); }
};
struct ErfcS : Blocked<float, erfc_c<float>> {
    static V fastv(V x) { return single::erfc_f<single::SetHa>(x); }
    static int special_lanes(V x) { return v::abs_ge(x, 0x7F800000) | v::ge(x, 0x41100000); }
};
// Callouts: non-finite, x <= -26 (-9.25 single: the result nears or passes
// the overflow) and x >= 2^500 (the scaled form; 2^124 single, past which
// the result nears the denormals).
struct ErfcxD : Blocked<double, erfcx_c<double>> {
    static V fastv(V x) { return v::erfcx_d(x); }
    static int special_lanes(V x) {
        return v::abs_hw_ge(x, 0x7FF00000) | v::hw_uge(x, 0xC03A0000u) | v::hw_ge(x, 0x5F300000);
    }
};
struct ErfcxS : Blocked<float, erfcx_c<float>> {
    static V fastv(V x) { return single::erfcx_f(x); }
    static int special_lanes(V x) { return v::abs_ge(x, 0x7F800000) | v::uge(x, 0xC1140000u) | v::ge(x, 0x7D800000); }
};
// Callouts: non-finite and x <= -16.5 (-12.5 single). The double EP kernel
// skips the double-double steps; the single ones are erf_single.h's.
struct CdfNormD : Blocked<double, cdfnorm_c<double>> {
    static V fastv(V x) { return v::cdfnorm_d(x); }
    static int special_lanes(V x) { return v::abs_hw_ge(x, 0x7FF00000) | v::hw_uge(x, 0xC0308000u); }
};
struct CdfNormDEp : CdfNormD {
    static V fastv(V x) { return v::cdfnorm_ep_d(x); }
};
template <class Set>
struct CdfNormSOf : Blocked<float, cdfnorm_c<float>> {
    static V fastv(V x) { return single::cdfnorm_f<Set>(x); }
    static int special_lanes(V x) { return v::abs_ge(x, 0x7F800000) | v::uge(x, 0xC1480000u); }
};
using CdfNormS = CdfNormSOf<single::SetHa>;
using CdfNormSEp = CdfNormSOf<single::SetEp>;
// Single ErfInv: the double guess rounded to single is within 1 ULP (full
// guess) or 4 ULP (LA guess); the EP guess is good to 2^-14. Callouts:
// |y| >= 1, NaN, and |y| below the least normal (the result is denormal).
template <int Kind>
struct ErfInvS : Blocked<float, erfinv_c<float, Kind, false>> {
    using V = orv::vec::simd::VF;
    static V fastv(V x) { return v::on_halves<v::erfinv_d<Kind, false>>(x); }
    static int special_lanes(V x) { return v::abs_ge(x, 0x3F800000) | v::abs_lt(x, 0x00800000); }
};
using ErfInvSLa = ErfInvS<1>;
using ErfInvSHa = ErfInvS<0>;
using ErfInvSEp = ErfInvS<2>;
// Double ErfInv: the guess and one Halley step (LA and HA), the guess alone
// (EP). Callouts: |y| >= 1, NaN, and |y| below 2^-500.
template <bool Refine>
struct ErfInvD : Blocked<double, erfinv_c<double, 0, Refine>> {
    using V = orv::vec::simd::VD;
    static V fastv(V x) { return v::erfinv_d<0, Refine>(x); }
    static int special_lanes(V x) { return v::abs_hw_ge(x, 0x3FF00000) | v::abs_hw_lt(x, 0x20B00000); }
};
using ErfInvDHa = ErfInvD<true>;
using ErfInvDEp = ErfInvD<false>;
// The plain single ErfcInv and CdfNormInv keep the caller's rounding state.
// Callouts: outside [least normal, 2) and [least normal, 1) (single), or
// [2^-200, 2) and [2^-200, 1) (double: the tail past the rows).
struct ErfcInvS : Blocked<float, erfcinv_c<float, false>, false> {
    static V fastv(V x) { return v::on_halves<v::erfcinv_d<0, false>>(x); }
    static int special_lanes(V x) { return v::not_in(x, 0x00800000, 0x40000000); }
};
struct ErfcInvD : Blocked<double, erfcinv_c<double, true>> {
    static V fastv(V x) { return v::erfcinv_d<0, true>(x); }
    static int special_lanes(V x) { return v::not_in(x, 0x33700000, 0x40000000); }
};
struct CdfNormInvS : Blocked<float, cdfnorminv_c<float, false>, false> {
    static V fastv(V x) { return v::on_halves<v::cdfnorminv_d<0, false>>(x); }
    static int special_lanes(V x) { return v::not_in(x, 0x00800000, 0x3F800000); }
};
// Double CdfNormInv sorts a block's lanes into central and tail registers
// (half of them central on uniform input), so that few registers run both.
struct CdfNormInvD : Blocked<double, cdfnorminv_c<double, true>> {
    static V fastv(V x) { return v::cdfnorminv_d<0, true>(x); }
    static void fast_block(const T* x, T* z, int n) { v::cdfnorminv_block<0, true>(x, z, n); }
    static int special_lanes(V x) { return v::not_in(x, 0x33700000, 0x3FF00000); }
};

}  // namespace
}  // namespace orv::erfk

using namespace orv::erfk;

ORV_UNARY_KERNELS(sErf, ErfS)
ORV_UNARY_KERNELS(dErf, ErfD)
ORV_UNARY_KERNELS(sErfc, ErfcS)
ORV_UNARY_KERNELS(dErfc, ErfcD)
ORV_UNARY_KERNELS(sErfcx, ErfcxS)
ORV_UNARY_KERNELS(dErfcx, ErfcxD)
// Single CdfNorm: the accurate kernel in LA and HA, the EP set of
// degrees in EP; double: the
// accurate kernel in LA and HA (4 ULP needs the double-double steps too),
// the plain-double one in EP.
ORV_UNARY_KERNELS_TIER(sCdfNorm, _la, 0, CdfNormS)
ORV_UNARY_KERNELS_TIER(sCdfNorm, _ha, 1, CdfNormS)
ORV_UNARY_KERNELS_TIER(sCdfNorm, _ep, 2, CdfNormSEp)
ORV_UNARY_KERNELS_TIER(dCdfNorm, _la, 0, CdfNormD)
ORV_UNARY_KERNELS_TIER(dCdfNorm, _ha, 1, CdfNormD)
ORV_UNARY_KERNELS_TIER(dCdfNorm, _ep, 2, CdfNormDEp)
ORV_UNARY_KERNELS_TIER(sErfInv, _la, 0, ErfInvSLa)
ORV_UNARY_KERNELS_TIER(sErfInv, _ha, 1, ErfInvSHa)
ORV_UNARY_KERNELS_TIER(sErfInv, _ep, 2, ErfInvSEp)
ORV_UNARY_KERNELS_TIER(dErfInv, _ha, 1, ErfInvDHa)
ORV_UNARY_KERNELS_TIER(dErfInv, _ep, 2, ErfInvDEp)
ORV_UNARY_KERNELS(sErfcInv, ErfcInvS)
ORV_UNARY_KERNELS(dErfcInv, ErfcInvD)
ORV_UNARY_KERNELS(sCdfNormInv, CdfNormInvS)
ORV_UNARY_KERNELS(dCdfNormInv, CdfNormInvD)
