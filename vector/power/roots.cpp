// Cbrt, InvCbrt, Pow2o3, Pow3o2 and Hypot in single and double. The roots
// reduce x to m 2^(3k) (2^(2k) for Pow3o2), take a start from a quadratic,
// refine it with series steps, and make one Newton correction whose
// residual is exact in double-double, which leaves about half an ulp. The
// single forms compute in double and round once. Hypot squares exactly
// and corrects the square root by its residual; components far from 1 go
// to the callout, which scales them.
#include <cmath>
#include <limits>

#include "vector/block_driver.h"
#include "vector/power/power_core.h"
#include "vtm_kernels.h"

namespace orv::power {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A result of T, with status 3 or 4 when the rounded value left the normal
// range (the exact results here are never zero for non-zero input).
template <typename T>
int32_t finish(double v, T* r) {
    const T out = T(v);
    *r = out;
    const T a = out < 0 ? -out : out;
    if (a == std::numeric_limits<T>::infinity()) return kOverflow;
    if (a < std::numeric_limits<T>::min()) return kUnderflow;
    return kOk;
}

// A denormal scaled into the normal range: x 2^(3*60) or 2^(2*60), so that
// the power of two comes back out exactly.
inline double up(double ax, int step) { return ax * (step == 3 ? 0x1p180 : 0x1p120); }

template <typename T>
int32_t cbrt_callout(T xt, T* r) {
    const double x = xt;
    if (std::isnan(x) || std::isinf(x) || x == 0.0) {
        *r = xt + xt;
        return kOk;
    }
    const double ax = std::fabs(x);
    const double v = ax < 0x1p-1022 ? cbrt_pos(up(ax, 3)) * 0x1p-60 : cbrt_pos(ax);
    return finish<T>(x < 0 ? -v : v, r);
}

template <typename T>
int32_t inv_cbrt_callout(T xt, T* r) {
    const double x = xt;
    if (std::isnan(x)) {
        *r = xt + xt;
        return kOk;
    }
    if (x == 0.0) {
        *r = T(std::copysign(kInf, x));
        return kPole;
    }
    if (std::isinf(x)) {
        *r = T(std::copysign(0.0, x));
        return kOk;
    }
    const double ax = std::fabs(x);
    const double v = ax < 0x1p-1022 ? inv_cbrt_pos(up(ax, 3)) * 0x1p60 : inv_cbrt_pos(ax);
    return finish<T>(x < 0 ? -v : v, r);
}

template <typename T>
int32_t pow2o3_callout(T xt, T* r) {
    const double x = xt;
    if (std::isnan(x)) {
        *r = xt + xt;
        return kOk;
    }
    const double ax = std::fabs(x);
    if (std::isinf(x) || x == 0.0) {
        *r = T(ax);
        return kOk;
    }
    return finish<T>(ax < 0x1p-1022 ? pow2o3_pos(up(ax, 3)) * 0x1p-120 : pow2o3_pos(ax), r);
}

template <typename T>
int32_t pow3o2_callout(T xt, T* r) {
    const double x = xt;
    if (std::isnan(x)) {
        *r = xt + xt;
        return kOk;
    }
    if (x == 0.0) {
        *r = T(0);
        return kOk;
    }
    if (x < 0) {
        *r = T(kNaN);
        return kDomain;
    }
    if (std::isinf(x)) {
        *r = xt;
        return kOk;
    }
    // x^(3/2) of m 2^(2k) is m^(3/2) 2^(3k): scaled into range, then brought
    // back by one or two exact steps (a denormal result rounds once).
    if (x > 0x1p600) return finish<T>(pow3o2_pos(x * 0x1p-400) * 0x1p600, r);
    if (x < 0x1p-600) return finish<T>(pow3o2_pos(x * 0x1p400) * 0x1p-600, r);
    return finish<T>(pow3o2_pos(x), r);
}

template <typename T>
int32_t hypot_callout(T xt, T yt, T* r) {
    const double x = xt, y = yt;
    if (std::isinf(x) || std::isinf(y)) {  // infinity even with a NaN
        *r = T(kInf);
        return kOk;
    }
    if (std::isnan(x) || std::isnan(y)) {
        *r = orv::vec::simd::first_nan(xt, xt + yt);  // the first NaN, whichever operand order the compiler picks
        return kOk;
    }
    double ax = std::fabs(x), ay = std::fabs(y);
    if (ax < ay) std::swap(ax, ay);
    if (ax == 0.0) {
        *r = T(0);
        return kOk;
    }
    double s = 1.0;
    if (ax > 0x1p500) {
        ax *= 0x1p-600, ay *= 0x1p-600, s = 0x1p600;
    } else if (ax < 0x1p-500) {
        ax *= 0x1p600, ay *= 0x1p600, s = 0x1p-600;
    }
    if (ay < ax * 0x1p-60) return finish<T>(ax * s, r);  // the smaller term is below half an ulp
    // the result of the scaled pair lies in [2^-500, 2^501]: one product takes it back
    const int32_t st = finish<T>(hypot_core(ax, ay) * s, r);
    return st;
}

// ---- block descriptions ----

template <typename T_, int32_t (*Callout)(T_, T_*), bool kMode>
struct UnaryBase {
    using T = T_;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = kMode;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static int32_t callout(T x, T* r) { return Callout(x, r); }
    // zero, denormal, infinity and NaN of either sign
    static bool special(T x) {
        using F = orv::vec::Fmt<T>;
        const auto ax = orv::vec::bits(x) & F::kAbs;
        return ax - F::kMinNormal >= F::kExpMask - F::kMinNormal;
    }
};

template <typename T>
inline T with_sign(double v, T x) { return T(x < 0 ? -v : v); }

// The double block steps on registers of doubles, the same operations as
// the scalar cores in the same order.
namespace po = orv::vec::power_ops;
using V2 = orv::vec::simd::VD;
inline V2 cbrt_v(V2 x) {
    po::VI64 k52;
    const V2 m = po::thirds(po::abs_of(x), &k52);
    const V2 t = inv_cbrt_start(m);
    const V2 c = cbrt_fix(m, m * t * t);
    return orv::vec::simd::bor(po::dbits(po::add64(po::ibits(c), k52)), po::sign_of(x));
}
inline V2 inv_cbrt_v(V2 x) {
    po::VI64 k52;
    const V2 m = po::thirds(po::abs_of(x), &k52);
    const V2 t = inv_cbrt_fix(m, inv_cbrt_start(m));
    return orv::vec::simd::bor(po::dbits(po::sub64(po::ibits(t), k52)), po::sign_of(x));
}
inline V2 pow2o3_v(V2 x) {
    po::VI64 k52;
    const V2 m = po::thirds(po::abs_of(x), &k52);
    const V2 t = inv_cbrt_start(m);
    const V2 c = m * t * t;
    const V2 y = pow2o3_fix(m, c * c);
    return po::dbits(po::add64(po::ibits(y), po::add64(k52, k52)));
}

template <typename T>
struct CbrtK : UnaryBase<T, cbrt_callout<T>, true> {
    static T fast(T x) { return with_sign<T>(cbrt_pos(std::fabs(double(x))), x); }
};
template <typename T>
struct InvCbrtK : UnaryBase<T, inv_cbrt_callout<T>, true> {
    static T fast(T x) { return with_sign<T>(inv_cbrt_pos(std::fabs(double(x))), x); }
};
template <typename T>
struct Pow2o3K : UnaryBase<T, pow2o3_callout<T>, false> {
    static T fast(T x) { return T(pow2o3_pos(std::fabs(double(x)))); }
};
// Double: the register step and register test.
template <>
struct CbrtK<double> : UnaryBase<double, cbrt_callout<double>, true> {
    static V2 fastv(V2 x) { return cbrt_v(x); }
    static V2 specialv(V2 x) { return po::not_normal(x); }
};
template <>
struct InvCbrtK<double> : UnaryBase<double, inv_cbrt_callout<double>, true> {
    static V2 fastv(V2 x) { return inv_cbrt_v(x); }
    static V2 specialv(V2 x) { return po::not_normal(x); }
};
template <>
struct Pow2o3K<double> : UnaryBase<double, pow2o3_callout<double>, false> {
    static V2 fastv(V2 x) { return pow2o3_v(x); }
    static V2 specialv(V2 x) { return po::not_normal(x); }
};
// Single: each half of the register widened to double, the double register
// step, one rounding; the lanes are those of the scalar step (the double
// step is the scalar core's operations), only computed a register at a time.
inline orv::vec::simd::VF not_normal_f(orv::vec::simd::VF x) {
    namespace sd = orv::vec::simd;
    return sd::outside(sd::band(x, sd::Reg<float>::bits(0x7FFFFFFFu)), 0x00800000u, 0x7F000000u);
}
template <V2 (*Step)(V2)>
inline orv::vec::simd::VF single_v(orv::vec::simd::VF x) {
    return orv::vec::simd::narrow(Step(orv::vec::simd::widen_lo(x)), Step(orv::vec::simd::widen_hi(x)));
}
template <>
struct CbrtK<float> : UnaryBase<float, cbrt_callout<float>, true> {
    static orv::vec::simd::VF fastv(orv::vec::simd::VF x) { return single_v<cbrt_v>(x); }
    static orv::vec::simd::VF specialv(orv::vec::simd::VF x) { return not_normal_f(x); }
};
template <>
struct InvCbrtK<float> : UnaryBase<float, inv_cbrt_callout<float>, true> {
    static orv::vec::simd::VF fastv(orv::vec::simd::VF x) { return single_v<inv_cbrt_v>(x); }
    static orv::vec::simd::VF specialv(orv::vec::simd::VF x) { return not_normal_f(x); }
};
template <>
struct Pow2o3K<float> : UnaryBase<float, pow2o3_callout<float>, false> {
    static orv::vec::simd::VF fastv(orv::vec::simd::VF x) { return single_v<pow2o3_v>(x); }
    static orv::vec::simd::VF specialv(orv::vec::simd::VF x) { return not_normal_f(x); }
};
template <typename T>
struct Pow3o2K : UnaryBase<T, pow3o2_callout<T>, false> {
    static T fast(T x) { return T(pow3o2_pos(double(x))); }
    // also negatives, and results outside the normal range of T
    static bool special(T x) {
        const auto b = orv::vec::bits(x);
        constexpr auto lo = sizeof(T) == 4 ? 0x15800000u : 0x1570000000000000ull;  // 2^-84, 2^-680
        constexpr auto hi = sizeof(T) == 4 ? 0x6A000000u : 0x6A90000000000000ull;  // 2^85, 2^682
        return b - lo >= hi - lo;
    }
};

template <typename T_>
struct HypotK {
    using T = T_;
    static constexpr int kArity = 2;
    static constexpr bool kReadsMode = false;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static int32_t callout(T x, T y, T* r) { return hypot_callout<T>(x, y, r); }
    static T fast(T x, T y) {
        if constexpr (sizeof(T) == 4) {
            const double dx = x, dy = y;
            return T(orv::vec::power_ops::sqrt(dx * dx + dy * dy));  // exact sum of squares
        } else {
            return hypot_core(x, y);
        }
    }
    // either component outside [2^-500, 2^500] (single: outside [2^-126,
    // 2^127), where the result may leave the normal range; the double sum
    // of squares covers the rest)
    static bool special(T x, T y) {
        using F = orv::vec::Fmt<T>;
        const auto ax = orv::vec::bits(x) & F::kAbs, ay = orv::vec::bits(y) & F::kAbs;
        if constexpr (sizeof(T) == 4) {
            constexpr uint32_t top = 0x7F000000u;  // 2^127
            return ax - F::kMinNormal >= top - F::kMinNormal || ay - F::kMinNormal >= top - F::kMinNormal;
        } else {
            constexpr uint64_t lo = 0x20B0000000000000ull, hi = 0x5F30000000000000ull;
            return ax - lo >= hi - lo || ay - lo >= hi - lo;
        }
    }
};

}  // namespace
}  // namespace orv::power

using namespace orv::power;

ORV_UNARY_KERNELS(sCbrt, CbrtK<float>)
ORV_UNARY_KERNELS(dCbrt, CbrtK<double>)
ORV_UNARY_KERNELS(sInvCbrt, InvCbrtK<float>)
ORV_UNARY_KERNELS(dInvCbrt, InvCbrtK<double>)
ORV_UNARY_KERNELS(sPow2o3, Pow2o3K<float>)
ORV_UNARY_KERNELS(dPow2o3, Pow2o3K<double>)
ORV_UNARY_KERNELS(sPow3o2, Pow3o2K<float>)
ORV_UNARY_KERNELS(dPow3o2, Pow3o2K<double>)
ORV_BINARY_KERNELS(sHypot, HypotK<float>)
ORV_BINARY_KERNELS(dHypot, HypotK<double>)
