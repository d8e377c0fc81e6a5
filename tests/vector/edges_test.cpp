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
            EXPECT_EQ(r.code, e.status);
            EXPECT_EQ(r.index, at);
            EXPECT_EQ(r.name, name);
            EXPECT_TRUE(same_value(r.arg1, double(T(e.x)))) << where;
            if (two) {
                EXPECT_TRUE(same_value(r.arg2, double(T(e.y)))) << where;
            }
            EXPECT_TRUE(same_value(r.res1, double(got))) << where;
        }
}

class Edges : public testing::TestWithParam<Edge> {};
TEST_P(Edges, ResultStatusAndRecord) {
    check<float>(GetParam());
    check<double>(GetParam());
}
std::string row_name(const testing::TestParamInfo<Edge>& i) { return std::to_string(i.index); }

// The arithmetic failure table, every status and its result, and the
// rounding family and selectors where the rounding-direction and accuracy
// tests do not reach (their other special inputs are checked there).
INSTANTIATE_TEST_SUITE_P(
    Arith, Edges,
    testing::Values(
        Edge{"Inv", 0.0, 0, kInf, 2}, Edge{"Inv", -0.0, 0, -kInf, 2}, Edge{"sInv", 0x1p-140, 0, kInf, 0},
        Edge{"dInv", 0x1p-140, 0, 0x1p140, 0}, Edge{"Div", 1.0, 0.0, kInf, 2}, Edge{"Div", 0.0, 0.0, kNaN, 2},
        Edge{"Div", -3.0, -0.0, kInf, 2}, Edge{"sDiv", kDenS, 4.0, 0.0, 0}, Edge{"dDiv", kDenS, 4.0, 0x1p-151, 0},
        Edge{"Sqrt", -1.0, 0, kNaN, 1}, Edge{"Sqrt", -kInf, 0, kNaN, 1}, Edge{"Sqrt", -0.0, 0, -0.0, 0},
        Edge{"Sqrt", kInf, 0, kInf, 0}, Edge{"sSqrt", kDenS, 0, 0x1.6a09e6p-75, 0},
        Edge{"dSqrt", kDenS, 0, std::sqrt(kDenS), 0}, Edge{"Sqrt", kNaN, 0, kNaN, 0},
        Edge{"InvSqrt", -2.0, 0, kNaN, 1}, Edge{"InvSqrt", -kInf, 0, kNaN, 1}, Edge{"InvSqrt", 0.0, 0, kInf, 2},
        Edge{"InvSqrt", -0.0, 0, -kInf, 2}, Edge{"InvSqrt", kInf, 0, 0.0, 0}, Edge{"InvSqrt", 0x1p-148, 0, 0x1p74, 0},
        Edge{"Fmod", 1.0, 0.0, kNaN, 2}, Edge{"Fmod", kInf, 3.0, kNaN, 2}, Edge{"Fmod", -kInf, 1.0, kNaN, 2},
        Edge{"Fmod", kNaN, 0.0, kNaN, 0}, Edge{"Fmod", 7.5, 2.0, 1.5, 0}, Edge{"Fmod", -7.5, 2.0, -1.5, 0},
        Edge{"Fmod", 5.0, kInf, 5.0, 0}, Edge{"Fmod", -6.0, 3.0, -0.0, 0},
        Edge{"Fmod", 0x1p100, 3.0, 1.0, 0},  // 2^100 = 1 mod 3
        Edge{"Remainder", 1.0, 0.0, kNaN, 1}, Edge{"Remainder", kInf, 2.0, kNaN, 0},
        Edge{"Remainder", kInf, 0.0, kNaN, 1}, Edge{"Remainder", kNaN, 0.0, kNaN, 0},
        Edge{"Remainder", 5.0, 2.0, 1.0, 0}, Edge{"Remainder", 7.0, 2.0, -1.0, 0},
        Edge{"Remainder", 5.0, 3.0, -1.0, 0}, Edge{"Remainder", -5.0, 3.0, 1.0, 0},
        Edge{"Remainder", -4.0, 2.0, -0.0, 0}, Edge{"Remainder", 0x1p100, 3.0, 1.0, 0},
        Edge{"sNextAfter", 0.0, -1.0, -kDenS, 4}, Edge{"dNextAfter", 0.0, -1.0, -kDenD, 4},
        Edge{"sNextAfter", -0.0, 1.0, kDenS, 4}, Edge{"dNextAfter", -0.0, 1.0, kDenD, 4},
        Edge{"sNextAfter", 0x1p-126, 0.0, 0x1.fffffcp-127, 4},
        Edge{"dNextAfter", 0x1p-126, 0.0, 0x1.fffffffffffffp-127, 0},
        Edge{"sNextAfter", 0x1p-1022, 0.0, 0.0, 0}, Edge{"dNextAfter", 0x1p-1022, 0.0, 0x0.fffffffffffffp-1022, 4},
        Edge{"sNextAfter", 2 * kDenS, 1.0, 3 * kDenS, 4}, Edge{"dNextAfter", 2 * kDenS, 1.0, 0x1.0000000000001p-148, 0},
        Edge{"sNextAfter", 2 * kDenD, 1.0, kDenS, 4}, Edge{"dNextAfter", 2 * kDenD, 1.0, 3 * kDenD, 4},
        Edge{"sNextAfter", 0x1.fffffep127, kInf, kInf, 3}, Edge{"dNextAfter", 0x1.fffffep127, kInf, 0x1.fffffe0000001p127, 0},
        Edge{"sNextAfter", 0x1.fffffffffffffp1023, kInf, kInf, 0}, Edge{"dNextAfter", 0x1.fffffffffffffp1023, kInf, kInf, 3},
        Edge{"sNextAfter", 1.0, 2.0, 0x1.000002p0, 0}, Edge{"dNextAfter", 1.0, 2.0, 0x1.0000000000001p0, 0},
        Edge{"sNextAfter", 1.0, -2.0, 0x1.fffffep-1, 0}, Edge{"dNextAfter", 1.0, -2.0, 0x1.fffffffffffffp-1, 0},
        Edge{"sNextAfter", -1.0, 0.0, -0x1.fffffep-1, 0}, Edge{"dNextAfter", -1.0, 0.0, -0x1.fffffffffffffp-1, 0},
        Edge{"NextAfter", 3.0, 3.0, 3.0, 0}, Edge{"NextAfter", 0.0, -0.0, -0.0, 0}, Edge{"NextAfter", kNaN, 1.0, kNaN, 0},
        Edge{"Floor", 8388607.5, 0, 8388607, 0}, Edge{"Trunc", -2.75, 0, -2.0, 0}, Edge{"Trunc", -0.25, 0, -0.0, 0},
        Edge{"Round", 0.49999997, 0, 0.0, 0}, Edge{"Frac", -3.25, 0, -0.25, 0}, Edge{"Frac", kInf, 0, 0.0, 0},
        Edge{"Frac", -kInf, 0, -0.0, 0}, Edge{"Frac", -4.0, 0, -0.0, 0},
        Edge{"Fmax", kNaN, 1.0, 1.0, 0}, Edge{"Fmax", 1.0, kNaN, 1.0, 0}, Edge{"Fmax", -0.0, 0.0, 0.0, 0},
        Edge{"Fmin", 0.0, -0.0, -0.0, 0}, Edge{"Fmin", kNaN, -kInf, -kInf, 0}, Edge{"Fmin", 2.0, -3.0, -3.0, 0},
        Edge{"MaxMag", -2.0, 1.0, -2.0, 0}, Edge{"MaxMag", -1.0, 1.0, 1.0, 0}, Edge{"MinMag", -1.0, 1.0, -1.0, 0},
        Edge{"MinMag", -0.5, 3.0, -0.5, 0}, Edge{"MaxMag", kNaN, -5.0, -5.0, 0}, Edge{"MinMag", 4.0, kNaN, 4.0, 0},
        Edge{"CopySign", 3.0, -0.0, -3.0, 0}, Edge{"CopySign", -kInf, 1.0, kInf, 0},
        Edge{"Fdim", 5.0, 3.0, 2.0, 0}, Edge{"Fdim", 3.0, 5.0, 0.0, 0}, Edge{"Fdim", kNaN, 1.0, kNaN, 0},
        Edge{"sFdim", 0x1p127, -0x1p127, kInf, 0}, Edge{"dFdim", 0x1p127, -0x1p127, 0x1p128, 0}),
    row_name);

