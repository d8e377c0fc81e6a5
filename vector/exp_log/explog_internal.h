// Private pieces of the exponential and logarithm kernels: the scalar
// callouts (one argument, one result, a status of 0..4), and the shared
// constants of the reductions.
#pragma once

#include <cstdint>
#include <cstring>

#include "vector/common/bits.h"
#include "vector/common/dd.h"

namespace orv::explog {

// Status values of the callouts.
inline constexpr int32_t kOk = 0, kDomain = 1, kPole = 2, kOverflow = 3, kUnderflow = 4;

// Scalar callouts. The single ones compute in double and round once at the end.
int32_t exp_d(const double* x, double* r);
int32_t exp_s(const float* x, float* r);
int32_t exp2_d(const double* x, double* r);
int32_t exp2_s(const float* x, float* r);
int32_t exp10_d(const double* x, double* r);
int32_t exp10_s(const float* x, float* r);
int32_t expm1_d(const double* x, double* r);
int32_t expm1_s(const float* x, float* r);
int32_t ln_d(const double* x, double* r);
int32_t ln_s(const float* x, float* r);
int32_t log2_d(const double* x, double* r);
int32_t log2_s(const float* x, float* r);
int32_t log10_d(const double* x, double* r);
int32_t log10_s(const float* x, float* r);
int32_t log1p_d(const double* x, double* r);
int32_t log1p_s(const float* x, float* r);
int32_t logb_d(const double* x, double* r);
int32_t logb_s(const float* x, float* r);

// The common part of a kernel description for the shared block driver
// (vector/block_driver.h): one input, the mode read at entry, a special test,
// and the scalar callout taking the flagged lanes.
template <typename T_, int32_t (*Callout)(const T_*, T_*)>
struct KernelBase {
    using T = T_;
    static constexpr int kArity = 1;
    static constexpr bool kReadsMode = true;
    static constexpr bool kSpecial = true;
    static constexpr bool kDivisorTest = false;
    static int32_t callout(T x, T* r) { return Callout(&x, r); }
};

using orv::vec::bitops::bits_of;
using orv::vec::bitops::double_of;
namespace dd = orv::vec::dd;
using Dd = dd::Dd;

// Rounding shifters: adding them leaves round(v) in the low bits.
inline constexpr double kShiftD = 6755399441055744.0;  // 1.5 * 2^52
inline constexpr float kShiftF = 12582912.0f;          // 1.5 * 2^23

// Exp, double reduction with 64 rows: n = round(x 64/ln 2), r = x - n ln2/64
// with ln 2/64 in two parts, the first exact when multiplied by n.
inline constexpr double kInvLn2x64 = 92.33248261689366;
inline constexpr double kNegLn2by64Hi = -0.010830424696223417;
inline constexpr double kNegLn2by64Lo = -2.572804622327669e-14;
// exp(r) - 1 = r + r^2 (1/2 + r (E3 + r (E4 + r (E5 + r E6)))) on |r| <= ln 2/128.
inline constexpr double kE3 = 0.1666666666665788, kE4 = 0.04166666666677052,
                        kE5 = 0.008333341995140497, kE6 = 0.0013888870459233254;

// Exp10 reduction: n = round(x 64/log10 2), r = x - n log10(2)/64.
inline constexpr double kInvLog10_2x64 = 212.60339807279118;
inline constexpr double kNegLog10_2by64Hi = -0.004703593682222618;
inline constexpr double kNegLog10_2by64Lo = -2.7088530630863833e-14;
// 2^r and 10^r minus 1, as r P(r), highest coefficient first.
inline constexpr double kExp2P[5] = {0.0013333417185814622, 0.009618142269653759,
                                     0.05550410866607508, 0.24022650695884967,
                                     0.6931471805599453};
inline constexpr double kExp10P[5] = {0.5393660213379269, 1.1712567517670747, 2.0346785924261965,
                                      2.6509490552364285, 2.3025850929940455};
inline constexpr double kShiftExp2D = 105553116266496.0;  // 1.5 * 2^46: rounds to 1/64

// Logarithm: ln 2 in two parts, the first a multiple of 2^-43 so that k
// times it is exact; the reduction base of the kLogD rows.
inline constexpr double kLn2Hi = 0.6931471805582987;
inline constexpr double kLn2Lo = 1.6465949582897082e-12;
inline constexpr uint64_t kLogBase = 0x3FE6000000000000ull - (1ull << 44);
// ln(1 + r) = r + r^2 (L0 + r (L1 + ... + r L6)) on |r| <= 2^-6.7.
inline constexpr double kLnP[7] = {-0.5,
                                   0.33333333333334386,
                                   -0.25000000000003386,
                                   0.19999999911565072,
                                   -0.1666666651884978,
                                   0.1428756883852146,
                                   -0.1250214602960357};
// 1/ln 2 and 1/ln 10 in two parts, the first split again for exact products.
inline constexpr double kInvLn2Hi = 1.4426950408889634, kInvLn2Lo = 2.0355273740931033e-17;
inline constexpr double kInvLn10Hi = 0.4342944819032518, kInvLn10Lo = 1.098319650216765e-17;

// Natural logarithm of a positive normal double given by its bits, plus
// kadj in the exponent, as hi + lo with |lo| below an ulp of hi.
Dd ln_dd(uint64_t ix, int kadj);

}  // namespace orv::explog
