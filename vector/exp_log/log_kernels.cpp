// Ln, Log2, Log10 and Logb in single and double, plain and strided.
//
// Single Ln reduces x = 2^k m with m in [2/3, 4/3) by integer arithmetic
// and takes ln m from one polynomial, without a table. The double kernels,
// and single Log2 and Log10, reduce x = 2^k z with z in [0.6855, 1.371),
// pick a 21-bit reciprocal R of the row's centre by the top mantissa bits,
// and form r = z R - 1 exactly from a split of z:
// ln x = k ln2 + (-ln R) + ln(1 + r), |r| <= 2^-8, carried as hi + lo.
#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/common/gather.h"
#include "vector/common/poly.h"
#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::explog {
namespace {

namespace dd = orv::vec::dd;
namespace poly = orv::vec::poly;
namespace simd = orv::vec::simd;
using orv::vec::bitops::splat;
using orv::vec::bitops::splat_wide;
using simd::as;
using simd::VD;
using simd::VF;
using simd::VI32;
using simd::VI64;
using simd::VU32;
using simd::VU64;

// Lanes that are not positive normal finite floats: one signed test of
// the bits plus 0x800000 catches zero, denormals, negatives, inf and NaN.
inline uint32_t log_special_f(VF x) {
    const VI32 b = as<VI32>(x) + 0x800000;
    return simd::lanes(as<VF>(b < 0x1000000));
}

// The same for doubles, on the high word of bits(x) - kLogBase as the
// reduction forms it (the low word of kLogBase is 0, so no borrow): x is a
// positive normal finite double exactly when that word, signed, lies in
// [0x00100000 - 0x3FE5F000, 0x7FEFFFFF - 0x3FE5F000]. The test runs on every
// 32-bit word; the high word's result holds the lane's sign bit.
inline uint32_t log_special_d(VD x) {
    const VI32 th = as<VI32>(as<VI64>(x) - int64_t(kLogBase));
    const VI32 bad = (th > 0x7FEFFFFF - 0x3FE5F000) | (th < 0x00100000 - 0x3FE5F000);
    return simd::lanes(as<VD>(bad));
}

// ln(1 + r) - r = r^2 P(r) on |r| <= 2^-8 (1 + 2^-11): minimax of degree 5
// from tools/fit_minimax.py, relative error 2^-63.
inline VD log1p_tail(VD r) {
    static constexpr double c[6] = {0.14286053699689033, -0.16666953052489633, 0.19999999996921994,
                                    -0.2499999999835968, 0.3333333333333334, -0.5};
    return r * r * poly::horner(r, c, splat);
}

// The reduction shared by the double logarithms, for positive normal
// doubles (other lanes: garbage, no out-of-range access): k, the row's
// -ln R in two parts, and the reduced argument as a + b, a exact.
struct LogReduced {
    VD k, lhi, llo, a, b;
};

inline LogReduced log_reduce(VD x) {
    const VI64 ix = as<VI64>(x);
    const VI64 tmp = ix - int64_t(kLogBase);
    LogReduced v;
    // k = tmp >> 52 (signed, 12 bits): biased by 2048 into the low bits of
    // 2^52 and taken out again, exactly.
    const VI64 kb = as<VI64>((as<VU64>(tmp) >> 52) ^ 0x800) | int64_t(0x4330000000000000);
    v.k = as<VD>(kb) - splat(4503599627372544.0);  // 2^52 + 2048
    const VI64 idx = as<VI64>(as<VU64>(tmp) >> 45) & 127;
    const VD z = as<VD>(ix - (tmp & int64_t(0xFFF0000000000000ull)));
    // z split into 32 leading bits and the rest, so that zh R - 1 is exact.
    const VD zh = as<VD>(as<VI64>(z) & ~int64_t(0x1FFFFF));
    const VD zl = z - zh;
    VD rcp;
    orv::vec::gather::rows3(kLogD, idx, &rcp, &v.lhi, &v.llo);  // R, Lhi, Llo
    v.a = zh * rcp - splat(1.0);  // exact
    v.b = zl * rcp;
    return v;
}

// ln x as s + lo with |lo| small against s. The rounding of r = a + b is
// carried (two-sum): next to the row that holds 1, -ln R and r nearly
// cancel, ln x is as small as r, and half an ulp of r is half an ulp of the
// result. k ln2 + Lhi and r are added exactly as well.
inline void ln_dd_v(VD x, VD& s, VD& lo) {
    const LogReduced v = log_reduce(x);
    VD rerr, err;
    const VD r = dd::two_sum(v.a, v.b, &rerr);
    const VD t1 = v.k * splat(kLn2Hi) + v.lhi;  // exact
    s = dd::fast_two_sum(t1, r, &err);
    lo = err + (rerr + ((v.k * splat(kLn2Lo) + v.llo) + log1p_tail(r)));
}

// ---- single ----

struct LnS : KernelBase<float, ln_s> {
    using V = VF;
    static V fastv(V x) {
        const VI32 u = as<VI32>(x) + static_cast<int32_t>(0xC0D55555u);
        const V k = simd::to_float(u >> 23);
        const V m = as<VF>((u & 0x7FFFFF) + 0x3F2AAAAB);
        const V r = m - splat(1.0f);  // m in [2/3, 4/3)
        static constexpr float c[9] = {-0.12891686f, 0.13984437f, -0.12184261f,
                                       0.1400587f,   -0.16680488f, 0.20010406f,
                                       -0.24999797f, 0.33333215f,  -0.5f};
        const V q = r * r * poly::horner(r, c, splat) + r;
        return k * splat(0.69314575f) + (k * splat(1.4286068e-06f) + q);
    }
    static int special_lanes(V x) { return log_special_f(x); }
};

// Single Log2 and Log10: the integer reduction of single Ln (k exact,
// r = m - 1 exact in float), then ln(1 + r) = r + r^2 P(r) in double with a
// degree-8 minimax P on |r| <= 1/3 (relative error 2^-26.7, from
// tools/fit_minimax.py), scaled by the base in double and rounded once.
template <int kBase, int32_t (*Callout)(const float*, float*)>
struct LogBaseS : KernelBase<float, Callout> {
    using V = VF;
    using W = simd::VDW;  // the lanes of one float register, in double
    static W half(W k, W r) {
        static constexpr double c[9] = {-0.1305411058644881, 0.1375659840408164, -0.121485169278039,
                                        0.1405420672413101,  -0.1668303148375649, 0.2000732271864601,
                                        -0.24999728990411457, 0.3333327139832989, -0.500000007432645};
        const W q = r * r * poly::horner(r, c, splat_wide) + r;
        if constexpr (kBase == 2) return k + q * splat_wide(kInvLn2Hi);
        return k * splat_wide(0.30102999566398120) + q * splat_wide(kInvLn10Hi);
    }
    static V fastv(V x) {
        const VI32 u = as<VI32>(x) + static_cast<int32_t>(0xC0D55555u);
        const V k = simd::to_float(u >> 23);
        const V m = as<VF>((u & 0x7FFFFF) + 0x3F2AAAAB);
        const V r = m - splat(1.0f);  // exact, in [-1/3, 1/3)
        return simd::narrow(half(simd::widen(k), simd::widen(r)));
    }
    static int special_lanes(V x) { return log_special_f(x); }
};

struct LogbS : KernelBase<float, logb_s> {
    using V = VF;
    static VI32 field(V x) { return as<VI32>(as<VU32>(x) >> 23) & 0xFF; }
    static V fastv(V x) { return simd::to_float(field(x) - 127); }
    // Exponent field 0 (zero, denormal) or 255 (inf, NaN): field - 1 outside [0, 253].
    static int special_lanes(V x) {
        const VI32 e1 = field(x) - 1;
        return int(simd::lanes(as<VF>((e1 > 253) | (e1 < 0))));
    }
};

// ---- double ----

struct LnD : KernelBase<double, ln_d> {
    using V = VD;
    static V fastv(V x) {
        V s, lo;
        ln_dd_v(x, s, lo);
        return s + lo;
    }
    static int special_lanes(V x) { return log_special_d(x); }
};

template <int kBase, int32_t (*Callout)(const double*, double*)>
struct LogBaseD : KernelBase<double, Callout> {
    using V = VD;
    static V fastv(V x) {
        V s, lo;
        ln_dd_v(x, s, lo);
        return kBase == 2 ? dd::mul_dd(s, lo, kInvLn2Hi, kInvLn2Lo)
                          : dd::mul_dd(s, lo, kInvLn10Hi, kInvLn10Lo);
    }
    static int special_lanes(V x) { return log_special_d(x); }
};

struct LogbD : KernelBase<double, logb_d> {
    using V = VD;
    static V fastv(V x) {
        const VI64 e = as<VI64>(as<VU64>(x) >> 52) & 0x7FF;
        return simd::small_int_to_double(e - 1023);
    }
    // On the 32-bit words: the high word's field decides the lane's bit.
    static int special_lanes(V x) {
        const VI32 e1 = (as<VI32>(as<VU32>(x) >> 20) & 0x7FF) - 1;
        return int(simd::lanes(as<VD>((e1 > 0x7FD) | (e1 < 0))));
    }
};

}  // namespace
}  // namespace orv::explog

using namespace orv::explog;

// Plain and strided entry of each function; the strided form reports under
// the strided name.
ORV_UNARY_KERNELS(sLn, LnS)
ORV_UNARY_KERNELS(dLn, LnD)
ORV_UNARY_KERNELS(sLog2, LogBaseS<2, log2_s>)
ORV_UNARY_KERNELS(dLog2, LogBaseD<2, log2_d>)
ORV_UNARY_KERNELS(sLog10, LogBaseS<10, log10_s>)
ORV_UNARY_KERNELS(dLog10, LogBaseD<10, log10_d>)
ORV_UNARY_KERNELS(sLogb, LogbS)
ORV_UNARY_KERNELS(dLogb, LogbD)