// The overflow and underflow thresholds of the exponentials (values beside
// them within two ulps of the C library's), the poles and domain errors of
// the logarithms, and exact points a user relies on.
INSTANTIATE_TEST_SUITE_P(
    ExpLog, Edges,
    testing::Values(
        Edge{"sExp", 88.72283, 0, std::exp(double(88.72283f)), 0, 2},
        Edge{"sExp", double(std::nextafter(88.72283f, 100.0f)), 0, kInf, 3},
        Edge{"dExp", 709.782712893384, 0, std::exp(709.782712893384), 0, 2},
        Edge{"dExp", std::nextafter(709.782712893384, 800.0), 0, kInf, 3},
        Edge{"sExp", -100.0, 0, std::exp(-100.0), 0, 2}, Edge{"dExp", -740.0, 0, std::exp(-740.0), 0, 2},
        Edge{"sExp", -104.0, 0, 0.0, 4}, Edge{"dExp", -746.0, 0, 0.0, 4},
        Edge{"Exp", -kInf, 0, 0.0, 0}, Edge{"Exp", kInf, 0, kInf, 0},
        Edge{"sExp2", -140.0, 0, 0x1p-140, 4}, Edge{"sExp2", -126.0, 0, 0x1p-126, 0},
        Edge{"dExp2", -1030.0, 0, 0x1p-1030, 4}, Edge{"sExp2", 128.0, 0, kInf, 3},
        Edge{"sExp2", 127.99, 0, std::exp2(double(127.99f)), 0, 2}, Edge{"dExp2", 1024.0, 0, kInf, 3},
        // 38.53184 as a float lies above log10 of the largest float.
        Edge{"sExp10", 38.5318, 0, std::pow(10.0, double(38.5318f)), 0, 2},
        Edge{"sExp10", 38.53184, 0, kInf, 3}, Edge{"sExp10", -40.0, 0, 1e-40, 4, 2},
        Edge{"dExp10", -310.0, 0, 1e-310, 4, 2}, Edge{"dExp10", 309.0, 0, kInf, 3},
        Edge{"sExpm1", 100.0, 0, kInf, 0}, Edge{"sExpm1", 710.0, 0, kInf, 3},
        Edge{"dExpm1", 709.78, 0, std::expm1(709.78), 0, 2}, Edge{"dExpm1", 710.0, 0, kInf, 3},
        Edge{"dExpm1", -50.0, 0, -1.0, 0}, Edge{"dExpm1", -kInf, 0, -1.0, 0},
        Edge{"Ln", 0.0, 0, -kInf, 2}, Edge{"Ln", -0.0, 0, -kInf, 2}, Edge{"sLn", -1.0, 0, kNaN, 1},
        Edge{"dLn", -kInf, 0, kNaN, 1}, Edge{"dLn", kInf, 0, kInf, 0}, Edge{"Ln", 1.0, 0, 0.0, 0},
        Edge{"sLog2", 0.0, 0, -kInf, 2}, Edge{"dLog10", -2.0, 0, kNaN, 1}, Edge{"sLogb", 0.0, 0, -kInf, 1},
        Edge{"dLogb", -0.0, 0, -kInf, 1}, Edge{"dLogb", -kInf, 0, kInf, 0}, Edge{"Log1p", -1.0, 0, -kInf, 2},
        Edge{"dLog1p", -2.0, 0, kNaN, 1},
        Edge{"dLog2", 0.125, 0, -3.0, 0}, Edge{"dLog2", 1024.0, 0, 10.0, 0}, Edge{"dLog2", kDenD, 0, -1074.0, 0},
        Edge{"sLogb", kDenS, 0, -149.0, 0}, Edge{"sLogb", 3.0, 0, 1.0, 0}, Edge{"sLogb", -0x1p100, 0, 100.0, 0},
        Edge{"dExp2", 0.0, 0, 1.0, 0}, Edge{"dExp2", -0.0, 0, 1.0, 0}, Edge{"dExp2", 1.0, 0, 2.0, 0},
        Edge{"dExp2", 3.0, 0, 8.0, 0}),
    row_name);

