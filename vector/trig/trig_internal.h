// Private pieces of the forward trigonometric kernels: the reductions and
// the table evaluation, written once for a scalar double and for a register
// of doubles of the vocabulary's width, so that the callouts compute exactly
// what the block path computes.
//
// Double: x = j pi/256 + r, j = round(|x| 256/pi) mod 512, r as hi + lo.
// Below 2^16 r comes from a four-part Cody-Waite reduction; from 2^16 on
// (and on the other lane of the aligned pair of lanes that holds such a
// lane, except lanes at or below 2^-20, which keep r = |x|) from the Payne-Hanek
// product of the mantissa with the bits of 1/(2 pi) that its exponent
// selects (kReduceD). Then sin(j pi/256 + r) = S + C r + S (cos r - 1) +
// C (sin r - r) with S, C from kSinCosD; S + C r is formed exactly.
//
// Single Sin and Cos: the reduction by pi of single_sin_cos below. Single
// Tan and SinCos: computed in double on widened lanes. Below 10000, n =
// round(|x| 2/pi), r = |x| - n pi/2 (36-bit head, exact), sin r and cos r
// by their series to r^11 and r^12 (truncation below 2^-36 on |r| <= pi/4),
// picked and signed by n mod 4, rounded once to float. From 10000 on, the
// double path above on the widened value, for both lanes of the pair that
// holds such a lane.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "vector/common/bits.h"
#include "vector/common/trig_ops.h"
#include "vector/trig/trig_tables.h"

