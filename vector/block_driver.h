// The shared shape of the blocked vector kernels: floating-point entry and
// exit, 16-lane blocks with a branch-free fast path, the short tail blocks
// with their filler, the slow path in ascending lane order, and the strided
// forms. A kernel family describes one function by a small struct K:
//
//   using T = float or double;
//   static constexpr int kArity = 1 or 2;        inputs per element
//   static constexpr bool kReadsMode;            plain form reads the mode word
//   static T fast(T x) / fast(T x, T y);         branch-free block computation
//   static bool special(T x) / special(T x, T y); integer range test, or absent
//                                                 when kSpecial is false
//   static int32_t callout(T x, T* r) / callout(T x, T y, T* r);
//   static constexpr bool kSpecial;              whether special/callout exist
//   static constexpr bool kDivisorTest;          test the result instead: then
//   static int32_t divisor_status(T x, T y);     status of a stored lane, no read-back
//
// and the driver does everything else, once.
#pragma once

#include <bit>
#include <cstdint>
#include <type_traits>

#include "frame/error_dispatch.h"
#include "frame/fp_guard.h"
#include "frame/kernel_tables.h"
#include "frame/mode_word.h"

namespace orv::vec {

inline constexpr int kBlock = 16;
template <typename T>
inline constexpr int kTailLanes = sizeof(T) == 4 ? 4 : 2;
// Absent lanes of a tail block hold this value, which trips no special test.
inline constexpr double kFiller = 0.75;

template <typename T>
using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;

template <typename T>
inline Bits<T> bits(T x) { return std::bit_cast<Bits<T>>(x); }
template <typename T>
inline T from_bits(Bits<T> b) { return std::bit_cast<T>(b); }

// Field layout of the element type.
template <typename T>
struct Fmt {
    static constexpr int kMant = sizeof(T) == 4 ? 23 : 52;
    static constexpr int kBias = sizeof(T) == 4 ? 127 : 1023;
    static constexpr Bits<T> kSign = Bits<T>(1) << (sizeof(T) * 8 - 1);
    static constexpr Bits<T> kAbs = ~kSign;
    static constexpr Bits<T> kExpMask = ~Bits<T>(0) >> 1 >> kMant << kMant;  // 0x7F800000
    static constexpr Bits<T> kMinNormal = Bits<T>(1) << kMant;
    static constexpr Bits<T> kFracMask = kMinNormal - 1;
};

template <typename T>
inline bool is_nan_bits(T x) { return (bits(x) & Fmt<T>::kAbs) > Fmt<T>::kExpMask; }
template <typename T>
inline bool is_inf_or_nan_bits(T x) { return (bits(x) & Fmt<T>::kAbs) >= Fmt<T>::kExpMask; }

// Floating-point entry of a kernel.
inline frame::FpGuard enter(bool reads_mode) {
    return reads_mode ? frame::FpGuard::from_mode(frame::current_mode())
                      : frame::FpGuard::keep_rounding();
}

// Element access: unit stride for the plain forms, increments for the I forms.
template <typename T, bool Strided>
struct Access {
    const T* a;
    const T* b;
    T* r;
    long inca = 1, incb = 1, incr = 1;
    T& out(long i) const { return Strided ? r[i * incr] : r[i]; }
    T in_a(long i) const { return Strided ? a[i * inca] : a[i]; }
    T in_b(long i) const { return Strided ? b[i * incb] : b[i]; }

