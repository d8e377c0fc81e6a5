// Double Erf and Erfc on whole registers, without double-double products.
//
// For x >= 1/2, erfc(x) = exp(-x^2 + L(x)) with L = ln erfcx read from the
// rows of erf_lnrows.h (16 a binade, s = x - c exact, L = c0 + c0lo + s Q(s)),
// and the whole exponent reduced at once by Tang's method with the 64 rows
// of 2^(i/64):
//   -x^2 = -z^2 + (z - x)(z + x), z = x cut to 21 bits, so that z^2 is exact
//     and the second term below 2^-9;
//   k = round((-z^2 + c0) 64/ln 2); -z^2 and k ln2/64_hi (36 bits, |k| < 2^17)
//     are multiples of 2^-42, so their difference (below 8) is exact, and so
//     is adding c0 to it (Sterbenz: the two are within a factor 2);
//   r = that + ((c0lo + s Q(s)) + (z - x)(z + x) + k ln2/64_lo), where only
//     terms below 1/16 are rounded (relative 2^-57 at most), |r| < 0.04;
//   erfc(x) = 2^(k >> 6) (T + (Tlo + T (e^r - 1))), T + Tlo = 2^((k & 63)/64).
// erf(x) = 1 - erfc(x) and erfc(-x) = 2 - erfc(x) subtract the scaled T first
// (the error of that subtraction kept) and the rest after, each rounded once
// at the end. Below 1/2, erf(x) = x + x P(x^2) and erfc(x) = 1 - erf(x) as in
// erf_vec.h. The chains are long and dependent, so registers go through the
// rows several at a time, step by step (erfc_ln_n), and a register's path about
// zero runs only when one of its lanes needs it; the wide builds first sort
// a run's lanes by path (two_paths_block), where a register of mixed lanes
// is common.
#pragma once

#include <utility>

#include "vector/erf/erf_lnrows.h"
#include "vector/erf/erf_vec.h"

