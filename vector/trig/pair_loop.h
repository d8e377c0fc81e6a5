// The whole-register loop of the two-result functions SinCos and SinCospi
// (the block driver's two-result shape computes one element at a time).
// Conventions as the driver's: kBlock lanes a round, tail blocks one
// register wide with the filler, flagged lanes through the callout in
// ascending order, a non-zero status reported once for the element with
// both results. K supplies reg(x, &s, &c) on a register, special(x) (the
// lanes' bit mask for the callout) and callout(x, &s, &c) on one element.
#pragma once

#include <bit>

#include "vector/block_driver.h"

namespace orv::vec::pair_loop {

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

template <class K, int Lanes, typename T, bool Strided>
inline void block(const Args<T, Strided>& g, long base, int count, const char* name) {
    using R = simd::Reg<T>;
    alignas(64) T x[Lanes], s[Lanes], c[Lanes];
    for (int l = 0; l < Lanes; ++l) x[l] = l < count ? g.a[(base + l) * g.inca] : T(kFiller);
    uint32_t mask = 0;
    for (int l = 0; l < Lanes; l += R::kWidth) {
        typename R::V vs, vc;
        const typename R::V vx = R::load(x + l);
        K::reg(vx, &vs, &vc);
        R::store(s + l, vs);
        R::store(c + l, vc);
        mask |= uint32_t(K::special(vx)) << l;
    }
    if (count < 32) mask &= (1u << count) - 1;
    while (mask) {
        const int l = std::countr_zero(mask);
        mask &= mask - 1;
        const int32_t status = K::callout(x[l], &s[l], &c[l]);
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

template <class K, typename T, bool Strided>
inline void run(const Args<T, Strided>& g, int n, const char* name) {
    long i = 0;
    for (; i + kBlock <= n; i += kBlock) block<K, kBlock>(g, i, kBlock, name);
    constexpr int tail = kTailLanes<T>;
    for (; i < n; i += tail) {
        const long left = n - i;
        block<K, tail>(g, i, int(left < tail ? left : tail), name);
    }
}

template <class K, typename T>
void plain(int n, const T* a, T* r1, T* r2, const char* name) {
    frame::FpGuard guard = enter(true);
    run<K>(Args<T, false>{a, 1, r1, 1, r2, 1}, n, name);
}

// Unit increments run the plain kernel of the HA slot (one kernel serves
// every tier of these functions).
template <class K, typename T, typename Fn>
void strided(Fn* const* table, int n, const T* a, int inca, T* r1, int incr1, T* r2, int incr2,
             const char* name) {
    if (inca == 1 && incr1 == 1 && incr2 == 1) {
        table[frame::kSlotHA](n, a, r1, r2);
        return;
    }
    frame::FpGuard guard = enter(true);
    run<K>(Args<T, true>{a, inca, r1, incr1, r2, incr2}, n, name);
}

}  // namespace orv::vec::pair_loop