namespace orv::trig {

namespace ops = orv::vec::trig_ops;

inline constexpr int32_t kOk = 0, kDomain = 1;
inline constexpr double kShiftD = 6755399441055744.0;  // 1.5 * 2^52
inline constexpr double kSplitter = 134217729.0;       // 2^27 + 1
// High words: |x| >= 2^16 takes the Payne-Hanek reduction (double),
// |x| >= 10000 the double path (single).
inline constexpr int32_t kLargeHiD = 0x40EFFFFF;
inline constexpr int32_t kLargeHiS = 0x40C38800;
inline constexpr double kKeepBelow = 9.5367431640625e-07;  // 2^-20

template <typename V>
inline V k(double v) {
    if constexpr (std::is_same_v<V, double>)
        return v;
    else
        return orv::vec::bitops::splat(v);
}

// Row indices: an integer for a scalar, the 64-bit lanes of a register.
template <typename V>
using Idx = std::conditional_t<std::is_same_v<V, double>, int64_t, orv::vec::simd::VI64>;

template <typename V>
struct Reduced {
    V rh, rl;   // r = rh + rl
    Idx<V> j;   // row, in the low 9 bits
};

// 2^e for e in the normal range.
inline double pow2(int e) { return std::bit_cast<double>(uint64_t(e + 1023) << 52); }

// Payne-Hanek reduction of one positive lane a (any finite value; a
// non-finite lane gives some row and r, repaired by the callout).
inline void reduce_large(double a, int64_t* j, double* rh, double* rl) {
    if (!(a > kKeepBelow)) {
        *j = 0, *rh = a, *rl = 0.0;
        return;
    }
    using u128 = unsigned __int128;
    const uint64_t b = std::bit_cast<uint64_t>(a);
    const uint64_t m = (b & ((uint64_t(1) << 52) - 1)) | (uint64_t(1) << 52);
    const uint64_t* w = kReduceD[b >> 52];
    // F = m W mod 2^192: the fraction of a/(2 pi) in 192 bits.
    const u128 p0 = u128(m) * w[2];
    const u128 p1 = u128(m) * w[1];
    const u128 t = (p0 >> 64) + uint64_t(p1);
    const uint64_t f0 = uint64_t(p0), f1 = uint64_t(t);
    uint64_t f2 = uint64_t(p1 >> 64) + uint64_t(t >> 64) + m * w[0];
    // Nearest of the 512 rows: add half a row (bit 182), take bits 183..191.
    f2 += uint64_t(1) << 54;
    *j = int64_t(f2 >> 55);
    // The remainder in rows, G 2^-183, G = g2 2^128 + f1 2^64 + f0, signed.
    const int64_t g2 = int64_t(f2 & ((uint64_t(1) << 55) - 1)) - (int64_t(1) << 54);
    const bool neg = g2 < 0;
    uint64_t m2 = uint64_t(g2), m1 = f1, m0 = f0;
    if (neg) {  // two's complement of the 192-bit value
        m0 = ~m0 + 1;
        const uint64_t c1 = m0 == 0;
        m1 = ~m1 + c1;
        m2 = ~m2 + (c1 && m1 == 0);
    }
    int sh = 0;  // words shifted up
    while (m2 == 0 && sh < 192) m2 = m1, m1 = m0, m0 = 0, sh += 64;
    double hi = 0.0, lo = 0.0;
    if (m2 != 0) {
        const int lz = __builtin_clzll(m2);
        const u128 v = ((u128(m2) << 64 | m1) << lz) | (lz ? u128(m0 >> (64 - lz)) : 0);
        const int e = 64 - lz - sh - 183;  // v 2^e is the remainder in rows
        hi = double(uint64_t(v >> 75)) * pow2(e + 75);
        lo = double(uint64_t((v & ((u128(1) << 75) - 1)) >> 11)) * pow2(e + 11);
    }
    if (neg) hi = -hi, lo = -lo;
    // r = remainder * pi/256, as hi + lo (Dekker's product of the heads).
    const double ph = hi * kPi256Hi;
    const double c1 = kSplitter * hi, hh = c1 - (c1 - hi), hl = hi - hh;
    const double c2 = kSplitter * kPi256Hi, qh = c2 - (c2 - kPi256Hi), ql = kPi256Hi - qh;
    const double pe = ((hh * qh - ph) + hh * ql + hl * qh) + hl * ql;
    const double tail = pe + (hi * kPi256Lo + lo * kPi256Hi);
    *rh = ph + tail;
    *rl = (ph - *rh) + tail;
}

// Reduction of |x| for the double path.
template <typename V>
inline Reduced<V> reduce(V a) {
    const V t = a * k<V>(kInvPi256) + k<V>(kShiftD);
    const V n = t - k<V>(kShiftD);
    const V y = a - n * k<V>(kPi256[0]);  // exact
    const V p1 = n * k<V>(kPi256[1]), p2 = n * k<V>(kPi256[2]);
    const V y1 = y - p1;
    const V b1 = y1 - y;
    const V e1 = (y - (y1 - b1)) - (p1 + b1);  // two-sum of y and -p1
    const V y2 = y1 - p2;
    const V b2 = y2 - y1;
    const V e2 = (y1 - (y2 - b2)) - (p2 + b2);
    const V tl = (e1 + e2) - n * k<V>(kPi256[3]);
    const V rh = y2 + tl;
    Reduced<V> out{rh, (y2 - rh) + tl, {}};
    if constexpr (std::is_same_v<V, double>) {
        out.j = int64_t(std::bit_cast<uint64_t>(t) & 511);
        if (!(a < 65536.0)) reduce_large(a, &out.j, &out.rh, &out.rl);
    } else {
        out.j = ops::ibits(t);
        const uint32_t large = orv::vec::bitops::above(a, kLargeHiD);
        if (__builtin_expect(large != 0, 0)) {
            constexpr int W = ops::kLanesD;
            double av[W], rh2[W], rl2[W];
            int64_t j2[W];
            std::memcpy(av, &a, sizeof a);
            std::memcpy(rh2, &out.rh, sizeof rh2);
            std::memcpy(rl2, &out.rl, sizeof rl2);
            std::memcpy(j2, &out.j, sizeof j2);
            const uint32_t m = ops::pairs_of(large);
            for (int l = 0; l < W; ++l)
                if (m >> l & 1) reduce_large(av[l], &j2[l], &rh2[l], &rl2[l]);
            std::memcpy(&out.rh, rh2, sizeof rh2);
            std::memcpy(&out.rl, rl2, sizeof rl2);
            std::memcpy(&out.j, j2, sizeof j2);
        }
    }
    return out;
}

template <typename V>
inline void row(Idx<V> j, V* sh, V* sl, V* ch, V* cl) {
    if constexpr (std::is_same_v<V, double>) {
        const double* p = kSinCosD[j & 511];
        *sh = p[0], *sl = p[1], *ch = p[2], *cl = p[3];
    } else {
        ops::rows4(kSinCosD, j, 511, sh, sl, ch, cl);
    }
}

template <typename V>
inline Idx<V> add_rows(Idx<V> j, int64_t d) {
    return j + d;
}

template <typename V>
inline V split_hi(V v) {
    const V c = k<V>(kSplitter) * v;
    return c - (c - v);
}

// sin(j pi/256 + r) as hi + lo (lo not normalised).
template <typename V>
inline void sin_parts(const Reduced<V>& red, Idx<V> j, V* hi, V* lo) {
    V sh, sl, ch, cl;
    row<V>(j, &sh, &sl, &ch, &cl);
    const V rh = red.rh;
    const V s = rh * rh;
    const V cm1 = s * (k<V>(-0.5) + s * (k<V>(1.0 / 24) + s * (k<V>(-1.0 / 720) + s * k<V>(1.0 / 40320))));
    const V sm = rh * s * (k<V>(-1.0 / 6) + s * (k<V>(1.0 / 120) + s * k<V>(-1.0 / 5040)));
    const V p = rh * ch;  // exactly p + pe (Dekker)
    const V rhh = split_hi(rh), rhl = rh - rhh, chh = split_hi(ch), chl = ch - chh;
    const V pe = ((rhh * chh - p) + rhh * chl + rhl * chh) + rhl * chl;
    const V h = sh + p;  // exactly h + e (Knuth)
    const V bb = h - sh;
    const V e = (sh - (h - bb)) + (p - bb);
    *hi = h;
    *lo = e + pe + (sl + rh * cl + red.rl * ch + sh * cm1 + ch * sm);
}

template <typename V>
inline V sin_d(V x) {
    const V a = ops::abs(x);
    const Reduced<V> red = reduce(a);
    V h, l;
    sin_parts(red, red.j, &h, &l);
    return ops::xor_sign(h + l, x);
}

template <typename V>
inline V cos_d(V x) {
    const Reduced<V> red = reduce(ops::abs(x));
    V h, l;
    sin_parts(red, add_rows<V>(red.j, 128), &h, &l);
    return h + l;
}

// tan = sin / cos with both as normalised pairs: q = sh/ch, corrected by
// the exact residual sh - q ch.
template <typename V>
inline V tan_d(V x) {
    const Reduced<V> red = reduce(ops::abs(x));
    V h, l, hc, lc;
    sin_parts(red, red.j, &h, &l);
    sin_parts(red, add_rows<V>(red.j, 128), &hc, &lc);
    const V sh = h + l, sl = (h - sh) + l;
    const V ch = hc + lc, cl = (hc - ch) + lc;
    const V q = sh / ch;
    const V p = q * ch;
    const V qh = split_hi(q), qlo = q - qh, chh = split_hi(ch), chl = ch - chh;
    const V pe = ((qh * chh - p) + qh * chl + qlo * chh) + qlo * chl;
    const V rem = ((sh - p) - pe) + (sl - q * cl);
    return ops::xor_sign(q + rem / ch, x);
}

// ---- single, on two widened lanes ----

enum class Fn { Sin, Cos, Tan };

template <Fn F, typename V>
inline V single_path(V x) {
    const V a = ops::abs(x);
    const V t = a * k<V>(kTwoOverPi) + k<V>(kShiftD);
    const V n = t - k<V>(kShiftD);
    const V r = (a - n * k<V>(kPio2Head)) - n * k<V>(kPio2Tail);
    const V s = r * r;
    const V sr = r + r * s * (k<V>(-1.0 / 6) + s * (k<V>(1.0 / 120) + s * (k<V>(-1.0 / 5040) +
                 s * (k<V>(1.0 / 362880) + s * k<V>(-1.0 / 39916800)))));
    const V cr = k<V>(1.0) + s * (k<V>(-0.5) + s * (k<V>(1.0 / 24) + s * (k<V>(-1.0 / 720) +
                 s * (k<V>(1.0 / 40320) + s * (k<V>(-1.0 / 3628800) + s * k<V>(1.0 / 479001600))))));
    V y;
    if constexpr (std::is_same_v<V, double>) {
        const uint64_t q = std::bit_cast<uint64_t>(t);
        if constexpr (F == Fn::Sin)
            y = ops::xor_sign(q & 1 ? cr : sr, q & 2 ? -1.0 : 1.0);
        else if constexpr (F == Fn::Cos)
            y = ops::xor_sign(q & 1 ? sr : cr, (q + 1) & 2 ? -1.0 : 1.0);
        else
            y = q & 1 ? -cr / sr : sr / cr;
        if (!(a < 10000.0)) y = F == Fn::Sin ? sin_d(a) : F == Fn::Cos ? cos_d(a) : tan_d(a);
    } else {
        const orv::vec::simd::VI64 q = ops::ibits(t);
        const V odd = ops::bit_mask(q, 0);
        if constexpr (F == Fn::Sin)
            y = ops::xor_sign(ops::select(odd, cr, sr), ops::bit_to_sign(q, 1));
        else if constexpr (F == Fn::Cos)
            y = ops::xor_sign(ops::select(odd, sr, cr), ops::bit_to_sign(q + 1, 1));
        else
            y = ops::select(odd, cr, sr) / ops::xor_sign(ops::select(odd, sr, cr), odd);
        const uint32_t large = orv::vec::bitops::above(a, kLargeHiS);
        if (__builtin_expect(large != 0, 0))
            y = ops::select_lanes(ops::pairs_of(large),
                                  F == Fn::Sin ? sin_d(a) : F == Fn::Cos ? cos_d(a) : tan_d(a), y);
    }
    return F == Fn::Cos ? y : ops::xor_sign(y, x);
}

// Single Sin and Cos, the block path's own form: n = round(|x| / pi) in
// float through the shifter 1.5 2^23 (Cos: round(|x| / pi + 1/2), the
// quarter turn), r = |x| - n pi (Cos: (n - 1/2) pi) in double with a
// two-part pi, then the odd polynomial of degree 9 in r, rounded once to
// float and negated for odd n; Sin takes the sign of x. Worst error 0.61
// ulp over every float below 10000. From 10000 on, the double path on the
// widened value, for both lanes of the pair that holds such a lane; the
// scalar form (the callouts) computes the same.
inline constexpr float kInvPiF = 0.31830987f, kShiftF = 12582912.0f;

template <typename V>
inline V sin_pi_poly(V r) {
    const V s = r * r;
    return r + r * s * (k<V>(-0.1666665955042783) + s * (k<V>(0.00833306624608569) +
                        s * (k<V>(-0.00019809602902257352) + s * k<V>(2.605780638722852e-06))));
}

template <Fn F, typename V>
inline V sin_pi_reduced(V a, V n) {
    const V m = F == Fn::Cos ? n - k<V>(0.5) : n;
    return sin_pi_poly<V>((a - m * k<V>(kPiHead)) - m * k<V>(kPiTail));
}

template <Fn F>
inline float single_sin_cos(float x) {
    const float a = __builtin_fabsf(x);
    const float t = F == Fn::Cos ? (a * kInvPiF + 0.5f) + kShiftF : a * kInvPiF + kShiftF;
    float y = float(sin_pi_reduced<F>(double(a), double(t - kShiftF)));
    if (std::bit_cast<uint32_t>(t) & 1) y = -y;
    if (!(a < 10000.0f)) y = float(F == Fn::Sin ? sin_d(double(a)) : cos_d(double(a)));
    return F == Fn::Cos ? y : std::bit_cast<float>(std::bit_cast<uint32_t>(y) ^ (std::bit_cast<uint32_t>(x) & 0x80000000u));
}

template <Fn F>
inline orv::vec::simd::VF single_sin_cos(orv::vec::simd::VF x) {
    namespace simd = orv::vec::simd;
    using simd::VF, simd::VD, simd::VU32;
    const VU32 sign = simd::as<VU32>(x) & 0x80000000u;
    const VF a = simd::as<VF>(simd::as<VU32>(x) ^ sign);
    const VF sh = simd::fill<VF>(kShiftF), ip = simd::fill<VF>(kInvPiF);
    const VF t = F == Fn::Cos ? (a * ip + simd::fill<VF>(0.5f)) + sh : a * ip + sh;
    const VF n = t - sh;
    // -0 in the lanes of odd n, +0 in the others: widened, a sign to apply.
    const VF odd = simd::as<VF>(simd::as<VU32>(t) << 31);
    const VD alo = simd::widen_lo(a), ahi = simd::widen_hi(a);
    VD lo = ops::xor_sign(sin_pi_reduced<F>(alo, simd::widen_lo(n)), simd::widen_lo(odd));
    VD hi = ops::xor_sign(sin_pi_reduced<F>(ahi, simd::widen_hi(n)), simd::widen_hi(odd));
    const uint32_t large = orv::vec::bitops::above(a, 0x461C3FFF);  // a >= 10000
    if (__builtin_expect(large != 0, 0)) {
        constexpr int kHalf = int(sizeof(VD) / sizeof(double));
        const auto on_large = [](VD v) { return F == Fn::Sin ? sin_d(v) : cos_d(v); };
        lo = ops::select_lanes(ops::pairs_of(large & ((1u << kHalf) - 1)), on_large(alo), lo);
        hi = ops::select_lanes(ops::pairs_of(large >> kHalf), on_large(ahi), hi);
    }
    const VF y = simd::narrow(lo, hi);
    return F == Fn::Cos ? y : simd::as<VF>(simd::as<VU32>(y) ^ sign);
}

}  // namespace orv::trig
