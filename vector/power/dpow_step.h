// The double Pow block step: x^y for positive normal x and |y log2 x| at
// most 1000 (the result is normal), by the table-driven logarithm and
// exponential of Tang, with ln x carried in double-double.
//
// ln x: x = 2^k z, row i of 128 gives invc ~ 1/c (a multiple of 2^-12),
// logc + logctail = -ln(invc); z is cut into zhi (21 bits) and zlo, so that
// rhi = zhi invc - 1 and rhi^2 / 2 are exact, and r = rhi + rlo is kept as
// an exact sum; then ln x = k ln 2 + logc + r - r^2/2 + r^3 Q(r), with the
// leading terms summed by Fast2Sum and every low part gathered in one
// double (about 2^-68 relative in all).
// y ln x: y and the high part of ln x cut to 26 bits by masking their low
// 27 bits, so that the product of the high parts is exact.
// exp: h = m ln2/128 + r, 2^(m/128) from a 128-row table (its rounded value
// and the relative tail), e^r - 1 by a degree-5 polynomial with the low
// part of y ln x folded into r; 2^(m/128) scaled by adding m to the bits.
//
// One template serves a double (the scalar form the block driver may use)
// and a register of doubles: the same operations in the same order, so the
// lanes agree bit for bit. Tables and coefficients: dpow_tables.h
// (tools/gen_dpow_tables.py).
#pragma once

#include <cstdint>

#include "vector/common/bits.h"
#include "vector/common/gather.h"
#include "vector/common/power_ops.h"
#include "vector/power/dpow_tables.h"

