// Defined results, statuses and error records at the special and threshold
// inputs of every family, in one table: each input alone (the tail path) and
// in lane 5 of a block, through the exported entry with a callback that keeps
// the records. Values of the random inputs are the accuracy sample's (MPFR,
// every function over every binade); the sample checks no statuses.
#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "capture.h"
#include "kernels.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kDenS = 0x1p-149;   // smallest single denormal
constexpr double kDenD = 0x1p-1074;  // smallest double denormal

struct Edge {
    const char* fn;  // base name for both types, "sExp" or "dExp" for one
    double x, y;     // y: the second argument, or Powx's exponent
    double want;     // NaN: any NaN; a zero's sign counts
    int status;
    int ulps = 0;         // 0: bit for bit; else within this many ulps of want
    double fill = 0.75;   // the block's other lanes (Powx: 1)
    bool tiers = false;   // in every tier, not only HA
};
void PrintTo(const Edge& e, std::ostream* os) { *os << e.fn << "(" << e.x << ", " << e.y << ")"; }

template <typename T>
T run(const Edge& e, const std::string& base, int n, int at) {
    const bool powx = base == "Powx";
    std::vector<T> a(n, T(powx ? 1 : e.fill)), b(n, T(0.75)), r(n, T(-9));
    a[at] = T(e.x);
    b[at] = T(e.y);
    if (!powx) {
        call(kernels(base), n, a.data(), b.data(), r.data());
    } else if constexpr (sizeof(T) == 4) {
        _vtmsPowx(n, a.data(), T(e.y), r.data());
    } else {
        _vtmdPowx(n, a.data(), T(e.y), r.data());
    }
    return r[at];
}

template <typename T>
bool close(T got, T want, int ulps) {
    if (ulps == 0 || !std::isfinite(want)) return same_value(got, want);
    return std::fabs(got - want) <= T(ulps) * (std::nextafter(std::fabs(want), T(kInf)) - std::fabs(want));
}

template <typename T>
void check(const Edge& e) {
    const char t = sizeof(T) == 4 ? 's' : 'd';
    const bool typed = std::islower(static_cast<unsigned char>(e.fn[0]));
    if (typed && e.fn[0] != t) return;
    const std::string base = e.fn + typed, name = std::string("v") + t + base;
    const bool two = base != "Powx" && kernels(base).arity == 2;  // Powx: a scalar
    for (uint32_t tier : e.tiers ? std::vector<uint32_t>{VTM_LA, VTM_HA, VTM_EP} : std::vector<uint32_t>{VTM_HA})
        for (int n : {1, 20}) {
            const int at = n == 1 ? 0 : 5;
            ErrorCapture cap(VTM_ERRMODE_CALLBACK | VTM_FTZDAZ_OFF | tier);
            const T got = run<T>(e, base, n, at);
            const std::string where = name + " n=" + std::to_string(n) + " tier " + std::to_string(tier);
            EXPECT_TRUE(close(got, T(e.want), e.ulps)) << where << " gave " << got;
            EXPECT_EQ(_vtmGetErrStatus(), e.status) << where;
            ASSERT_EQ(cap.errors().size(), e.status ? 1u : 0u) << where;
            if (!e.status) continue;
            const SeenError& r = cap.errors()[0];
            EXPECT_EQ(std::tie(r.code, r.index, r.name), std::tie(e.status, at, name)) << where;
            EXPECT_TRUE(same_value(r.arg1, double(T(e.x)))) << where;
            if (two) { EXPECT_TRUE(same_value(r.arg2, double(T(e.y)))) << where; }
            EXPECT_TRUE(same_value(r.res1, double(got))) << where;
        }
}

