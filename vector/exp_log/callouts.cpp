// Scalar callouts of the exponential and logarithm kernels. They take every
// input, special or not, and return the status of the element. The single
// forms work in double and round once at the end.
#include <cmath>
#include <limits>
#include <type_traits>

#include "vector/exp_log/explog_internal.h"
#include "vector/exp_log/explog_tables.h"

namespace orv::explog {

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr float kInfF = std::numeric_limits<float>::infinity();

// 2^e for e in the normal range, built from the bits.
inline double pow2(int e) { return double_of(static_cast<uint64_t>(e + 1023) << 52); }

// (hi + p) 2^n, for n from -1100 to 1024, with hi + p near [1, 2).
// Above 1023 the scale goes in two steps; in the denormal range both parts
// are scaled into the normal range first, and the sum is brought down by
// 2^-100 so that only the final product rounds to the denormal grid.
inline double scale_sum(double hi, double p, int n) {
    if (n > 1023) return (hi + p) * pow2(1023) * pow2(n - 1023);
    if (n >= -1022) return (hi + p) * pow2(n);
    const double s = pow2(n + 100);
    return (hi * s + p * s) * 7.888609052210118e-31;  // 2^-100
}

// Table-driven exponential of the 64-row reduction, from the rounded
// multiple n (an integer-valued double) and the reduced argument r, with
// the polynomial of exp(r) - 1. Gives T.hi and the rest separately.
struct ExpParts {
    double thi, p;
    int n;  // the power of two
};

inline ExpParts exp_parts(double x) {
    const double t = x * kInvLn2x64 + kShiftD;
    const double n = t - kShiftD;
    const double r = (n * kNegLn2by64Hi + x) + n * kNegLn2by64Lo;
    const int64_t m = static_cast<int64_t>(n);
    const double* row = kExp64D[m & 63];
    const double q = ((((r * kE6 + kE5) * r + kE4) * r + kE3) * r + 0.5) * r * r + r;
    return {row[0], q * row[0] + row[1], static_cast<int>(m >> 6)};
}

// 2^x and 10^x share this: r is in units of the base's log, the table index
// and the power come from m = round(64 x / log2 base).
inline ExpParts exp_base_parts(int64_t m, double r, const double* poly) {
    const double* row = kExp64D[m & 63];
    const double q = (((poly[0] * r + poly[1]) * r + poly[2]) * r + poly[3]) * r + poly[4];
    return {row[0], q * r * row[0] + row[1], static_cast<int>(m >> 6)};
}

inline ExpParts exp2_parts(double x) {
    const double t = x + kShiftExp2D;
    const double n = t - kShiftExp2D;  // a multiple of 1/64
    const double r = x - n;            // exact
    return exp_base_parts(static_cast<int64_t>(n * 64.0), r, kExp2P);
}

inline ExpParts exp10_parts(double x) {
    const double t = x * kInvLog10_2x64 + kShiftD;
    const double n = t - kShiftD;
    const double r = (n * kNegLog10_2by64Hi + x) + n * kNegLog10_2by64Lo;
    return exp_base_parts(static_cast<int64_t>(n), r, kExp10P);
}

// The single exponentials round the double result once; a result that
// leaves the float range only in that rounding is reported as well.
inline int32_t narrow_exp(double y, int32_t status, float* r) {
    const float f = static_cast<float>(y);
    *r = f;
    if (f == kInfF) return kOverflow;
    if (f == 0.0f) return kUnderflow;
    return status;
}

// The shared steps of Ln, Log2 and Log10 before the reduction: specials,
// zero, negatives and denormals. Returns true with result and status when
// the element is done; otherwise leaves the bits and exponent adjustment.
inline bool log_specials(double x, double* r, int32_t* status, uint64_t* ix, int* kadj) {
    uint64_t b = bits_of(x);
    const uint32_t e = static_cast<uint32_t>(b >> 52) & 0x7FF;
    *kadj = 0;
    if (e == 0x7FF) {
        if (x == -kInf) {
            *r = std::numeric_limits<double>::quiet_NaN();
            *status = kDomain;
        } else {
            *r = x * x;
            *status = kOk;
        }
        return true;
    }
    if (e == 0 && x != 0.0) {
        x *= 1.152921504606847e+18;  // 2^60
        b = bits_of(x);
        *kadj = -60;
    }
    if (!(x > 0.0)) {
        if (x == 0.0) {
            *r = -kInf;
            *status = kPole;
        } else {
            *r = double_of(0x7FF8000000000000ull);
            *status = kDomain;
        }
        return true;
    }
    *ix = b;
    return false;
}

}  // namespace

