// Atan, Atan2, Asin, Acos and their forms in multiples of pi, single and
// double, plain and strided. The double kernels run the double-double cores
// of atrig_internal.h on each pair of lanes; the single kernels widen their
// four lanes to two pairs of doubles, run the shorter single-grade forms
// (about 2^-32 relative) and round once.
#include "vector/atrig/atrig_internal.h"

namespace orv::atrig {
namespace {

namespace bits = orv::vec::bitops;

template <typename T_>
struct Base {
    using T = T_;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
};

// A NaN lane gives x + x (quiet), other lanes r.
inline V nan_fix(V x, V r) { return simd::select(simd::unord(x, x), x + x, r); }
inline simd::VF nan_fix(simd::VF x, simd::VF r) { return simd::select(simd::unord(x, x), x + x, r); }

// A single kernel from a double one: both halves widened, rounded once.
template <V (*F)(V)>
inline simd::VF via_double(simd::VF x) {
    return simd::narrow(F(simd::widen_lo(x)), F(simd::widen_hi(x)));
}
template <V (*F)(V, V)>
inline simd::VF via_double2(simd::VF y, simd::VF x) {
    return simd::narrow(F(simd::widen_lo(y), simd::widen_lo(x)), F(simd::widen_hi(y), simd::widen_hi(x)));
}

// ---- the register functions, double ----

inline V atan_v(V x) {
    const DdV v = atan_core(ops::abs_of(x));
    return nan_fix(x, ops::xor_sign(v.hi + v.lo, x));
}
inline V atanpi_v(V x) { return nan_fix(x, ops::xor_sign(times_inv_pi(atan_core(ops::abs_of(x))), x)); }
inline V asin_v(V x) {
    const DdV v = asin_core(x);
    return v.hi + v.lo;
}
inline V acos_v(V x) {
    const DdV v = acos_core(x);
    return v.hi + v.lo;
}
inline V asinpi_v(V x) { return ops::xor_sign(times_inv_pi(asin_core(ops::abs_of(x))), x); }
inline V acospi_v(V x) { return times_inv_pi(acos_core(x)); }
inline V atan2_v(V y, V x) {
    const DdV v = atan2_core(ops::abs_of(y), ops::abs_of(x), simd::negative(x));
    return ops::xor_sign(v.hi + v.lo, y);
}
inline V atan2pi_v(V y, V x) {
    return ops::xor_sign(times_inv_pi(atan2_core(ops::abs_of(y), ops::abs_of(x), simd::negative(x))), y);
}

// The single-grade forms for the single kernels (widened lanes).
inline V atan_s(V x) { return ops::xor_sign(atan_light(ops::abs_of(x)), x); }
inline V atanpi_s(V x) { return ops::xor_sign(atan_light(ops::abs_of(x)) * splat(kInvPiHi), x); }
inline V asinpi_s(V x) { return asin_light(x) * splat(kInvPiHi); }
inline V acospi_s(V x) { return acos_light(x) * splat(kInvPiHi); }
inline V atan2_s(V y, V x) {
    return ops::xor_sign(atan2_light(ops::abs_of(y), ops::abs_of(x), simd::negative(x)), y);
}
inline V atan2pi_s(V y, V x) {
    return ops::xor_sign(atan2_light(ops::abs_of(y), ops::abs_of(x), simd::negative(x)) * splat(kInvPiHi), y);
}

// Atan2 lanes the core cannot take: a zero, denormal, infinite or NaN
// argument, or one beyond 2^+-500 (where the ratio's remainder could
// overflow or underflow). Single arguments are all within range once widened.
inline V atan2_special(V y, V x) {
    const uint32_t lo = 0x20B00000u, span = 0x5F300000u - 0x20B00000u;
    return simd::bor(simd::outside(ops::abs_of(y), lo, span), simd::outside(ops::abs_of(x), lo, span));
}
inline simd::VF zero_inf_nan(simd::VF x) {
    const simd::VF ax = simd::bandnot(simd::Reg<float>::bits(0x80000000u), x);
    return simd::outside(ax, 1, 0x7F7FFFFFu);  // bits 0 or from 0x7F800000
}

// ---- kernel descriptions ----

template <V (*F)(V)>
struct NoStatusD : Base<double> {
    static constexpr bool kSpecial = false;
    static V fastv(V x) { return F(x); }
};
template <V (*F)(V)>
struct NoStatusS : Base<float> {
    static constexpr bool kSpecial = false;
    static simd::VF fastv(simd::VF x) { return nan_fix(x, via_double<F>(x)); }
};

// |x| >= 1 and non-finite lanes go to the callout (status 1 beyond 1).
template <V (*F)(V), int32_t (*C)(double, double*)>
struct UnitD : Base<double> {
    static V fastv(V x) { return F(x); }
    static int special_lanes(V x) { return bits::above(x, 0x3FEFFFFF); }
    static int32_t callout(double x, double* r) { return C(x, r); }
};
template <V (*F)(V), int32_t (*C)(double, double*)>
struct UnitS : Base<float> {
    static simd::VF fastv(simd::VF x) { return via_double<F>(x); }
    static int special_lanes(simd::VF x) { return bits::above(x, 0x3F800000); }
    static int32_t callout(float x, float* r) {
        double d;
        const int32_t st = C(x, &d);
        *r = float(d);
        return st;
    }
};

template <V (*F)(V, V), int32_t (*C)(double, double, double*)>
struct Atan2D : Base<double> {
    static constexpr int kArity = 2;
    static V fastv(V y, V x) { return F(y, x); }
    static V specialv(V y, V x) { return atan2_special(y, x); }
    static bool special(double y, double x) {
        const auto out = [](double v) {
            return uint32_t((orv::vec::bits(v) >> 32) & 0x7FFFFFFFu) - 0x20B00000u >= 0x5F300000u - 0x20B00000u;
        };
        return out(y) || out(x);
    }
    static int32_t callout(double y, double x, double* r) { return C(y, x, r); }
};
template <V (*F)(V, V), int32_t (*C)(double, double, double*)>
struct Atan2S : Base<float> {
    static constexpr int kArity = 2;
    static simd::VF fastv(simd::VF y, simd::VF x) { return via_double2<F>(y, x); }
    static simd::VF specialv(simd::VF y, simd::VF x) { return simd::bor(zero_inf_nan(y), zero_inf_nan(x)); }
    static bool special(float y, float x) {
        const auto out = [](float v) { return (orv::vec::bits(v) & 0x7FFFFFFFu) - 1u >= 0x7F7FFFFFu; };
        return out(y) || out(x);
    }
    static int32_t callout(float y, float x, float* r) {
        double d;
        const int32_t st = C(y, x, &d);
        *r = float(d);
        return st;
    }
};

}  // namespace
}  // namespace orv::atrig