namespace orv::power::dpow {

// Lane operations on one double.
struct Scalar {
    using V = double;
    using U = uint64_t;
    static U bits(V x) { return orv::vec::bitops::bits_of(x); }
    static V val(U b) { return orv::vec::bitops::double_of(b); }
    static V splat(double v) { return v; }
    static V exp_field(U t) { return double(static_cast<int64_t>(t) >> 52); }  // exact
    static void log_row(U t, V* invc, V* logc, V* tail) {
        const double* row = kDpowLog[(t >> 45) & 127];
        *invc = row[0];
        *logc = row[1];
        *tail = row[2];
    }
    static void exp_row(U ki, V* tail, V* sbits) {
        const double* row = kDpowExp[ki & 127];
        *tail = row[0];
        *sbits = row[1];
    }
};

// The same on a register of doubles of the vocabulary's width.
struct Vector {
    using V = orv::vec::simd::VD;
    using U = orv::vec::simd::VU64;
    static U bits(V x) { return orv::vec::simd::as<U>(x); }
    static V val(U b) { return orv::vec::simd::as<V>(b); }
    static V splat(double v) { return orv::vec::simd::fill<V>(v); }
    static V exp_field(U t) {
        return orv::vec::power_ops::sar52_to_double(orv::vec::simd::as<orv::vec::simd::VI64>(t));
    }
    static void log_row(U t, V* invc, V* logc, V* tail) {
        orv::vec::gather::rows3(kDpowLog, orv::vec::simd::as<orv::vec::simd::VI64>((t >> 45) & 127u), invc,
                                logc, tail);
    }
    static void exp_row(U ki, V* tail, V* sbits) {
        orv::vec::gather::pairs_of<kDpowExp>(orv::vec::simd::as<orv::vec::simd::VI64>(ki), 127, tail, sbits);
    }
};

// ln x = hi + *lo for positive normal x, |*lo| below about 2^-18.5 |hi|
// (not renormalised: the caller splits hi anyway). kLa: Q of degree 4 (2^-62.8
// relative instead of 2^-70.9), for the LA tier.
template <class O, bool kLa = false>
inline typename O::V log_dd(typename O::V x, typename O::V* lo) {
    using V = typename O::V;
    using U = typename O::U;
    const U ix = O::bits(x);
    const U tmp = ix - kDpowOff;
    const V k = O::exp_field(tmp);
    const U iz = ix - (tmp & 0xFFF0000000000000ull);
    V invc, logc, logctail;
    O::log_row(tmp, &invc, &logc, &logctail);
    const V z = O::val(iz);
    const V zhi = O::val(iz & 0xFFFFFFFF00000000ull);
    const V zlo = z - zhi;                     // exact
    const V rhi = zhi * invc - O::splat(1.0);  // exact, at most 26 bits
    const V rlo = zlo * invc;
    const V r = rhi + rlo;
    const V rerr = (rhi - r) + rlo;  // exact: rhi is a multiple of the ulp of rlo
    const V t1 = k * O::splat(kDpowLn2Hi) + logc;  // exact: multiples of 2^-43
    const V t2 = t1 + r;
    const V lo1 = k * O::splat(kDpowLn2Lo) + logctail;
    const V lo2 = (t1 - t2) + r;  // Fast2Sum: t1 is 0 or larger than r
    const V arhi2 = rhi * (rhi * O::splat(-0.5));  // exact
    const V hi = t2 + arhi2;
    const V lo3 = rlo * ((r + rhi) * O::splat(-0.5));  // the rest of -r^2/2
    const V lo4 = (t2 - hi) + arhi2;
    // r^3 Q(r) by Estrin's scheme (Q's coefficients highest degree first).
    const V r2 = r * r;
    const V r4 = r2 * r2;
    V p;
    if constexpr (kLa) {
        const auto& q = kDpowLogQ4;
        const V qa = O::splat(q[3]) * r + O::splat(q[4]);
        const V qb = O::splat(q[1]) * r + O::splat(q[2]);
        p = (r2 * r) * ((qa + r2 * qb) + r4 * O::splat(q[0]));
    } else {
        const auto& q = kDpowLogQ;
        const V qa = O::splat(q[4]) * r + O::splat(q[5]);
        const V qb = O::splat(q[2]) * r + O::splat(q[3]);
        const V qc = O::splat(q[0]) * r + O::splat(q[1]);
        p = (r2 * r) * ((qa + r2 * qb) + r4 * qc);
    }
    *lo = (((lo1 + lo2) + (lo3 + lo4)) + rerr) + p;
    return hi;
}

// e^(h + e) for |h| at most 1000 ln 2 and |e| below about 2^-9 (the low
// part of y ln x is up to about 2^-18.5 |y ln x|, ln x's low part not being
// renormalised): the reduced argument reaches about 0.0043, where P's
// error is 2^-57.4 relative (2^-63.6 within ln2/256). kLa: without the
// table's tail (at most 2^-53 relative).
template <class O, bool kLa = false>
inline typename O::V exp_dd(typename O::V h, typename O::V e) {
    using V = typename O::V;
    using U = typename O::U;
    constexpr double kShift = 0x1.8p52;
    const V kd0 = h * O::splat(kDpowInvLn2N) + O::splat(kShift);
    const U ki = O::bits(kd0);  // m = round(128 h / ln 2) in the low bits
    const V kd = kd0 - O::splat(kShift);
    const V r = (h + kd * O::splat(kDpowNegLn2HiN)) + (kd * O::splat(kDpowNegLn2LoN) + e);
    V tail, sbits;
    O::exp_row(ki, &tail, &sbits);
    const V scale = O::val(O::bits(sbits) + (ki << 45));  // 2^(m/128) rounded
    // tail + r + r^2 P(r) by Estrin's scheme.
    const auto& c = kDpowExpP;
    const V r2 = r * r;
    const V q = (kLa ? r : tail + r) + (r2 * (O::splat(c[2]) * r + O::splat(c[3])) +
                              (r2 * r2) * (O::splat(c[0]) * r + O::splat(c[1])));
    return scale + scale * q;
}

// x^y for positive normal x and |y log2 x| at most 1000. kLa: the LA
// tier's cheaper polynomial and no exponential tail (about 0.5 ulp added
// at most). kEp (with kLa): y ln x as two plain products, whose rounding
// adds up to 2^-53 |y ln x| relative, for the EP tier.
template <class O, bool kLa = false, bool kEp = false>
inline typename O::V pow_step(typename O::V x, typename O::V y) {
    using V = typename O::V;
    constexpr uint64_t kHigh26 = ~uint64_t(0x7FFFFFF);
    V lo;
    const V hi = log_dd<O, kLa>(x, &lo);
    if constexpr (kEp) return exp_dd<O, kLa>(y * hi, y * lo);
    const V yhi = O::val(O::bits(y) & kHigh26);
    const V ylo = y - yhi;
    const V lhi = O::val(O::bits(hi) & kHigh26);
    const V llo = (hi - lhi) + lo;
    const V ehi = yhi * lhi;  // exact
    const V elo = ylo * lhi + y * llo;
    return exp_dd<O, kLa>(ehi, elo);
}

}  // namespace orv::power::dpow