class Edges : public testing::TestWithParam<Edge> {};
TEST_P(Edges, ResultStatusAndRecord) {
    check<float>(GetParam());
    check<double>(GetParam());
}
std::string row_name(const testing::TestParamInfo<Edge>& i) { return std::to_string(i.index); }
#define EDGES(NAME, ...) \
    INSTANTIATE_TEST_SUITE_P(NAME, Edges, testing::ValuesIn(std::vector<Edge>{__VA_ARGS__}), row_name)

// The arithmetic failure table, every status and its result, and the
// rounding family and selectors where the rounding-direction and accuracy
// tests do not reach (their other special inputs are checked there).
EDGES(Arith,
    {"Inv", 0.0, 0, kInf, 2}, {"Inv", -0.0, 0, -kInf, 2}, {"sInv", 0x1p-140, 0, kInf, 0},
    {"dInv", 0x1p-140, 0, 0x1p140, 0}, {"Div", 1.0, 0.0, kInf, 2}, {"Div", 0.0, 0.0, kNaN, 2},
    {"Div", -3.0, -0.0, kInf, 2}, {"sDiv", kDenS, 4.0, 0.0, 0}, {"dDiv", kDenS, 4.0, 0x1p-151, 0},
    {"Sqrt", -1.0, 0, kNaN, 1}, {"Sqrt", -kInf, 0, kNaN, 1}, {"Sqrt", -0.0, 0, -0.0, 0}, {"Sqrt", kInf, 0, kInf, 0},
    {"sSqrt", kDenS, 0, 0x1.6a09e6p-75, 0}, {"dSqrt", kDenS, 0, std::sqrt(kDenS), 0}, {"Sqrt", kNaN, 0, kNaN, 0},
    {"InvSqrt", -2.0, 0, kNaN, 1}, {"InvSqrt", -kInf, 0, kNaN, 1}, {"InvSqrt", 0.0, 0, kInf, 2},
    {"InvSqrt", -0.0, 0, -kInf, 2}, {"InvSqrt", kInf, 0, 0.0, 0}, {"InvSqrt", 0x1p-148, 0, 0x1p74, 0},
    {"Fmod", 1.0, 0.0, kNaN, 2}, {"Fmod", kInf, 3.0, kNaN, 2}, {"Fmod", -kInf, 1.0, kNaN, 2},
    {"Fmod", kNaN, 0.0, kNaN, 0}, {"Fmod", 7.5, 2.0, 1.5, 0}, {"Fmod", -7.5, 2.0, -1.5, 0},
    {"Fmod", 5.0, kInf, 5.0, 0}, {"Fmod", -6.0, 3.0, -0.0, 0}, {"Fmod", 0x1p100, 3.0, 1.0, 0},  // 2^100 = 1 mod 3
    {"Remainder", 1.0, 0.0, kNaN, 1}, {"Remainder", kInf, 2.0, kNaN, 0}, {"Remainder", kInf, 0.0, kNaN, 1},
    {"Remainder", kNaN, 0.0, kNaN, 0}, {"Remainder", 5.0, 2.0, 1.0, 0}, {"Remainder", 7.0, 2.0, -1.0, 0},
    {"Remainder", 5.0, 3.0, -1.0, 0}, {"Remainder", -5.0, 3.0, 1.0, 0}, {"Remainder", -4.0, 2.0, -0.0, 0},
    {"Remainder", 0x1p100, 3.0, 1.0, 0}, {"sNextAfter", 0.0, -1.0, -kDenS, 4}, {"dNextAfter", 0.0, -1.0, -kDenD, 4},
    {"sNextAfter", -0.0, 1.0, kDenS, 4}, {"dNextAfter", -0.0, 1.0, kDenD, 4},
    {"sNextAfter", 0x1p-126, 0.0, 0x1.fffffcp-127, 4}, {"dNextAfter", 0x1p-126, 0.0, 0x1.fffffffffffffp-127, 0},
    {"sNextAfter", 0x1p-1022, 0.0, 0.0, 0}, {"dNextAfter", 0x1p-1022, 0.0, 0x0.fffffffffffffp-1022, 4},
    {"sNextAfter", 2 * kDenS, 1.0, 3 * kDenS, 4}, {"dNextAfter", 2 * kDenS, 1.0, 0x1.0000000000001p-148, 0},
    {"sNextAfter", 2 * kDenD, 1.0, kDenS, 4}, {"dNextAfter", 2 * kDenD, 1.0, 3 * kDenD, 4},
    {"sNextAfter", 0x1.fffffep127, kInf, kInf, 3}, {"dNextAfter", 0x1.fffffep127, kInf, 0x1.fffffe0000001p127, 0},
    {"sNextAfter", 0x1.fffffffffffffp1023, kInf, kInf, 0}, {"dNextAfter", 0x1.fffffffffffffp1023, kInf, kInf, 3},
    {"sNextAfter", 1.0, 2.0, 0x1.000002p0, 0}, {"dNextAfter", 1.0, 2.0, 0x1.0000000000001p0, 0},
    {"sNextAfter", 1.0, -2.0, 0x1.fffffep-1, 0}, {"dNextAfter", 1.0, -2.0, 0x1.fffffffffffffp-1, 0},
    {"sNextAfter", -1.0, 0.0, -0x1.fffffep-1, 0}, {"dNextAfter", -1.0, 0.0, -0x1.fffffffffffffp-1, 0},
    {"NextAfter", 3.0, 3.0, 3.0, 0}, {"NextAfter", 0.0, -0.0, -0.0, 0}, {"NextAfter", kNaN, 1.0, kNaN, 0},
    {"Floor", 8388607.5, 0, 8388607, 0}, {"Trunc", -2.75, 0, -2.0, 0}, {"Trunc", -0.25, 0, -0.0, 0},
    {"Round", 0.49999997, 0, 0.0, 0}, {"Frac", -3.25, 0, -0.25, 0}, {"Frac", kInf, 0, 0.0, 0},
    {"Frac", -kInf, 0, -0.0, 0}, {"Frac", -4.0, 0, -0.0, 0}, {"Fmax", kNaN, 1.0, 1.0, 0}, {"Fmax", 1.0, kNaN, 1.0, 0},
    {"Fmax", -0.0, 0.0, 0.0, 0}, {"Fmin", 0.0, -0.0, -0.0, 0}, {"Fmin", kNaN, -kInf, -kInf, 0},
    {"Fmin", 2.0, -3.0, -3.0, 0}, {"MaxMag", -2.0, 1.0, -2.0, 0}, {"MaxMag", -1.0, 1.0, 1.0, 0},
    {"MinMag", -1.0, 1.0, -1.0, 0}, {"MinMag", -0.5, 3.0, -0.5, 0}, {"MaxMag", kNaN, -5.0, -5.0, 0},
    {"MinMag", 4.0, kNaN, 4.0, 0}, {"CopySign", 3.0, -0.0, -3.0, 0}, {"CopySign", -kInf, 1.0, kInf, 0},
    {"Fdim", 5.0, 3.0, 2.0, 0}, {"Fdim", 3.0, 5.0, 0.0, 0}, {"Fdim", kNaN, 1.0, kNaN, 0},
    {"sFdim", 0x1p127, -0x1p127, kInf, 0}, {"dFdim", 0x1p127, -0x1p127, 0x1p128, 0});