// Domain errors, poles, overflow and saturation of the inverse
// trigonometric and hyperbolic kernels.
INSTANTIATE_TEST_SUITE_P(
    Atrig, Edges,
    testing::Values(
        Edge{"sSinh", 100.0, 0, kInf, 3}, Edge{"sSinh", -100.0, 0, -kInf, 3}, Edge{"sSinh", 89.41599, 0, kInf, 3},
        Edge{"sSinh", -kInf, 0, -kInf, 0}, Edge{"sSinh", double(1e-30f), 0, double(1e-30f), 0},
        Edge{"sCosh", 1e-40, 0, 1.0, 0}, Edge{"sCosh", -100.0, 0, kInf, 3}, Edge{"dCosh", kDenD, 0, 1.0, 0},
        Edge{"dSinh", -800.0, 0, -kInf, 3}, Edge{"dCosh", 711.0, 0, kInf, 3}, Edge{"dSinh", kNaN, 0, kNaN, 0},
        Edge{"Tanh", 20.0, 0, 1.0, 0}, Edge{"dTanh", -kInf, 0, -1.0, 0},
        Edge{"sAsin", double(1.0000001f), 0, kNaN, 1}, Edge{"sAsin", -kInf, 0, kNaN, 1},
        Edge{"dAsin", kNaN, 0, kNaN, 0}, Edge{"dAcos", -1.0000000000000002, 0, kNaN, 1},
        Edge{"dAcos", 1.0, 0, 0.0, 0}, Edge{"sAsinpi", 1.0, 0, 0.5, 0}, Edge{"dAcospi", -1.0, 0, 1.0, 0},
        Edge{"dAsinpi", 2.0, 0, kNaN, 1}, Edge{"dAtan", kInf, 0, 1.5707963267948966, 0},
        Edge{"sAtanpi", -kInf, 0, -0.5, 0}, Edge{"dAcosh", 0.5, 0, kNaN, 1, 0, 1.25},
        Edge{"sAcosh", 1.0, 0, 0.0, 0, 0, 1.25}, Edge{"dAtanh", 1.0, 0, kInf, 2}, Edge{"sAtanh", -1.0, 0, -kInf, 2},
        Edge{"dAtanh", 1.5, 0, kNaN, 1}, Edge{"sAsinh", -kInf, 0, -kInf, 0}),
    row_name);

