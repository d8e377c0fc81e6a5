// The arithmetic kernels beyond their table of edge cases (edges_test.cpp):
// only the failure table reports, and the shapes of their own (Modf,
// LinearFrac) plain and strided. Expected values are worked by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "capture.h"
#include "kernels.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kDenD = 0x1p-1074, kDenS = 0x1p-149;

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
    EXPECT_EQ(std::vector<double>(r, r + 3), (std::vector<double>{1.5, 1.0, kInf}));
    EXPECT_EQ(_vtmGetErrStatus(), 0);
}

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
