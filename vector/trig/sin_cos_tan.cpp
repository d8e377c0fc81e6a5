// Sin, Cos and Tan in single and double, plain and strided. The block path
// and the callouts share the code of trig_internal.h; the special mask
// holds only the non-finite lanes (infinity: NaN and status 1; NaN: x * x,
// no status), since the large-argument reduction runs inside the block.
#include <limits>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/trig/trig_internal.h"

namespace orv::trig {
namespace {

namespace bits = orv::vec::bitops;

template <typename T>
inline bool non_finite(T x) {
    return (bits::bits_of(x) & orv::vec::Fmt<T>::kAbs) >= orv::vec::Fmt<T>::kExpMask;
}

// Infinity gives NaN (x * 0) with status 1, NaN gives x * x with none;
// a finite value gets the block path's result.
template <typename T, typename F>
inline int32_t callout(T x, T* r, F finite) {
    if (non_finite(x)) {
        if (x != x) {
            *r = x * x;
            return kOk;
        }
        *r = x * T(0);
        return kDomain;
    }
    *r = finite(x);
    return kOk;
}

template <typename T_>
struct TrigBase {
    using T = T_;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
};

template <Fn F>
struct SingleK : TrigBase<float> {
    using V = orv::vec::simd::VF;
    static V fastv(V x) {
        namespace simd = orv::vec::simd;
        if constexpr (F == Fn::Tan)
            return simd::narrow(single_path<F>(simd::widen_lo(x)), single_path<F>(simd::widen_hi(x)));
        else
            return single_sin_cos<F>(x);
    }
    static int special_lanes(V x) { return bits::above(x, 0x7F7FFFFF); }
    static int32_t callout(float x, float* r) {
        return trig::callout(x, r, [](float v) {
            if constexpr (F == Fn::Tan)
                return float(single_path<F>(double(v)));
            else
                return single_sin_cos<F>(v);
        });
    }
};

template <Fn F>
inline auto double_fn(auto x) {
    if constexpr (F == Fn::Sin)
        return sin_d(x);
    else if constexpr (F == Fn::Cos)
        return cos_d(x);
    else
        return tan_d(x);
}

template <Fn F>
struct DoubleK : TrigBase<double> {
    using V = orv::vec::simd::VD;
    static V fastv(V x) { return double_fn<F>(x); }
    static int special_lanes(V x) { return bits::above(x, 0x7FEFFFFF); }
    static int32_t callout(double x, double* r) {
        return trig::callout(x, r, [](double v) { return double_fn<F>(v); });
    }
};

}  // namespace
}  // namespace orv::trig

using namespace orv::trig;

ORV_UNARY_KERNELS(sSin, SingleK<Fn::Sin>)
ORV_UNARY_KERNELS(dSin, DoubleK<Fn::Sin>)
ORV_UNARY_KERNELS(sCos, SingleK<Fn::Cos>)
ORV_UNARY_KERNELS(dCos, DoubleK<Fn::Cos>)
ORV_UNARY_KERNELS(sTan, SingleK<Fn::Tan>)
ORV_UNARY_KERNELS(dTan, DoubleK<Fn::Tan>)