// The overflow and underflow thresholds of the exponentials (values beside
// them within two ulps of the C library's), the poles and domain errors of
// the logarithms, and exact points a user relies on.
EDGES(ExpLog,
    {"sExp", 88.72283, 0, std::exp(double(88.72283f)), 0, 2},
    {"sExp", double(std::nextafter(88.72283f, 100.0f)), 0, kInf, 3},
    {"dExp", 709.782712893384, 0, std::exp(709.782712893384), 0, 2},
    {"dExp", std::nextafter(709.782712893384, 800.0), 0, kInf, 3}, {"sExp", -100.0, 0, std::exp(-100.0), 0, 2},
    {"dExp", -740.0, 0, std::exp(-740.0), 0, 2}, {"sExp", -104.0, 0, 0.0, 4}, {"dExp", -746.0, 0, 0.0, 4},
    {"Exp", -kInf, 0, 0.0, 0}, {"Exp", kInf, 0, kInf, 0}, {"sExp2", -140.0, 0, 0x1p-140, 4},
    {"sExp2", -126.0, 0, 0x1p-126, 0}, {"dExp2", -1030.0, 0, 0x1p-1030, 4}, {"sExp2", 128.0, 0, kInf, 3},
    {"sExp2", 127.99, 0, std::exp2(double(127.99f)), 0, 2}, {"dExp2", 1024.0, 0, kInf, 3},
    // 38.53184 as a float lies above log10 of the largest float.
    {"sExp10", 38.5318, 0, std::pow(10.0, double(38.5318f)), 0, 2}, {"sExp10", 38.53184, 0, kInf, 3},
    {"sExp10", -40.0, 0, 1e-40, 4, 2}, {"dExp10", -310.0, 0, 1e-310, 4, 2}, {"dExp10", 309.0, 0, kInf, 3},
    {"sExpm1", 100.0, 0, kInf, 0}, {"sExpm1", 710.0, 0, kInf, 3}, {"dExpm1", 709.78, 0, std::expm1(709.78), 0, 2},
    {"dExpm1", 710.0, 0, kInf, 3}, {"dExpm1", -50.0, 0, -1.0, 0}, {"dExpm1", -kInf, 0, -1.0, 0},
    {"Ln", 0.0, 0, -kInf, 2}, {"Ln", -0.0, 0, -kInf, 2}, {"sLn", -1.0, 0, kNaN, 1}, {"dLn", -kInf, 0, kNaN, 1},
    {"dLn", kInf, 0, kInf, 0}, {"Ln", 1.0, 0, 0.0, 0}, {"sLog2", 0.0, 0, -kInf, 2}, {"dLog10", -2.0, 0, kNaN, 1},
    {"sLogb", 0.0, 0, -kInf, 1}, {"dLogb", -0.0, 0, -kInf, 1}, {"dLogb", -kInf, 0, kInf, 0},
    {"Log1p", -1.0, 0, -kInf, 2}, {"dLog1p", -2.0, 0, kNaN, 1}, {"dLog2", 0.125, 0, -3.0, 0},
    {"dLog2", 1024.0, 0, 10.0, 0}, {"dLog2", kDenD, 0, -1074.0, 0}, {"sLogb", kDenS, 0, -149.0, 0},
    {"sLogb", 3.0, 0, 1.0, 0}, {"sLogb", -0x1p100, 0, 100.0, 0}, {"dExp2", 0.0, 0, 1.0, 0},
    {"dExp2", -0.0, 0, 1.0, 0}, {"dExp2", 1.0, 0, 2.0, 0}, {"dExp2", 3.0, 0, 8.0, 0});

