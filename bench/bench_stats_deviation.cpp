// Absolute deviations and streaming quantiles, ours beside the peers in one
// run: median and mean absolute deviation of 10^7 normal values (one
// variable, and two variables on one thread and on two; numpy and scipy are
// timed by bench/numpy_stats.py in the same job); streaming
// quantiles of 10^8 values fed in blocks of 10^6, against the exact
// quantiles by selection over all 10^8 held in memory (_vstdSSQuantiles and
// std::nth_element). Memory: the counter summary_MiB is what the streaming
// summaries hold allocated at the end, touched_MiB the part of it in use;
// held_MiB what the exact way holds (the data, and for std::nth_element its
// working copy).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <orv/stats.h>
#include <orv/threading.h>

#include "../stats/stream_state.h"

namespace {

constexpr double kOrders[5] = {0.01, 0.25, 0.5, 0.75, 0.99};

std::vector<double> make_data(int64_t count, uint64_t seed) {
    std::mt19937_64 g(seed);
    std::normal_distribution<double> nd(0.0, 1.0);
    std::vector<double> x(count);
    for (auto& v : x) v = 3.0 + nd(g);
    return x;
}

// n x p values by variable; args n, p, threads; estimate median or mean form.
void orv_mad(benchmark::State& st, uint64_t est) {
    int64_t n = st.range(0), p = st.range(1), storage = SS_STORAGE_BY_VARIABLE;
    std::vector<double> x = make_data(n * p, 42), out(p);
    SsTask* task = nullptr;
    __vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
    __vstdSSEditTask(task, est == SS_EST_MEDIAN_ABS_DEV ? SS_ED_median_abs_dev : SS_ED_mean_abs_dev,
                     out.data());
    orv_set_num_threads(static_cast<int>(st.range(2)));
    for (auto _ : st) {
        if (_vstdSSMAD(task, est, SS_METHOD_PLAIN_SUMS, orv_ss_threading_openmp()) != 0)
            st.SkipWithError("status");
        benchmark::DoNotOptimize(out[0]);
    }
    orv_set_num_threads(0);
    __vstSSDeleteTask(&task);
}
void BM_orv_median_abs_dev(benchmark::State& st) { orv_mad(st, SS_EST_MEDIAN_ABS_DEV); }
void BM_orv_mean_abs_dev(benchmark::State& st) { orv_mad(st, SS_EST_MEAN_ABS_DEV); }

// Allocated bytes of a task's streaming summaries; *touched: of those, the
// levels in use (a level never reached is never written).
double summary_mib(const SsTask* task, int64_t p, double* touched) {
    const auto* vars = static_cast<const orv::ss::StreamVariable*>(task->stream_state);
    double bytes = sizeof(orv::ss::StreamHeader) + p * sizeof(orv::ss::StreamVariable);
    *touched = bytes;
    for (int64_t v = 0; v < p; ++v) {
        const auto* chunks = static_cast<const orv::ss::StreamChunk<double>*>(vars[v].chunks);
        bytes += vars[v].chunk_count * sizeof(orv::ss::StreamChunk<double>);
        *touched += vars[v].chunk_count * sizeof(orv::ss::StreamChunk<double>);
        for (int64_t c = 0; c < vars[v].chunk_count; ++c) {
            const auto& ch = chunks[c];
            bytes += orv::ss::chunk_bytes<double>(ch.block_size, ch.level_count);
            *touched += (ch.level_count + 1) * 8.0 + (ch.top_level + 1) * (ch.block_size + 1) * 24.0;
        }
    }
    *touched /= 1 << 20;
    return bytes / (1 << 20);
}

// 10^8 values (args: total, 1/eps) in blocks of 10^6 from a pool of 10^7.
void BM_orv_stream_quantiles(benchmark::State& st) {
    const int64_t total = st.range(0), block = 1000000, p = 1, count = 5, one = 1;
    const std::vector<double> pool = make_data(10 * block, 7);
    int64_t n = block, storage = SS_STORAGE_BY_VARIABLE;
    double eps = 1.0 / static_cast<double>(st.range(1)), q[5], mib = 0, touched = 0;
    for (auto _ : st) {
        SsTask* task = nullptr;
        __vstdSSNewTask(&task, &p, &n, &storage, pool.data(), nullptr, nullptr, 1);
        __vstdSSEditStreamQuantiles(task, &count, kOrders, q, &one, &eps);
        for (int64_t fed = 0; fed < total; fed += block) {
            task->data = const_cast<double*>(pool.data()) + (fed / block % 10) * block;
            const uint64_t m = fed + block >= total ? SS_METHOD_STREAM_QUERY : SS_METHOD_STREAM_ONLY;
            if (_vstdSSStreamQuantiles(task, 0, m, orv_ss_threading_serial()) != 0)
                st.SkipWithError("status");
        }
        benchmark::DoNotOptimize(q[0]);
        mib = summary_mib(task, p, &touched);
        __vstSSDeleteTask(&task);
    }
    st.counters["summary_MiB"] = mib;
    st.counters["touched_MiB"] = touched;
}

// The exact quantiles of the same 10^8 values, all in memory.
struct Held {
    int64_t n, p = 1, storage = SS_STORAGE_BY_VARIABLE, count = 5;
    std::vector<double> x, q{0, 0, 0, 0, 0};
    explicit Held(int64_t total) : n(total), x(total) {
        const std::vector<double> pool = make_data(10000000, 7);
        for (int64_t i = 0; i < total; ++i) x[i] = pool[i % pool.size()];
    }
};
void BM_orv_exact_quantiles(benchmark::State& st) {
    Held h(st.range(0));
    SsTask* task = nullptr;
    __vstdSSNewTask(&task, &h.p, &h.n, &h.storage, h.x.data(), nullptr, nullptr, 1);
    __vstdSSEditQuantiles(task, &h.count, kOrders, h.q.data(), nullptr, nullptr);
    for (auto _ : st) {
        if (_vstdSSQuantiles(task, SS_EST_QUANTILES, SS_METHOD_PLAIN_SUMS, orv_ss_threading_serial()) != 0)
            st.SkipWithError("status");
        benchmark::DoNotOptimize(h.q[0]);
    }
    __vstSSDeleteTask(&task);
    // The data; the entry reads it in place and touches a work area of at
    // most a quarter of it (the key buckets that hold the ranks).
    st.counters["held_MiB"] = 1.0 * h.n * sizeof(double) / (1 << 20);
}
void BM_std_nth_element_exact_quantiles(benchmark::State& st) {
    Held h(st.range(0));
    std::vector<double> work(h.n);
    for (auto _ : st) {
        std::memcpy(work.data(), h.x.data(), sizeof(double) * h.n);
        for (int r = 0; r < 5; ++r) {
            const double pos = kOrders[r] * (h.n - 1);
            const int64_t lo = static_cast<int64_t>(pos), hi = std::min(lo + 1, h.n - 1);
            std::nth_element(work.begin(), work.begin() + lo, work.end());
            const double a = work[lo];
            std::nth_element(work.begin(), work.begin() + hi, work.end());
            h.q[r] = (work[hi] - a) * (pos - lo) + a;
        }
        benchmark::DoNotOptimize(h.q[0]);
    }
    st.counters["held_MiB"] = 2.0 * h.n * sizeof(double) / (1 << 20);
}

#define OPTS ->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(BM_orv_median_abs_dev)->Args({10000000, 1, 1})->Args({10000000, 2, 1})->Args({10000000, 2, 2}) OPTS;
BENCHMARK(BM_orv_mean_abs_dev)->Args({10000000, 1, 1})->Args({10000000, 2, 1})->Args({10000000, 2, 2}) OPTS;
BENCHMARK(BM_orv_stream_quantiles)
    ->Args({1000000, 100})->Args({1000000, 1000})->Args({1000000, 10000})
    ->Args({10000000, 100})->Args({10000000, 1000})->Args({10000000, 10000})
    ->Args({100000000, 100})->Args({100000000, 1000})->Args({100000000, 10000}) OPTS->Iterations(1);
BENCHMARK(BM_orv_exact_quantiles)->Arg(100000000) OPTS->Iterations(2);
BENCHMARK(BM_std_nth_element_exact_quantiles)->Arg(100000000) OPTS->Iterations(2);

}  // namespace

BENCHMARK_MAIN();
