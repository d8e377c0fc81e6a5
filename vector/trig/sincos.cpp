// SinCos in single and double, plain and strided, on the whole-register
// two-result loop of pair_loop.h; non-finite lanes go to the callout.
#include "vector/trig/pair_loop.h"
#include "vector/common/bits.h"
#include "vector/trig/trig_internal.h"

namespace orv::trig {
namespace {

namespace bits = orv::vec::bitops;

namespace simd = orv::vec::simd;

// Row j + 128 of kSinCosD, a quarter turn on, holds (C, c, -S, -s) of row
// j = (S, s, C, c). Checked here over all 512 rows, by value: an entry that
// is zero may carry the other sign, and such a zero only ever enters a sum
// that has a non-zero term, so the results keep their bits.
constexpr bool rows_a_quarter_turn_apart() {
    for (int j = 0; j < 512; ++j) {
        const double* a = kSinCosD[j];
        const double* b = kSinCosD[(j + 128) & 511];
        if (b[0] != a[2] || b[1] != a[3] || b[2] != -a[0] || b[3] != -a[1]) return false;
    }
    return true;
}
static_assert(rows_a_quarter_turn_apart());


// sin and cos of j pi/256 + r as hi + lo pairs from row j alone: sin_parts'
// arithmetic on row j, and on (C, c, -S, -s) for the cosine, sharing the
// powers of r, the two series and the split of r (the same expressions, so
// the same bits as two calls of sin_parts on rows j and j + 128).
template <typename V>
inline void sincos_parts(const Reduced<V>& red, V* s_hi, V* s_lo, V* c_hi, V* c_lo) {
    V sh, sl, ch, cl;
    row<V>(red.j, &sh, &sl, &ch, &cl);
    const V rh = red.rh;
    const V s = rh * rh;
    const V cm1 = s * (k<V>(-0.5) + s * (k<V>(1.0 / 24) + s * (k<V>(-1.0 / 720) + s * k<V>(1.0 / 40320))));
    const V sm = rh * s * (k<V>(-1.0 / 6) + s * (k<V>(1.0 / 120) + s * k<V>(-1.0 / 5040)));
    const V rhh = split_hi(rh), rhl = rh - rhh;
    // a + r b, with (a, al, b, bl) = (S, s, C, c) for the sine and (C, c, -S, -s) for the cosine.
    const auto parts = [&](V a, V al, V b, V bl, V* hi, V* lo) {
        const V p = rh * b;  // exactly p + pe (Dekker)
        const V bh = split_hi(b), blo = b - bh;
        const V pe = ((rhh * bh - p) + rhh * blo + rhl * bh) + rhl * blo;
        const V h = a + p;  // exactly h + e (Knuth)
        const V bb = h - a;
        const V e = (a - (h - bb)) + (p - bb);
        *hi = h;
        *lo = e + pe + (al + rh * bl + red.rl * b + a * cm1 + b * sm);
    };
    parts(sh, sl, ch, cl, s_hi, s_lo);
    const V minus = k<V>(-1.0);
    parts(ch, cl, ops::xor_sign(sh, minus), ops::xor_sign(sl, minus), c_hi, c_lo);
}

template <typename V>
inline void sincos_d(V x, V* s, V* c) {
    const auto red = reduce(ops::abs(x));
    V sh, sl, ch, cl;
    sincos_parts(red, &sh, &sl, &ch, &cl);
    *s = ops::xor_sign(sh + sl, x);
    *c = ch + cl;
}

inline void sincos_reg(simd::VD x, simd::VD* s, simd::VD* c) { sincos_d(x, s, c); }
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