// Domain errors, poles, overflow and saturation of the inverse
// trigonometric and hyperbolic kernels.
EDGES(Atrig,
    {"sSinh", 100.0, 0, kInf, 3}, {"sSinh", -100.0, 0, -kInf, 3}, {"sSinh", 89.41599, 0, kInf, 3},
    {"sSinh", -kInf, 0, -kInf, 0}, {"sSinh", double(1e-30f), 0, double(1e-30f), 0}, {"sCosh", 1e-40, 0, 1.0, 0},
    {"sCosh", -100.0, 0, kInf, 3}, {"dCosh", kDenD, 0, 1.0, 0}, {"dSinh", -800.0, 0, -kInf, 3},
    {"dCosh", 711.0, 0, kInf, 3}, {"dSinh", kNaN, 0, kNaN, 0}, {"Tanh", 20.0, 0, 1.0, 0},
    {"dTanh", -kInf, 0, -1.0, 0}, {"sAsin", double(1.0000001f), 0, kNaN, 1}, {"sAsin", -kInf, 0, kNaN, 1},
    {"dAsin", kNaN, 0, kNaN, 0}, {"dAcos", -1.0000000000000002, 0, kNaN, 1}, {"dAcos", 1.0, 0, 0.0, 0},
    {"sAsinpi", 1.0, 0, 0.5, 0}, {"dAcospi", -1.0, 0, 1.0, 0}, {"dAsinpi", 2.0, 0, kNaN, 1},
    {"dAtan", kInf, 0, 1.5707963267948966, 0}, {"sAtanpi", -kInf, 0, -0.5, 0}, {"dAcosh", 0.5, 0, kNaN, 1, 0, 1.25},
    {"sAcosh", 1.0, 0, 0.0, 0, 0, 1.25}, {"dAtanh", 1.0, 0, kInf, 2}, {"sAtanh", -1.0, 0, -kInf, 2},
    {"dAtanh", 1.5, 0, kNaN, 1}, {"sAsinh", -kInf, 0, -kInf, 0});

