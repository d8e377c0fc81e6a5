// Statuses and defined results of the inverse trigonometric and hyperbolic
// kernels: domain errors, poles, overflow, saturation, and Atan2 of zeros and
// infinities by the signs. Accuracy is measured by tools/accuracy.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using SFn = void (*)(int, const float*, float*);
using DFn = void (*)(int, const double*, double*);

struct Edge {
    const char* what;
    SFn s;  // one of the two is set
    DFn d;
    double x;
    double want;  // exact, NaN for any NaN
    int status;
    double fill = 0.75;  // the other lanes of the block
};

// One kernel call with x alone (tail) or in lane 5 of a block of fill.
double call(const Edge& e, int n, int at) {
    if (e.s) {
        std::vector<float> a(n, float(e.fill)), r(n);
        a[at] = float(e.x);
        e.s(n, a.data(), r.data());
        return r[at];
    }
    std::vector<double> a(n, e.fill), r(n);
    a[at] = e.x;
    e.d(n, a.data(), r.data());
    return r[at];
}

class Edges : public ::testing::TestWithParam<Edge> {};

TEST_P(Edges, ResultAndStatus) {
    const Edge& e = GetParam();
    for (int n : {1, 16}) {
        ErrorCapture cap;
        const int at = n == 1 ? 0 : 5;
        const double y = call(e, n, at);
        if (std::isnan(e.want))
            EXPECT_TRUE(std::isnan(y)) << e.what << " gave " << y;
        else
            EXPECT_EQ(y, e.want) << e.what << " n=" << n;
        EXPECT_EQ(_vtmGetErrStatus(), e.status) << e.what;
        ASSERT_EQ(cap.errors().size(), e.status ? 1u : 0u) << e.what;
        if (e.status) {
            EXPECT_EQ(cap.errors()[0].index, at);
        }
    }
}

const double kDenormD = 4.9406564584124654e-324;
const float kAbove1 = 1.0000001f;

INSTANTIATE_TEST_SUITE_P(
    Atrig, Edges,
    ::testing::Values(
        Edge{"sSinh(100)", orv_kern_sSinh, nullptr, 100.0, kInf, 3},
        Edge{"sSinh(-100)", orv_kern_sSinh, nullptr, -100.0, -kInf, 3},
        Edge{"sSinh(89.41599)", orv_kern_sSinh, nullptr, 89.41599, kInf, 3},
        Edge{"sSinh(-inf)", orv_kern_sSinh, nullptr, -kInf, -kInf, 0},
        Edge{"sSinh(1e-30)", orv_kern_sSinh, nullptr, double(1e-30f), double(1e-30f), 0},
        Edge{"sCosh(denormal)", orv_kern_sCosh, nullptr, 1e-40, 1.0, 0},
        Edge{"sCosh(-100)", orv_kern_sCosh, nullptr, -100.0, kInf, 3},
        Edge{"dCosh(denormal)", nullptr, orv_kern_dCosh, kDenormD, 1.0, 0},
        Edge{"dSinh(-800)", nullptr, orv_kern_dSinh, -800.0, -kInf, 3},
        Edge{"dCosh(711)", nullptr, orv_kern_dCosh, 711.0, kInf, 3},
        Edge{"dSinh(nan)", nullptr, orv_kern_dSinh, kNaN, kNaN, 0},
        Edge{"sTanh(20)", orv_kern_sTanh, nullptr, 20.0, 1.0, 0},
        Edge{"dTanh(20)", nullptr, orv_kern_dTanh, 20.0, 1.0, 0},
        Edge{"dTanh(-inf)", nullptr, orv_kern_dTanh, -kInf, -1.0, 0},
        Edge{"sAsin(1.0000001)", orv_kern_sAsin, nullptr, kAbove1, kNaN, 1},
        Edge{"sAsin(-inf)", orv_kern_sAsin, nullptr, -kInf, kNaN, 1},
        Edge{"dAsin(nan)", nullptr, orv_kern_dAsin, kNaN, kNaN, 0},
        Edge{"dAcos(-1 - ulp)", nullptr, orv_kern_dAcos, -1.0000000000000002, kNaN, 1},
        Edge{"dAcos(1)", nullptr, orv_kern_dAcos, 1.0, 0.0, 0},
        Edge{"sAsinpi(1)", orv_kern_sAsinpi, nullptr, 1.0, 0.5, 0},
        Edge{"dAcospi(-1)", nullptr, orv_kern_dAcospi, -1.0, 1.0, 0},
        Edge{"dAsinpi(2)", nullptr, orv_kern_dAsinpi, 2.0, kNaN, 1},
        Edge{"dAtan(inf)", nullptr, orv_kern_dAtan, kInf, 1.5707963267948966, 0},
        Edge{"sAtanpi(-inf)", orv_kern_sAtanpi, nullptr, -kInf, -0.5, 0},
        Edge{"dAcosh(0.5)", nullptr, orv_kern_dAcosh, 0.5, kNaN, 1, 1.25},
        Edge{"sAcosh(1)", orv_kern_sAcosh, nullptr, 1.0, 0.0, 0, 1.25},
        Edge{"dAtanh(1)", nullptr, orv_kern_dAtanh, 1.0, kInf, 2},
        Edge{"sAtanh(-1)", orv_kern_sAtanh, nullptr, -1.0, -kInf, 2},
        Edge{"dAtanh(1.5)", nullptr, orv_kern_dAtanh, 1.5, kNaN, 1},
        Edge{"sAsinh(-inf)", orv_kern_sAsinh, nullptr, -kInf, -kInf, 0}),
    [](const auto& info) { return std::to_string(info.index); });