Dd ln_dd(uint64_t ix, int kadj) {
    const uint64_t tmp = ix - kLogBase;
    const int i = static_cast<int>((tmp >> 45) & 127);
    const int k = static_cast<int>(static_cast<int64_t>(tmp) >> 52) + kadj;
    const double z = double_of(ix - (tmp & 0xFFF0000000000000ull));
    const double* row = kLogD[i];
    // z split into 32 leading bits and the rest, so that zh R - 1 is exact.
    const double zh = double_of(bits_of(z) & ~0x1FFFFFull);
    const double zl = z - zh;
    const double a = zh * row[0] - 1.0;
    const double b = zl * row[0];
    double rerr;
    const double r = dd::two_sum(a, b, &rerr);
    const double q =
        r * r *
        (kLnP[0] +
         r * (kLnP[1] + r * (kLnP[2] + r * (kLnP[3] + r * (kLnP[4] + r * (kLnP[5] + r * kLnP[6]))))));
    const double dk = k;
    const double s0 = dk * kLn2Hi + row[1];  // exact: both are multiples of 2^-43
    double err;
    const double s = dd::two_sum(s0, r, &err);
    return {s, err + (rerr + ((dk * kLn2Lo + row[2]) + q))};
}

// ---- Exp family ----

namespace {

// The unsigned integer of a value's width.
template <typename T>
using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;

// A bound of the argument range; closed bounds include the value itself.
template <typename T>
struct Bound {
    T at;
    bool closed;
    bool above(T x) const { return closed ? x >= at : x > at; }
    bool below(T x) const { return closed ? x <= at : x < at; }
};

// What sets Exp, Exp2 and Exp10 apart in single and double: the reduction,
// the largest |x| bits whose result is 1 + x, the overflow and underflow
// bounds, and the bound below which a result is denormal and reported as
// underflow (-infinity where such results are not reported).
template <typename T>
struct ExpShape {
    ExpParts (*parts)(double);
    Bits<T> tiny;
    Bound<T> over, under, denormal;
};

template <typename T>
constexpr T kNegInf = -std::numeric_limits<T>::infinity();

constexpr ExpShape<double> kExpD{exp_parts, 0x3CAFFFFFFFFFFFFFull, {709.782712893384, false},
                                 {-745.1332191019411, false}, {kNegInf<double>, false}};
constexpr ExpShape<float> kExpS{exp_parts, 0x25000000u, {88.72283f, false}, {-103.97208f, false},
                                {kNegInf<float>, false}};
constexpr ExpShape<double> kExp2D{exp2_parts, 0x3CAFFFFFFFFFFFFFull, {1024.0, true},
                                  {-1075.0, true}, {-1022.0, false}};
constexpr ExpShape<float> kExp2S{exp2_parts, 0x25000000u, {128.0f, true}, {-150.0f, true},
                                 {-126.0f, false}};
constexpr ExpShape<double> kExp10D{exp10_parts, 0x3CAFFFFFFFFFFFFFull, {308.2547155599167, false},
                                   {-323.60724533877976, false}, {-307.6526555685887, false}};
constexpr ExpShape<float> kExp10S{exp10_parts, 0x25000000u, {38.53184f, false}, {-45.1545f, false},
                                  {-37.929783f, true}};

// The ranges of an exponential: infinity and NaN, tiny arguments, overflow,
// underflow, then the table-driven value computed in double; the single
// forms round it once.
template <typename T>
inline int32_t exp_like(T x, T* r, const ExpShape<T>& s) {
    constexpr Bits<T> kAbs = ~Bits<T>(0) >> 1;
    constexpr Bits<T> kInfBits = sizeof(T) == 4 ? Bits<T>(0x7F800000u) : Bits<T>(0x7FF0000000000000ull);
    const Bits<T> ab = bits_of(x) & kAbs;
    if (ab >= kInfBits) {
        *r = (x == kNegInf<T>) ? T(0) : x * x;
        return kOk;
    }
    if (ab <= s.tiny) {
        *r = T(1) + x;
        return kOk;
    }
    if (s.over.above(x)) {
        *r = std::numeric_limits<T>::infinity();
        return kOverflow;
    }
    if (s.under.below(x)) {
        *r = T(0);
        return kUnderflow;
    }
    const ExpParts q = s.parts(x);
    const int32_t status = s.denormal.below(x) ? kUnderflow : kOk;
    if constexpr (sizeof(T) == 4) {
        return narrow_exp(scale_sum(q.thi, q.p, q.n), status, r);
    } else {
        *r = scale_sum(q.thi, q.p, q.n);
        return status;
    }
}

// A single function through its double form, rounded once.
template <int32_t (*F)(const double*, double*)>
inline int32_t via_double(const float* xp, float* r) {
    const double x = *xp;
    double y;
    const int32_t st = F(&x, &y);
    *r = static_cast<float>(y);
    return st;
}

}  // namespace

