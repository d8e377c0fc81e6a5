// Sinh, Cosh and Tanh, single and double, plain and strided; Asinh, Acosh
// and Atanh one element a round through their callouts.
//
// Double Sinh and Cosh: exp(|x|)/2 in double-double from the exponential
// kernels' table, its reciprocal added or taken away (a polynomial below 1
// for Sinh); lanes from 710.47 (overflow) and non-finite lanes call out.
// Single Sinh and Cosh: per lane in x87 extended precision; the tiny and
// huge lanes call out. Tanh, both types: no status and no special lane.
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

struct SinhD : Base<double> {
    static V fastv(V x) { return ops::xor_sign(sinh_core(ops::abs_of(x)), x); }
    static int special_lanes(V x) { return bits::above(x, 0x408633CD); }  // |x| >= 710.4757
    static int32_t callout(double x, double* r) { return sinh_d(x, r); }
};
struct CoshD : Base<double> {
    static V fastv(V x) { return cosh_core(ops::abs_of(x)); }
    static int special_lanes(V x) { return bits::above(x, 0x408633CD); }
    static int32_t callout(double x, double* r) { return cosh_d(x, r); }
};

inline V tanh_v(V x) {
    const V r = ops::xor_sign(tanh_core(ops::abs_of(x)), x);
    return simd::select(simd::unord(x, x), x + x, r);
}
struct TanhD : Base<double> {
    static constexpr bool kSpecial = false;
    static V fastv(V x) { return tanh_v(x); }
};
struct TanhS : Base<float> {
    static constexpr bool kSpecial = false;
    static V half(V x) { return ops::xor_sign(tanh_light(ops::abs_of(x)), x); }
    static simd::VF fastv(simd::VF x) {
        const simd::VF r = simd::narrow(half(simd::widen_lo(x)), half(simd::widen_hi(x)));
        return simd::select(simd::unord(x, x), x + x, r);
    }
};

// Single Sinh and Cosh: special below lo (bits of |x|) or from 0x42B2D4FD
// (89.41599, where the result overflows).
template <bool Cosh>
struct SinhCoshS : Base<float> {
    static constexpr uint32_t kLo = Cosh ? 0x00800000u : 0x399D4952u;  // 2^-126, 0.0003
    static float fast(float x) { return sinh_cosh_x87(x, Cosh); }
    static bool special(float x) {
        return ((orv::vec::bits(x) & 0x7FFFFFFFu) - kLo) >= 0x42B2D4FDu - kLo;
    }
    static int32_t callout(float x, float* r) { return Cosh ? cosh_s(x, r) : sinh_s(x, r); }
};

template <typename T, int32_t (*Callout)(const T*, T*), bool ReadsMode>
struct OneByOne : Base<T> {
    static constexpr bool kReadsMode = ReadsMode;
    static constexpr bool kCalloutOnly = true;
    static int32_t callout(T x, T* r) { return Callout(&x, r); }
};

}  // namespace
}  // namespace orv::atrig

using namespace orv::atrig;

ORV_UNARY_KERNELS(dSinh, SinhD)
ORV_UNARY_KERNELS(dCosh, CoshD)
ORV_UNARY_KERNELS(dTanh, TanhD)
ORV_UNARY_KERNELS(sTanh, TanhS)
ORV_UNARY_KERNELS(sSinh, SinhCoshS<false>)
ORV_UNARY_KERNELS(sCosh, SinhCoshS<true>)
// Asinh, Acosh and the double Atanh keep the caller's rounding in their plain
// forms; the single Atanh reads the mode.
ORV_UNARY_KERNELS(dAsinh, OneByOne<double, asinh_d, false>)
ORV_UNARY_KERNELS(sAsinh, OneByOne<float, asinh_s, false>)
ORV_UNARY_KERNELS(dAcosh, OneByOne<double, acosh_d, false>)
ORV_UNARY_KERNELS(sAcosh, OneByOne<float, acosh_s, false>)
ORV_UNARY_KERNELS(dAtanh, OneByOne<double, atanh_d, false>)
ORV_UNARY_KERNELS(sAtanh, OneByOne<float, atanh_s, true>)
