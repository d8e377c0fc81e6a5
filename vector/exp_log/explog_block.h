// Block driver of the exponential and logarithm kernels: 16 lanes a round
// through a branch-free fast path, the tail in short blocks of one SSE
// register (4 floats or 2 doubles) with the filler 0.75 in absent lanes, and
// the slow path through the callout and the error entry for flagged lanes.
//
// A kernel K supplies:
//   using T, V               element type and its SSE register type
//   static V fast(V x)       the fast result of every lane
//   static int special(V x)  one bit per lane that needs the callout
//   static int32_t callout(const T*, T*)
//   static constexpr bool kNoErrShortcut, and for it kOver, kUnder
#pragma once

#include <emmintrin.h>

#include <cstdint>
#include <limits>

#include "frame/error_dispatch.h"
#include "frame/fp_guard.h"
#include "frame/kernel_tables.h"
#include "frame/mode_word.h"

namespace orv::explog {

inline __m128 vload(const float* p) { return _mm_loadu_ps(p); }
inline __m128d vload(const double* p) { return _mm_loadu_pd(p); }
inline void vstore(float* p, __m128 v) { _mm_storeu_ps(p, v); }
inline void vstore(double* p, __m128d v) { _mm_storeu_pd(p, v); }
inline __m128 vfill(const float*) { return _mm_set1_ps(0.75f); }
inline __m128d vfill(const double*) { return _mm_set1_pd(0.75); }

// Where results go and how a bad element is reported: unit stride.
template <typename T>
struct Plain {
    const T* a;
    T* r;
    const char* name;
    T in(long i) const { return a[i]; }
    T& out(long i) const { return r[i]; }
    void report(int32_t st, long i) const {
        orv::frame::report_error(st, static_cast<int32_t>(i), a, a, r, r, name);
    }
};

// Strided: element i lives at a[i*inca] and r[i*incr].
template <typename T>
struct Strided {
    const T* a;
    int inca;
    T* r;
    int incr;
    const char* name;
    T in(long i) const { return a[i * inca]; }
    T& out(long i) const { return r[i * incr]; }
    void report(int32_t st, long i) const {
        orv::frame::report_error(st, static_cast<int32_t>(i), a, inca, a, inca, r, incr, r, incr,
                                 name);
    }
};

// Slow path of one block: lanes in ascending order; a non-zero status
// writes the result to the caller's array, calls the entry and reads back.
template <typename K, typename Acc>
inline void slow_path(unsigned mask, uint32_t mode, const typename K::T* x, typename K::T* y,
                      long base, const Acc& acc) {
    using T = typename K::T;
    if constexpr (K::kNoErrShortcut) {
        if ((mode & 0xFF00u) == 0x2000u) {
            for (unsigned m = mask; m; m &= m - 1) {
                const int l = __builtin_ctz(m);
                if (x[l] > K::kOver) {
                    y[l] = std::numeric_limits<T>::infinity();
                    mask &= ~(1u << l);
                } else if (x[l] < K::kUnder) {
                    y[l] = T(0);
                    mask &= ~(1u << l);
                }
            }
        }
    }
    for (; mask; mask &= mask - 1) {
        const int l = __builtin_ctz(mask);
        const int32_t st = K::callout(&x[l], &y[l]);
        if (st != 0) {
            acc.out(base + l) = y[l];
            acc.report(st, base + l);
            y[l] = acc.out(base + l);
        }
    }
}

template <typename K, typename Acc, bool kUnit>
inline void run_blocks(int n, uint32_t mode, const Acc& acc) {
    using T = typename K::T;
    using V = typename K::V;
    constexpr int kVL = 16 / sizeof(T);  // lanes of one register
    constexpr int kNV = 16 / kVL;        // registers of a 16-lane block
    long i = 0;
    const long full = static_cast<long>(n) & ~15L;
    for (; i < full; i += 16) {
        alignas(16) T x[16];
        alignas(16) T y[16];
        V res[kNV];
        unsigned mask = 0;
        if constexpr (kUnit) {
            for (int v = 0; v < kNV; ++v) {
                const V xv = vload(acc.a + i + v * kVL);
                res[v] = K::fast(xv);
                mask |= static_cast<unsigned>(K::special(xv)) << (v * kVL);
            }
            if (__builtin_expect(mask == 0, 1)) {
                for (int v = 0; v < kNV; ++v) vstore(acc.r + i + v * kVL, res[v]);
                continue;
            }
            for (int l = 0; l < 16; ++l) x[l] = acc.a[i + l];
        } else {
            for (int l = 0; l < 16; ++l) x[l] = acc.in(i + l);
            for (int v = 0; v < kNV; ++v) {
                const V xv = vload(x + v * kVL);
                res[v] = K::fast(xv);
                mask |= static_cast<unsigned>(K::special(xv)) << (v * kVL);
            }
        }
        for (int v = 0; v < kNV; ++v) vstore(y + v * kVL, res[v]);
        if (mask) slow_path<K>(mask, mode, x, y, i, acc);
        if constexpr (kUnit) {
            for (int v = 0; v < kNV; ++v) vstore(acc.r + i + v * kVL, vload(y + v * kVL));
        } else {
            for (int l = 0; l < 16; ++l) acc.out(i + l) = y[l];
        }
    }
    // Tail: one register a round, absent lanes holding the filler.
    for (; i < n; i += kVL) {
        const int cnt = (n - i < kVL) ? static_cast<int>(n - i) : kVL;
        alignas(16) T x[kVL];
        alignas(16) T y[kVL];
        vstore(x, vfill(x));
        for (int l = 0; l < cnt; ++l) x[l] = acc.in(i + l);
        const V xv = vload(x);
        vstore(y, K::fast(xv));
        const unsigned mask = static_cast<unsigned>(K::special(xv)) & ((1u << cnt) - 1);
        if (mask) slow_path<K>(mask, mode, x, y, i, acc);
        for (int l = 0; l < cnt; ++l) acc.out(i + l) = y[l];
    }
}

// Plain kernel: mode read once, floating-point state guarded.
template <typename K>
inline void plain_kernel(int n, const typename K::T* a, typename K::T* r, const char* name) {
    const uint32_t mode = orv::frame::current_mode();
    orv::frame::FpGuard guard = orv::frame::FpGuard::from_mode(mode);
    if (n < 1) return;
    run_blocks<K, Plain<typename K::T>, true>(n, mode, Plain<typename K::T>{a, r, name});
}

// Strided kernel: unit increments go to the plain kernel through the table.
template <typename K>
inline void strided_kernel(void (*const* plain_table)(int, const typename K::T*, typename K::T*),
                           int n, const typename K::T* a, int inca, typename K::T* r, int incr,
                           const char* name) {
    if (inca == 1 && incr == 1) {
        plain_table[orv::frame::kSlotHA](n, a, r);
        return;
    }
    const uint32_t mode = orv::frame::current_mode();
    orv::frame::FpGuard guard = orv::frame::FpGuard::from_mode(mode);
    if (n < 1) return;
    run_blocks<K, Strided<typename K::T>, false>(n, mode,
                                                 Strided<typename K::T>{a, inca, r, incr, name});
}

// Scalar loop of Expm1 and Log1p: one element a round through the callout,
// the result stored, a non-zero status reported after the store.
template <typename T, typename Acc>
inline void scalar_loop(int n, int32_t (*callout)(const T*, T*), const Acc& acc) {
    for (long i = 0; i < n; ++i) {
        const T x = acc.in(i);
        T y;
        const int32_t st = callout(&x, &y);
        acc.out(i) = y;
        if (st != 0) acc.report(st, i);
    }
}

}  // namespace orv::explog