int32_t exp_d(const double* xp, double* r) { return exp_like(*xp, r, kExpD); }
int32_t exp_s(const float* xp, float* r) { return exp_like(*xp, r, kExpS); }
int32_t exp2_d(const double* xp, double* r) { return exp_like(*xp, r, kExp2D); }
int32_t exp2_s(const float* xp, float* r) { return exp_like(*xp, r, kExp2S); }
int32_t exp10_d(const double* xp, double* r) { return exp_like(*xp, r, kExp10D); }
int32_t exp10_s(const float* xp, float* r) { return exp_like(*xp, r, kExp10S); }

// Expm1 by ranges of |x|: tiny values are their own result, small ones
// take a Taylor polynomial of degree 9 (truncation below 2^-66 relative on
// |x| < 2^-5), the rest the 64-row exponential with the 1 taken off in
// double-double so that nothing cancels.
int32_t expm1_d(const double* xp, double* r) {
    const double x = *xp;
    const uint32_t ahw = static_cast<uint32_t>(bits_of(x) >> 32) & 0x7FFFFFFF;
    if (ahw >= 0x7FF00000) {
        *r = (x == -kInf) ? -1.0 : x + x;
        return kOk;
    }
    if (ahw < 0x3C600000) {
        *r = x;
        return kOk;
    }
    if (ahw < 0x3FA00000) {
        constexpr double c[8] = {1.0 / 2,      1.0 / 6,       1.0 / 24,       1.0 / 120,
                                 1.0 / 720,    1.0 / 5040,    1.0 / 40320,    1.0 / 362880};
        const double p =
            c[0] + x * (c[1] + x * (c[2] + x * (c[3] + x * (c[4] + x * (c[5] + x * (c[6] + x * c[7]))))));
        *r = x + (x * x) * p;
        return kOk;
    }
    if (x > 709.782712893384) {
        *r = kInf;
        return kOverflow;
    }
    if (x < -38.816242111356935) {  // e^x is below half an ulp of 1
        *r = -1.0;
        return kOk;
    }
    const ExpParts q = exp_parts(x);
    if (q.n > 1000) {
        *r = scale_sum(q.thi, q.p, q.n);
        return kOk;
    }
    const double s2 = pow2(q.n);
    double err;
    const double s = dd::two_sum(q.thi * s2, -1.0, &err);
    *r = s + (err + q.p * s2);
    return kOk;
}

// Beyond the float range the rounded result is +inf, unreported.
int32_t expm1_s(const float* xp, float* r) { return via_double<expm1_d>(xp, r); }

// ---- Logarithms ----