using namespace orv::atrig;

ORV_UNARY_KERNELS(dAtan, NoStatusD<atan_v>)
ORV_UNARY_KERNELS(sAtan, NoStatusS<atan_s>)
ORV_UNARY_KERNELS(dAtanpi, NoStatusD<atanpi_v>)
ORV_UNARY_KERNELS(sAtanpi, NoStatusS<atanpi_s>)
ORV_UNARY_KERNELS(dAsin, UnitD<asin_v, asin_d>)
ORV_UNARY_KERNELS(sAsin, UnitS<asin_light, asin_d>)
ORV_UNARY_KERNELS(dAcos, UnitD<acos_v, acos_d>)
ORV_UNARY_KERNELS(sAcos, UnitS<acos_light, acos_d>)
ORV_UNARY_KERNELS(dAsinpi, UnitD<asinpi_v, asinpi_d>)
ORV_UNARY_KERNELS(sAsinpi, UnitS<asinpi_s, asinpi_d>)
ORV_UNARY_KERNELS(dAcospi, UnitD<acospi_v, acospi_d>)
ORV_UNARY_KERNELS(sAcospi, UnitS<acospi_s, acospi_d>)
ORV_BINARY_KERNELS(dAtan2, Atan2D<atan2_v, atan2_d>)
ORV_BINARY_KERNELS(sAtan2, Atan2S<atan2_s, atan2_d>)
ORV_BINARY_KERNELS(dAtan2pi, Atan2D<atan2pi_v, atan2pi_d>)
ORV_BINARY_KERNELS(sAtan2pi, Atan2S<atan2pi_s, atan2pi_d>)
