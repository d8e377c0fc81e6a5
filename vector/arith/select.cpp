// Selection and sign kernels (Fmax, Fmin, MaxMag, MinMag, CopySign, Fdim,
// Abs), Sqr, NextAfter, and the single Add, Sub and Mul.
//
// The selectors compare in the block; lanes where an argument is a NaN go to
// a repair step in which the other argument wins and two NaNs give the
// second one quieted. Equal arguments are merged bitwise so that the maximum
// of +0 and -0 is +0 and the minimum is -0, whatever the order.
#include <cmath>

#include "vector/block_driver.h"

namespace {

using orv::vec::bits;
using orv::vec::Bits;
using orv::vec::Fmt;
using orv::vec::from_bits;
using orv::vec::is_nan_bits;

template <typename E, bool ReadsMode = true>
struct Base {
    using T = E;
    static constexpr bool kReadsMode = ReadsMode;
    static constexpr bool kSpecial = false;
    static constexpr bool kDivisorTest = false;
};

template <typename T>
inline T fmax_nonan(T a, T b) {
    const T both = from_bits<T>(bits(a) & bits(b));
    return a == b ? both : (a > b ? a : b);
}
template <typename T>
inline T fmin_nonan(T a, T b) {
    const T both = from_bits<T>(bits(a) | bits(b));
    return a == b ? both : (a < b ? a : b);
}
template <typename T>
inline T absval(T x) { return from_bits<T>(bits(x) & Fmt<T>::kAbs); }

// Shared repair of the selectors for a lane holding an infinity or a NaN.
template <typename T>
inline T nan_repair(T a, T b, T fast) {
    T r = fast;
    if (is_nan_bits(b)) r = orv::vec::quieted(a);
    if (is_nan_bits(a)) r = orv::vec::quieted(b);
    return r;
}

template <typename E, int Which>  // 0 Fmax, 1 Fmin, 2 MaxMag, 3 MinMag
struct SelectK : Base<E> {
    using T = E;
    static constexpr int kArity = 2;
    static constexpr bool kSpecial = true;
    static T fast(T a, T b) {
        if constexpr (Which == 0) return fmax_nonan(a, b);
        if constexpr (Which == 1) return fmin_nonan(a, b);
        const T aa = absval(a), ab = absval(b);
        if constexpr (Which == 2) return aa > ab ? a : (aa < ab ? b : fmax_nonan(a, b));
        return aa < ab ? a : (aa > ab ? b : fmin_nonan(a, b));
    }
    static bool special(T a, T b) {
        return orv::vec::is_inf_or_nan_bits(a) | orv::vec::is_inf_or_nan_bits(b);
    }
    static int32_t callout(T a, T b, T* r) {
        *r = nan_repair(a, b, fast(a, b));
        return 0;
    }
};

template <typename E>
struct FdimK : Base<E> {
    using T = E;
    static constexpr int kArity = 2;
    static constexpr bool kSpecial = true;
    static T fast(T a, T b) { return a > b ? a - b : T(0); }
    static bool special(T a, T b) { return is_nan_bits(a) | is_nan_bits(b); }
    static int32_t callout(T a, T b, T* r) {
        *r = is_nan_bits(b) ? orv::vec::quieted(b) : orv::vec::quieted(a);
        return 0;
    }
};

template <typename E>
struct CopySignK : Base<E> {
    using T = E;
    static constexpr int kArity = 2;
    static T fast(T a, T b) {
        return from_bits<T>((bits(a) & Fmt<T>::kAbs) | (bits(b) & Fmt<T>::kSign));
    }
};

template <typename E>
struct AbsK : Base<E, false> {
    using T = E;
    static constexpr int kArity = 1;
    static T fast(T x) { return absval(x); }
};

template <typename E>
struct SqrK : Base<E, false> {
    using T = E;
    static constexpr int kArity = 1;
    static T fast(T x) { return x * x; }
};

// With both arguments NaN, the first one's NaN is the result.
template <int Which>  // 0 Add, 1 Sub, 2 Mul
struct SingleArithK : Base<float> {
    using T = float;
    using V = orv::vec::simd::VF;
    static constexpr int kArity = 2;
    static T fast(T a, T b) {
        return orv::vec::simd::first_nan(a, Which == 0 ? a + b : Which == 1 ? a - b : a * b);
    }
    static V fastv(V a, V b) {
        return orv::vec::simd::first_nan(a, Which == 0 ? a + b : Which == 1 ? a - b : a * b);
    }
};

// NextAfter: the block steps the bit pattern of x by one toward y. Lanes
// with a NaN, equal arguments, a zero x, or a result that is denormal, zero
// or infinite go to the callout, which also reports underflow and overflow.
template <typename E>
struct NextAfterK : Base<E> {
    using T = E;
    static constexpr int kArity = 2;
    static constexpr bool kSpecial = true;
    static Bits<T> step(T x, T y) {
        const Bits<T> bx = bits(x), by = bits(y);
        const Bits<T> ax = bx & Fmt<T>::kAbs, ay = by & Fmt<T>::kAbs;
        const bool up = ((bx ^ by) & Fmt<T>::kSign) == 0 && ay > ax;
        return up ? bx + 1 : bx - 1;
    }
    static T fast(T x, T y) { return from_bits<T>(step(x, y)); }
    static bool special(T x, T y) {
        const Bits<T> bx = bits(x), by = bits(y);
        const Bits<T> ax = bx & Fmt<T>::kAbs, ay = by & Fmt<T>::kAbs;
        const Bits<T> e = step(x, y) & Fmt<T>::kExpMask;
        return (ax > Fmt<T>::kExpMask) | (ay > Fmt<T>::kExpMask) | (bx == by) | (ax == 0) |
               (e == 0) | (e == Fmt<T>::kExpMask);
    }
    static int32_t callout(T x, T y, T* r) {
        if (is_nan_bits(x) || is_nan_bits(y)) {
            // y's NaN when both are NaN, spelled out so no operand order decides.
            *r = is_nan_bits(y) ? orv::vec::quieted(y) : orv::vec::quieted(x);
            return 0;
        }
        if (x == y) {
            *r = y;
            return 0;
        }
        if (x == 0) {
            *r = from_bits<T>(Bits<T>(1) | (bits(y) & Fmt<T>::kSign));
            return VtmStatusUnderflow;
        }
        const Bits<T> b = step(x, y);
        *r = from_bits<T>(b);
        const Bits<T> e = b & Fmt<T>::kExpMask;
        if (e == 0) return VtmStatusUnderflow;
        if (e == Fmt<T>::kExpMask) return VtmStatusOverflow;
        return 0;
    }
};

}  // namespace