// The special cases of pow in the C standard's Annex F, for Pow and for
// Powx (the exponent as its scalar).
std::vector<Edge> annex_f() {
    std::vector<Edge> v = {
        {"Pow", kNaN, 0.0, 1, 0},     {"Pow", -kInf, -0.0, 1, 0},  {"Pow", -0.0, 0.0, 1, 0},
        {"Pow", -2.5, -0.0, 1, 0},    {"Pow", 1, kNaN, 1, 0},      {"Pow", 1, -kInf, 1, 0},
        {"Pow", 1, 1e30, 1, 0},       {"Pow", -1, kInf, 1, 0},     {"Pow", -1, -kInf, 1, 0},
        {"Pow", -0.0, -3, -kInf, 2},  {"Pow", 0.0, -3, kInf, 2},   {"Pow", -0.0, -2, kInf, 2},
        {"Pow", -0.0, -0.5, kInf, 2}, {"Pow", -0.0, -kInf, kInf, 0}, {"Pow", -0.0, 3, -0.0, 0},
        {"Pow", -0.0, 2, 0.0, 0},     {"Pow", -0.0, 0.5, 0.0, 0},  {"Pow", 0.0, kInf, 0.0, 0},
        {"Pow", -kInf, -3, -0.0, 0},  {"Pow", -kInf, -2, 0.0, 0},  {"Pow", -kInf, 3, -kInf, 0},
        {"Pow", -kInf, 2.5, kInf, 0}, {"Pow", kInf, -1, 0.0, 0},   {"Pow", kInf, 0.5, kInf, 0},
        {"Pow", -0.5, -kInf, kInf, 0}, {"Pow", -2, -kInf, 0.0, 0}, {"Pow", 0.5, kInf, 0.0, 0},
        {"Pow", -2, kInf, kInf, 0},   {"Pow", kNaN, 1, kNaN, 0},   {"Pow", 2, kNaN, kNaN, 0},
        {"Pow", -2, 3, -8, 0},        {"Pow", -2, 2, 4, 0},        {"Pow", -8, 1.0 / 3, kNaN, 1},
    };
    for (size_t i = 0, n = v.size(); i < n; ++i) v.push_back(v[i]), v.back().fn = "Powx";
    return v;
}
INSTANTIATE_TEST_SUITE_P(AnnexF, Edges, testing::ValuesIn(annex_f()), row_name);

