// Results and statuses of the arithmetic and rounding kernels, through the
// exported names, with the status read back and the error record seen by a
// callback. Expected values are worked by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "capture.h"
#include "kernels.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kDenS = 0x1p-149;   // smallest single denormal
constexpr double kDenD = 0x1p-1074;  // smallest double denormal

// One element at index 5 of an ordinary vector; the element's width-specific
// values are given for single and double where they differ.
struct Case {
    const char* fn;
    double x, y;
    double want_s, want_d;
    int status;
    int status_d = -1;  // the double status where it differs
};

void PrintTo(const Case& c, std::ostream* os) { *os << c.fn << "(" << c.x << ", " << c.y << ")"; }

template <typename T>
void check_case(const Case& c) {
    const Kernels& k = kernels(c.fn);
    const bool single = sizeof(T) == 4;
    const std::string name = std::string(single ? "vs" : "vd") + c.fn;
    const T want = T(single ? c.want_s : c.want_d);
    const int status = single || c.status_d < 0 ? c.status : c.status_d;
    ErrorCapture cap;
    std::vector<T> x(20, T(4)), y(20, T(2)), r(20, T(-9));
    x[5] = T(c.x);
    y[5] = T(c.y);
    call(k, 20, x.data(), y.data(), r.data());
    EXPECT_TRUE(same_value(r[5], want)) << name << " gave " << r[5] << ", want " << want;
    EXPECT_EQ(_vtmGetErrStatus(), status) << name;
    if (status == 0) {
        EXPECT_TRUE(cap.errors().empty()) << name;
        return;
    }
    ASSERT_EQ(cap.errors().size(), 1u) << name;
    const SeenError& e = cap.errors()[0];
    EXPECT_EQ(e.code, status);
    EXPECT_EQ(e.index, 5);
    EXPECT_EQ(e.name, name);
    EXPECT_TRUE(same_value(e.arg1, double(x[5])));
    if (k.arity == 2) {
        EXPECT_TRUE(same_value(e.arg2, double(y[5])));
    }
    EXPECT_TRUE(same_value(e.res1, double(want)));
}

class Statuses : public testing::TestWithParam<Case> {};
TEST_P(Statuses, Single) { check_case<float>(GetParam()); }
TEST_P(Statuses, Double) { check_case<double>(GetParam()); }

