// Sqrt and InvSqrt. The block computes every lane; lanes outside the band
// of positive normal numbers (zero, negative, denormal, infinity, NaN) go to
// the callout, which also reports the domain and pole cases.
//
// Square root: the SSE2 square-root instruction is correctly rounded, so it
// is both the block step and the core of the callout.
// Reciprocal square root: the exponent is halved by bit manipulation, the
// reciprocal square root of the mantissa in [1, 4) is taken and then
// corrected once by its exact residual 1 - m*y*y, computed with Dekker's
// splitting (2^27 + 1); the single kernel works in double.
#include <cmath>
#include <limits>

#include "vector/block_driver.h"
#include "vector/common/dd.h"

namespace {

using orv::vec::bits;
using orv::vec::Bits;
using orv::vec::Fmt;
using orv::vec::from_bits;

template <typename T>
inline T default_nan() { return from_bits<T>(sizeof(T) == 4 ? Bits<T>(0x7FC00000u) : Bits<T>(0x7FF8000000000000ull)); }

// Outside the positive normal band: zero, negative, denormal, inf, NaN.
template <typename T>
inline bool not_positive_normal(T x) {
    return Bits<T>(bits(x) - Fmt<T>::kMinNormal) >= Bits<T>(Fmt<T>::kExpMask - Fmt<T>::kMinNormal);
}

// The same test on a register: bits (single) or high word (double).
template <typename V>
inline V positive_normal_outside(V x) {
    if constexpr (sizeof(x[0]) == 4)
        return orv::vec::simd::outside(x, 0x00800000u, 0x7F000000u);
    else
        return orv::vec::simd::outside(x, 0x00100000u, 0x7FE00000u);
}

using orv::vec::dd::two_prod;
using TwoProd = orv::vec::dd::Dd;

// Sign of M*K^2 - 2^160, in 192-bit integer arithmetic.
inline int compare_scaled_square(uint64_t M, uint64_t K) {
    using u128 = unsigned __int128;
    const u128 k2 = u128(K) * K;
    const u128 lo = u128(M) * uint64_t(k2), hi = u128(M) * uint64_t(k2 >> 64);
    const u128 top = hi + (lo >> 64), t = u128(1) << 96;
    if (top != t) return top > t ? 1 : -1;
    return uint64_t(lo) != 0;
}

// Correctly rounded 1/sqrt(m) for m in [1, 4) from an estimate y in
// (0.5, 1] within one ulp: each neighbouring midpoint K*2^-54 is compared
// with 1/sqrt(m) exactly, as the integer M*K^2 against 2^160 (m = M*2^-52).
inline double round_inv_sqrt_exact(double m, double y) {
    if (m == 1.0) return 1.0;
    const uint64_t M = uint64_t(m * 0x1p52), Y = uint64_t(y * 0x1p53);
    if (compare_scaled_square(M, 2 * Y + 1) < 0) return y + 0x1p-53;
    if (compare_scaled_square(M, 2 * Y - 1) > 0) return y - 0x1p-53;
    return y;
}

// 1/sqrt(x) for a positive normal double: within a hair of half an ulp,
// or correctly rounded when Exact.
template <bool Exact = false>
inline double inv_sqrt_normal(double x) {
    const uint64_t b = bits(x);
    const uint64_t e = b >> 52;                     // 1 .. 2046
    const uint64_t k = (e + 1023) >> 1;             // floor((e - 1023) / 2) + 1023
    const uint64_t me = e + 2046 - 2 * k;           // 1023 or 1024: m in [1, 4)
    const double m = from_bits<double>((b & Fmt<double>::kFracMask) | (me << 52));
    const double scale = from_bits<double>((2046 - k) << 52);  // 2^-(k-1023)
    const double y0 = 1.0 / std::sqrt(m);
    const TwoProd yy = two_prod(y0, y0);
    const TwoProd q = two_prod(m, yy.hi);
    const double r = ((1.0 - q.hi) - q.lo) - m * yy.lo;
    const double y = y0 + y0 * (0.5 * r);
    if constexpr (Exact)
        return round_inv_sqrt_exact(m, y) * scale;
    else
        return y * scale;
}

// inv_sqrt_normal on a register: the same steps with integer and double
// arithmetic lane by lane.
inline orv::vec::simd::VD inv_sqrt_normal_v(orv::vec::simd::VD x) {
    namespace simd = orv::vec::simd;
    using simd::as;
    using simd::VD;
    using simd::VI64;
    const VI64 b = as<VI64>(x);
    const VI64 e = as<VI64>(as<simd::VU64>(b) >> 52);
    const VI64 k = as<VI64>(as<simd::VU64>(e + 1023) >> 1);
    const VI64 me = (e + 2046) - (k + k);
    const VD m = as<VD>((b & int64_t(Fmt<double>::kFracMask)) | (me << 52));
    const VD scale = as<VD>((2046 - k) << 52);
    const VD one = simd::fill<VD>(1.0);
    const VD y0 = one / simd::sqrt(m);
    // y0*y0 = p + pe exactly, then m*p = q + qe exactly (Dekker).
    VD pe, qe;
    const VD p = orv::vec::dd::two_prod(y0, y0, &pe);
    const VD q = orv::vec::dd::two_prod(m, p, &qe);
    const VD r = ((one - q) - qe) - m * pe;
    const VD y = y0 + y0 * (simd::fill<VD>(0.5) * r);
    return y * scale;
}

template <typename E>
struct SqrtK {
    using T = E;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    using V = typename orv::vec::simd::Reg<T>::V;
    static V fastv(V x) { return orv::vec::simd::sqrt(x); }
    static bool special(T x) { return not_positive_normal(x); }
    static V specialv(V x) { return positive_normal_outside(x); }
    static int32_t callout(T x, T* r) {
        if (orv::vec::is_inf_or_nan_bits(x)) {
            if (x < 0) {
                *r = default_nan<T>();
                return VtmStatusDomain;
            }
            *r = x + x;
            return 0;
        }
        if (x == 0) {  // also a denormal when denormals are read as zero
            *r = from_bits<T>(bits(x) & Fmt<T>::kSign);
            return 0;
        }
        if (x < 0) {
            *r = default_nan<T>();
            return VtmStatusDomain;
        }
        if constexpr (sizeof(T) == 4) {
            // Rounding the double root to single is exact-safe: 53 >= 2*24 + 2.
            *r = T(std::sqrt(double(x)));
        } else {
            const double p200 = 1.6069380442589903e+60, m100 = 7.888609052210118e-31;
            *r = (bits(x) & Fmt<double>::kExpMask) == 0 ? std::sqrt(x * p200) * m100
                                                         : std::sqrt(x);
        }
        return 0;
    }
};

// Correctly rounded single 1/sqrt(x) for a positive finite float: the double
// estimate is rounded, then compared with the neighbouring midpoints exactly.
inline float inv_sqrt_single_cr(float xf) {
    const double x = xf;
    float y = float(1.0 / std::sqrt(x));
    for (int dir = -1; dir <= 1; dir += 2) {
        const float nb = std::nextafter(y, dir > 0 ? std::numeric_limits<float>::infinity() : 0.0f);
        const double mid = 0.5 * (double(y) + double(nb));  // 25 bits: exact
        const double mm = mid * mid;                         // 50 bits: exact
        const TwoProd p = two_prod(x, mm);                   // x*mid^2 exactly
        const double d = (1.0 - p.hi) - p.lo;                // sign of 1 - x*mid^2
        // Above the upper midpoint (d > 0 means 1/sqrt(x) > mid) or below the lower.
        if ((dir > 0 && d > 0) || (dir < 0 && d < 0)) y = nb;
    }
    return y;
}

// Square root of the double lanes of one float register.
inline orv::vec::simd::VDW wide_sqrt(orv::vec::simd::VDW w) {
    namespace simd = orv::vec::simd;
    simd::VD h[2];
    __builtin_memcpy(h, &w, sizeof w);
    h[0] = simd::sqrt(h[0]);
    h[1] = simd::sqrt(h[1]);
    __builtin_memcpy(&w, h, sizeof w);
    return w;
}

template <typename E>
struct InvSqrtK {
    using T = E;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    using V = typename orv::vec::simd::Reg<T>::V;
    static V fastv(V x) {
        if constexpr (sizeof(T) == 4) {
            namespace simd = orv::vec::simd;
            using W = simd::VDW;
            return simd::narrow(simd::fill<W>(1.0) / wide_sqrt(simd::widen(x)));
        } else {
            return inv_sqrt_normal_v(x);
        }
    }
    static bool special(T x) { return not_positive_normal(x); }
    static V specialv(V x) { return positive_normal_outside(x); }
    static int32_t callout(T x, T* r) {
        if (orv::vec::is_inf_or_nan_bits(x)) {
            if (x < 0) {
                *r = default_nan<T>();
                return VtmStatusDomain;
            }
            *r = orv::vec::is_nan_bits(x) ? x + x : T(0);
            return 0;
        }
        if (x == 0) {
            *r = std::signbit(x) ? -std::numeric_limits<T>::infinity()
                                 : std::numeric_limits<T>::infinity();
            return VtmStatusPole;
        }
        if (x < 0) {
            *r = default_nan<T>();
            return VtmStatusDomain;
        }
        if constexpr (sizeof(T) == 4) {
            *r = inv_sqrt_single_cr(x);
        } else {
            const double p200 = 1.6069380442589903e+60, p100 = 1.2676506002282294e+30;
            *r = (bits(x) & Fmt<double>::kExpMask) == 0 ? inv_sqrt_normal<true>(x * p200) * p100
                                                         : inv_sqrt_normal<true>(x);
        }
        return 0;
    }
};

}  // namespace

ORV_UNARY_KERNELS(sSqrt, SqrtK<float>)
ORV_UNARY_KERNELS(dSqrt, SqrtK<double>)
ORV_UNARY_KERNELS(sInvSqrt, InvSqrtK<float>)
ORV_UNARY_KERNELS(dInvSqrt, InvSqrtK<double>)