namespace orv::erfk::v {

using simd::VU64;

// erfc(x) = (hi + lo) 2^n for 1/2 <= x <= 26.5, hi and lo unscaled; p2 = 2^n.
struct ErfcLn {
    VD hi, lo, p2;
};

// f(0), f(1), ..., f(N - 1) in turn, unrolled at compile time.
template <int N, typename F>
[[gnu::always_inline]] inline void each(F&& f) {
    [&]<int... I>(std::integer_sequence<int, I...>) { (f(I), ...); }(std::make_integer_sequence<int, N>{});
}

// erfc(x) of N registers at once, each step taken for all N in turn, so
// that their dependency chains overlap; each register's operations are
// those of N = 1.
template <int N>
[[gnu::always_inline]] inline void erfc_ln_n(const VD* x, ErfcLn* m) {
    using namespace orv::explog;
    VI64 b[N];
    VD s[N], w[N][kLnRowWidth], t[N], a[N], d[N], kt[N], r[N], e[N];
    each<N>([&](int i) { b[i] = as<VI64>(x[i]); });
    each<N>([&](int i) {
        const VI64 j = as<VI64>(as<VU64>(b[i]) >> 48) - 0x3FE0;
        orv::vec::erfops::rows_of<kLnRowWidth, kLnRowWidth / 4>(&kErfcLnRows[0][0], j, w[i]);
    });
    each<N>([&](int i) { s[i] = x[i] - as<VD>((b[i] & ~int64_t(0xFFFFFFFFFFFF)) | int64_t(0x800000000000)); });
    static_assert(kLnRowTerms == 10);
    // Q(s) by Estrin's scheme (w[2] the highest coefficient, w[11] the constant).
    each<N>([&](int i) {
        const VD* c = w[i];
        const VD s2 = s[i] * s[i];
        const VD s4 = s2 * s2;
        const VD q01 = (c[10] * s[i] + c[11]) + s2 * (c[8] * s[i] + c[9]);
        const VD q23 = (c[6] * s[i] + c[7]) + s2 * (c[4] * s[i] + c[5]);
        const VD q4 = c[2] * s[i] + c[3];
        t[i] = s[i] * ((q01 + s4 * q23) + (s4 * s4) * q4);
    });
    each<N>([&](int i) {
        const VD z = as<VD>(b[i] & ~int64_t(0xFFFFFFFF));
        a[i] = -(z * z);
        d[i] = (z - x[i]) * (z + x[i]);
    });
    // The shifter carries 1023 * 64, so that its low bits hold k + 65472 >= 0:
    // (k >> 6) + 1023 and k & 63 are plain bit fields. k from -z^2 + c0
    // alone, so that it waits for the row's constant only: then
    // |r| <= ln 2/128 + |s Q(s)| < 0.04.
    const VD sh = splat(kShiftD + 65472.0);
    each<N>([&](int i) { kt[i] = (a[i] + w[i][0]) * splat(kInvLn2x64) + sh; });
    each<N>([&](int i) {
        const VD k = kt[i] - sh;
        r[i] = ((a[i] + k * splat(kNegLn2by64Hi)) + w[i][0]) +
               (((w[i][1] + t[i]) + d[i]) + k * splat(kNegLn2by64Lo));
    });
    // e^r - 1 by its Taylor series to r^8 (the rest is below 2^-60), by
    // Estrin's scheme.
    each<N>([&](int i) {
        const VD r2 = r[i] * r[i];
        const VD r4 = r2 * r2;
        e[i] = (r[i] + r2 * (splat(1.0 / 2) + r[i] * splat(1.0 / 6))) +
               r4 * ((splat(1.0 / 24) + r[i] * splat(1.0 / 120)) +
                     r2 * (splat(1.0 / 720) + r[i] * splat(1.0 / 5040)) + r4 * splat(1.0 / 40320));
    });
    each<N>([&](int i) {
        VD th, tl;
        orv::vec::gather::pairs_of<kExp64D>(kt[i], 63, &th, &tl);
        m[i] = {th, tl + th * e[i], as<VD>((as<VU64>(kt[i]) >> 6) << 52)};
    });
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
    template <int N>
    static void big(const VD* x, VD* out) {
        VD ax[N];
        ErfcLn m[N];
        each<N>([&](int i) { ax[i] = clamp(abs_of(x[i]), 0.5, 6.0); });
        erfc_ln_n<N>(ax, m);
        each<N>([&](int i) { out[i] = simd::bor(from_const_ln(1.0, m[i]), sign_of(x[i])); });
    }
    static VD small(VD x) { return x + erf_small_tail(x); }
};
struct ErfcPaths {
    template <int N>
    static void big(const VD* x, VD* out) {
        VD ax[N];
        ErfcLn m[N];
        each<N>([&](int i) { ax[i] = clamp(abs_of(x[i]), 0.5, kLnEnd); });
        erfc_ln_n<N>(ax, m);
        each<N>([&](int i) {
            out[i] = simd::select(simd::negative(x[i]), from_const_ln(2.0, m[i]), (m[i].hi + m[i].lo) * m[i].p2);
        });
    }
    static VD small(VD x) {
        VD sl;
        return erfc_small(x, splat(0.0), &sl) + sl;
    }
};

// One register: each path computed only when a lane needs it.
template <typename P>
[[gnu::flatten]] inline VD two_paths(VD x) {
    const VD small = simd::lt(abs_of(x), splat(0.5));
    const uint32_t sm = simd::lanes(small);
    if (sm == all_lanes()) return P::small(x);
    VD big;
    P::template big<1>(&x, &big);
    if (!sm) return big;
    return simd::select(small, P::small(simd::select(small, x, splat(0.0))), big);
}

// n elements (n a multiple of the register width): registers in groups of
// G, the rows' path of a group taken together (their chains overlap), the
// path about zero for each register with a lane that needs it; the last
// registers alone. Each lane's operations are those of two_paths.
template <typename P, int G = 2>
[[gnu::flatten]] inline void two_paths_pairs(const double* in, double* out, int n) {
    using R = simd::Reg<double>;
    constexpr int kW = R::kWidth;
    int l = 0;
    for (; l + G * kW <= n; l += G * kW) {
        VD x[G], small[G], z[G];
        uint32_t sm[G], all = all_lanes();
        for (int i = 0; i < G; ++i) {
            x[i] = R::load(in + l + i * kW);
            small[i] = simd::lt(abs_of(x[i]), splat(0.5));
            sm[i] = simd::lanes(small[i]);
            all &= sm[i];
            z[i] = splat(0.0);
        }
        if (all != all_lanes()) P::template big<G>(x, z);
        for (int i = 0; i < G; ++i)
            if (sm[i]) z[i] = simd::select(small[i], P::small(simd::select(small[i], x[i], splat(0.0))), z[i]);
        for (int i = 0; i < G; ++i) R::store(out + l + i * kW, z[i]);
    }
    for (; l < n; l += kW) R::store(out + l, two_paths<P>(R::load(in + l)));
}

// n elements (n a multiple of the register width, at most vec::kBlockSpan;
// out may be in): each path on full registers of its own lanes
// (erfops::by_path), two registers a step through the rows, so that their
// chains overlap. Each lane's operations are those of two_paths.
template <typename P>
[[gnu::flatten]] inline void two_paths_block(const double* in, double* out, int n) {
    using R = simd::Reg<double>;
    constexpr int kW = R::kWidth;
    orv::vec::erfops::by_path<orv::vec::kBlockSpan>(
        in, out, n, [](VD x) { return simd::not_lt(abs_of(x), splat(0.5)); }, 1.0, 0.25,
        [](double* run, int k) {
            for (int l = 0; l < k; l += 2 * kW) {
                const VD x[2] = {R::load(run + l), R::load(run + l + kW)};
                VD z[2];
                P::template big<2>(x, z);
                R::store(run + l, z[0]);
                R::store(run + l + kW, z[1]);
            }
        },
        [](double* run, int k) {
            for (int l = 0; l < k; l += kW) R::store(run + l, P::small(R::load(run + l)));
        });
}

}  // namespace orv::erfk::v
