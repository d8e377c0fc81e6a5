// Sinpi, Cospi, Tanpi, Sind, Cosd and Tand in single and double, plain and
// strided, one kernel per tier (trigpi_internal.h has the method). The
// single Cospi shares its LA kernel with EP. Lanes at or above 2^50 (double)
// or 2^21 (single), infinities and NaN take the callout.
#include <cmath>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/trig/trigpi_internal.h"

namespace orv::trigpi {
namespace {

template <typename T>
using VOf = typename simd::Reg<T>::V;

// The value of F on the lanes of x, the sign of x put back for the odd
// functions.
template <typename T, Fn F, Unit U, Tier Q>
inline VOf<T> value(VOf<T> x) {
    using V = VOf<T>;
    const V sign = simd::band(x, k<V>(T(-0.0)));
    const V a = simd::bandnot(k<V>(T(-0.0)), x);
    V v;
    if constexpr (sizeof(T) == 8) {
        if constexpr (Q == Tier::HA)
            v = value_ha<F, U>(a);
        else if constexpr (Q == Tier::LA)
            v = value_plain<F, U>(a, kSin, kCosLa);
        else
            v = value_plain<F, U>(a, kSin9, kCos10);
    } else {
        if constexpr (Q == Tier::HA)
            v = simd::narrow(value_plain<F, U>(simd::widen(a), kSin9, kCos10));
        else if constexpr (Q == Tier::LA)
            v = value_plain<F, U>(a, kSinf, kCosf);
        else
            v = value_plain<F, U>(a, kSine, kCose);
    }
    return F == Fn::Cos ? v : simd::bxor(v, sign);
}

// Status of an infinite argument: none for the single Sinpi and Cospi,
// 1 for the others.
template <typename T, Fn F, Unit U>
inline constexpr int32_t kInfStatus =
    (sizeof(T) == 4 && U == Unit::Pi && F != Fn::Tan) ? kOk : kDomain;

template <typename T_, Fn F, Unit U, Tier Q>
struct Kernel {
    using T = T_;
    using V = VOf<T>;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static V fastv(V x) { return value<T, F, U, Q>(x); }
    // |x| >= 2^50 (double, high word) or 2^21 (single), infinity, NaN.
    static int special_lanes(V x) {
        return orv::vec::bitops::above(x, sizeof(T) == 8 ? 0x430FFFFF : 0x49FFFFFF);
    }
    // NaN: x + x. Infinity: NaN with the function's status. A large finite
    // argument is reduced exactly by the period (2 or 360) and evaluated
    // like a block lane.
    static int32_t callout(T x, T* r) {
        if (x != x) {
            *r = x + x;
            return kOk;
        }
        if (std::isinf(x)) {
            *r = x - x;
            return kInfStatus<T, F, U>;
        }
        const T m = std::copysign(std::fmod(std::fabs(x), T(U == Unit::Pi ? 2 : 360)), x);
        *r = fastv(fill<V>(m))[0];
        return kOk;
    }
};

}  // namespace
}  // namespace orv::trigpi

using namespace orv::trigpi;

#define ORV_TRIGPI_THREE(FN, T, F, U)                                        \
    ORV_UNARY_KERNELS_TIER(FN, _la, 0, Kernel<T, Fn::F, Unit::U, Tier::LA>) \
    ORV_UNARY_KERNELS_TIER(FN, _ha, 1, Kernel<T, Fn::F, Unit::U, Tier::HA>) \
    ORV_UNARY_KERNELS_TIER(FN, _ep, 2, Kernel<T, Fn::F, Unit::U, Tier::EP>)

ORV_TRIGPI_THREE(sSinpi, float, Sin, Pi)
ORV_TRIGPI_THREE(dSinpi, double, Sin, Pi)
ORV_TRIGPI_THREE(dCospi, double, Cos, Pi)
ORV_TRIGPI_THREE(sTanpi, float, Tan, Pi)
ORV_TRIGPI_THREE(dTanpi, double, Tan, Pi)
ORV_TRIGPI_THREE(sSind, float, Sin, Deg)
ORV_TRIGPI_THREE(dSind, double, Sin, Deg)
ORV_TRIGPI_THREE(sCosd, float, Cos, Deg)
ORV_TRIGPI_THREE(dCosd, double, Cos, Deg)
ORV_TRIGPI_THREE(sTand, float, Tan, Deg)
ORV_TRIGPI_THREE(dTand, double, Tan, Deg)

// Single Cospi: LA and EP share the plain kernel; the strided table has its
// three slots, the EP one running the shared kernel's loop.
using CospiSLa = Kernel<float, Fn::Cos, Unit::Pi, Tier::LA>;
ORV_UNARY_KERNELS_TIER(sCospi, _la, 0, CospiSLa)
ORV_UNARY_KERNELS_TIER(sCospi, _ha, 1, Kernel<float, Fn::Cos, Unit::Pi, Tier::HA>)
extern "C" void orv_kern_sCospiI_ep(int n, const float* a, int inca, float* r, int incr) {
    orv::vec::unary_strided<CospiSLa>(orv_vtm_kernel_sCospi_ttab, 2, n, a, inca, r, incr,
                                      orv::vtm::kName_sCospiI);
}
