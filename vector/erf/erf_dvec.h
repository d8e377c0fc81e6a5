// Double Erf and Erfc on whole registers, without double-double products.
//
// For x >= 1/2, erfc(x) = exp(-x^2 + L(x)) with L = ln erfcx read from the
// rows of erf_lnrows.h (16 a binade, s = x - c exact, L = c0 + c0lo + s Q(s)),
// and the whole exponent reduced at once by Tang's method with the 64 rows
// of 2^(i/64):
//   -x^2 = -z^2 + (z - x)(z + x), z = x cut to 21 bits, so that z^2 is exact
//     and the second term below 2^-9;
//   k = round((-z^2 + L) 64/ln 2); -z^2 and k ln2/64_hi (36 bits, |k| < 2^17)
//     are multiples of 2^-42, so their difference (below 8) is exact, and so
//     is adding c0 to it (Sterbenz: the two are within a factor 2);
//   r = that + ((c0lo + s Q(s)) + (z - x)(z + x) + k ln2/64_lo), where only
//     terms below 1/16 are rounded (relative 2^-57 at most);
//   erfc(x) = 2^(k >> 6) (T + (Tlo + T (e^r - 1))), T + Tlo = 2^((k & 63)/64).
// erf(x) = 1 - erfc(x) and erfc(-x) = 2 - erfc(x) subtract the scaled T first
// (the error of that subtraction kept) and the rest after, each rounded once
// at the end. Below 1/2, erf(x) = x + x P(x^2) and erfc(x) = 1 - erf(x) as in
// erf_vec.h. A path none of a register's lanes takes is skipped.
#pragma once

#include "vector/erf/erf_lnrows.h"
#include "vector/erf/erf_vec.h"

