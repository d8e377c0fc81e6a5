// Inv, Div and LinearFrac. Inv and Div store the correctly rounded quotient
// of every lane and then report a zero divisor as a pole, with no repair.
// LinearFrac reports nothing.
#include "vector/block_driver.h"

namespace {

template <typename E>
struct InvK {
    using T = E;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = false;
    static constexpr bool kSpecial = false;
    static constexpr bool kDivisorTest = true;
    using V = typename orv::vec::simd::Reg<T>::V;
    static V fastv(V x) { return orv::vec::simd::div(orv::vec::simd::Reg<T>::set1(T(1)), x); }
    static int32_t divisor_status(T, T d) { return d == T(0) ? VtmStatusPole : 0; }
};

template <typename E>
struct DivK {
    using T = E;
    static constexpr int kArity = 2;
    static constexpr bool kReadsMode = false;
    static constexpr bool kSpecial = false;
    static constexpr bool kDivisorTest = true;
    using V = typename orv::vec::simd::Reg<T>::V;
    static V fastv(V a, V b) { return orv::vec::simd::div(a, b); }
    static int32_t divisor_status(T, T d) { return d == T(0) ? VtmStatusPole : 0; }
};

// (a*scalea + shifta) / (b*scaleb + shiftb). With scaleb zero the divisor is
// a constant and its reciprocal is taken once; otherwise each element is
// divided, which keeps the quotient correctly rounded.
template <typename T, bool Strided>
void linear_frac(int n, const T* a, long inca, const T* b, long incb, T sa, T ha, T sb, T hb,
                 T* r, long incr) {
    orv::frame::FpGuard guard = orv::vec::enter(true);
    if (sb == T(0)) {
        const T inv = T(1) / hb;
        for (long i = 0; i < n; ++i) r[Strided ? i * incr : i] = (a[Strided ? i * inca : i] * sa + ha) * inv;
    } else {
        for (long i = 0; i < n; ++i) {
            const T num = a[Strided ? i * inca : i] * sa + ha;
            const T den = b[Strided ? i * incb : i] * sb + hb;
            r[Strided ? i * incr : i] = num / den;
        }
    }
}

}  // namespace

ORV_UNARY_KERNELS(sInv, InvK<float>)
ORV_UNARY_KERNELS(dInv, InvK<double>)
ORV_BINARY_KERNELS(sDiv, DivK<float>)
ORV_BINARY_KERNELS(dDiv, DivK<double>)

extern "C" {
void orv_kern_sLinearFrac(int n, const float* a, const float* b, float sa, float ha, float sb,
                          float hb, float* r) {
    linear_frac<float, false>(n, a, 1, b, 1, sa, ha, sb, hb, r, 1);
}
void orv_kern_dLinearFrac(int n, const double* a, const double* b, double sa, double ha,
                          double sb, double hb, double* r) {
    linear_frac<double, false>(n, a, 1, b, 1, sa, ha, sb, hb, r, 1);
}
void orv_kern_sLinearFracI(int n, const float* a, int inca, const float* b, int incb, float sa,
                           float ha, float sb, float hb, float* r, int incr) {
    if (inca == 1 && incb == 1 && incr == 1)
        return orv_vtm_kernel_sLinearFrac_ttab[orv::frame::kSlotHA](n, a, b, sa, ha, sb, hb, r);
    linear_frac<float, true>(n, a, inca, b, incb, sa, ha, sb, hb, r, incr);
}
void orv_kern_dLinearFracI(int n, const double* a, int inca, const double* b, int incb,
                           double sa, double ha, double sb, double hb, double* r, int incr) {
    if (inca == 1 && incb == 1 && incr == 1)
        return orv_vtm_kernel_dLinearFrac_ttab[orv::frame::kSlotHA](n, a, b, sa, ha, sb, hb, r);
    linear_frac<double, true>(n, a, inca, b, incb, sa, ha, sb, hb, r, incr);
}
}  // extern "C"