// The special cases of pow in the C standard's Annex F, for Pow and for
// Powx (the exponent as its scalar).
std::vector<Edge> annex_f() {
    std::vector<Edge> v = {
        {"Pow", kNaN, 0.0, 1, 0}, {"Pow", -kInf, -0.0, 1, 0}, {"Pow", -0.0, 0.0, 1, 0}, {"Pow", -2.5, -0.0, 1, 0},
        {"Pow", 1, kNaN, 1, 0}, {"Pow", 1, -kInf, 1, 0}, {"Pow", 1, 1e30, 1, 0}, {"Pow", -1, kInf, 1, 0},
        {"Pow", -1, -kInf, 1, 0}, {"Pow", -0.0, -3, -kInf, 2}, {"Pow", 0.0, -3, kInf, 2}, {"Pow", -0.0, -2, kInf, 2},
        {"Pow", -0.0, -0.5, kInf, 2}, {"Pow", -0.0, -kInf, kInf, 0}, {"Pow", -0.0, 3, -0.0, 0},
        {"Pow", -0.0, 2, 0.0, 0}, {"Pow", -0.0, 0.5, 0.0, 0}, {"Pow", 0.0, kInf, 0.0, 0}, {"Pow", -kInf, -3, -0.0, 0},
        {"Pow", -kInf, -2, 0.0, 0}, {"Pow", -kInf, 3, -kInf, 0}, {"Pow", -kInf, 2.5, kInf, 0},
        {"Pow", kInf, -1, 0.0, 0}, {"Pow", kInf, 0.5, kInf, 0}, {"Pow", -0.5, -kInf, kInf, 0},
        {"Pow", -2, -kInf, 0.0, 0}, {"Pow", 0.5, kInf, 0.0, 0}, {"Pow", -2, kInf, kInf, 0}, {"Pow", kNaN, 1, kNaN, 0},
        {"Pow", 2, kNaN, kNaN, 0}, {"Pow", -2, 3, -8, 0}, {"Pow", -2, 2, 4, 0}, {"Pow", -8, 1.0 / 3, kNaN, 1}
    };
    for (size_t i = 0, n = v.size(); i < n; ++i) v.push_back(v[i]), v.back().fn = "Powx";
    return v;
}
INSTANTIATE_TEST_SUITE_P(AnnexF, Edges, testing::ValuesIn(annex_f()), row_name);