// The failure table: every status and its result.
INSTANTIATE_TEST_SUITE_P(
    FailureTable, Statuses,
    testing::Values(
        Case{"Inv", 0.0, 0, kInf, kInf, 2}, Case{"Inv", -0.0, 0, -kInf, -kInf, 2},
        Case{"Inv", 0x1p-140, 0, kInf, 0x1p140, 0},  // infinite quotient, no status in single
        Case{"Div", 1.0, 0.0, kInf, kInf, 2}, Case{"Div", 0.0, 0.0, kNaN, kNaN, 2},
        Case{"Div", -3.0, -0.0, kInf, kInf, 2}, Case{"Div", 0x1p-149, 4.0, 0.0, 0x1p-151, 0},
        Case{"Sqrt", -1.0, 0, kNaN, kNaN, 1}, Case{"Sqrt", -kInf, 0, kNaN, kNaN, 1},
        Case{"Sqrt", -0.0, 0, -0.0, -0.0, 0}, Case{"Sqrt", kInf, 0, kInf, kInf, 0},
        Case{"Sqrt", kDenS, 0, 0x1.6a09e6p-75, std::sqrt(kDenS), 0},
        Case{"Sqrt", kNaN, 0, kNaN, kNaN, 0},
        Case{"InvSqrt", -2.0, 0, kNaN, kNaN, 1}, Case{"InvSqrt", -kInf, 0, kNaN, kNaN, 1},
        Case{"InvSqrt", 0.0, 0, kInf, kInf, 2}, Case{"InvSqrt", -0.0, 0, -kInf, -kInf, 2},
        Case{"InvSqrt", kInf, 0, 0.0, 0.0, 0}, Case{"InvSqrt", 0x1p-148, 0, 0x1p74, 0x1p74, 0},
        Case{"Fmod", 1.0, 0.0, kNaN, kNaN, 2}, Case{"Fmod", kInf, 3.0, kNaN, kNaN, 2},
        Case{"Fmod", -kInf, 1.0, kNaN, kNaN, 2}, Case{"Fmod", kNaN, 0.0, kNaN, kNaN, 0},
        Case{"Fmod", 7.5, 2.0, 1.5, 1.5, 0}, Case{"Fmod", -7.5, 2.0, -1.5, -1.5, 0},
        Case{"Fmod", 5.0, kInf, 5.0, 5.0, 0}, Case{"Fmod", -6.0, 3.0, -0.0, -0.0, 0},
        Case{"Fmod", 0x1p100, 3.0, 1.0, 1.0, 0},  // 2^100 = 1 mod 3
        Case{"Remainder", 1.0, 0.0, kNaN, kNaN, 1}, Case{"Remainder", kInf, 2.0, kNaN, kNaN, 0},
        Case{"Remainder", kInf, 0.0, kNaN, kNaN, 1}, Case{"Remainder", kNaN, 0.0, kNaN, kNaN, 0},
        Case{"Remainder", 5.0, 2.0, 1.0, 1.0, 0}, Case{"Remainder", 7.0, 2.0, -1.0, -1.0, 0},
        Case{"Remainder", 5.0, 3.0, -1.0, -1.0, 0}, Case{"Remainder", -5.0, 3.0, 1.0, 1.0, 0},
        Case{"Remainder", -4.0, 2.0, -0.0, -0.0, 0}, Case{"Remainder", 0x1p100, 3.0, 1.0, 1.0, 0},
        Case{"NextAfter", 0.0, -1.0, -kDenS, -kDenD, 4}, Case{"NextAfter", -0.0, 1.0, kDenS, kDenD, 4},
        Case{"NextAfter", 0x1p-126, 0.0, 0x1.fffffcp-127, 0x1.fffffffffffffp-127, 4, 0},
        Case{"NextAfter", 0x1p-1022, 0.0, 0.0, 0x0.fffffffffffffp-1022, 0, 4},
        Case{"NextAfter", 2 * kDenS, 1.0, 3 * kDenS, 0x1.0000000000001p-148, 4, 0},
        Case{"NextAfter", 2 * kDenD, 1.0, kDenS, 3 * kDenD, 4, 4},
        Case{"NextAfter", 0x1.fffffep127, kInf, kInf, 0x1.fffffe0000001p127, 3, 0},
        Case{"NextAfter", 0x1.fffffffffffffp1023, kInf, kInf, kInf, 0, 3},
        Case{"NextAfter", 1.0, 2.0, 0x1.000002p0, 0x1.0000000000001p0, 0},
        Case{"NextAfter", 1.0, -2.0, 0x1.fffffep-1, 0x1.fffffffffffffp-1, 0},
        Case{"NextAfter", -1.0, 0.0, -0x1.fffffep-1, -0x1.fffffffffffffp-1, 0},
        Case{"NextAfter", 3.0, 3.0, 3.0, 3.0, 0}, Case{"NextAfter", 0.0, -0.0, -0.0, -0.0, 0},
        Case{"NextAfter", kNaN, 1.0, kNaN, kNaN, 0}));

