// SinCos in single and double, plain and strided. The shared block driver
// has one result a lane, so this shape runs its own loop, with the same
// conventions: 16 lanes a round, tail blocks one register wide
// with the filler, non-finite lanes through the callout in ascending order,
// a non-zero status reported once for the element with both results.
#include <cstring>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/trig/trig_internal.h"

namespace orv::trig {
namespace {

namespace bits = orv::vec::bitops;
using orv::vec::kBlock;
using orv::vec::kFiller;

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

template <typename T, bool Strided>
struct Args {
    const T* a;
    long inca;
    T* r1;
    long incr1;
    T* r2;
    long incr2;
    void report(int32_t status, long i, const char* name) const {
        if constexpr (Strided)
            frame::report_error(status, int32_t(i), a, int32_t(inca), a, int32_t(inca), r1,
                                int32_t(incr1), r2, int32_t(incr2), name);
        else
            frame::report_error(status, int32_t(i), a, a, r1, r2, name);
    }
};

template <int Lanes, typename T, bool Strided>
inline void block(const Args<T, Strided>& g, long base, int count, const char* name) {
    using R = orv::vec::simd::Reg<T>;
    alignas(64) T x[Lanes], s[Lanes], c[Lanes];
    for (int l = 0; l < Lanes; ++l) x[l] = l < count ? g.a[(base + l) * g.inca] : T(kFiller);
    uint32_t mask = 0;
    for (int l = 0; l < Lanes; l += R::kWidth) {
        typename R::V vs, vc;
        const typename R::V vx = R::load(x + l);
        sincos_reg(vx, &vs, &vc);
        R::store(s + l, vs);
        R::store(c + l, vc);
        mask |= uint32_t(non_finite_lanes(vx)) << l;
    }
    mask &= count < 32 ? (1u << count) - 1 : ~0u;
    while (mask) {
        const int l = __builtin_ctz(mask);
        mask &= mask - 1;
        const int32_t status = callout(x[l], &s[l], &c[l]);
        if (status != 0) {
            T& o1 = g.r1[(base + l) * g.incr1];
            T& o2 = g.r2[(base + l) * g.incr2];
            o1 = s[l], o2 = c[l];
            g.report(status, base + l, name);
            s[l] = o1, c[l] = o2;
        }
    }
    for (int l = 0; l < count; ++l) {
        g.r1[(base + l) * g.incr1] = s[l];
        g.r2[(base + l) * g.incr2] = c[l];
    }
}

template <typename T, bool Strided>
inline void run(const Args<T, Strided>& g, int n, const char* name) {
    long i = 0;
    for (; i + kBlock <= n; i += kBlock) block<kBlock>(g, i, kBlock, name);
    constexpr int tail = orv::vec::kTailLanes<T>;
    for (; i < n; i += tail) {
        const long left = n - i;
        block<tail>(g, i, int(left < tail ? left : tail), name);
    }
}

template <typename T>
void plain(int n, const T* a, T* r1, T* r2, const char* name) {
    frame::FpGuard guard = orv::vec::enter(true);
    run(Args<T, false>{a, 1, r1, 1, r2, 1}, n, name);
}

template <typename T, typename Fn>
void strided(Fn* const* table, int n, const T* a, int inca, T* r1, int incr1, T* r2, int incr2,
             const char* name) {
    if (inca == 1 && incr1 == 1 && incr2 == 1) {
        table[frame::kSlotHA](n, a, r1, r2);
        return;
    }
    frame::FpGuard guard = orv::vec::enter(true);
    run(Args<T, true>{a, inca, r1, incr1, r2, incr2}, n, name);
}

}  // namespace
}  // namespace orv::trig

extern "C" void orv_kern_sSinCos(int n, const float* a, float* r1, float* r2) {
    orv::trig::plain(n, a, r1, r2, orv::vtm::kName_sSinCos);
}
extern "C" void orv_kern_dSinCos(int n, const double* a, double* r1, double* r2) {
    orv::trig::plain(n, a, r1, r2, orv::vtm::kName_dSinCos);
}
extern "C" void orv_kern_sSinCosI(int n, const float* a, int inca, float* r1, int incr1, float* r2,
                                  int incr2) {
    orv::trig::strided(orv_vtm_kernel_sSinCos_ttab, n, a, inca, r1, incr1, r2, incr2,
                       orv::vtm::kName_sSinCosI);
}
extern "C" void orv_kern_dSinCosI(int n, const double* a, int inca, double* r1, int incr1,
                                  double* r2, int incr2) {
    orv::trig::strided(orv_vtm_kernel_dSinCos_ttab, n, a, inca, r1, incr1, r2, incr2,
                       orv::vtm::kName_dSinCosI);
}
