// Minimum and maximum against a direct scan, accumulated over blocks, with
// and without a variable mask; the statuses in their order through the
// checked call.
#include <orv/orv.h>

#include <gtest/gtest.h>

#include "harness.h"

#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

namespace {

// element type double, by observation, masked
using Case = std::tuple<bool, bool, bool>;
class Minmax : public ::testing::TestWithParam<Case> {};

template <typename T>
void check(bool by_obs, bool masked) {
    const int64_t p = 5, n = 1001, blocks = 3;
    std::mt19937_64 g(7);
    std::normal_distribution<double> nd(0.0, 10.0);
    std::vector<double> xo(n * p);  // by observation
    for (auto& v : xo) v = nd(g);
    for (int64_t i = 0; i < n; i += 37) xo[i * p + i % p] = NAN;  // never taken
    const int64_t mask[p] = {1, 0, 1, 1, 1};
    const T inf = std::numeric_limits<T>::infinity(), sentinel = T(-123);
    std::vector<T> mn(p, inf), mx(p, -inf);
    if (masked) mn[1] = mx[1] = sentinel;
    harness::Task<T> t(xo, {}, n / blocks, p, by_obs, 0, T(0), masked ? mask : nullptr);
    __vstdSSEditTask(t.task, SS_ED_minimum, mn.data());
    __vstdSSEditTask(t.task, SS_ED_maximum, mx.data());
    for (int64_t b = 0; b < blocks; ++b) {
        const int64_t first = b * (n / blocks);
        t.set_data(xo, {}, b == blocks - 1 ? n - first : n / blocks, first);
        const uint64_t est = SS_EST_MIN | SS_EST_MAX;
        ASSERT_EQ(sizeof(T) == 8 ? vstdSSMinmax(t.task, est, SS_METHOD_PLAIN_SUMS)
                                 : vstsSSMinmax(t.task, est, SS_METHOD_RUNNING),
                  SS_OK);
    }
    for (int64_t j = 0; j < p; ++j) {
        if (masked && !mask[j]) {
            EXPECT_TRUE(mn[j] == sentinel && mx[j] == sentinel);
            continue;
        }
        T lo = inf, hi = -inf;  // fmin and fmax pass over the NaNs
        for (int64_t i = 0; i < n; ++i) lo = std::fmin(lo, T(xo[i * p + j])), hi = std::fmax(hi, T(xo[i * p + j]));
        EXPECT_EQ(mn[j], lo) << j;
        EXPECT_EQ(mx[j], hi) << j;
    }
}

TEST_P(Minmax, MatchesADirectScanOverBlocks) {
    const auto [dbl, by_obs, masked] = GetParam();
    (dbl ? check<double> : check<float>)(by_obs, masked);
}

INSTANTIATE_TEST_SUITE_P(All, Minmax,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(), ::testing::Bool()));

TEST(Minmax, OneEstimateLeavesTheOtherArray) {
    const int64_t p = 2, n = 3, storage = SS_STORAGE_BY_VARIABLE;
    const double x[6] = {3, -1, 2, 5, 4, 9};
    double mn[2] = {0, 100}, mx[2] = {7, 7};
    SsTask* task = nullptr;
    ASSERT_EQ(__vstdSSNewTask(&task, &p, &n, &storage, x, nullptr, nullptr, 1), SS_OK);
    __vstdSSEditTask(task, SS_ED_minimum, mn);
    __vstdSSEditTask(task, SS_ED_maximum, mx);
    ASSERT_EQ(vstdSSMinmax(task, SS_EST_MIN, SS_METHOD_RUNNING), SS_OK);
    EXPECT_EQ(std::vector<double>(mn, mn + 2), (std::vector<double>{-1, 4}));  // the seed 0 is above -1
    EXPECT_EQ(std::vector<double>(mx, mx + 2), (std::vector<double>{7, 7}));
    __vstSSDeleteTask(&task);
}

}  // namespace
