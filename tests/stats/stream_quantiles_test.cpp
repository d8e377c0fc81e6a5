// Streaming quantiles: after feeds of different sizes every answer lies
// within eps*N ranks of the exact quantile, in both precisions and layouts,
// with a variable left out; a call without data answers from the summaries.
#include <orv/orv.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <tuple>
#include <vector>

namespace {

// Distance in ranks from q*N to the ranks that value a takes in sorted data.
template <typename T>
double rank_miss(const std::vector<T>& sorted, double q, T a) {
    const double lo = std::lower_bound(sorted.begin(), sorted.end(), a) - sorted.begin() + 1;
    const double hi = std::upper_bound(sorted.begin(), sorted.end(), a) - sorted.begin();
    const double target = q * static_cast<double>(sorted.size());
    return target < lo ? lo - target : target > hi ? target - hi : 0.0;
}

// double, by observation, eps
using Case = std::tuple<bool, bool, double>;
class StreamQuantiles : public ::testing::TestWithParam<Case> {};

template <typename T>
void check(bool by_obs, double eps_d) {
    const int64_t p = 3, total = eps_d < 1e-3 ? 400000 : 120000;
    std::mt19937_64 g(static_cast<uint64_t>(1 / eps_d));
    std::normal_distribution<double> normal(0, 1);
    std::vector<std::vector<T>> seen(p);
    std::vector<T> orders = {T(0), T(0.001), T(0.1), T(0.5), T(0.75), T(0.999), T(1)};
    int64_t count = static_cast<int64_t>(orders.size()), n = 0, one = 1, zero_n = 0;
    int64_t storage = by_obs ? SS_STORAGE_BY_OBSERVATION : SS_STORAGE_BY_VARIABLE;
    const int64_t mask[3] = {1, 0, 1};
    T eps = static_cast<T>(eps_d);
    std::vector<T> x, out(p * count, T(-7));
    SsTask* task = nullptr;
    const auto create = sizeof(T) == 8 ? __vstdSSNewTask : __vstsSSNewTask;
    const auto call = sizeof(T) == 8 ? vstdSSStreamQuantiles : vstsSSStreamQuantiles;
    ASSERT_EQ(create(&task, &p, &n, &storage, nullptr, nullptr, mask, 1), SS_OK);
    __vstdSSEditStreamQuantiles(task, &count, orders.data(), out.data(), &one, &eps);
    // Feeds from 1 value to a third of the stream, and one empty.
    const int64_t sizes[] = {1, 0, 7, total / 3, 1000, 3};
    int64_t fed = 0;
    for (int round = 0; fed < total; ++round) {
        n = std::min(sizes[round % 6] + round, total - fed);
        x.assign(n * p, T(0));
        for (int64_t i = 0; i < n; ++i)
            for (int64_t j = 0; j < p; ++j) {
                // Variable 2 has heavy ties.
                const T v = static_cast<T>(j == 2 ? std::floor(normal(g) * 4) : normal(g) + j);
                x[by_obs ? i * p + j : j * n + i] = v;
                seen[j].push_back(v);
            }
        __vstdSSEditTask(task, SS_ED_data, x.data());
        ASSERT_EQ(call(task, 0, round % 2 ? SS_METHOD_STREAM_ONLY : SS_METHOD_STREAM_QUERY), SS_OK);
        fed += n;
    }
    task->observations = &zero_n;
    ASSERT_EQ(call(task, 0, SS_METHOD_STREAM_QUERY), SS_OK);
    for (int64_t a = 0; a < 2; ++a) {
        const int64_t v = a == 0 ? 0 : 2;
        std::sort(seen[v].begin(), seen[v].end());
        for (int64_t r = 0; r < count; ++r)
            EXPECT_LE(rank_miss(seen[v], orders[r], out[a * count + r]), eps_d * total)
                << "variable " << v << " order " << orders[r];
    }
    for (int64_t e = 2 * count; e < p * count; ++e) EXPECT_EQ(out[e], T(-7));  // compact rows
    // A variable left out by the first call cannot join later.
    const int64_t all[3] = {1, 1, 1};
    task->indices = const_cast<int64_t*>(all);
    EXPECT_EQ(call(task, 0, SS_METHOD_STREAM_QUERY), SS_ERR_INDICES);
    // The release registered in the task frees the summaries (leaks show in
    // the sanitizer build); deletion after it is safe.
    __vstSQuantilesFreeBuffers(task);
    EXPECT_EQ(task->stream_state, nullptr);
    __vstSSDeleteTask(&task);
}

TEST_P(StreamQuantiles, WithinEpsilonRanks) {
    const auto [dbl, by_obs, eps] = GetParam();
    (dbl ? check<double> : check<float>)(by_obs, eps);
}

INSTANTIATE_TEST_SUITE_P(All, StreamQuantiles,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(),
                                            ::testing::Values(1.0, 0.1, 0.01, 1e-3, 1e-4)));

}  // namespace
