// The sort entry against numpy's sorted rows (tests/data/stats/order_kat.txt),
// every layout pair, masked and in place; the key rule for zeros,
// infinities and NaN.
#include <orv/orv.h>

#include <gtest/gtest.h>

#include "harness.h"
#include "kat.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

namespace {

template <typename T>
uint64_t bits(T v) {
    uint64_t u = 0;
    std::memcpy(&u, &v, sizeof v);
    return u;
}

// double, data by observation, sorted by observation, masked, in place
using Case = std::tuple<bool, bool, bool, bool, bool>;
class Sort : public ::testing::TestWithParam<Case> {};

template <typename T>
void check(const kat::Case& r, bool x_obs, bool out_obs, bool masked, bool in_place) {
    const int64_t p = r.p, n = r.n;
    const int64_t out_storage = out_obs ? SS_STORAGE_BY_OBSERVATION : SS_STORAGE_BY_VARIABLE;
    std::vector<T> out(n * p, T(-999));
    std::vector<int64_t> mask(p, 1);
    if (masked) mask[0] = 0;
    harness::Task<T> t(r.rows.at("x"), {}, n, p, x_obs, 0, T(0), masked ? mask.data() : nullptr);
    T* dst = in_place ? t.x.data() : out.data();
    __vstdSSEditTask(t.task, SS_ED_sorted, dst);
    __vstiSSEditTask(t.task, SS_ED_sorted_storage, in_place ? &t.storage : &out_storage);
    ASSERT_EQ((sizeof(T) == 8 ? vstdSSSort : vstsSSSort)(t.task, 0, SS_METHOD_RADIX), SS_OK);
    const bool obs = in_place ? x_obs : out_obs;
    int64_t a = 0;
    for (int64_t v = 0; v < p; ++v) {
        if (!mask[v]) continue;
        for (int64_t i = 0; i < n; ++i)
            ASSERT_EQ(dst[obs ? i * p + a : a * n + i], static_cast<T>(r.rows.at("s")[v * n + i])) << v << " " << i;
        ++a;
    }
}

TEST_P(Sort, MatchesNumpy) {
    const auto [dbl, x_obs, out_obs, masked, in_place] = GetParam();
    for (const kat::Case& r : kat::read("order_kat.txt").cases) {
        (dbl ? check<double> : check<float>)(r, x_obs, out_obs, masked, in_place);
    }
}

// In place only where it is accepted: one layout, no mask.
std::vector<Case> sort_cases() {
    std::vector<Case> v;
    for (int c = 0; c < 32; ++c) {
        const bool dbl = c & 1, x_obs = c & 2, out_obs = c & 4, masked = c & 8, in_place = c & 16;
        if (!in_place || (!masked && x_obs == out_obs)) v.emplace_back(dbl, x_obs, out_obs, masked, in_place);
    }
    return v;
}
INSTANTIATE_TEST_SUITE_P(All, Sort, ::testing::ValuesIn(sort_cases()));

// Sorts one row of x (in place or into another array) and compares the bits
// with want.
template <typename T>
void expect_sorted(std::vector<T> x, const std::vector<T>& want, bool in_place) {
    const int64_t n = static_cast<int64_t>(x.size()), p = 1, storage = SS_STORAGE_BY_VARIABLE;
    std::vector<T> out(n, T(-999));
    SsTask* task = nullptr;
    ASSERT_EQ(harness::new_task<T>(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1), SS_OK);
    T* dst = in_place ? x.data() : out.data();
    __vstdSSEditTask(task, SS_ED_sorted, dst);
    __vstiSSEditTask(task, SS_ED_sorted_storage, &storage);
    ASSERT_EQ((sizeof(T) == 8 ? vstdSSSort : vstsSSSort)(task, 0, SS_METHOD_RADIX), SS_OK);
    __vstSSDeleteTask(&task);
    for (int64_t i = 0; i < n; ++i) ASSERT_EQ(bits(dst[i]), bits(want[i])) << i;
}

// The key rule: -NaN, -inf, negatives, -0, +0, positives, +inf, +NaN; long
// enough rows that every digit pass runs.
template <typename T>
void key_rule() {
    const T inf = INFINITY, nan = NAN;
    const std::vector<T> order = {-nan, -inf, T(-1e30), T(-1), T(-1e-30), T(-0.0), T(0.0),
                                  T(1e-30), T(1), T(1e30), inf, nan};
    const size_t reps = 700;
    std::vector<T> x, want;
    for (size_t r = 0; r < reps; ++r)
        for (size_t k = 0; k < order.size(); ++k) x.push_back(order[(k * 7 + r) % order.size()]);
    for (size_t i = 0; i < x.size(); ++i) want.push_back(order[i / reps]);
    expect_sorted(x, want, false);
}

TEST(Sort, KeyRulePlacesZerosInfinitiesAndNan) {
    key_rule<double>();
    key_rule<float>();
}

// Data on which some digits of the keys are shared by every value, so that
// their passes are skipped and an odd or even number of scatters is left
// (none for equal values): against std::sort, in place and into another
// array.
template <typename T>
void constant_digits(bool in_place) {
    const int64_t n = 5000;
    const auto shuffled = [&](auto f) {
        std::vector<T> v(n);
        for (int64_t i = 0; i < n; ++i) v[i] = static_cast<T>(f((i * 7919) % n));
        return v;
    };
    const std::vector<std::vector<T>> sets = {
        shuffled([](int64_t) { return 7.0; }),
        shuffled([](int64_t i) { return 16.0 + i % 16; }),
        shuffled([](int64_t i) { return 1.0 + i / 1024.0; }),
        shuffled([](int64_t i) { return static_cast<double>(i); }),
        shuffled([](int64_t i) { return -std::ldexp(1.0 + i / 4096.0, static_cast<int>(i % 5)); })};
    for (const std::vector<T>& x : sets) {
        std::vector<T> want = x;
        std::sort(want.begin(), want.end());
        expect_sorted(x, want, in_place);
    }
}

TEST(Sort, SkipsDigitsEveryKeyShares) {
    for (const bool in_place : {false, true}) {
        constant_digits<double>(in_place);
        constant_digits<float>(in_place);
    }
}

}  // namespace