// The edge cases of the rounding family, the selectors and their NaN repair.
INSTANTIATE_TEST_SUITE_P(
    EdgeCases, Statuses,
    testing::Values(
        Case{"Ceil", -0.5, 0, -0.0, -0.0, 0}, Case{"Floor", 0.5, 0, 0.0, 0.0, 0},
        Case{"Ceil", kDenS, 0, 1.0, 1.0, 0}, Case{"Floor", -kDenS, 0, -1.0, -1.0, 0},
        Case{"Ceil", -kInf, 0, -kInf, -kInf, 0}, Case{"Floor", 8388607.5, 0, 8388607, 8388607, 0},
        Case{"Trunc", -2.75, 0, -2.0, -2.0, 0}, Case{"Trunc", -0.25, 0, -0.0, -0.0, 0},
        Case{"Round", 2.5, 0, 3.0, 3.0, 0}, Case{"Round", -2.5, 0, -3.0, -3.0, 0},
        Case{"Round", 0.49999997, 0, 0.0, 0.0, 0}, Case{"Round", -0.5, 0, -1.0, -1.0, 0},
        Case{"Rint", 2.5, 0, 2.0, 2.0, 0}, Case{"Rint", 3.5, 0, 4.0, 4.0, 0},
        Case{"Rint", -0.5, 0, -0.0, -0.0, 0}, Case{"NearbyInt", -1.5, 0, -2.0, -2.0, 0},
        Case{"Frac", -3.25, 0, -0.25, -0.25, 0}, Case{"Frac", kInf, 0, 0.0, 0.0, 0},
        Case{"Frac", -kInf, 0, -0.0, -0.0, 0}, Case{"Frac", -4.0, 0, -0.0, -0.0, 0},
        Case{"Fmax", kNaN, 1.0, 1.0, 1.0, 0}, Case{"Fmax", 1.0, kNaN, 1.0, 1.0, 0},
        Case{"Fmax", -0.0, 0.0, 0.0, 0.0, 0}, Case{"Fmin", 0.0, -0.0, -0.0, -0.0, 0},
        Case{"Fmin", kNaN, -kInf, -kInf, -kInf, 0}, Case{"Fmin", 2.0, -3.0, -3.0, -3.0, 0},
        Case{"MaxMag", -2.0, 1.0, -2.0, -2.0, 0}, Case{"MaxMag", -1.0, 1.0, 1.0, 1.0, 0},
        Case{"MinMag", -1.0, 1.0, -1.0, -1.0, 0}, Case{"MinMag", -0.5, 3.0, -0.5, -0.5, 0},
        Case{"MaxMag", kNaN, -5.0, -5.0, -5.0, 0}, Case{"MinMag", 4.0, kNaN, 4.0, 4.0, 0},
        Case{"CopySign", 3.0, -0.0, -3.0, -3.0, 0}, Case{"CopySign", -kInf, 1.0, kInf, kInf, 0},
        Case{"Fdim", 5.0, 3.0, 2.0, 2.0, 0}, Case{"Fdim", 3.0, 5.0, 0.0, 0.0, 0},
        Case{"Fdim", kNaN, 1.0, kNaN, kNaN, 0}, Case{"Fdim", 0x1p127, -0x1p127, kInf, 0x1p128, 0},
        Case{"Abs", -0.0, 0, 0.0, 0.0, 0}, Case{"Sqr", -3.0, 0, 9.0, 9.0, 0},
        Case{"Sqr", 0x1p70, 0, kInf, 0x1p140, 0}, Case{"Add", 0x1p127, 0x1p127, kInf, 0x1p128, 0},
        Case{"Sub", kInf, kInf, kNaN, kNaN, 0}, Case{"Mul", 0.0, kInf, kNaN, kNaN, 0}));

// Functions outside the failure table report nothing, whatever the input.
TEST(Statuses, OnlyTheTableReports) {
    const double sp[] = {0.0, -0.0, kDenD, -kDenS, 1.0, -2.5, 0x1p-1022, 0x1p1023, kInf, -kInf, kNaN};
    for (const Kernels& k : all_kernels()) {
        const std::string n = k.name;
        if (k.family != "arith") continue;  // the other families have failure tables of their own
        if (n == "Inv" || n == "Div" || n == "Sqrt" || n == "InvSqrt" || n == "Fmod" ||
            n == "Remainder" || n == "NextAfter")
            continue;
        ErrorCapture cap;
        std::vector<double> x, y;
        for (double a : sp)
            for (double b : sp) {
                x.push_back(a);
                y.push_back(b);
            }
        std::vector<double> r(x.size());
        std::vector<float> xs(x.begin(), x.end()), ys(y.begin(), y.end()), rs(x.size());
        call(k, int(x.size()), x.data(), y.data(), r.data());
        call(k, int(x.size()), xs.data(), ys.data(), rs.data());
        EXPECT_EQ(_vtmGetErrStatus(), 0) << n;
        EXPECT_TRUE(cap.errors().empty()) << n;
    }
}