// Atan2 and Atan2pi of every pair of signed zeros, ones and infinities:
// the C library's atan2 gives the rules of the signs (and a multiple of
// 1/4 for the pi form), with no status and the sign of a zero kept.
TEST(Atan2, ZerosAndInfinitiesBySigns) {
    const double v[] = {0.0, -0.0, 1.0, -1.0, kInf, -kInf};
    std::vector<double> ys, xs;
    for (double y : v)
        for (double x : v) {
            if (std::isfinite(y) && y != 0 && std::isfinite(x) && x != 0) continue;
            ys.push_back(y);
            xs.push_back(x);
        }
    const int n = int(ys.size());
    std::vector<float> yf(ys.begin(), ys.end()), xf(xs.begin(), xs.end());
    std::vector<double> rd(n), rdp(n);
    std::vector<float> rf(n), rfp(n);
    ErrorCapture cap;
    orv_kern_dAtan2(n, ys.data(), xs.data(), rd.data());
    orv_kern_dAtan2pi(n, ys.data(), xs.data(), rdp.data());
    orv_kern_sAtan2(n, yf.data(), xf.data(), rf.data());
    orv_kern_sAtan2pi(n, yf.data(), xf.data(), rfp.data());
    for (int i = 0; i < n; ++i) {
        const double want = std::atan2(ys[i], xs[i]);
        const double want_pi = std::copysign(std::round(std::fabs(want) / M_PI * 4) / 4, want);
        const auto same = [](double a, double b) { return a == b && std::signbit(a) == std::signbit(b); };
        EXPECT_TRUE(same(rd[i], want)) << ys[i] << ", " << xs[i] << " gave " << rd[i];
        EXPECT_TRUE(same(rf[i], float(want))) << ys[i] << ", " << xs[i] << " gave " << rf[i];
        EXPECT_TRUE(same(rdp[i], want_pi)) << ys[i] << ", " << xs[i] << " gave " << rdp[i];
        EXPECT_TRUE(same(rfp[i], want_pi)) << ys[i] << ", " << xs[i] << " gave " << rfp[i];
    }
    EXPECT_EQ(_vtmGetErrStatus(), 0);
    EXPECT_TRUE(cap.errors().empty());
}

// The single Sinh and Cosh lanes of the extended-precision block against the
// double kernels rounded: they differ by at most one float ulp.
TEST(SinhCosh, SingleAgreesWithDouble) {
    std::vector<float> x;
    for (float v = 0.0003f; v < 89.4f; v *= 1.01f) x.push_back(v), x.push_back(-v);
    const int n = int(x.size());
    std::vector<double> xd(x.begin(), x.end()), sd(n), cd(n);
    std::vector<float> sf(n), cf(n);
    orv_kern_sSinh(n, x.data(), sf.data());
    orv_kern_sCosh(n, x.data(), cf.data());
    orv_kern_dSinh(n, xd.data(), sd.data());
    orv_kern_dCosh(n, xd.data(), cd.data());
    for (int i = 0; i < n; ++i) {
        EXPECT_LE(std::fabs(sf[i] - float(sd[i])), std::nextafter(std::fabs(sf[i]), INFINITY) - std::fabs(sf[i]))
            << "sinh " << x[i];
        EXPECT_LE(std::fabs(cf[i] - float(cd[i])), std::nextafter(cf[i], INFINITY) - cf[i]) << "cosh " << x[i];
    }
}

}  // namespace
