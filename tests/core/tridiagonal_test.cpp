// The tridiagonal solvers of orv_core against a dense solve with partial
// pivoting: one and many right-hand sides, factor then solve, the transposed
// solve, a zero pivot and bad arguments.
#include <gtest/gtest.h>

#include <orv/orv_core.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

struct Band { std::vector<double> dl, d, du; };

// Diagonally dominant, as the spline systems are, with random entries.
Band random_band(int n, std::mt19937& g) {
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Band b{std::vector<double>(n > 1 ? n - 1 : 0), std::vector<double>(n), std::vector<double>(n > 1 ? n - 1 : 0)};
    for (int i = 0; i + 1 < n; ++i) b.dl[i] = u(g), b.du[i] = u(g);
    for (int i = 0; i < n; ++i) b.d[i] = 2.5 + u(g);
    return b;
}

// Dense Gaussian elimination with partial pivoting; column-major rhs.
std::vector<double> dense_solve(const Band& b, std::vector<double> rhs, int nrhs, bool trans) {
    const int n = int(b.d.size());
    std::vector<double> a(n * n, 0.0);
    for (int i = 0; i < n; ++i) {
        a[i * n + i] = b.d[i];
        if (i + 1 < n) a[(i + 1) * n + i] = b.dl[i], a[i * n + i + 1] = b.du[i];
    }
    if (trans)
        for (int i = 0; i < n; ++i)
            for (int j = i + 1; j < n; ++j) std::swap(a[i * n + j], a[j * n + i]);
    for (int c = 0; c < n; ++c) {
        int p = c;
        for (int r = c + 1; r < n; ++r)
            if (std::fabs(a[r * n + c]) > std::fabs(a[p * n + c])) p = r;
        for (int j = 0; j < n; ++j) std::swap(a[c * n + j], a[p * n + j]);
        for (int k = 0; k < nrhs; ++k) std::swap(rhs[k * n + c], rhs[k * n + p]);
        for (int r = c + 1; r < n; ++r) {
            const double f = a[r * n + c] / a[c * n + c];
            for (int j = c; j < n; ++j) a[r * n + j] -= f * a[c * n + j];
            for (int k = 0; k < nrhs; ++k) rhs[k * n + r] -= f * rhs[k * n + c];
        }
    }
    for (int k = 0; k < nrhs; ++k)
        for (int r = n - 1; r >= 0; --r) {
            double s = rhs[k * n + r];
            for (int j = r + 1; j < n; ++j) s -= a[r * n + j] * rhs[k * n + j];
            rhs[k * n + r] = s / a[r * n + r];
        }
    return rhs;
}

class Tridiagonal : public ::testing::TestWithParam<std::tuple<int, int>> {};

TEST_P(Tridiagonal, SolveAgreesWithDenseElimination) {
    const auto [n, nrhs] = GetParam();
    std::mt19937 g(1234 + n * 7 + nrhs);
    const Band b = random_band(n, g);
    std::vector<double> rhs(n * nrhs);
    std::uniform_real_distribution<double> u(-5.0, 5.0);
    for (double& v : rhs) v = u(g);
    const auto want = dense_solve(b, rhs, nrhs, false);
    Band w = b;
    std::vector<double> x = rhs;
    int info = -99;
    ddtsvb_4dfl(&n, &nrhs, w.dl.data(), w.d.data(), w.du.data(), x.data(), &n, &info);
    ASSERT_EQ(info, 0);
    for (int i = 0; i < n * nrhs; ++i) EXPECT_NEAR(x[i], want[i], 1e-12 * (1 + std::fabs(want[i])));

    // Factor once, then solve plain and transposed.
    for (bool trans : {false, true}) {
        Band f = b;
        info = -99;
        ddttrfb_4dfl(&n, f.dl.data(), f.d.data(), f.du.data(), &info);
        ASSERT_EQ(info, 0);
        std::vector<double> y = rhs;
        ddttrsb_4dfl(trans ? "T" : "N", &n, &nrhs, f.dl.data(), f.d.data(), f.du.data(), y.data(), &n, &info);
        ASSERT_EQ(info, 0);
        const auto ref = dense_solve(b, rhs, nrhs, trans);
        for (int i = 0; i < n * nrhs; ++i) EXPECT_NEAR(y[i], ref[i], 1e-12 * (1 + std::fabs(ref[i])));
    }

    // Single precision, the same system rounded.
    std::vector<float> dl(b.dl.begin(), b.dl.end()), d(b.d.begin(), b.d.end()), du(b.du.begin(), b.du.end()),
        xs(rhs.begin(), rhs.end());
    sdtsvb_4dfl(&n, &nrhs, dl.data(), d.data(), du.data(), xs.data(), &n, &info);
    ASSERT_EQ(info, 0);
    for (int i = 0; i < n * nrhs; ++i) EXPECT_NEAR(xs[i], want[i], 1e-4 * (1 + std::fabs(want[i])));
}

