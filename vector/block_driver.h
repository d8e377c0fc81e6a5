// The shared shape of the blocked vector kernels: floating-point entry and
// exit, 16-lane blocks with a branch-free fast path, the short tail blocks
// with their filler, the slow path in ascending lane order, and the strided
// forms. A kernel family describes one function by a small struct K:
//
//   using T = float or double;
//   static constexpr int kArity = 1 or 2;        inputs per element
//   static constexpr bool kReadsMode;            plain form reads the mode word
//   static T fast(T x) / fast(T x, T y);         branch-free block computation,
//   or static V fastv(V x) / fastv(V x, V y);    the same on one register
//                                                (V from simd::Reg<T>)
//   static bool special(T x) / special(T x, T y); integer range test, or absent
//                                                 when kSpecial is false
//   static V specialv(V x) / specialv(V x, V y); the same on a register, all
//                                                ones in the special lanes
//   or static int special_lanes(V x);            the same as one bit a lane
//                                                (unary kernels)
//   static int32_t callout(T x, T* r) / callout(T x, T y, T* r);
//   static constexpr bool kSpecial;              whether special/callout exist
//   static constexpr bool kDivisorTest;          test the result instead: then
//   static int32_t divisor_status(T x, T y);     status of a stored lane, no read-back
//
// Optional members, absent meaning false:
//   static constexpr bool kNoErrShortcut;        with kOver and kUnder of type T: when
//                                                the mode read at entry has the error
//                                                mode field (mode & 0xFF00) exactly
//                                                0x2000 (record nothing), special
//                                                lanes above kOver get +infinity and
//                                                lanes below kUnder get zero, without
//                                                the callout (needs kReadsMode)
//   static constexpr bool kCalloutOnly;          no block computation: each element in
//                                                turn goes through the callout, the
//                                                result is stored, and a non-zero
//                                                status is reported after the store
//                                                (unary kernels)
//   static void fast_block(const T* x, T* z, int n); the block computation on n
//                                                elements at once (n a multiple of the
//                                                register width, at most kBlockSpan;
//                                                z may be x), in place of fastv (unary
//                                                kernels; runs of kBlockSpan elements
//                                                with no special lane go to it whole)
//
// and the driver does everything else, once.
#pragma once


#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "frame/error_dispatch.h"
#include "frame/fp_guard.h"
#include "frame/kernel_tables.h"
#include "frame/mode_word.h"
#include "vector/simd/vec.h"