// One row for each status of each power and root function (the table in
// docs/vector-power.md), values near the extremes where nothing may be
// reported, and exact results, which the final corrections must reach.
INSTANTIATE_TEST_SUITE_P(
    Power, Edges,
    testing::Values(
        Edge{"Pow", -2, 0.5, kNaN, 1}, Edge{"Pow", 0.0, -1, kInf, 2}, Edge{"Pow", 10, 400, kInf, 3},
        Edge{"Pow", -10, 401, -kInf, 3}, Edge{"Pow", 10, -400, 0.0, 4}, Edge{"Pow", -10, -401, -0.0, 4},
        Edge{"Powx", -3, 2.5, kNaN, 1}, Edge{"Powx", -0.0, -1, -kInf, 2}, Edge{"Powr", -2, 2, kNaN, 1},
        Edge{"Powr", 0.0, 0.0, kNaN, 1}, Edge{"Powr", kInf, 0.0, kNaN, 1}, Edge{"Powr", 1, kInf, kNaN, 1},
        Edge{"Powr", -0.0, -2, kInf, 2}, Edge{"Powr", -0.0, 3, 0.0, 0}, Edge{"Powr", 10, 400, kInf, 3},
        Edge{"Powr", 10, -400, 0.0, 4}, Edge{"Pow3o2", -1, 0, kNaN, 1}, Edge{"Pow3o2", -0.0, 0, 0.0, 0},
        Edge{"dPow3o2", 1e300, 0, kInf, 3}, Edge{"dPow3o2", 1e-300, 0, 0.0, 4}, Edge{"sPow3o2", 1e30, 0, kInf, 3},
        Edge{"sPow3o2", 1e-32, 0, 0.0, 4}, Edge{"dPow3o2", 0x1p600, 0, 0x1p900, 0},
        Edge{"sPow3o2", 0x1p80, 0, 0x1p120, 0}, Edge{"InvCbrt", 0.0, 0, kInf, 2}, Edge{"InvCbrt", -0.0, 0, -kInf, 2},
        Edge{"InvCbrt", -kInf, 0, -0.0, 0}, Edge{"Cbrt", -0.0, 0, -0.0, 0},
        Edge{"dHypot", 1.5e308, -1.5e308, kInf, 3}, Edge{"sHypot", 3e38, 3e38, kInf, 3},
        Edge{"dHypot", 0x3p1021, 0x4p1021, 0x5p1021, 0}, Edge{"sHypot", 0x3p125, -0x4p125, 0x5p125, 0},
        Edge{"dHypot", kDenD, kDenD, kDenD, 4}, Edge{"Hypot", kInf, kNaN, kInf, 0},
        Edge{"Hypot", kNaN, -kInf, kInf, 0}, Edge{"Hypot", -0.0, 0.0, 0.0, 0},
        Edge{"Pow", 3, 13, 1594323, 0}, Edge{"Pow", 0.25, -2.5, 32, 0}, Edge{"Pow", 2, -10, 0x1p-10, 0},
        Edge{"Powx", 6, 2, 36, 0}, Edge{"Powr", 4, 1.5, 8, 0}, Edge{"Cbrt", -343, 0, -7, 0},
        Edge{"Cbrt", 0x1p-129, 0, 0x1p-43, 0}, Edge{"InvCbrt", 0x1p-90, 0, 0x1p30, 0},
        Edge{"InvCbrt", -0.125, 0, -2, 0}, Edge{"Pow2o3", -27, 0, 9, 0}, Edge{"Pow2o3", 0x1p-141, 0, 0x1p-94, 0},
        Edge{"Pow3o2", 9, 0, 27, 0}, Edge{"sPow3o2", 0x1p-100, 0, 0x1p-150, 4}, Edge{"Hypot", -3, 4, 5, 0},
        Edge{"sHypot", 0x1p-140, 0x1p-140, 0x1.6a09e6p-140, 4}, Edge{"dHypot", 0x3p-1000, -0x4p-1000, 0x5p-1000, 0},
        Edge{"sHypot", 0x3p-70, -0x4p-70, 0x5p-70, 0}),
    row_name);