INSTANTIATE_TEST_SUITE_P(Sizes, Tridiagonal,
                         ::testing::Combine(::testing::Values(1, 2, 3, 10, 257), ::testing::Values(1, 3, 17)));

TEST(Tridiagonal, ZeroPivotIsReportedByItsRow) {
    // The second pivot vanishes: 1 - (1/1)*1 = 0.
    std::vector<double> dl = {1, 1}, d = {1, 1, 4}, du = {1, 1}, b = {1, 2, 3};
    const int n = 3, one = 1;
    int info = 0;
    ddtsvb_4dfl(&n, &one, dl.data(), d.data(), du.data(), b.data(), &n, &info);
    EXPECT_EQ(info, 2);
    std::vector<double> d0 = {0, 1, 1}, dl0 = {1, 1}, du0 = {1, 1};
    ddttrfb_4dfl(&n, dl0.data(), d0.data(), du0.data(), &info);
    EXPECT_EQ(info, 1);
}

TEST(Tridiagonal, BadArgumentsAreNamed) {
    std::vector<double> v(8, 1.0);
    int n = 3, nrhs = 1, ldb = 2, info = 0;
    ddtsvb_4dfl(&n, &nrhs, v.data(), v.data(), v.data(), v.data(), &ldb, &info);
    EXPECT_EQ(info, -7);
    ddttrsb_4dfl("X", &n, &nrhs, v.data(), v.data(), v.data(), v.data(), &n, &info);
    EXPECT_EQ(info, -1);
    n = -1;
    ddttrfb_4dfl(&n, v.data(), v.data(), v.data(), &info);
    EXPECT_EQ(info, -1);
}

// Long systems whose pivot products leave the range of the type in either
// direction: the factors must stay exact up to rounding (small residual).
class LongSystem : public ::testing::TestWithParam<double> {};
TEST_P(LongSystem, ResidualIsSmall) {
    const double scale = GetParam();
    const int n = 6000, one = 1;
    std::mt19937 g(99);
    Band b = random_band(n, g);
    for (int i = 0; i < n; ++i) b.d[i] *= scale;
    for (int i = 0; i + 1 < n; ++i) b.dl[i] *= scale, b.du[i] *= scale;
    std::vector<double> rhs(n);
    for (int i = 0; i < n; ++i) rhs[i] = std::cos(0.1 * i) * scale;
    Band f = b;
    std::vector<double> x = rhs;
    int info = -1;
    ddtsvb_4dfl(&n, &one, f.dl.data(), f.d.data(), f.du.data(), x.data(), &n, &info);
    ASSERT_EQ(info, 0);
    double worst = 0;
    for (int i = 0; i < n; ++i) {
        double r = b.d[i] * x[i] - rhs[i];
        if (i > 0) r += b.dl[i - 1] * x[i - 1];
        if (i + 1 < n) r += b.du[i] * x[i + 1];
        worst = std::max(worst, std::fabs(r) / scale);
    }
    EXPECT_LT(worst, 1e-13);
}
INSTANTIATE_TEST_SUITE_P(Scales, LongSystem, ::testing::Values(1e-3, 1.0, 1e3));

}  // namespace