// Atan2 and Atan2pi of every pair of signed zeros, ones and infinities with
// a zero or an infinity in it: the C library's atan2 gives the rules of the
// signs (and a multiple of 1/4 for the pi form), with no status.
TEST(Atan2, ZerosAndInfinitiesBySigns) {
    const double s[] = {0.0, -0.0, 1.0, -1.0, kInf, -kInf};
    for (double y : s)
        for (double x : s) {
            if (std::isfinite(y) && y != 0 && std::isfinite(x) && x != 0) continue;
            const double w = std::atan2(y, x), pi_form = std::copysign(std::round(std::fabs(w) / M_PI * 4) / 4, w);
            for (const Edge& e : {Edge{"Atan2", y, x, w, 0}, Edge{"Atan2pi", y, x, pi_form, 0}}) {
                SCOPED_TRACE(testing::PrintToString(e));
                check<float>(e);
                check<double>(e);
            }
        }
}

// One row for each status of each power and root function (the table in
// docs/vector-power.md), values near the extremes where nothing may be
// reported, and exact results, which the final corrections must reach.
EDGES(Power,
    {"Pow", -2, 0.5, kNaN, 1}, {"Pow", 0.0, -1, kInf, 2}, {"Pow", 10, 400, kInf, 3}, {"Pow", -10, 401, -kInf, 3},
    {"Pow", 10, -400, 0.0, 4}, {"Pow", -10, -401, -0.0, 4}, {"Powx", -3, 2.5, kNaN, 1}, {"Powx", -0.0, -1, -kInf, 2},
    {"Powr", -2, 2, kNaN, 1}, {"Powr", 0.0, 0.0, kNaN, 1}, {"Powr", kInf, 0.0, kNaN, 1}, {"Powr", 1, kInf, kNaN, 1},
    {"Powr", -0.0, -2, kInf, 2}, {"Powr", -0.0, 3, 0.0, 0}, {"Powr", 10, 400, kInf, 3}, {"Powr", 10, -400, 0.0, 4},
    {"Pow3o2", -1, 0, kNaN, 1}, {"Pow3o2", -0.0, 0, 0.0, 0}, {"dPow3o2", 1e300, 0, kInf, 3},
    {"dPow3o2", 1e-300, 0, 0.0, 4}, {"sPow3o2", 1e30, 0, kInf, 3}, {"sPow3o2", 1e-32, 0, 0.0, 4},
    {"dPow3o2", 0x1p600, 0, 0x1p900, 0}, {"sPow3o2", 0x1p80, 0, 0x1p120, 0}, {"InvCbrt", 0.0, 0, kInf, 2},
    {"InvCbrt", -0.0, 0, -kInf, 2}, {"InvCbrt", -kInf, 0, -0.0, 0}, {"Cbrt", -0.0, 0, -0.0, 0},
    {"dHypot", 1.5e308, -1.5e308, kInf, 3}, {"sHypot", 3e38, 3e38, kInf, 3},
    {"dHypot", 0x3p1021, 0x4p1021, 0x5p1021, 0}, {"sHypot", 0x3p125, -0x4p125, 0x5p125, 0},
    {"dHypot", kDenD, kDenD, kDenD, 4}, {"Hypot", kInf, kNaN, kInf, 0}, {"Hypot", kNaN, -kInf, kInf, 0},
    {"Hypot", -0.0, 0.0, 0.0, 0}, {"Pow", 3, 13, 1594323, 0}, {"Pow", 0.25, -2.5, 32, 0}, {"Pow", 2, -10, 0x1p-10, 0},
    {"Powx", 6, 2, 36, 0}, {"Powr", 4, 1.5, 8, 0}, {"Cbrt", -343, 0, -7, 0}, {"Cbrt", 0x1p-129, 0, 0x1p-43, 0},
    {"InvCbrt", 0x1p-90, 0, 0x1p30, 0}, {"InvCbrt", -0.125, 0, -2, 0}, {"Pow2o3", -27, 0, 9, 0},
    {"Pow2o3", 0x1p-141, 0, 0x1p-94, 0}, {"Pow3o2", 9, 0, 27, 0}, {"sPow3o2", 0x1p-100, 0, 0x1p-150, 4},
    {"Hypot", -3, 4, 5, 0}, {"sHypot", 0x1p-140, 0x1p-140, 0x1.6a09e6p-140, 4},
    {"dHypot", 0x3p-1000, -0x4p-1000, 0x5p-1000, 0}, {"sHypot", 0x3p-70, -0x4p-70, 0x5p-70, 0});