TEST(Modf, IntegralAndFractionalParts) {
    struct M { double x, i, f; };
    const M cases[] = {{1.0, 1.0, 0.0},      {-2.75, -2.0, -0.75}, {0.25, 0.0, 0.25},
                       {-0.25, -0.0, -0.25}, {-3.0, -3.0, -0.0},   {kInf, kInf, 0.0},
                       {-kInf, -kInf, -0.0}, {0x1p60, 0x1p60, 0.0}, {kNaN, kNaN, kNaN}};
    ErrorCapture cap;
    for (const M& c : cases) {
        double ri, rf;
        float si, sf;
        const float xs = float(c.x);
        _vtmdModf(1, &c.x, &ri, &rf);
        _vtmsModf(1, &xs, &si, &sf);
        EXPECT_TRUE(same_value(ri, c.i) && same_value(rf, c.f)) << c.x << " gave " << ri << ", " << rf;
        EXPECT_TRUE(same_value(si, float(c.i)) && same_value(sf, float(c.f))) << c.x;
    }
    EXPECT_TRUE(cap.errors().empty());
}

TEST(LinearFrac, EachCaseOfTheScalars) {
    const double a[5] = {1, 2, -3, 0.5, 10}, b[5] = {2, 4, 1, -0.5, 0};
    double r[5];
    float as[5], bs[5], rs[5];
    for (int i = 0; i < 5; ++i) as[i] = float(a[i]), bs[i] = float(b[i]);
    // (2a + 1) / (3b - 1)
    _vtmdLinearFrac(5, a, b, 2, 1, 3, -1, r);
    _vtmsLinearFrac(5, as, bs, 2, 1, 3, -1, rs);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(r[i], (2 * a[i] + 1) / (3 * b[i] - 1));
        EXPECT_EQ(rs[i], float((2 * a[i] + 1) / (3 * b[i] - 1)));
    }
    // scaleb 0: (a - 1) / 4, exact here.
    _vtmdLinearFrac(5, a, b, 1, -1, 0, 4, r);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(r[i], (a[i] - 1) / 4);
    // scalea 0: 3 / (b + 1); b = -1 gives an infinity and no status.
    const double bb[3] = {1, 2, -1};
    ErrorCapture cap;
    _vtmdLinearFrac(3, a, bb, 0, 3, 1, 1, r);
    EXPECT_EQ(r[0], 1.5);
    EXPECT_EQ(r[1], 1.0);
    EXPECT_EQ(r[2], kInf);
    EXPECT_EQ(_vtmGetErrStatus(), 0);
}

}  // namespace

namespace {

// The strided forms of the two shapes of their own, against the plain ones
// on elements gathered by hand.
TEST(OwnShapes, StridedModfAndLinearFrac) {
    const double src[12] = {1.5, -2.25, 7.0, -0.5, 3.75, 1e300, -9.5, 0.125, 4.5, -6.0, 2.5, 11.0};
    for (int inc : {2, 3, -1}) {
        const int n = 4;
        const double* a = inc < 0 ? src + (n - 1) : src;
        double g[4], gb[4], i1[4], f1[4], q[4];
        for (int i = 0; i < n; ++i) g[i] = a[i * inc], gb[i] = src[11 - i];
        _vtmdModf(n, g, i1, f1);
        _vtmdLinearFrac(n, g, gb, 2, 1, 0.5, 3, q);
        double r1[12], r2[12], r[12];
        double* o = inc < 0 ? r + (n - 1) : r;
        double* o1 = inc < 0 ? r1 + (n - 1) : r1;
        double* o2 = inc < 0 ? r2 + (n - 1) : r2;
        _vtmdModfI(n, a, inc, o1, inc, o2, inc);
        _vtmdLinearFracI(n, a, inc, src + 11, -1, 2, 1, 0.5, 3, o, inc);
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(o1[i * inc], i1[i]);
            EXPECT_EQ(o2[i * inc], f1[i]);
            EXPECT_EQ(o[i * inc], q[i]);
        }
    }
}

}  // namespace
