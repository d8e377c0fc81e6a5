// SinCospi in single and double, plain and strided. The shared block driver
// has one result a lane, so this two-result shape runs its own loop with the
// same conventions: 16 lanes a round, tail blocks of one register with the
// filler, special lanes through the callout in ascending order, a non-zero
// status reported once for the element with both results. One kernel for all
// tiers: the HA evaluation of trigpi_internal.h, both results from one
// reduction.
#include <bit>
#include <cmath>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/trig/trigpi_internal.h"

namespace orv::trigpi {
namespace {

using orv::vec::kBlock;
using orv::vec::kFiller;

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
    using R = simd::Reg<T>;
    alignas(64) T x[Lanes], s[Lanes], c[Lanes];
    for (int l = 0; l < Lanes; ++l) x[l] = l < count ? g.a[(base + l) * g.inca] : T(kFiller);
    uint32_t mask = 0;
    for (int l = 0; l < Lanes; l += R::kWidth) {
        typename R::V vs, vc;
        const typename R::V vx = R::load(x + l);
        sincospi_reg(vx, &vs, &vc);
        R::store(s + l, vs);
        R::store(c + l, vc);
        mask |= special_lanes(vx) << l;
    }
    if (count < 32) mask &= (1u << count) - 1;
    while (mask) {
        const int l = std::countr_zero(mask);
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
}  // namespace orv::trigpi

extern "C" void orv_kern_sSinCospi(int n, const float* a, float* r1, float* r2) {
    orv::trigpi::plain(n, a, r1, r2, orv::vtm::kName_sSinCospi);
}
extern "C" void orv_kern_dSinCospi(int n, const double* a, double* r1, double* r2) {
    orv::trigpi::plain(n, a, r1, r2, orv::vtm::kName_dSinCospi);
}
extern "C" void orv_kern_sSinCospiI(int n, const float* a, int inca, float* r1, int incr1,
                                    float* r2, int incr2) {
    orv::trigpi::strided(orv_vtm_kernel_sSinCospi_ttab, n, a, inca, r1, incr1, r2, incr2,
                         orv::vtm::kName_sSinCospiI);
}
extern "C" void orv_kern_dSinCospiI(int n, const double* a, int inca, double* r1, int incr1,
                                    double* r2, int incr2) {
    orv::trigpi::strided(orv_vtm_kernel_dSinCospi_ttab, n, a, inca, r1, incr1, r2, incr2,
                         orv::vtm::kName_dSinCospiI);
}