namespace orv::erfk::v {

using simd::VU64;

// erfc(x) = (hi + lo) 2^n for 1/2 <= x <= 26.5, hi and lo unscaled; p2 = 2^n.
struct ErfcLn {
    VD hi, lo, p2;
};

inline ErfcLn erfc_ln(VD x) {
    using namespace orv::explog;
    const VI64 b = as<VI64>(x);
    const VI64 j = as<VI64>(as<VU64>(b) >> 48) - 0x3FE0;
    const VD c = as<VD>((b & ~int64_t(0xFFFFFFFFFFFF)) | int64_t(0x800000000000));
    const VD s = x - c;
    VD w[kLnRowWidth];
    orv::vec::erfops::rows_of<kLnRowWidth, kLnRowWidth / 4>(&kErfcLnRows[0][0], j, w);
    static_assert(kLnRowTerms == 10);
    // Q(s) by Estrin's scheme (w[2] the highest coefficient, w[11] the constant).
    const VD s2 = s * s;
    const VD s4 = s2 * s2;
    const VD q01 = (w[10] * s + w[11]) + s2 * (w[8] * s + w[9]);
    const VD q23 = (w[6] * s + w[7]) + s2 * (w[4] * s + w[5]);
    const VD q4 = w[2] * s + w[3];
    const VD t = s * ((q01 + s4 * q23) + (s4 * s4) * q4);
    const VD z = as<VD>(b & ~int64_t(0xFFFFFFFF));
    const VD a = -(z * z);
    const VD d = (z - x) * (z + x);
    // The shifter carries 1023 * 64, so that its low bits hold k + 65472 >= 0:
    // (k >> 6) + 1023 and k & 63 are plain bit fields.
    const VD sh = splat(kShiftD + 65472.0);
    const VD kt = (a + (w[0] + t)) * splat(kInvLn2x64) + sh;
    const VD k = kt - sh;
    const VD r = ((a + k * splat(kNegLn2by64Hi)) + w[0]) + (((w[1] + t) + d) + k * splat(kNegLn2by64Lo));
    // e^r - 1 = r + r^2 (1/2 + r E3 + r^2 (E4 + r E5 + r^2 E6)).
    const VD r2 = r * r;
    const VD e = r + r2 * ((splat(0.5) + r * splat(kE3)) +
                           r2 * ((splat(kE4) + r * splat(kE5)) + r2 * splat(kE6)));
    VD th, tl;
    orv::vec::gather::pairs_of<kExp64D>(kt, 63, &th, &tl);
    const VU64 u = as<VU64>(kt);
    return {th, tl + th * e, as<VD>((u >> 6) << 52)};
}

// c - erfc(x) rounded once, for erfc(x) below 1/2 and c in {1, 2}.
inline VD from_const_ln(double c, const ErfcLn& m) {
    const VD vh = m.hi * m.p2, vl = m.lo * m.p2;
    const VD sh = splat(c) - vh;
    return sh + (((splat(c) - sh) - vh) - vl);
}

// Where the rows' use ends: erfc(26.5) is near 2^-1019, still normal.
inline constexpr double kLnEnd = 26.5;

// The two paths of Erf and Erfc on whole registers: about zero (|x| < 1/2)
// and through the rows (the rest, x clamped into the rows' range).
struct ErfPaths {
    static VD big(VD x) {
        const ErfcLn m = erfc_ln(clamp(abs_of(x), 0.5, 6.0));
        return simd::bor(from_const_ln(1.0, m), sign_of(x));
    }
    static VD small(VD x) { return x + erf_small_tail(x); }
};
struct ErfcPaths {
    static VD big(VD x) {
        const ErfcLn m = erfc_ln(clamp(abs_of(x), 0.5, kLnEnd));
        return simd::select(simd::negative(x), from_const_ln(2.0, m), (m.hi + m.lo) * m.p2);
    }
    static VD small(VD x) {
        VD sl;
        return erfc_small(x, splat(0.0), &sl) + sl;
    }
};

// Set bits of a lane mask (at most 8 bits; the baseline has no popcnt
// instruction, and the library call costs more than this).
inline int count8(uint32_t m) {
    m = m - ((m >> 1) & 0x55);
    m = (m & 0x33) + ((m >> 2) & 0x33);
    return int((m + (m >> 4)) & 0x0F);
}

// One register: each path computed only when a lane needs it.
template <typename P>
[[gnu::flatten]] inline VD two_paths(VD x) {
    const VD small = simd::lt(abs_of(x), splat(0.5));
    const uint32_t sm = simd::lanes(small);
    if (sm == all_lanes()) return P::small(x);
    const VD big = P::big(x);
    if (!sm) return big;
    return simd::select(small, P::small(simd::select(small, x, splat(0.0))), big);
}

// n elements (n a multiple of the register width, at most vec::kBlockSpan;
// out may be in): the lanes are sorted by path (compressed into two runs),
// each path runs on full registers of its own lanes (two registers a step
// through the rows, so that their chains overlap), and the results are
// expanded back to their lanes. Each lane's operations are those of
// two_paths.
template <typename P>
[[gnu::flatten]] inline void two_paths_block(const double* in, double* out, int n) {
    namespace eo = orv::vec::erfops;
    using R = simd::Reg<double>;
    constexpr int kW = R::kWidth;
    constexpr int kMax = orv::vec::kBlockSpan;
    alignas(64) double pb[kMax + 2 * kW], ps[kMax + kW];
    uint32_t mask[kMax / kW];
    int nb = 0, ns = 0;
    for (int j = 0; j * kW < n; ++j) {
        const VD x = R::load(in + j * kW);
        const uint32_t m = simd::lanes(simd::not_lt(abs_of(x), splat(0.5)));
        mask[j] = m;
        eo::compress_store(pb + nb, x, m);
        eo::compress_store(ps + ns, x, m ^ all_lanes());
        nb += count8(m);
        ns += kW - count8(m);
    }
    R::store(pb + nb, splat(1.0));
    R::store(pb + nb + kW, splat(1.0));
    R::store(ps + ns, splat(0.25));
    for (int l = 0; l < nb; l += 2 * kW) {
        const VD a = P::big(R::load(pb + l));
        const VD b = P::big(R::load(pb + l + kW));
        R::store(pb + l, a);
        R::store(pb + l + kW, b);
    }
    for (int l = 0; l < ns; l += kW) R::store(ps + l, P::small(R::load(ps + l)));
    int ob = 0, os = 0;
    for (int j = 0; j * kW < n; ++j) {
        const uint32_t m = mask[j];
        const VD t = eo::expand_load(ps + os, m ^ all_lanes(), splat(0.0));
        R::store(out + j * kW, eo::expand_load(pb + ob, m, t));
        ob += count8(m);
        os += kW - count8(m);
    }
}

}  // namespace orv::erfk::v