namespace orv::vec {

// Elements a block: 16, and 32 in the AVX-512 build, where 16 floats are one
// register and a second register in flight pays (single Exp and Ln ran 1.4
// and 1.1 times faster); the results do not depend on it.
inline constexpr int kBlock = ORV_SIMD_BYTES == 64 ? 32 : 16;
// Elements at most in one call of a kernel's fast_block: a kernel that
// sorts lanes by path wastes less of its last, partly filled registers.
inline constexpr int kBlockSpan = 256;
// Tail blocks are one register wide.
template <typename T>
inline constexpr int kTailLanes = simd::Reg<T>::kWidth;
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

// A NaN made quiet by arithmetic (x + x), any other value unchanged. The
// compiler may drop a multiplication by 1, so it is not used for this.
template <typename T>
inline T quieted(T x) { return is_nan_bits(x) ? x + x : x; }

// The register vocabulary (vector/simd/vec.h): simd::Reg<T>, the
// arithmetic, bitwise, comparison and range-test helpers, at the width this
// translation unit is compiled for.

// A special test on a register that gives one bit a lane.
template <typename K, typename T>
concept HasLaneMask = requires(typename simd::Reg<T>::V v) {
    { K::special_lanes(v) } -> std::convertible_to<int>;
};

template <typename K, typename T>
concept HasVectorSpecial = requires(typename simd::Reg<T>::V v) { K::specialv(v); } ||
                           requires(typename simd::Reg<T>::V v) { K::specialv(v, v); } ||
                           HasLaneMask<K, T>;

// The optional flags of a kernel description.
template <typename K>
constexpr bool noerr_shortcut() {
    if constexpr (requires { K::kNoErrShortcut; })
        return K::kNoErrShortcut;
    else
        return false;
}
template <typename K>
constexpr bool callout_only() {
    if constexpr (requires { K::kCalloutOnly; })
        return K::kCalloutOnly;
    else
        return false;
}

// The error mode field of the mode word that records nothing.
inline constexpr uint32_t kErrModeField = 0xFF00u, kErrModeNoErr = 0x2000u;

// A unary kernel that computes a whole block at once (it may sort the lanes
// by path).
template <typename K, typename T>
concept HasBlockPath = requires(const T* x, T* z) { K::fast_block(x, z, 0); };

template <typename K, typename T>
concept HasVectorPath = requires(typename simd::Reg<T>::V v) { K::fastv(v); } ||
                        requires(typename simd::Reg<T>::V v) { K::fastv(v, v); };

// Floating-point entry of a kernel.
inline frame::FpGuard enter(bool reads_mode) {
    return reads_mode ? frame::FpGuard::from_mode(frame::current_mode())
                      : frame::FpGuard::keep_rounding();
}
// The same with the mode already read (0 when the kernel reads none).
inline frame::FpGuard enter(bool reads_mode, uint32_t mode) {
    return reads_mode ? frame::FpGuard::from_mode(mode) : frame::FpGuard::keep_rounding();
}

// Element access: unit stride for the plain forms, increments for the I forms.
template <typename T, bool Strided>
struct Access {
    const T* a;
    const T* b;
    T* r;
    long inca = 1, incb = 1, incr = 1;
    uint32_t mode = 0;  // the mode word read at entry, for the optional shortcut
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
    alignas(64) T x[Lanes];
    alignas(64) T y[Lanes];
    alignas(64) T z[Lanes];
    if (!Strided && count == Lanes) {
        std::memcpy(x, &acc.a[base], sizeof x);
        if constexpr (K::kArity == 2) std::memcpy(y, &acc.b[base], sizeof y);
    } else {
        for (int l = 0; l < Lanes; ++l) {
            x[l] = l < count ? acc.in_a(base + l) : T(kFiller);
            if constexpr (K::kArity == 2) y[l] = l < count ? acc.in_b(base + l) : T(kFiller);
        }
    }
    if constexpr (HasBlockPath<K, T>) {
        K::fast_block(x, z, Lanes);
    } else if constexpr (HasVectorPath<K, T>) {
        using R = simd::Reg<T>;
        for (int l = 0; l < Lanes; l += R::kWidth) {
            if constexpr (K::kArity == 2)
                R::store(z + l, K::fastv(R::load(x + l), R::load(y + l)));
            else
                R::store(z + l, K::fastv(R::load(x + l)));
        }
    } else {
        for (int l = 0; l < Lanes; ++l) {
            if constexpr (K::kArity == 2)
                z[l] = K::fast(x[l], y[l]);
            else
                z[l] = K::fast(x[l]);
        }
    }
    if constexpr (K::kSpecial) {
        uint32_t mask = 0;
        if constexpr (HasLaneMask<K, T>) {
            using R = simd::Reg<T>;
            for (int l = 0; l < Lanes; l += R::kWidth)
                mask |= uint32_t(K::special_lanes(R::load(x + l))) << l;
            if (count < Lanes) mask &= (1u << count) - 1;  // absent lanes stay out
        } else {
            for (int l = 0; l < Lanes; ++l) {
                bool s;
                if constexpr (K::kArity == 2)
                    s = K::special(x[l], y[l]);
                else
                    s = K::special(x[l]);
                mask |= uint32_t(s) << l;
            }
        }
        if constexpr (noerr_shortcut<K>()) {
            // Record-nothing mode: overflow and underflow lanes take their
            // limits here and leave the slow path.
            if (mask && (acc.mode & kErrModeField) == kErrModeNoErr) {
                for (uint32_t m = mask; m; m &= m - 1) {
                    const int l = std::countr_zero(m);
                    if (x[l] > K::kOver) {
                        z[l] = std::numeric_limits<T>::infinity();
                        mask &= ~(1u << l);
                    } else if (x[l] < K::kUnder) {
                        z[l] = T(0);
                        mask &= ~(1u << l);
                    }
                }
            }
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
    if (!Strided && count == Lanes)
        std::memcpy(&acc.r[base], z, sizeof z);
    else
        for (int l = 0; l < count; ++l) acc.out(base + l) = z[l];
    if constexpr (K::kDivisorTest) {
        // The quotients are stored; a zero divisor is reported at once.
        for (int l = 0; l < count; ++l) {
            const int32_t status = K::divisor_status(x[l], K::kArity == 2 ? y[l] : x[l]);
            if (status != 0) acc.report(status, base + l, name);
        }
    }
}

// A whole unit-stride block of a kernel with a vector path: computed in
// registers straight from the arrays. A block with a special lane is run
// again through the general path above.
template <typename K, typename T>
inline void run_full_plain(const Access<T, false>& acc, long base, const char* name) {
    using R = simd::Reg<T>;
    using V = typename R::V;
    constexpr int kW = R::kWidth, kRegs = kBlock / kW;
    if constexpr (HasBlockPath<K, T>) {
        // The special test first, then the block straight into the result.
        uint32_t special_bits = 0;
        for (int j = 0; j < kRegs; ++j) special_bits |= uint32_t(K::special_lanes(R::load(acc.a + base + j * kW)));
        if (__builtin_expect(special_bits != 0, 0))
            run_block<K, kBlock>(acc, base, kBlock, name);
        else
            K::fast_block(acc.a + base, acc.r + base, kBlock);
        return;
    }
    const V zero = R::set1(T(0));
    V z[kRegs];
    V special = zero, zero_divisor = zero;  // lane masks, or-ed over the block
    uint32_t special_bits = 0;                // the same from a one-bit-a-lane test
    for (int j = 0; j < kRegs; ++j) {
        const V xa = R::load(acc.a + base + j * kW);
        if constexpr (K::kArity == 2) {
            const V xb = R::load(acc.b + base + j * kW);
            z[j] = K::fastv(xa, xb);
            if constexpr (K::kSpecial) special = simd::bor(special, K::specialv(xa, xb));
            if constexpr (K::kDivisorTest) zero_divisor = simd::bor(zero_divisor, simd::eq(xb, zero));
        } else {
            z[j] = K::fastv(xa);
            if constexpr (K::kSpecial) {
                if constexpr (HasLaneMask<K, T>)
                    special_bits |= uint32_t(K::special_lanes(xa));
                else
                    special = simd::bor(special, K::specialv(xa));
            }
            if constexpr (K::kDivisorTest) zero_divisor = simd::bor(zero_divisor, simd::eq(xa, zero));
        }
    }
    if (__builtin_expect((simd::lanes(special) | special_bits) != 0, 0)) {
        run_block<K, kBlock>(acc, base, kBlock, name);
        return;
    }
    for (int j = 0; j < kRegs; ++j) R::store(acc.r + base + j * kW, z[j]);
    if constexpr (K::kDivisorTest) {
        if (simd::lanes(zero_divisor)) {
            for (int l = 0; l < kBlock; ++l) {
                const T d = K::kArity == 2 ? acc.b[base + l] : acc.a[base + l];
                const int32_t status = K::divisor_status(acc.a[base + l], d);
                if (status != 0) acc.report(status, base + l, name);
            }
        }
    }
}

// kBlockSpan elements of a kernel with a block path: whole when no lane is
// special, else block by block.
template <typename K, typename T>
inline void run_span_plain(const Access<T, false>& acc, long base, const char* name) {
    using R = simd::Reg<T>;
    uint32_t special_bits = 0;
    for (int l = 0; l < kBlockSpan; l += R::kWidth) special_bits |= uint32_t(K::special_lanes(R::load(acc.a + base + l)));
    if (__builtin_expect(special_bits != 0, 0)) {
        for (int b = 0; b < kBlockSpan; b += kBlock) run_full_plain<K>(acc, base + b, name);
        return;
    }
    K::fast_block(acc.a + base, acc.r + base, kBlockSpan);
}

// A callout-only kernel: one element a round, the result stored, then a
// non-zero status reported.
template <typename K, typename T, bool Strided>
inline void run_each(const Access<T, Strided>& acc, int n, const char* name) {
    for (long i = 0; i < n; ++i) {
        T z;
        const int32_t status = K::callout(acc.in_a(i), &z);
        acc.out(i) = z;
        if (status != 0) acc.report(status, i, name);
    }
}

// Full blocks, then the tail in short blocks.
template <typename K, typename T, bool Strided>
inline void run_blocks(const Access<T, Strided>& acc, int n, const char* name) {
    long i = 0;
    if constexpr (!Strided && HasBlockPath<K, T>) {
        for (; i + kBlockSpan <= n; i += kBlockSpan) run_span_plain<K>(acc, i, name);
    }
    if constexpr (!Strided && HasVectorPath<K, T> && (!K::kSpecial || HasVectorSpecial<K, T>)) {
        for (; i + kBlock <= n; i += kBlock) run_full_plain<K>(acc, i, name);
    }
    for (; i + kBlock <= n; i += kBlock) run_block<K, kBlock>(acc, i, kBlock, name);
    constexpr int tail = kTailLanes<T>;
    for (; i < n; i += tail) {
        const long left = n - i;
        run_block<K, tail>(acc, i, int(left < tail ? left : tail), name);
    }
}

template <typename K, typename T, bool Strided>
inline void run(const Access<T, Strided>& acc, int n, const char* name) {
    if constexpr (callout_only<K>())
        run_each<K>(acc, n, name);
    else
        run_blocks<K>(acc, n, name);
}

// Plain unary and binary kernels.
template <typename K>
void unary(int n, const typename K::T* a, typename K::T* r, const char* name) {
    const uint32_t mode = K::kReadsMode ? frame::current_mode() : 0;
    frame::FpGuard guard = enter(K::kReadsMode, mode);
    run<K>(Access<typename K::T, false>{a, a, r, 1, 1, 1, mode}, n, name);
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
    const uint32_t mode = frame::current_mode();
    frame::FpGuard guard = enter(true, mode);
    run<K>(Access<typename K::T, true>{a, a, r, inca, inca, incr, mode}, n, name);
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
// the kernel description given after it. The error names come from the
// generated tables.
#define ORV_UNARY_KERNELS(FN, ...)                                                      \
    extern "C" void orv_kern_##FN(int n, const __VA_ARGS__::T* a, __VA_ARGS__::T* r) {  \
        orv::vec::unary<__VA_ARGS__>(n, a, r, orv::vtm::kName_##FN);                    \
    }                                                                                   \
    extern "C" void orv_kern_##FN##I(int n, const __VA_ARGS__::T* a, int inca,          \
                                     __VA_ARGS__::T* r, int incr) {                     \
        orv::vec::unary_strided<__VA_ARGS__>(                                           \
            orv_vtm_kernel_##FN##_ttab,                                                 \
            orv::frame::forward_slot(orv::vtm::kSharedSlots_##FN, orv::frame::kSlotHA), \
            n, a, inca, r, incr, orv::vtm::kName_##FN##I);                              \
    }

#define ORV_BINARY_KERNELS(FN, ...)                                                      \
    extern "C" void orv_kern_##FN(int n, const __VA_ARGS__::T* a, const __VA_ARGS__::T* b, \
                                  __VA_ARGS__::T* r) {                                   \
        orv::vec::binary<__VA_ARGS__>(n, a, b, r, orv::vtm::kName_##FN);                 \
    }                                                                                    \
    extern "C" void orv_kern_##FN##I(int n, const __VA_ARGS__::T* a, int inca,           \
                                     const __VA_ARGS__::T* b, int incb, __VA_ARGS__::T* r, \
                                     int incr) {                                         \
        orv::vec::binary_strided<__VA_ARGS__>(                                           \
            orv_vtm_kernel_##FN##_ttab,                                                  \
            orv::frame::forward_slot(orv::vtm::kSharedSlots_##FN, orv::frame::kSlotHA),  \
            n, a, inca, b, incb, r, incr, orv::vtm::kName_##FN##I);                      \
    }

// One tier's kernels of FN where the table's slots hold different kernels
// (tier patterns three, la=ha, la=ep in functions.def): the plain kernel
// orv_kern_<FN><SFX> and the strided orv_kern_<FN>I<SFX>, which with unit
// increments calls the plain table's slot SLOT, its own tier's. SFX and SLOT
// are _la 0, _ha 1 or _ep 2, as the generator names the slots.
#define ORV_UNARY_KERNELS_TIER(FN, SFX, SLOT, ...)                                        \
    extern "C" void orv_kern_##FN##SFX(int n, const __VA_ARGS__::T* a, __VA_ARGS__::T* r) { \
        orv::vec::unary<__VA_ARGS__>(n, a, r, orv::vtm::kName_##FN);                      \
    }                                                                                     \
    extern "C" void orv_kern_##FN##I##SFX(int n, const __VA_ARGS__::T* a, int inca,       \
                                          __VA_ARGS__::T* r, int incr) {                  \
        orv::vec::unary_strided<__VA_ARGS__>(orv_vtm_kernel_##FN##_ttab, SLOT, n, a, inca, r, \
                                             incr, orv::vtm::kName_##FN##I);              \
    }

#define ORV_BINARY_KERNELS_TIER(FN, SFX, SLOT, ...)                                          \
    extern "C" void orv_kern_##FN##SFX(int n, const __VA_ARGS__::T* a, const __VA_ARGS__::T* b, \
                                       __VA_ARGS__::T* r) {                                  \
        orv::vec::binary<__VA_ARGS__>(n, a, b, r, orv::vtm::kName_##FN);                     \
    }                                                                                        \
    extern "C" void orv_kern_##FN##I##SFX(int n, const __VA_ARGS__::T* a, int inca,          \
                                          const __VA_ARGS__::T* b, int incb, __VA_ARGS__::T* r, \
                                          int incr) {                                        \
        orv::vec::binary_strided<__VA_ARGS__>(orv_vtm_kernel_##FN##_ttab, SLOT, n, a, inca, b,  \
                                              incb, r, incr, orv::vtm::kName_##FN##I);       \
    }

// ---------------------------------------------------------------------------
// The other shapes of the function list: complex elements as pairs, mixed
// input and result types, two results, a scalar parameter and an integer
// parameter, plain and strided, with the error entries of the element type.
//
// A shaped kernel description S:
//
//   using In, Out;                     float, double, OrvComplex8 or OrvComplex16
//                                      (a pair, real part first); In and Out may
//                                      differ (complex to real, real to complex)
//   static constexpr Shape kShape;     Unary, Binary, TwoResults, ScalarParam,
//                                      IntegerParam
//   using P;                           the parameter's type (ScalarParam: In,
//                                      IntegerParam: int; absent otherwise)
//   static constexpr bool kReadsMode;  plain form reads the mode word
//   static constexpr bool kSpecial;    special and callout exist
//   per element, by shape (y the second input, p the parameter):
//     Out fast(In x) | fast(In x, In y) | fast(In x, P p); TwoResults:
//     void fast(In x, Out* r1, Out* r2)
//     bool special(...)                same arguments as fast, no results
//     int32_t callout(..., Out* r) | TwoResults: callout(In x, Out* r1, Out* r2)
//
// The elements run in blocks of kBlock: the block's inputs are read before
// any result is written (r may equal a where the types agree), the fast path
// runs on the block, then the slow path in ascending element order, then the
// stores. The fast path goes one element at a time, which the compiler may
// vectorise; the results are the same whatever the register width.
//
// Errors go through the strided entry of the element type (increments of 1
// for the plain forms, the same as the plain entry), with the arrays a, a,
// r, r (unary), a, b, r, r (binary), a, a, r1, r2 (two results), and for a
// scalar parameter its value as b with increment 0. Mixed types report through the entry of the input:
// complex to real hands the entry a pair {result, 0} as r, real to complex
// the two parts of the result as r1 and r2 (one argument, two results); the
// pair is local, passed with increment 0, and read back after the entry.
namespace orv::vec {

enum class Shape { Unary, Binary, TwoResults, ScalarParam, IntegerParam };

template <typename E>
struct ElemOf { using S = E; static constexpr bool kComplex = false; };
template <>
struct ElemOf<OrvComplex8> { using S = float; static constexpr bool kComplex = true; };
template <>
struct ElemOf<OrvComplex16> { using S = double; static constexpr bool kComplex = true; };

// The strided error entries by element type, complex pairs included.
inline void report_strided(int32_t s, int32_t i, const float* a, int32_t inca, const float* b,
                           int32_t incb, float* r1, int32_t incr1, float* r2, int32_t incr2,
                           const char* name) {
    frame::error_s_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
inline void report_strided(int32_t s, int32_t i, const double* a, int32_t inca, const double* b,
                           int32_t incb, double* r1, int32_t incr1, double* r2, int32_t incr2,
                           const char* name) {
    frame::error_d_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
inline void report_strided(int32_t s, int32_t i, const OrvComplex8* a, int32_t inca,
                           const OrvComplex8* b, int32_t incb, OrvComplex8* r1, int32_t incr1,
                           OrvComplex8* r2, int32_t incr2, const char* name) {
    frame::error_c_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}
inline void report_strided(int32_t s, int32_t i, const OrvComplex16* a, int32_t inca,
                           const OrvComplex16* b, int32_t incb, OrvComplex16* r1, int32_t incr1,
                           OrvComplex16* r2, int32_t incr2, const char* name) {
    frame::error_z_strided(s, i, a, inca, b, incb, r1, incr1, r2, incr2, name);
}

template <typename S>
struct ShapedArgs {
    using In = typename S::In;
    using Out = typename S::Out;
    static constexpr Shape kShape = S::kShape;
    using P = std::conditional_t<kShape == Shape::ScalarParam, In,
                                 std::conditional_t<kShape == Shape::IntegerParam, int, char>>;
    const In* a;
    const In* b;  // Binary only
    P p{};        // ScalarParam, IntegerParam
    Out* r1;
    Out* r2;  // TwoResults only
    long inca = 1, incb = 1, incr1 = 1, incr2 = 1;
};

template <typename S>
inline typename S::Out shaped_fast(const typename S::In& x, const typename S::In& y,
                                   const ShapedArgs<S>& g) {
    if constexpr (S::kShape == Shape::Binary)
        return S::fast(x, y);
    else if constexpr (S::kShape == Shape::ScalarParam || S::kShape == Shape::IntegerParam)
        return S::fast(x, g.p);
    else
        return S::fast(x);
}
template <typename S>
inline bool shaped_special(const typename S::In& x, const typename S::In& y,
                           const ShapedArgs<S>& g) {
    if constexpr (S::kShape == Shape::Binary)
        return S::special(x, y);
    else if constexpr (S::kShape == Shape::ScalarParam || S::kShape == Shape::IntegerParam)
        return S::special(x, g.p);
    else
        return S::special(x);
}
template <typename S>
inline int32_t shaped_callout(const typename S::In& x, const typename S::In& y,
                              const ShapedArgs<S>& g, typename S::Out* z1, typename S::Out* z2) {
    if constexpr (S::kShape == Shape::TwoResults)
        return S::callout(x, z1, z2);
    else if constexpr (S::kShape == Shape::Binary)
        return S::callout(x, y, z1);
    else if constexpr (S::kShape == Shape::ScalarParam || S::kShape == Shape::IntegerParam)
        return S::callout(x, g.p, z1);
    else
        return S::callout(x, z1);
}

// Stores the results of element i, runs the error entry, and reads them back.
template <typename S>
inline void shaped_report(int32_t status, long i, const ShapedArgs<S>& g, typename S::Out& z1,
                          typename S::Out& z2, const char* name) {
    using In = typename S::In;
    using Out = typename S::Out;
    const int32_t ia = int32_t(g.inca), ir1 = int32_t(g.incr1);
    if constexpr (std::is_same_v<In, Out>) {
        Out& s1 = g.r1[i * g.incr1];
        s1 = z1;
        if constexpr (S::kShape == Shape::TwoResults) {
            Out& s2 = g.r2[i * g.incr2];
            s2 = z2;
            report_strided(status, int32_t(i), g.a, ia, g.a, ia, g.r1, ir1, g.r2,
                           int32_t(g.incr2), name);
            z2 = s2;
        } else if constexpr (S::kShape == Shape::Binary) {
            report_strided(status, int32_t(i), g.a, ia, g.b, int32_t(g.incb), g.r1, ir1, g.r1,
                           ir1, name);
        } else if constexpr (S::kShape == Shape::ScalarParam) {
            report_strided(status, int32_t(i), g.a, ia, &g.p, 0, g.r1, ir1, g.r1, ir1, name);
        } else {
            report_strided(status, int32_t(i), g.a, ia, g.a, ia, g.r1, ir1, g.r1, ir1, name);
        }
        z1 = s1;
    } else if constexpr (ElemOf<In>::kComplex) {
        // Complex to real: the result travels as the pair {result, 0}.
        static_assert(S::kShape == Shape::Unary && std::is_same_v<Out, typename ElemOf<In>::S>);
        g.r1[i * g.incr1] = z1;
        In pair{z1, Out(0)};
        report_strided(status, int32_t(i), g.a, ia, g.a, ia, &pair, 0, &pair, 0, name);
        z1 = pair.re;
    } else {
        // Real to complex: the result's parts are the entry's two results.
        static_assert(S::kShape == Shape::Unary && std::is_same_v<In, typename ElemOf<Out>::S>);
        g.r1[i * g.incr1] = z1;
        In re = z1.re, im = z1.im;
        report_strided(status, int32_t(i), g.a, ia, g.a, ia, &re, 0, &im, 0, name);
        z1 = Out{re, im};
    }
}

template <typename S, bool Strided>
inline void run_shaped(const ShapedArgs<S>& g, int n, const char* name) {
    using In = typename S::In;
    using Out = typename S::Out;
    constexpr bool kTwo = S::kShape == Shape::TwoResults, kBin = S::kShape == Shape::Binary;
    In x[kBlock], y[kBlock];
    Out z1[kBlock], z2[kBlock];
    for (long base = 0; base < n; base += kBlock) {
        const int count = n - base < kBlock ? int(n - base) : kBlock;
        for (int l = 0; l < count; ++l) {
            x[l] = g.a[Strided ? (base + l) * g.inca : base + l];
            if constexpr (kBin) y[l] = g.b[Strided ? (base + l) * g.incb : base + l];
        }
        const In* yl = kBin ? y : x;
        for (int l = 0; l < count; ++l) {
            if constexpr (kTwo)
                S::fast(x[l], &z1[l], &z2[l]);
            else
                z1[l] = shaped_fast<S>(x[l], yl[l], g);
        }
        if constexpr (S::kSpecial) {
            uint32_t mask = 0;
            for (int l = 0; l < count; ++l) mask |= uint32_t(shaped_special<S>(x[l], yl[l], g)) << l;
            while (mask) {
                const int l = std::countr_zero(mask);
                mask &= mask - 1;
                const int32_t status = shaped_callout<S>(x[l], yl[l], g, &z1[l], &z2[l]);
                if (status != 0) shaped_report<S>(status, base + l, g, z1[l], z2[l], name);
            }
        }
        for (int l = 0; l < count; ++l) {
            g.r1[Strided ? (base + l) * g.incr1 : base + l] = z1[l];
            if constexpr (kTwo) g.r2[Strided ? (base + l) * g.incr2 : base + l] = z2[l];
        }
    }
}

// Plain form: the mode is read at entry only if the kernel reads it.
template <typename S>
void shaped(const ShapedArgs<S>& g, int n, const char* name) {
    frame::FpGuard guard = enter(S::kReadsMode);
    run_shaped<S, false>(g, n, name);
}

// Strided form: with unit increments (a scalar parameter has none) the
// plain kernel CALL_PLAIN runs, else the mode is read and the elements are
// gathered and scattered by their increments.
template <typename S, typename CallPlain>
void shaped_strided(const ShapedArgs<S>& g, int n, const char* name, CallPlain call_plain) {
    const bool unit = g.inca == 1 && g.incr1 == 1 &&
                      (S::kShape != Shape::Binary || g.incb == 1) &&
                      (S::kShape != Shape::TwoResults || g.incr2 == 1);
    if (unit) {
        call_plain();
        return;
    }
    frame::FpGuard guard = enter(true);
    run_shaped<S, true>(g, n, name);
}

}  // namespace orv::vec

// Plain and strided kernels of one tier of FN for the shaped descriptions:
// SFX and SLOT as for ORV_UNARY_KERNELS_TIER. The _KERNELS forms without a
// tier are for functions whose slots share one kernel.
#define ORV_SHAPED_SLOT_(FN) \
    orv::frame::forward_slot(orv::vtm::kSharedSlots_##FN, orv::frame::kSlotHA)

// unary_complex, complex_to_real, real_to_complex
#define ORV_UNARY_SHAPED_KERNELS_TIER(FN, SFX, SLOT, ...)                                      \
    extern "C" void orv_kern_##FN##SFX(int n, const __VA_ARGS__::In* a, __VA_ARGS__::Out* r) { \
        orv::vec::shaped<__VA_ARGS__>({a, a, {}, r, r}, n, orv::vtm::kName_##FN);              \
    }                                                                                          \
    extern "C" void orv_kern_##FN##I##SFX(int n, const __VA_ARGS__::In* a, int inca,           \
                                          __VA_ARGS__::Out* r, int incr) {                     \
        orv::vec::shaped_strided<__VA_ARGS__>({a, a, {}, r, r, inca, 1, incr, 1}, n,           \
                                              orv::vtm::kName_##FN##I, [&] {                   \
            orv_vtm_kernel_##FN##_ttab[SLOT](n, a, r);                                         \
        });                                                                                    \
    }
#define ORV_UNARY_SHAPED_KERNELS(FN, ...) \
    ORV_UNARY_SHAPED_KERNELS_TIER(FN, , ORV_SHAPED_SLOT_(FN), __VA_ARGS__)

// binary_complex
#define ORV_BINARY_SHAPED_KERNELS_TIER(FN, SFX, SLOT, ...)                                    \
    extern "C" void orv_kern_##FN##SFX(int n, const __VA_ARGS__::In* a,                       \
                                       const __VA_ARGS__::In* b, __VA_ARGS__::Out* r) {       \
        orv::vec::shaped<__VA_ARGS__>({a, b, {}, r, r}, n, orv::vtm::kName_##FN);             \
    }                                                                                         \
    extern "C" void orv_kern_##FN##I##SFX(int n, const __VA_ARGS__::In* a, int inca,          \
                                          const __VA_ARGS__::In* b, int incb,                 \
                                          __VA_ARGS__::Out* r, int incr) {                    \
        orv::vec::shaped_strided<__VA_ARGS__>({a, b, {}, r, r, inca, incb, incr, 1}, n,       \
                                              orv::vtm::kName_##FN##I, [&] {                  \
            orv_vtm_kernel_##FN##_ttab[SLOT](n, a, b, r);                                     \
        });                                                                                   \
    }
#define ORV_BINARY_SHAPED_KERNELS(FN, ...) \
    ORV_BINARY_SHAPED_KERNELS_TIER(FN, , ORV_SHAPED_SLOT_(FN), __VA_ARGS__)

// two_results
#define ORV_TWO_RESULTS_KERNELS_TIER(FN, SFX, SLOT, ...)                                       \
    extern "C" void orv_kern_##FN##SFX(int n, const __VA_ARGS__::In* a, __VA_ARGS__::Out* r1,  \
                                       __VA_ARGS__::Out* r2) {                                 \
        orv::vec::shaped<__VA_ARGS__>({a, a, {}, r1, r2}, n, orv::vtm::kName_##FN);            \
    }                                                                                          \
    extern "C" void orv_kern_##FN##I##SFX(int n, const __VA_ARGS__::In* a, int inca,           \
                                          __VA_ARGS__::Out* r1, int incr1,                     \
                                          __VA_ARGS__::Out* r2, int incr2) {                   \
        orv::vec::shaped_strided<__VA_ARGS__>({a, a, {}, r1, r2, inca, 1, incr1, incr2}, n,    \
                                              orv::vtm::kName_##FN##I, [&] {                   \
            orv_vtm_kernel_##FN##_ttab[SLOT](n, a, r1, r2);                                    \
        });                                                                                    \
    }
#define ORV_TWO_RESULTS_KERNELS(FN, ...) \
    ORV_TWO_RESULTS_KERNELS_TIER(FN, , ORV_SHAPED_SLOT_(FN), __VA_ARGS__)

// scalar_param (T b after the array) and integer_order (int order)
#define ORV_PARAM_KERNELS_TIER(FN, SFX, SLOT, ...)                                             \
    extern "C" void orv_kern_##FN##SFX(int n, const __VA_ARGS__::In* a,                        \
                                       orv::vec::ShapedArgs<__VA_ARGS__>::P p,                 \
                                       __VA_ARGS__::Out* r) {                                  \
        orv::vec::shaped<__VA_ARGS__>({a, a, p, r, r}, n, orv::vtm::kName_##FN);               \
    }                                                                                          \
    extern "C" void orv_kern_##FN##I##SFX(int n, const __VA_ARGS__::In* a, int inca,           \
                                          orv::vec::ShapedArgs<__VA_ARGS__>::P p,              \
                                          __VA_ARGS__::Out* r, int incr) {                     \
        orv::vec::shaped_strided<__VA_ARGS__>({a, a, p, r, r, inca, 1, incr, 1}, n,            \
                                              orv::vtm::kName_##FN##I, [&] {                   \
            orv_vtm_kernel_##FN##_ttab[SLOT](n, a, p, r);                                      \
        });                                                                                    \
    }
#define ORV_PARAM_KERNELS(FN, ...) ORV_PARAM_KERNELS_TIER(FN, , ORV_SHAPED_SLOT_(FN), __VA_ARGS__)
