// Exp, Exp2 and Exp10 in single and double, plain and strided: Tang's
// table-driven exponential. x = (128 N + j) ln2/128 + r for single (64 rows
// for double), exp(x) = 2^N T_j (1 + p(r)); the power of two is made from the
// low bits of the rounding shifter's sum.
#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/common/gather.h"
#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::explog {
namespace {

namespace bits = orv::vec::bitops;
namespace gather = orv::vec::gather;

namespace simd = orv::vec::simd;
using bits::splat;
using simd::as;
using simd::VD;
using simd::VF;
using simd::VI32;
using simd::VI64;

// 2^N from the shifter's sum, N in the bits above the 7 index bits.
inline VF pow2_f(VI32 t) { return as<VF>(((t << 16) + 0x3F800000) & 0x7F800000); }

// Adds N, from the bits of the shifter's sum above the 6 index bits, to
// the exponent of y.
inline VD scale_d(VD y, VI64 t) { return as<VD>(as<VI64>(y) + ((t & 0x3FFC0) << 46)); }

// ---- single ----

struct ExpS : KernelBase<float, exp_s> {
    using V = VF;
    static constexpr bool kNoErrShortcut = true;
    static constexpr float kOver = 88.72283f, kUnder = -103.97208f;
    static V fastv(V x) {
        const V t = x * splat(184.66496f) + splat(kShiftF);  // 128/ln 2
        const V n = t - splat(kShiftF);
        const V r = n * splat(1.6577691e-06f) + (x - n * splat(0.00541687f));
        const VI32 ti = as<VI32>(t);
        V hi, lo;
        gather::pairs_of<kExp128F>(ti, 127, &hi, &lo);
        const V y = (r * r * splat(0.5f) + r) * hi + lo + hi;
        return y * pow2_f(ti);
    }
    static int special_lanes(V x) { return bits::above(x, 0x42AEAC4F); }  // |x| > 87.33654
};

struct Exp2S : KernelBase<float, exp2_s> {
    using V = VF;
    static V fastv(V x) {
        const V t = x + splat(98304.0f);  // 1.5 * 2^16: rounds to 1/128
        const V r = x - (t - splat(98304.0f));  // exact
        const VI32 ti = as<VI32>(t);
        V hi, lo;
        gather::pairs_of<kExp128F>(ti, 127, &hi, &lo);
        // 2^r - 1 = ln2 r + (ln2)^2/2 r^2; the next term is below 2^-28.
        const V p = r * r * splat(0.24022650718688965f) + r * splat(0.6931471824645996f);
        return (p * hi + lo + hi) * pow2_f(ti);
    }
    static int special_lanes(V x) { return bits::above(x, 0x42FC0000); }  // |x| > 126
};

struct Exp10S : KernelBase<float, exp10_s> {
    using V = VF;
    static V fastv(V x) {
        const V t = x * splat(425.2068f) + splat(kShiftF);  // 128/log10 2
        const V n = t - splat(kShiftF);
        // log10(2)/128 in two parts, the first of 10 bits so that n times it is exact.
        const V r = (x - n * splat(0.002353668212890625f)) - n * splat(-1.8713717508944683e-06f);
        const VI32 ti = as<VI32>(t);
        V hi, lo;
        gather::pairs_of<kExp128F>(ti, 127, &hi, &lo);
        const V p = r * r * splat(2.650949001312256f) + r * splat(2.3025851249694824f);
        return (p * hi + lo + hi) * pow2_f(ti);
    }
    static int special_lanes(V x) { return bits::above(x, 0x4217999A); }  // |x| > 37.9
};

// ---- double ----

struct ExpD : KernelBase<double, exp_d> {
    using V = VD;
    static constexpr bool kNoErrShortcut = true;
    static constexpr double kOver = 709.782712893384, kUnder = -745.1332191019411;
    static V fastv(V x) {
        const V t = x * splat(kInvLn2x64) + splat(kShiftD);
        const V n = t - splat(kShiftD);
        const V r = (n * splat(kNegLn2by64Hi) + x) + n * splat(kNegLn2by64Lo);
        const VI64 ti = as<VI64>(t);
        V hi, lo;
        gather::pairs_of<kExp64D>(ti, 63, &hi, &lo);
        const V p = (((r * splat(0.00833333416441411) + splat(0.04166672368662385)) * r +
                      splat(0.1666666666667797)) * r + splat(0.4999999999994775)) * r * r + r;
        return scale_d(p * hi + lo + hi, ti);
    }
    static int special_lanes(V x) { return bits::above(x, 0x4086232A); }  // |x| > 708.39
};

template <const double* kP>
inline VD base_poly(VD r) {
    return ((((splat(kP[0]) * r + splat(kP[1])) * r + splat(kP[2])) * r + splat(kP[3])) * r +
            splat(kP[4])) * r;
}

struct Exp2D : KernelBase<double, exp2_d> {
    using V = VD;
    static V fastv(V x) {
        const V t = x + splat(kShiftExp2D);
        const V r = x - (t - splat(kShiftExp2D));  // exact
        const VI64 ti = as<VI64>(t);
        V hi, lo;
        gather::pairs_of<kExp64D>(ti, 63, &hi, &lo);
        return scale_d(base_poly<kExp2P>(r) * hi + lo + hi, ti);
    }
    static int special_lanes(V x) { return bits::above(x, 0x408FEFFF); }  // |x| >= 1022
};

struct Exp10D : KernelBase<double, exp10_d> {
    using V = VD;
    static V fastv(V x) {
        const V t = x * splat(kInvLog10_2x64) + splat(kShiftD);
        const V n = t - splat(kShiftD);
        const V r = (n * splat(kNegLog10_2by64Hi) + x) + n * splat(kNegLog10_2by64Lo);
        const VI64 ti = as<VI64>(t);
        V hi, lo;
        gather::pairs_of<kExp64D>(ti, 63, &hi, &lo);
        return scale_d(base_poly<kExp10P>(r) * hi + lo + hi, ti);
    }
    static int special_lanes(V x) { return bits::above(x, 0x40733000); }  // |x| >= 307
};

}  // namespace
}  // namespace orv::explog

using namespace orv::explog;

// Plain and strided entry of each function; the strided form reports under
// the strided name.
ORV_UNARY_KERNELS(sExp, ExpS)
ORV_UNARY_KERNELS(dExp, ExpD)
ORV_UNARY_KERNELS(sExp2, Exp2S)
ORV_UNARY_KERNELS(dExp2, Exp2D)
ORV_UNARY_KERNELS(sExp10, Exp10S)
ORV_UNARY_KERNELS(dExp10, Exp10D)