ORV_BINARY_KERNELS(sFmax, SelectK<float, 0>)
ORV_BINARY_KERNELS(dFmax, SelectK<double, 0>)
ORV_BINARY_KERNELS(sFmin, SelectK<float, 1>)
ORV_BINARY_KERNELS(dFmin, SelectK<double, 1>)
ORV_BINARY_KERNELS(sMaxMag, SelectK<float, 2>)
ORV_BINARY_KERNELS(dMaxMag, SelectK<double, 2>)
ORV_BINARY_KERNELS(sMinMag, SelectK<float, 3>)
ORV_BINARY_KERNELS(dMinMag, SelectK<double, 3>)
ORV_BINARY_KERNELS(sFdim, FdimK<float>)
ORV_BINARY_KERNELS(dFdim, FdimK<double>)
ORV_BINARY_KERNELS(sCopySign, CopySignK<float>)
ORV_BINARY_KERNELS(dCopySign, CopySignK<double>)
ORV_BINARY_KERNELS(sNextAfter, NextAfterK<float>)
ORV_BINARY_KERNELS(dNextAfter, NextAfterK<double>)
ORV_BINARY_KERNELS(sAdd, SingleArithK<0>)
ORV_BINARY_KERNELS(sSub, SingleArithK<1>)
ORV_BINARY_KERNELS(sMul, SingleArithK<2>)
ORV_UNARY_KERNELS(sAbs, AbsK<float>)
ORV_UNARY_KERNELS(dAbs, AbsK<double>)
ORV_UNARY_KERNELS(sSqr, SqrK<float>)
ORV_UNARY_KERNELS(dSqr, SqrK<double>)
