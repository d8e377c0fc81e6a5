// Atan2 and Atan2pi of zeros and infinities by the signs. The other edge
// cases of the family are rows of tests/vector/edges_test.cpp; accuracy is
// measured by tools/accuracy.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <orv/vtm.h>

#include "../capture.h"
#include "frame/kernel_tables.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

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
        EXPECT_TRUE(same(rd[i], want) && same(rf[i], float(want)) && same(rdp[i], want_pi) && same(rfp[i], want_pi))
            << ys[i] << ", " << xs[i] << " gave " << rd[i] << " " << rf[i] << " " << rdp[i] << " " << rfp[i];
    }
    EXPECT_EQ(_vtmGetErrStatus(), 0);
    EXPECT_TRUE(cap.errors().empty());
}

}  // namespace
