// Quantiles and order statistics against numpy (tests/data/stats/order_kat.txt),
// both layouts, with a variable mask; the sorting and selection routines
// against the standard library; the statuses in their order.
#include <orv/orv.h>

#include <gtest/gtest.h>

#include "harness.h"
#include "kat.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace {

// double, data by observation, order statistics (none, by variable, by
// observation), masked
using Case = std::tuple<bool, bool, int, bool>;
class Quantiles : public ::testing::TestWithParam<Case> {};

template <typename T>
void check(const kat::Case& k, const std::vector<double>& g_orders, bool by_obs, int os_layout,
           bool masked) {
    const int64_t p = k.p, n = k.n, count = static_cast<int64_t>(g_orders.size());
    const auto &kq = k.rows.at("q"), &ks = k.rows.at("s");
    const int64_t os_storage = os_layout == 1 ? SS_STORAGE_BY_VARIABLE : SS_STORAGE_BY_OBSERVATION;
    std::vector<T> orders(g_orders.begin(), g_orders.end());
    std::vector<int64_t> mask(p, 1), admitted;
    if (masked) mask[0] = 0;
    for (int64_t j = 0; j < p; ++j)
        if (mask[j]) admitted.push_back(j);
    const int64_t rows = static_cast<int64_t>(admitted.size());
    const T sentinel = T(-999);
    std::vector<T> q(p * count, sentinel), os(p * n, sentinel);
    harness::Task<T> t(k.rows.at("x"), {}, n, p, by_obs, 0, T(0), mask.data());
    __vstdSSEditQuantiles(t.task, &count, orders.data(), q.data(), os.data(), &os_storage);
    const uint64_t est = SS_EST_QUANTILES | (os_layout ? SS_EST_ORDER_STATS : 0);
    ASSERT_EQ((sizeof(T) == 8 ? vstdSSQuantiles : vstsSSQuantiles)(t.task, est, SS_METHOD_PLAIN_SUMS), SS_OK);
    // numpy interpolates from the upper side past the middle: a few units of
    // the data's magnitude apart; single orders and data are rounded to float.
    const double tol = sizeof(T) == 8 ? 1e-14 : 1e-4;
    for (int64_t a = 0; a < rows; ++a) {
        const int64_t v = admitted[a];
        for (int64_t r = 0; r < count; ++r)
            EXPECT_NEAR(q[a * count + r], kq[v * count + r], tol * (1 + std::fabs(kq[v * count + r])))
                << "row " << a << " order " << r;
        for (int64_t i = 0; os_layout && i < n; ++i) {
            const T got = os_layout == 1 ? os[a * n + i] : os[i * p + a];
            EXPECT_EQ(got, static_cast<T>(ks[v * n + i])) << "row " << a << " i " << i;
        }
    }
    // Rows past the admitted ones are left alone.
    for (int64_t e = rows * count; e < p * count; ++e) EXPECT_EQ(q[e], sentinel);
}

TEST_P(Quantiles, MatchNumpy) {
    const auto [dbl, by_obs, os_layout, masked] = GetParam();
    const kat::File f = kat::read("order_kat.txt");
    const std::vector<double>& orders = f.head.at("orders");
    ASSERT_FALSE(f.cases.empty());
    for (const kat::Case& k : f.cases) {
        SCOPED_TRACE("n " + std::to_string(k.n));
        (dbl ? check<double> : check<float>)(k, orders, by_obs, os_layout, masked);
    }
}

INSTANTIATE_TEST_SUITE_P(All, Quantiles,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(),
                                            ::testing::Values(0, 1, 2), ::testing::Bool()));

// The robust estimators call the entry on a cleared record with only p, n,
// the layout, the data and one order set.
TEST(Quantiles, ClearedRecordWithAFewFields) {
    SsTask t;
    std::memset(static_cast<void*>(&t), 0, sizeof t);
    int64_t p = 1, n = 5, storage = SS_STORAGE_BY_VARIABLE, count = 1;
    double x[5] = {4, -1, 9, 2, 7}, order = 0.5, median = 0;
    t.int_is_64 = 1;
    t.dimension = &p;
    t.observations = &n;
    t.data_storage = &storage;
    t.data = x;
    t.quantile_count = &count;
    t.quantile_orders = &order;
    t.quantiles = &median;
    ASSERT_EQ(_vstdSSQuantiles(&t, SS_EST_QUANTILES, SS_METHOD_PLAIN_SUMS, nullptr), SS_OK);
    EXPECT_EQ(median, 4.0);
}

