// Median and mean absolute deviation against scipy and numpy
// (tests/data/stats/mad_kat.txt), both layouts, weights, a variable left
// out; the weighted median against a direct weighted rule.
#include <orv/orv.h>

#include <gtest/gtest.h>

#include "harness.h"
#include "kat.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace {

// double, by observation, weighted (the caller's centre: see
// order_status_test.cpp)
using Case = std::tuple<bool, bool, bool>;
class Deviations : public ::testing::TestWithParam<Case> {};

template <typename T>
void check(const kat::Case& k, bool by_obs, bool weighted) {
    const int64_t p = k.p;
    const std::vector<int64_t> mask = {0, 1, 1, 1};  // variable 0 left out
    harness::Task<T> t(k.rows.at("x"), weighted ? k.rows.at("w") : std::vector<double>{}, k.n, p, by_obs, 0,
                       T(0), mask.data());
    std::vector<T> med(p, T(-1)), mean(p, T(-1));
    __vstdSSEditTask(t.task, SS_ED_median_abs_dev, med.data());
    __vstdSSEditTask(t.task, SS_ED_mean_abs_dev, mean.data());
    ASSERT_EQ((sizeof(T) == 8 ? vstdSSMAD : vstsSSMAD)(
                  t.task, SS_EST_MEDIAN_ABS_DEV | SS_EST_MEAN_ABS_DEV, SS_METHOD_PLAIN_SUMS), SS_OK);
    const double tol = sizeof(T) == 8 ? 1e-13 : 2e-5;
    EXPECT_EQ(med[0], T(-1));
    EXPECT_EQ(mean[0], T(-1));
    for (int64_t j = 1; j < p; ++j) {
        const double want_med = k.rows.at("median")[j];
        EXPECT_NEAR(med[j], want_med, tol * (1 + want_med)) << j;
        const double want = k.rows.at(weighted ? "wmean" : "mean")[j];
        EXPECT_NEAR(mean[j], want, tol * (1 + want)) << j;
    }
}

TEST_P(Deviations, MatchScipyAndNumpy) {
    const auto [dbl, by_obs, weighted] = GetParam();
    const auto cases = kat::read("mad_kat.txt").cases;
    ASSERT_FALSE(cases.empty());
    for (const kat::Case& k : cases) {
        SCOPED_TRACE("n " + std::to_string(k.n));
        (dbl ? check<double> : check<float>)(k, by_obs, weighted);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Deviations,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(), ::testing::Bool()));

// Long rows (the medians found through histogram buckets, no copy): odd
// and even counts, by observation, against medians by std::nth_element.
TEST(Deviations, LongRowsMatchMediansByTheStandardLibrary) {
    auto median = [](std::vector<double> v) {
        const std::size_t h = v.size() / 2;
        std::nth_element(v.begin(), v.begin() + h, v.end());
        const double upper = v[h];
        if (v.size() % 2) return upper;
        return (upper - *std::max_element(v.begin(), v.begin() + h)) * 0.5 +
               *std::max_element(v.begin(), v.begin() + h);
    };
    std::mt19937_64 g(23);
    std::lognormal_distribution<double> skewed(0, 1);
    for (int64_t n : {100001, 100000}) {
        const int64_t p = 2;
        std::vector<double> x(n * p), col[2], out(p);
        for (int64_t i = 0; i < n * p; ++i) col[i % p].push_back(x[i] = skewed(g) * (i % p ? -1 : 1));
        harness::Task<double> t(x, {}, n, p, true, 0);
        __vstdSSEditTask(t.task, SS_ED_median_abs_dev, out.data());
        ASSERT_EQ(vstdSSMAD(t.task, SS_EST_MEDIAN_ABS_DEV, SS_METHOD_PLAIN_SUMS), SS_OK);
        for (int64_t j = 0; j < p; ++j) {
            const double m = median(col[j]);
            for (double& v : col[j]) v = std::fabs(v - m);
            EXPECT_EQ(out[j], median(col[j])) << n << " " << j;
        }
    }
}

// The weighted q-point read directly off the running weight: the first value
// whose running weight reaches t = q * total; on an exact hit with an even
// count, the midpoint with the next value of positive weight; past t, the
// straight line from the last value of positive weight below (at its running
// weight) to this one, except at the centre of an odd count.
double direct_rule(std::vector<std::pair<double, double>> vw, double q) {
    std::sort(vw.begin(), vw.end());
    const int64_t n = static_cast<int64_t>(vw.size());
    std::vector<double> run(n);
    double total = 0;
    for (int64_t i = 0; i < n; ++i) run[i] = total += vw[i].second;
    const double t = q * total;
    const int64_t i = std::min<int64_t>(std::lower_bound(run.begin(), run.end(), t) - run.begin(), n - 1);
    auto positive = [&](int64_t from, int step) {
        for (int64_t j = from; j >= 0 && j < n; j += step)
            if (vw[j].second > 0) return j;
        return int64_t(-1);
    };
    if (run[i] == t) {
        if (n % 2 || i == n - 1) return vw[i].first;
        const int64_t j = positive(i + 1, 1);
        return (vw[i].first + vw[j < 0 ? n - 1 : j].first) / 2;
    }
    const double below = run[i] - vw[i].second;
    const int64_t k = positive(i - 1, -1);
    if (below <= 0 || k < 0 || (n % 2 && below == (total - vw[i].second) * q)) return vw[i].first;
    return vw[k].first + (vw[i].first - vw[k].first) * (t - run[k]) / (run[i] - run[k]);
}

// Random integer weights (zeros among them) against the direct rule; unit
// weights at 1/2 against the plain median (midpoint of the two middle values
// for an even count), in both layouts.
TEST(WMedian, FollowsTheDirectRuleAndUnitWeightsGiveTheMedian) {
    std::mt19937_64 g(17);
    for (int64_t n : {1, 2, 3, 4, 5, 8, 9, 100, 101})
        for (double q : {0.0, 0.25, 0.5, 0.9, 1.0})
            for (bool unit : {false, true}) {
                const int64_t p = 2;
                std::vector<double> x(n * p), w(n), out(p, -1);  // x by observation
                std::vector<std::pair<double, double>> col[2];
                for (int64_t i = 0; i < n; ++i) {
                    w[i] = unit ? 1.0 : static_cast<double>(g() % 4);
                    for (int64_t j = 0; j < p; ++j) {
                        x[i * p + j] = static_cast<double>(g() % 1000000) / 7;  // distinct in practice
                        col[j].push_back({x[i * p + j], w[i]});
                    }
                }
                harness::Task<double> t(x, w, n, p, !unit, 0);
                t.task->quantile_orders = &q;
                t.task->quantiles = out.data();
                ASSERT_EQ(vstdSSWMedian(t.task, 0, 0), SS_OK);
                for (int64_t j = 0; j < p; ++j) {
                    EXPECT_NEAR(out[j], direct_rule(col[j], q), 1e-12 * std::fabs(out[j]))
                        << "n " << n << " q " << q;
                    if (!unit || q != 0.5) continue;
                    std::sort(col[j].begin(), col[j].end());
                    EXPECT_EQ(out[j], n % 2 ? col[j][n / 2].first
                                            : (col[j][n / 2 - 1].first + col[j][n / 2].first) * 0.5);
                }
            }
}

}  // namespace