    void report(int32_t status, long i, const char* name) const {
        if constexpr (Strided)
            frame::report_error(status, int32_t(i), a, int32_t(inca), b, int32_t(incb), r,
                                int32_t(incr), r, int32_t(incr), name);
        else
            frame::report_error(status, int32_t(i), a, b, r, r, name);
    }
};

template <typename K, int Lanes, typename T, bool Strided>
inline void run_block(const Access<T, Strided>& acc, long base, int count, const char* name) {
    alignas(16) T x[Lanes];
    alignas(16) T y[Lanes];
    alignas(16) T z[Lanes];
    for (int l = 0; l < Lanes; ++l) {
        x[l] = l < count ? acc.in_a(base + l) : T(kFiller);
        if constexpr (K::kArity == 2) y[l] = l < count ? acc.in_b(base + l) : T(kFiller);
    }
    for (int l = 0; l < Lanes; ++l) {
        if constexpr (K::kArity == 2)
            z[l] = K::fast(x[l], y[l]);
        else
            z[l] = K::fast(x[l]);
    }
    if constexpr (K::kSpecial) {
        uint32_t mask = 0;
        for (int l = 0; l < Lanes; ++l) {
            bool s;
            if constexpr (K::kArity == 2)
                s = K::special(x[l], y[l]);
            else
                s = K::special(x[l]);
            mask |= uint32_t(s) << l;
        }
        // Slow path, ascending lane order: callout, error entry, read-back.
        while (mask) {
            const int l = std::countr_zero(mask);
            mask &= mask - 1;
            int32_t status;
            if constexpr (K::kArity == 2)
                status = K::callout(x[l], y[l], &z[l]);
            else
                status = K::callout(x[l], &z[l]);
            if (status != 0) {
                T& slot = acc.out(base + l);
                slot = z[l];
                acc.report(status, base + l, name);
                z[l] = slot;
            }
        }
    }
    for (int l = 0; l < count; ++l) acc.out(base + l) = z[l];
    if constexpr (K::kDivisorTest) {
        // The quotients are stored; a zero divisor is reported at once.
        for (int l = 0; l < count; ++l) {
            const int32_t status = K::divisor_status(x[l], K::kArity == 2 ? y[l] : x[l]);
            if (status != 0) acc.report(status, base + l, name);
        }
    }
}

template <typename K, typename T, bool Strided>
inline void run(const Access<T, Strided>& acc, int n, const char* name) {
    long i = 0;
    for (; i + kBlock <= n; i += kBlock) run_block<K, kBlock>(acc, i, kBlock, name);
    constexpr int tail = kTailLanes<T>;
    for (; i < n; i += tail) {
        const long left = n - i;
        run_block<K, tail>(acc, i, int(left < tail ? left : tail), name);
    }
}

// Plain unary and binary kernels.
template <typename K>
void unary(int n, const typename K::T* a, typename K::T* r, const char* name) {
    frame::FpGuard guard = enter(K::kReadsMode);
    run<K>(Access<typename K::T, false>{a, a, r}, n, name);
}
template <typename K>
void binary(int n, const typename K::T* a, const typename K::T* b, typename K::T* r,
            const char* name) {
    frame::FpGuard guard = enter(K::kReadsMode);
    run<K>(Access<typename K::T, false>{a, b, r}, n, name);
}

// Strided forms: with every increment 1 they call the plain kernel through
// its table; otherwise they read the mode and gather lane by lane.
template <typename K, typename Fn>
void unary_strided(Fn* const* plain_table, int slot, int n, const typename K::T* a, int inca,
                   typename K::T* r, int incr, const char* name) {
    if (inca == 1 && incr == 1) {
        plain_table[slot](n, a, r);
        return;
    }
    frame::FpGuard guard = enter(true);
    run<K>(Access<typename K::T, true>{a, a, r, inca, inca, incr}, n, name);
}
template <typename K, typename Fn>
void binary_strided(Fn* const* plain_table, int slot, int n, const typename K::T* a, int inca,
                    const typename K::T* b, int incb, typename K::T* r, int incr,
                    const char* name) {
    if (inca == 1 && incb == 1 && incr == 1) {
        plain_table[slot](n, a, b, r);
        return;
    }
    frame::FpGuard guard = enter(true);
    run<K>(Access<typename K::T, true>{a, b, r, inca, incb, incr}, n, name);
}

}  // namespace orv::vec

// Defines the plain and strided kernels of function FN (such as sSqrt) from
// the description K. The error names come from the generated tables.
#define ORV_UNARY_KERNELS(FN, ...)                                                         \
    extern "C" void orv_kern_##FN(int n, const __VA_ARGS__::T* a, __VA_ARGS__::T* r) {                       \
        orv::vec::unary<__VA_ARGS__>(n, a, r, orv::vtm::kName_##FN);                               \
    }                                                                                    \
    extern "C" void orv_kern_##FN##I(int n, const __VA_ARGS__::T* a, int inca, __VA_ARGS__::T* r, int incr) { \
        orv::vec::unary_strided<__VA_ARGS__>(                                                      \
            orv_vtm_kernel_##FN##_ttab,                                                  \
            orv::frame::forward_slot(orv::vtm::kSharedSlots_##FN, orv::frame::kSlotHA),  \
            n, a, inca, r, incr, orv::vtm::kName_##FN##I);                               \
    }

#define ORV_BINARY_KERNELS(FN, ...)                                                        \
    extern "C" void orv_kern_##FN(int n, const __VA_ARGS__::T* a, const __VA_ARGS__::T* b, __VA_ARGS__::T* r) {        \
        orv::vec::binary<__VA_ARGS__>(n, a, b, r, orv::vtm::kName_##FN);                           \
    }                                                                                    \
    extern "C" void orv_kern_##FN##I(int n, const __VA_ARGS__::T* a, int inca, const __VA_ARGS__::T* b,      \
                                     int incb, __VA_ARGS__::T* r, int incr) {                      \
        orv::vec::binary_strided<__VA_ARGS__>(                                                     \
            orv_vtm_kernel_##FN##_ttab,                                                  \
            orv::frame::forward_slot(orv::vtm::kSharedSlots_##FN, orv::frame::kSlotHA),  \
            n, a, inca, b, incb, r, incr, orv::vtm::kName_##FN##I);                      \
    }
