// Fmod and Remainder. The block passes lanes whose result is x itself
// (|x| below |y|, or below |y|/2 for Remainder); all others go to a callout
// that divides the integer significands exactly, a chunk of bits at a time,
// so the result is exact.
#include <cmath>

#include "vector/block_driver.h"

namespace {

using orv::vec::bits;
using orv::vec::Bits;
using orv::vec::Fmt;
using orv::vec::from_bits;
using orv::vec::is_nan_bits;

template <typename T>
inline T default_nan() {
    return from_bits<T>(sizeof(T) == 4 ? Bits<T>(0x7FC00000u) : Bits<T>(0x7FF8000000000000ull));
}

// Integer significand m and exponent e of a finite non-zero |x| = m * 2^e.
template <typename T>
inline void decompose(Bits<T> ax, uint64_t& m, int& e) {
    const int be = int(ax >> Fmt<T>::kMant);
    m = ax & Fmt<T>::kFracMask;
    if (be != 0) m |= uint64_t(1) << Fmt<T>::kMant;
    e = (be ? be : 1) - Fmt<T>::kBias - Fmt<T>::kMant;
}

// |x| mod |y| for finite x, non-zero finite y with |x| >= |y|, as the
// significand of the remainder (scaled by 2^ey) and the quotient's last bit.
template <typename T>
inline uint64_t long_division(Bits<T> ax, Bits<T> ay, int& ey, unsigned& odd) {
    uint64_t mx, my;
    int ex;
    decompose<T>(ax, mx, ex);
    decompose<T>(ay, my, ey);
    constexpr int kChunk = 63 - (Fmt<T>::kMant + 1);
    uint64_t rem = mx % my;
    uint64_t q = mx / my;
    for (int d = ex - ey; d > 0;) {
        const int k = d < kChunk ? d : kChunk;
        const uint64_t v = rem << k;
        q = v / my;
        rem = v % my;
        d -= k;
    }
    odd = unsigned(q & 1);
    return rem;
}

template <typename T>
inline T scaled(uint64_t m, int e) { return std::ldexp(T(m), e); }

template <typename E>
struct FmodK {
    using T = E;
    static constexpr int kArity = 2;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static T fast(T x, T) { return x; }
    static bool special(T x, T y) {
        const Bits<T> ax = bits(x) & Fmt<T>::kAbs, ay = bits(y) & Fmt<T>::kAbs;
        return !((ax < ay) & (ay < Fmt<T>::kExpMask));
    }
    static int32_t callout(T x, T y, T* r) {
        const Bits<T> ax = bits(x) & Fmt<T>::kAbs, ay = bits(y) & Fmt<T>::kAbs;
        const Bits<T> s = bits(x) & Fmt<T>::kSign;
        if (is_nan_bits(x) || is_nan_bits(y)) {
            *r = x * y;
            return 0;
        }
        if (ay == 0 || ax == Fmt<T>::kExpMask) {
            *r = default_nan<T>();
            return VtmStatusPole;
        }
        if (ay == Fmt<T>::kExpMask || ax < ay) {
            *r = x;
            return 0;
        }
        int ey;
        unsigned odd;
        const uint64_t rem = long_division<T>(ax, ay, ey, odd);
        *r = from_bits<T>(bits(scaled<T>(rem, ey)) | s);
        return 0;
    }
};

template <typename E>
struct RemainderK {
    using T = E;
    static constexpr int kArity = 2;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static T fast(T x, T) { return x; }
    static bool special(T x, T y) {
        // |x| below |y|/2: doubling by the exponent field only ever overestimates.
        const Bits<T> ax = bits(x) & Fmt<T>::kAbs, ay = bits(y) & Fmt<T>::kAbs;
        return !((ax + Fmt<T>::kMinNormal < ay) & (ay < Fmt<T>::kExpMask));
    }
    static int32_t callout(T x, T y, T* r) {
        const Bits<T> ax = bits(x) & Fmt<T>::kAbs, ay = bits(y) & Fmt<T>::kAbs;
        const Bits<T> s = bits(x) & Fmt<T>::kSign;
        if (is_nan_bits(x)) {
            *r = x * T(1.7);
            return 0;
        }
        if (is_nan_bits(y)) {
            *r = y * T(1.7);
            return 0;
        }
        if (ay == 0) {
            *r = default_nan<T>();
            return VtmStatusDomain;
        }
        if (ax == Fmt<T>::kExpMask) {
            *r = default_nan<T>();
            return 0;
        }
        if (ay == Fmt<T>::kExpMask) {
            *r = x;
            return 0;
        }
        T rem = from_bits<T>(ax);
        unsigned odd = 0;
        if (ax >= ay) {
            int ey;
            const uint64_t m = long_division<T>(ax, ay, ey, odd);
            rem = scaled<T>(m, ey);
        }
        // Round the quotient to nearest, halves to even: rem and |y| - rem are exact.
        const T fy = from_bits<T>(ay);
        const T other = fy - rem;
        if (rem > other || (rem == other && odd)) rem = -other;
        *r = from_bits<T>(bits(rem) ^ s);
        return 0;
    }
};

}  // namespace

ORV_BINARY_KERNELS(sFmod, FmodK<float>)
ORV_BINARY_KERNELS(dFmod, FmodK<double>)
ORV_BINARY_KERNELS(sRemainder, RemainderK<float>)
ORV_BINARY_KERNELS(dRemainder, RemainderK<double>)