// The error-function family by the classes of C's Annex F: domain errors,
// poles (the inverse in every tier), overflow of Erfcx and the underflow of
// non-zero results beside their thresholds (values within two ulps of the C
// library's), limits and exact points.
EDGES(Erf,
    {"sErfInv", 1.5, 0, kNaN, 1}, {"dErfInv", -kInf, 0, kNaN, 1}, {"dErfcInv", -0.5, 0, kNaN, 1},
    {"sErfcInv", 2.5, 0, kNaN, 1}, {"dCdfNormInv", 1.25, 0, kNaN, 1}, {"sCdfNormInv", -1.0, 0, kNaN, 1},
    {"ErfInv", 1.0, 0, kInf, 2, 0, 0.75, true}, {"ErfInv", -1.0, 0, -kInf, 2, 0, 0.75, true},
    {"ErfcInv", 0.0, 0, kInf, 2}, {"dErfcInv", 2.0, 0, -kInf, 2}, {"dCdfNormInv", 0.0, 0, -kInf, 2},
    {"CdfNormInv", 1.0, 0, kInf, 2}, {"dErfcx", -27.0, 0, kInf, 3}, {"sErfcx", -9.5, 0, kInf, 3},
    {"dErfcx", -26.6, 0, double(2 * std::exp((long double)-26.6 * -26.6)), 0, 2},
    {"dErfc", 26.6, 0, std::erfc(26.6), 4, 2}, {"dErfc", 28.0, 0, 0.0, 4}, {"sErfc", 11.0, 0, 0.0, 4},
    {"sErfc", 9.5, 0, double(float(std::erfc(9.5))), 4, 2}, {"dErf", 0x1p-1050, 0, std::erf(0x1p-1050), 4, 2},
    {"dCdfNorm", -38.0, 0, std::erfc(38 / std::sqrt(2.0)) / 2, 4, 2}, {"dCdfNorm", -41.0, 0, 0.0, 4},
    {"sCdfNorm", -14.0, 0, double(float(std::erfc(14 / std::sqrt(2.0)) / 2)), 4, 2},
    {"dErfcx", 1e308, 0, 1 / (1e308 * std::sqrt(M_PI)), 4, 2},
    {"dErfInv", 0x1p-1060, 0, std::sqrt(M_PI) / 2 * 0x1p-1060, 4, 2}, {"Erfc", kInf, 0, 0.0, 0},
    {"dErfc", -kInf, 0, 2.0, 0}, {"sErf", -kInf, 0, -1.0, 0}, {"dErfcx", -kInf, 0, kInf, 0},
    {"dErfcx", kInf, 0, 0.0, 0}, {"dCdfNorm", kInf, 0, 1.0, 0}, {"dCdfNormInv", 0.5, 0, 0.0, 0},
    {"dErfcInv", 1.0, 0, 0.0, 0}, {"dErf", 0.0, 0, 0.0, 0});

// Sin, Cos and Tan of a signed zero, the infinities (a domain error) and NaN.
EDGES(Trig,
    {"Sin", -0.0, 0, -0.0, 0}, {"Cos", -0.0, 0, 1.0, 0}, {"Tan", -0.0, 0, -0.0, 0}, {"Sin", kInf, 0, kNaN, 1},
    {"Cos", kInf, 0, kNaN, 1}, {"Tan", kInf, 0, kNaN, 1}, {"Sin", -kInf, 0, kNaN, 1}, {"Cos", -kInf, 0, kNaN, 1},
    {"Tan", -kInf, 0, kNaN, 1}, {"Sin", kNaN, 0, kNaN, 0}, {"Cos", kNaN, 0, kNaN, 0}, {"Tan", kNaN, 0, kNaN, 0});