// Sin, Cos and Tan of a signed zero, the infinities (a domain error) and NaN.
INSTANTIATE_TEST_SUITE_P(
    Trig, Edges,
    testing::Values(Edge{"Sin", -0.0, 0, -0.0, 0}, Edge{"Cos", -0.0, 0, 1.0, 0}, Edge{"Tan", -0.0, 0, -0.0, 0},
                    Edge{"Sin", kInf, 0, kNaN, 1}, Edge{"Cos", kInf, 0, kNaN, 1}, Edge{"Tan", kInf, 0, kNaN, 1},
                    Edge{"Sin", -kInf, 0, kNaN, 1}, Edge{"Cos", -kInf, 0, kNaN, 1}, Edge{"Tan", -kInf, 0, kNaN, 1},
                    Edge{"Sin", kNaN, 0, kNaN, 0}, Edge{"Cos", kNaN, 0, kNaN, 0}, Edge{"Tan", kNaN, 0, kNaN, 0}),
    row_name);

// The pi- and degree-scaled functions in every tier: exact values at
// multiples of a quarter turn (signed zeros, poles, large arguments, which
// are all integers or half-integers), infinities and NaN.
std::vector<Edge> in_every_tier(std::vector<Edge> v) {
    for (Edge& e : v) e.tiers = true;
    return v;
}
INSTANTIATE_TEST_SUITE_P(
    TrigPi, Edges,
    testing::ValuesIn(in_every_tier({
        {"Sinpi", 1, 0, 0.0, 0},       {"Sinpi", -1, 0, -0.0, 0},     {"Sinpi", 0.5, 0, 1, 0},
        {"Sinpi", -0.5, 0, -1, 0},     {"Sinpi", 1.5, 0, -1, 0},      {"Sinpi", -0.0, 0, -0.0, 0},
        {"Sinpi", 0x1p22 + 0.5, 0, 1, 0}, {"Sinpi", 0x1p60, 0, 0.0, 0}, {"Sinpi", -0x1p60, 0, -0.0, 0},
        {"Cospi", 0.5, 0, 0.0, 0},     {"Cospi", -0.5, 0, 0.0, 0},    {"Cospi", 1.5, 0, 0.0, 0},
        {"Cospi", 1, 0, -1, 0},        {"Cospi", 0, 0, 1, 0},         {"Cospi", 0x1p22 + 1, 0, -1, 0},
        {"Cospi", 0x1p60, 0, 1, 0},    {"Tanpi", 1, 0, -0.0, 0},      {"Tanpi", -1, 0, 0.0, 0},
        {"Tanpi", 2, 0, 0.0, 0},       {"Tanpi", 0.5, 0, kInf, 0},    {"Tanpi", -0.5, 0, -kInf, 0},
        {"Tanpi", 1.5, 0, -kInf, 0},   {"Tanpi", 2.5, 0, kInf, 0},    {"Tanpi", 0x1p22 + 1, 0, -0.0, 0},
        {"Tanpi", 0x1p60, 0, 0.0, 0},  {"Sind", 180, 0, 0.0, 0},      {"Sind", -180, 0, -0.0, 0},
        {"Sind", 90, 0, 1, 0},         {"Sind", 270, 0, -1, 0},       {"Sind", 360 * 0x1p40, 0, 0.0, 0},
        {"Cosd", 90, 0, 0.0, 0},       {"Cosd", 270, 0, 0.0, 0},      {"Cosd", 180, 0, -1, 0},
        {"Cosd", 0, 0, 1, 0},          {"Cosd", 360 * 0x1p40, 0, 1, 0}, {"Tand", 180, 0, -0.0, 0},
        {"Tand", 90, 0, kInf, 0},      {"Tand", -90, 0, -kInf, 0},    {"Tand", 270, 0, -kInf, 0},
        {"Tand", 360, 0, 0.0, 0},      {"Tand", 180.0 * 131073, 0, -0.0, 0},
        {"sSinpi", -kInf, 0, kNaN, 0}, {"dSinpi", -kInf, 0, kNaN, 1}, {"sCospi", -kInf, 0, kNaN, 0},
        {"dCospi", -kInf, 0, kNaN, 1}, {"Tanpi", -kInf, 0, kNaN, 1},  {"Sind", -kInf, 0, kNaN, 1},
        {"Cosd", -kInf, 0, kNaN, 1},   {"Tand", -kInf, 0, kNaN, 1},   {"Sinpi", kNaN, 0, kNaN, 0},
        {"Cospi", kNaN, 0, kNaN, 0},   {"Tanpi", kNaN, 0, kNaN, 0},   {"Sind", kNaN, 0, kNaN, 0},
        {"Cosd", kNaN, 0, kNaN, 0},    {"Tand", kNaN, 0, kNaN, 0},
    })),
    row_name);

}  // namespace