// Long rows (where the ranks are found through a histogram of the keys'
// top bits): spread data, data packed into a narrow range of keys, ties,
// negative values and zeros of both signs, against std::nth_element.
template <typename T>
void long_rows() {
    std::mt19937_64 g(11);
    std::normal_distribution<double> normal(0, 1);
    const int64_t n = 100003, p = 1, storage = SS_STORAGE_BY_VARIABLE;
    std::vector<T> orders = {0, T(1e-5), T(0.01), T(0.5), T(0.75), T(0.99999), 1};
    const int64_t count = static_cast<int64_t>(orders.size());
    for (int kind = 0; kind < 4; ++kind) {
        std::vector<T> x(n), q(count);
        for (auto& v : x) {
            const double z = normal(g);
            v = static_cast<T>(kind == 0 ? z * 1e3 : kind == 1 ? 1000 + z * 1e-4
                               : kind == 2 ? std::floor(z * 3) : (z < 0 ? -0.0 : z > 1 ? z : 0.0));
        }
        SsTask* task = nullptr;
        ASSERT_EQ(harness::new_task<T>(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1), SS_OK);
        __vstdSSEditQuantiles(task, &count, orders.data(), q.data(), nullptr, nullptr);
        ASSERT_EQ((sizeof(T) == 8 ? vstdSSQuantiles : vstsSSQuantiles)(task, SS_EST_QUANTILES,
                                                                       SS_METHOD_PLAIN_SUMS), SS_OK);
        __vstSSDeleteTask(&task);
        for (int64_t r = 0; r < count; ++r) {
            const double h = orders[r] * double(n - 1);
            const int64_t lo = static_cast<int64_t>(h), hi = std::min(lo + 1, n - 1);
            std::nth_element(x.begin(), x.begin() + lo, x.end());
            const T a = x[lo];
            std::nth_element(x.begin(), x.begin() + hi, x.end());
            EXPECT_EQ(q[r], static_cast<T>((x[hi] - a) * static_cast<T>(h - lo) + a))
                << "kind " << kind << " order " << orders[r];
        }
    }
}

TEST(Quantiles, LongRowsMatchTheStandardLibrary) {
    long_rows<double>();
    long_rows<float>();
}

// Sorting and selection on sizes around the insertion threshold and large,
// with many ties, against the standard library; strided rows; NaN stays in
// bounds.
TEST(QSort, SortStepAndSelectAgreeWithTheStandardLibrary) {
    std::mt19937_64 g(3);
    for (int64_t n : {1, 2, 3, 6, 7, 8, 9, 15, 100, 1000, 100000}) {
        std::vector<double> a(n);
        for (auto& v : a) v = static_cast<double>(g() % 50) - 25.0;
        std::vector<double> want = a;
        std::sort(want.begin(), want.end());
        std::vector<double> got = a;
        __vstdQSort(n, got.data());
        EXPECT_EQ(got, want) << n;
        std::vector<float> f(n), strided(3 * n, -1.0f);
        for (int64_t i = 0; i < n; ++i) f[i] = strided[3 * i] = static_cast<float>(a[i]);
        __vstsQSort(n, f.data());
        __vstsQSortStep(n, strided.data(), 3);
        for (int64_t i = 0; i < n; ++i) {
            ASSERT_EQ(f[i], static_cast<float>(want[i])) << n << " " << i;
            ASSERT_EQ(strided[3 * i], static_cast<float>(want[i])) << n << " " << i;
            ASSERT_EQ(strided[3 * i + 1], -1.0f);
        }
        std::vector<double> s = a;
        for (int64_t k = 0; k < n; k += std::max<int64_t>(1, n / 37))
            EXPECT_EQ(__vstdQSortSelect(n, s.data(), k), want[k]) << n << " " << k;
        EXPECT_TRUE(std::isnan(__vstdQSortSelect(n, s.data(), n)));
    }
    std::vector<double> nan_mix(1000);
    for (auto& v : nan_mix) v = g() % 3 == 0 ? NAN : static_cast<double>(g() % 10);
    __vstdQSort(1000, nan_mix.data());  // no order for NaN, but no overrun (sanitizer build)
    __vstdQSortSelect(1000, nan_mix.data(), 500);
    __vstdQSort(0, nullptr);
}

}  // namespace