// The pi- and degree-scaled functions in every tier: exact values at
// multiples of a quarter turn (signed zeros, poles, large arguments, which
// are all integers or half-integers), infinities and NaN.
std::vector<Edge> in_every_tier(std::vector<Edge> v) {
    for (Edge& e : v) e.tiers = true;
    return v;
}
INSTANTIATE_TEST_SUITE_P(TrigPi, Edges, testing::ValuesIn(in_every_tier({
    {"Sinpi", 1, 0, 0.0, 0}, {"Sinpi", -1, 0, -0.0, 0}, {"Sinpi", 0.5, 0, 1, 0}, {"Sinpi", -0.5, 0, -1, 0},
    {"Sinpi", 1.5, 0, -1, 0}, {"Sinpi", -0.0, 0, -0.0, 0}, {"Sinpi", 0x1p22 + 0.5, 0, 1, 0},
    {"Sinpi", 0x1p60, 0, 0.0, 0}, {"Sinpi", -0x1p60, 0, -0.0, 0}, {"Cospi", 0.5, 0, 0.0, 0},
    {"Cospi", -0.5, 0, 0.0, 0}, {"Cospi", 1.5, 0, 0.0, 0}, {"Cospi", 1, 0, -1, 0}, {"Cospi", 0, 0, 1, 0},
    {"Cospi", 0x1p22 + 1, 0, -1, 0}, {"Cospi", 0x1p60, 0, 1, 0}, {"Tanpi", 1, 0, -0.0, 0}, {"Tanpi", -1, 0, 0.0, 0},
    {"Tanpi", 2, 0, 0.0, 0}, {"Tanpi", 0.5, 0, kInf, 0}, {"Tanpi", -0.5, 0, -kInf, 0}, {"Tanpi", 1.5, 0, -kInf, 0},
    {"Tanpi", 2.5, 0, kInf, 0}, {"Tanpi", 0x1p22 + 1, 0, -0.0, 0}, {"Tanpi", 0x1p60, 0, 0.0, 0},
    {"Sind", 180, 0, 0.0, 0}, {"Sind", -180, 0, -0.0, 0}, {"Sind", 90, 0, 1, 0}, {"Sind", 270, 0, -1, 0},
    {"Sind", 360 * 0x1p40, 0, 0.0, 0}, {"Cosd", 90, 0, 0.0, 0}, {"Cosd", 270, 0, 0.0, 0}, {"Cosd", 180, 0, -1, 0},
    {"Cosd", 0, 0, 1, 0}, {"Cosd", 360 * 0x1p40, 0, 1, 0}, {"Tand", 180, 0, -0.0, 0}, {"Tand", 90, 0, kInf, 0},
    {"Tand", -90, 0, -kInf, 0}, {"Tand", 270, 0, -kInf, 0}, {"Tand", 360, 0, 0.0, 0},
    {"Tand", 180.0 * 131073, 0, -0.0, 0}, {"sSinpi", -kInf, 0, kNaN, 0}, {"dSinpi", -kInf, 0, kNaN, 1},
    {"sCospi", -kInf, 0, kNaN, 0}, {"dCospi", -kInf, 0, kNaN, 1}, {"Tanpi", -kInf, 0, kNaN, 1},
    {"Sind", -kInf, 0, kNaN, 1}, {"Cosd", -kInf, 0, kNaN, 1}, {"Tand", -kInf, 0, kNaN, 1},
    {"Sinpi", kNaN, 0, kNaN, 0}, {"Cospi", kNaN, 0, kNaN, 0}, {"Tanpi", kNaN, 0, kNaN, 0}, {"Sind", kNaN, 0, kNaN, 0},
    {"Cosd", kNaN, 0, kNaN, 0}, {"Tand", kNaN, 0, kNaN, 0}
})), row_name);

}  // namespace
