// SinCospi in single and double, plain and strided, on the whole-register
// two-result loop of pair_loop.h. One kernel for all tiers: the HA
// evaluation of trigpi_internal.h, both results from one reduction.
#include <cmath>

#include "vector/trig/pair_loop.h"
#include "vector/common/bits.h"
#include "vector/trig/trigpi_internal.h"

namespace orv::trigpi {
namespace {


inline void sincospi_reg(VD x, VD* s, VD* c) {
    const VD sign = simd::band(x, k<VD>(-0.0));
    sincospi_ha(simd::bandnot(k<VD>(-0.0), x), s, c);
    *s = simd::bxor(*s, sign);
}
inline void sincospi_reg(VF x, VF* s, VF* c) {
    const VF sign = simd::band(x, k<VF>(-0.0f));
    VDW sw, cw;
    sincospi_ha(simd::widen(simd::bandnot(k<VF>(-0.0f), x)), &sw, &cw);
    *s = simd::bxor(simd::narrow(sw), sign);
    *c = simd::narrow(cw);
}
// |x| >= 2^50 (double) or 2^21 (single), infinity, NaN.
inline uint32_t special_lanes(VD x) { return orv::vec::bitops::above(x, 0x430FFFFF); }
inline uint32_t special_lanes(VF x) { return orv::vec::bitops::above(x, 0x49FFFFFF); }

// NaN: x + x in both. Infinity: NaN in both, status 1 in double and none in
// single (as Sinpi and Cospi). A large finite argument is reduced exactly
// modulo 2 and evaluated like a block lane.
template <typename T>
inline int32_t callout(T x, T* s, T* c) {
    if (x != x) {
        *s = *c = x + x;
        return kOk;
    }
    if (std::isinf(x)) {
        *s = *c = x - x;
        return sizeof(T) == 8 ? kDomain : kOk;
    }
    using V = typename simd::Reg<T>::V;
    V vs, vc;
    sincospi_reg(fill<V>(std::copysign(std::fmod(std::fabs(x), T(2)), x)), &vs, &vc);
    *s = vs[0];
    *c = vc[0];
    return kOk;
}

struct SinCospiKernel {
    template <class V>
    static void reg(V x, V* s, V* c) { sincospi_reg(x, s, c); }
    template <class V>
    static uint32_t special(V x) { return special_lanes(x); }
    template <typename T>
    static int32_t callout(T x, T* s, T* c) { return orv::trigpi::callout(x, s, c); }
};

}  // namespace
}  // namespace orv::trigpi

namespace pair_loop = orv::vec::pair_loop;
using Kernel = orv::trigpi::SinCospiKernel;

extern "C" void orv_kern_sSinCospi(int n, const float* a, float* r1, float* r2) {
    pair_loop::plain<Kernel>(n, a, r1, r2, orv::vtm::kName_sSinCospi);
}
extern "C" void orv_kern_dSinCospi(int n, const double* a, double* r1, double* r2) {
    pair_loop::plain<Kernel>(n, a, r1, r2, orv::vtm::kName_dSinCospi);
}
extern "C" void orv_kern_sSinCospiI(int n, const float* a, int inca, float* r1, int incr1,
                                    float* r2, int incr2) {
    pair_loop::strided<Kernel>(orv_vtm_kernel_sSinCospi_ttab, n, a, inca, r1, incr1, r2, incr2,
                               orv::vtm::kName_sSinCospiI);
}
extern "C" void orv_kern_dSinCospiI(int n, const double* a, int inca, double* r1, int incr1,
                                    double* r2, int incr2) {
    pair_loop::strided<Kernel>(orv_vtm_kernel_dSinCospi_ttab, n, a, inca, r1, incr1, r2, incr2,
                               orv::vtm::kName_dSinCospiI);
}
