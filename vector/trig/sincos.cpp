// SinCos in single and double, plain and strided, on the whole-register
// two-result loop of pair_loop.h; non-finite lanes go to the callout.
#include "vector/trig/pair_loop.h"
#include "vector/common/bits.h"
#include "vector/trig/trig_internal.h"

namespace orv::trig {
namespace {

namespace bits = orv::vec::bitops;

// Both results from one reduction (double) or from the single path.
namespace simd = orv::vec::simd;

inline void sincos_reg(simd::VD x, simd::VD* s, simd::VD* c) {
    const auto red = reduce(ops::abs(x));
    simd::VD h, l;
    sin_parts(red, red.j, &h, &l);
    *s = ops::xor_sign(h + l, x);
    sin_parts(red, add_rows<simd::VD>(red.j, 128), &h, &l);
    *c = h + l;
}
inline void sincos_reg(simd::VF x, simd::VF* s, simd::VF* c) {
    const simd::VD lo = simd::widen_lo(x), hi = simd::widen_hi(x);
    *s = simd::narrow(single_path<Fn::Sin>(lo), single_path<Fn::Sin>(hi));
    *c = simd::narrow(single_path<Fn::Cos>(lo), single_path<Fn::Cos>(hi));
}
inline uint32_t non_finite_lanes(simd::VD x) { return bits::above(x, 0x7FEFFFFF); }
inline uint32_t non_finite_lanes(simd::VF x) { return bits::above(x, 0x7F7FFFFF); }

// Infinity: NaN in both, status 1; NaN: x * x in both. Finite values do
// not reach it.
template <typename T>
inline int32_t callout(T x, T* s, T* c) {
    if (x != x) {
        *s = *c = x * x;
        return kOk;
    }
    *s = *c = x * T(0);
    return kDomain;
}

struct SinCosKernel {
    template <class V>
    static void reg(V x, V* s, V* c) { sincos_reg(x, s, c); }
    template <class V>
    static uint32_t special(V x) { return non_finite_lanes(x); }
    template <typename T>
    static int32_t callout(T x, T* s, T* c) { return orv::trig::callout(x, s, c); }
};

}  // namespace
}  // namespace orv::trig

namespace pair_loop = orv::vec::pair_loop;
using Kernel = orv::trig::SinCosKernel;

extern "C" void orv_kern_sSinCos(int n, const float* a, float* r1, float* r2) {
    pair_loop::plain<Kernel>(n, a, r1, r2, orv::vtm::kName_sSinCos);
}
extern "C" void orv_kern_dSinCos(int n, const double* a, double* r1, double* r2) {
    pair_loop::plain<Kernel>(n, a, r1, r2, orv::vtm::kName_dSinCos);
}
extern "C" void orv_kern_sSinCosI(int n, const float* a, int inca, float* r1, int incr1, float* r2,
                                  int incr2) {
    pair_loop::strided<Kernel>(orv_vtm_kernel_sSinCos_ttab, n, a, inca, r1, incr1, r2, incr2,
                               orv::vtm::kName_sSinCosI);
}
extern "C" void orv_kern_dSinCosI(int n, const double* a, int inca, double* r1, int incr1,
                                  double* r2, int incr2) {
    pair_loop::strided<Kernel>(orv_vtm_kernel_dSinCos_ttab, n, a, inca, r1, incr1, r2, incr2,
                               orv::vtm::kName_dSinCosI);
}