int32_t ln_d(const double* xp, double* r) {
    int32_t st;
    uint64_t ix;
    int kadj;
    if (log_specials(*xp, r, &st, &ix, &kadj)) return st;
    const Dd v = ln_dd(ix, kadj);
    *r = v.hi + v.lo;
    return kOk;
}

namespace {

// ln x times 1/ln b given in two parts, rounded once.
inline int32_t log_base(double x, double* r, double inv_hi, double inv_lo) {
    int32_t st;
    uint64_t ix;
    int kadj;
    if (log_specials(x, r, &st, &ix, &kadj)) return st;
    *r = dd::mul_dd(ln_dd(ix, kadj), inv_hi, inv_lo);
    return kOk;
}

}  // namespace

int32_t log2_d(const double* xp, double* r) { return log_base(*xp, r, kInvLn2Hi, kInvLn2Lo); }
int32_t log10_d(const double* xp, double* r) { return log_base(*xp, r, kInvLn10Hi, kInvLn10Lo); }

int32_t ln_s(const float* xp, float* r) { return via_double<ln_d>(xp, r); }
int32_t log2_s(const float* xp, float* r) { return via_double<log2_d>(xp, r); }
int32_t log10_s(const float* xp, float* r) { return via_double<log10_d>(xp, r); }

// Log1p by ranges of |x|: the odd and even Taylor parts below 2^-13, and
// above that the logarithm of 1 + x, taken exactly as a rounded sum and its
// error e, with ln(1 + x) = ln(u) + e/u.
int32_t log1p_d(const double* xp, double* r) {
    const double x = *xp;
    if (x != x) {
        *r = x + x;
        return kOk;
    }
    if (x <= -1.0) {
        if (x == -1.0) {
            *r = -kInf;
            return kPole;
        }
        *r = double_of(0x7FF8000000000000ull);
        return kDomain;
    }
    if (x == kInf) {
        *r = x;
        return kOk;
    }
    const uint32_t ahw = static_cast<uint32_t>(bits_of(x) >> 32) & 0x7FFFFFFF;
    if (ahw < 0x3C600000) {
        *r = x;
        return kOk;
    }
    if (ahw < 0x3F200000) {
        const double s = x * x;
        *r = x + ((s * -0.2500000031044086 - 0.5) * x + (s * 0.20000000372548288 + 0.3333333333333333) * s) * x;
        return kOk;
    }
    double e;
    const double u = dd::two_sum(1.0, x, &e);
    const Dd v = ln_dd(bits_of(u), 0);
    *r = v.hi + (v.lo + e / u);
    return kOk;
}

int32_t log1p_s(const float* xp, float* r) { return via_double<log1p_d>(xp, r); }

// ---- Logb ----

namespace {

// The unbiased exponent field; zero is a domain error, infinity and NaN
// give |x|, and a denormal is first scaled by 2^scale_exp into the normal
// range. A NaN goes through an addition, which quiets a signalling one (a
// product by 1 would be folded away by the compiler).
template <typename T>
inline int32_t logb_of(T x, T* r, T scale, int scale_exp) {
    constexpr int kMant = sizeof(T) == 4 ? 23 : 52;
    constexpr uint32_t kField = sizeof(T) == 4 ? 0xFF : 0x7FF;
    if (x == T(0)) {
        *r = kNegInf<T>;
        return kDomain;
    }
    uint32_t e = static_cast<uint32_t>(bits_of(x) >> kMant) & kField;
    if (e == kField) {
        const T a = std::fabs(x);
        *r = a + a;
        return kOk;
    }
    int bias = static_cast<int>(kField >> 1);
    if (e == 0) {
        x *= scale;
        e = static_cast<uint32_t>(bits_of(x) >> kMant) & kField;
        bias += scale_exp;
    }
    *r = static_cast<T>(static_cast<int>(e) - bias);
    return kOk;
}

}  // namespace

int32_t logb_d(const double* xp, double* r) { return logb_of(*xp, r, 1.152921504606847e+18, 60); }
int32_t logb_s(const float* xp, float* r) { return logb_of(*xp, r, 33554432.0f, 25); }

}  // namespace orv::explog
