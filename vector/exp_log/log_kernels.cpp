// Ln, Log2, Log10 and Logb in single and double, plain and strided.
//
// Single Ln reduces x = 2^k m with m in [2/3, 4/3) by integer arithmetic
// and takes ln m from one polynomial, without a table. The double kernels,
// and single Log2 and Log10, reduce x = 2^k z with z in [0.6855, 1.371),
// pick a 21-bit reciprocal R of the row's centre by the top mantissa bits,
// and form r = z R - 1 exactly from a split of z:
// ln x = k ln2 + (-ln R) + ln(1 + r), |r| <= 2^-8, carried as hi + lo.
#include <emmintrin.h>

#include "vector/block_driver.h"
#include "vector/common/bits.h"
#include "vector/common/dd.h"
#include "vector/common/poly.h"
#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::explog {
namespace {

namespace dd = orv::vec::dd;
namespace poly = orv::vec::poly;
using orv::vec::bitops::splat;

// Lanes that are not positive normal finite floats: one signed test of
// the bits plus 0x800000 catches zero, denormals, negatives, inf and NaN.
inline int log_special_f(__m128 x) {
    const __m128i b = _mm_add_epi32(_mm_castps_si128(x), _mm_set1_epi32(0x800000));
    return _mm_movemask_ps(_mm_castsi128_ps(_mm_cmplt_epi32(b, _mm_set1_epi32(0x1000000))));
}

// The same for doubles, on the high word of bits(x) - kLogBase as the
// reduction forms it (the low word of kLogBase is 0, so no borrow): x is a
// positive normal finite double exactly when that word, signed, lies in
// [0x00100000 - 0x3FE5F000, 0x7FEFFFFF - 0x3FE5F000].
inline int log_special_d(__m128d x) {
    const __m128i tmp = _mm_sub_epi64(_mm_castpd_si128(x),
                                      _mm_set1_epi64x(static_cast<long long>(kLogBase)));
    const __m128i th = _mm_shuffle_epi32(tmp, _MM_SHUFFLE(3, 1, 3, 1));
    const __m128i bad = _mm_or_si128(_mm_cmpgt_epi32(th, _mm_set1_epi32(0x7FEFFFFF - 0x3FE5F000)),
                                     _mm_cmpgt_epi32(_mm_set1_epi32(0x00100000 - 0x3FE5F000), th));
    return _mm_movemask_ps(_mm_castsi128_ps(bad)) & 3;
}

// ln(1 + r) - r = r^2 P(r) on |r| <= 2^-8 (1 + 2^-11): minimax of degree 5
// from tools/fit_minimax.py, relative error 2^-63.
inline __m128d log1p_tail(__m128d r) {
    static constexpr double c[6] = {0.14286053699689033, -0.16666953052489633, 0.19999999996921994,
                                    -0.2499999999835968, 0.3333333333333334, -0.5};
    return r * r * poly::horner(r, c, splat);
}

// The reduction shared by the double logarithms, for two positive normal
// doubles (other lanes: garbage, no out-of-range access): k, the row's
// -ln R in two parts, and the reduced argument as a + b, a exact.
struct LogReduced {
    __m128d k, lhi, llo, a, b;
};

inline LogReduced log_reduce(__m128d x) {
    const __m128i ix = _mm_castpd_si128(x);
    const __m128i tmp = _mm_sub_epi64(ix, _mm_set1_epi64x(static_cast<long long>(kLogBase)));
    const __m128i th = _mm_shuffle_epi32(tmp, _MM_SHUFFLE(3, 1, 3, 1));  // high words low
    LogReduced v;
    v.k = _mm_cvtepi32_pd(_mm_srai_epi32(th, 20));
    // Both rows' indices through one move to a general register.
    const uint64_t hw = static_cast<uint64_t>(_mm_cvtsi128_si64(th));
    const unsigned i0 = static_cast<unsigned>(hw >> 13) & 127;
    const unsigned i1 = static_cast<unsigned>(hw >> 45) & 127;
    const __m128i zi = _mm_sub_epi64(
        ix, _mm_and_si128(tmp, _mm_set1_epi64x(static_cast<long long>(0xFFF0000000000000ull))));
    const __m128d z = _mm_castsi128_pd(zi);
    // z split into 32 leading bits and the rest, so that zh R - 1 is exact.
    const __m128d zh = _mm_and_pd(z, _mm_castsi128_pd(_mm_set1_epi64x(~0x1FFFFFll)));
    const __m128d zl = z - zh;
    const __m128d row0 = _mm_loadu_pd(kLogD[i0]);  // R, Lhi
    const __m128d row1 = _mm_loadu_pd(kLogD[i1]);
    const __m128d rcp = _mm_unpacklo_pd(row0, row1);
    v.lhi = _mm_unpackhi_pd(row0, row1);
    v.llo = _mm_loadh_pd(_mm_load_sd(&kLogD[i0][2]), &kLogD[i1][2]);
    v.a = zh * rcp - splat(1.0);  // exact
    v.b = zl * rcp;
    return v;
}

// ln x as s + lo with |lo| small against s. The rounding of r = a + b is
// carried (two-sum): next to the row that holds 1, -ln R and r nearly
// cancel, ln x is as small as r, and half an ulp of r is half an ulp of the
// result. k ln2 + Lhi and r are added exactly as well.
inline void ln_dd_v(__m128d x, __m128d& s, __m128d& lo) {
    const LogReduced v = log_reduce(x);
    __m128d rerr, err;
    const __m128d r = dd::two_sum(v.a, v.b, &rerr);
    const __m128d t1 = v.k * splat(kLn2Hi) + v.lhi;  // exact
    s = dd::fast_two_sum(t1, r, &err);
    lo = err + (rerr + ((v.k * splat(kLn2Lo) + v.llo) + log1p_tail(r)));
}

// ---- single ----

struct LnS : KernelBase<float, ln_s> {
    using V = __m128;
    static V fastv(V x) {
        const __m128i u = _mm_add_epi32(_mm_castps_si128(x),
                                        _mm_set1_epi32(static_cast<int32_t>(0xC0D55555u)));
        const V k = _mm_cvtepi32_ps(_mm_srai_epi32(u, 23));
        const V m = _mm_castsi128_ps(_mm_add_epi32(_mm_and_si128(u, _mm_set1_epi32(0x7FFFFF)),
                                                   _mm_set1_epi32(0x3F2AAAAB)));
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
    using V = __m128;
    static __m128d half(__m128d k, __m128d r) {
        static constexpr double c[9] = {-0.1305411058644881, 0.1375659840408164, -0.121485169278039,
                                        0.1405420672413101,  -0.1668303148375649, 0.2000732271864601,
                                        -0.24999728990411457, 0.3333327139832989, -0.500000007432645};
        const __m128d q = r * r * poly::horner(r, c, splat) + r;
        if constexpr (kBase == 2) return k + q * splat(kInvLn2Hi);
        return k * splat(0.30102999566398120) + q * splat(kInvLn10Hi);
    }
    static V fastv(V x) {
        const __m128i u = _mm_add_epi32(_mm_castps_si128(x),
                                        _mm_set1_epi32(static_cast<int32_t>(0xC0D55555u)));
        const __m128 k = _mm_cvtepi32_ps(_mm_srai_epi32(u, 23));
        const __m128 m = _mm_castsi128_ps(_mm_add_epi32(_mm_and_si128(u, _mm_set1_epi32(0x7FFFFF)),
                                                        _mm_set1_epi32(0x3F2AAAAB)));
        const __m128 r = m - _mm_set1_ps(1.0f);  // exact, in [-1/3, 1/3)
        const __m128d lo = half(_mm_cvtps_pd(k), _mm_cvtps_pd(r));
        const __m128d hi = half(_mm_cvtps_pd(_mm_movehl_ps(k, k)), _mm_cvtps_pd(_mm_movehl_ps(r, r)));
        return _mm_movelh_ps(_mm_cvtpd_ps(lo), _mm_cvtpd_ps(hi));
    }
    static int special_lanes(V x) { return log_special_f(x); }
};

struct LogbS : KernelBase<float, logb_s> {
    using V = __m128;
    static V fastv(V x) {
        const __m128i e = _mm_and_si128(_mm_srli_epi32(_mm_castps_si128(x), 23), _mm_set1_epi32(0xFF));
        return _mm_cvtepi32_ps(_mm_sub_epi32(e, _mm_set1_epi32(127)));
    }
    // Exponent field 0 (zero, denormal) or 255 (inf, NaN): field - 1 outside [0, 253].
    static int special_lanes(V x) {
        const __m128i e = _mm_and_si128(_mm_srli_epi32(_mm_castps_si128(x), 23), _mm_set1_epi32(0xFF));
        const __m128i e1 = _mm_sub_epi32(e, _mm_set1_epi32(1));
        const __m128i bad = _mm_or_si128(_mm_cmpgt_epi32(e1, _mm_set1_epi32(253)),
                                         _mm_cmplt_epi32(e1, _mm_setzero_si128()));
        return _mm_movemask_ps(_mm_castsi128_ps(bad));
    }
};

// ---- double ----

struct LnD : KernelBase<double, ln_d> {
    using V = __m128d;
    static V fastv(V x) {
        V s, lo;
        ln_dd_v(x, s, lo);
        return s + lo;
    }
    static int special_lanes(V x) { return log_special_d(x); }
};

template <int kBase, int32_t (*Callout)(const double*, double*)>
struct LogBaseD : KernelBase<double, Callout> {
    using V = __m128d;
    static V fastv(V x) {
        V s, lo;
        ln_dd_v(x, s, lo);
        return kBase == 2 ? dd::mul_dd(s, lo, kInvLn2Hi, kInvLn2Lo)
                          : dd::mul_dd(s, lo, kInvLn10Hi, kInvLn10Lo);
    }
    static int special_lanes(V x) { return log_special_d(x); }
};

struct LogbD : KernelBase<double, logb_d> {
    using V = __m128d;
    static __m128i field(V x) {
        const __m128i hw = _mm_shuffle_epi32(_mm_castpd_si128(x), _MM_SHUFFLE(3, 3, 3, 1));
        return _mm_and_si128(_mm_srli_epi32(hw, 20), _mm_set1_epi32(0x7FF));
    }
    static V fastv(V x) { return _mm_cvtepi32_pd(_mm_sub_epi32(field(x), _mm_set1_epi32(1023))); }
    static int special_lanes(V x) {
        const __m128i e1 = _mm_sub_epi32(field(x), _mm_set1_epi32(1));
        const __m128i bad = _mm_or_si128(_mm_cmpgt_epi32(e1, _mm_set1_epi32(0x7FD)),
                                         _mm_cmplt_epi32(e1, _mm_setzero_si128()));
        return _mm_movemask_ps(_mm_castsi128_ps(bad)) & 3;
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
