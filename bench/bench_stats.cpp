// Basic statistics against GSL's statistics functions and a naive two-pass
// loop: mean, variance, skewness and kurtosis of 10^7 observations of one
// variable; covariance of 10^6 observations of 10 variables and of 10^5 of
// 100. Data are stored by variable, the layout GSL's functions take. Our
// entries run on one thread and on two through the OpenMP threading table.
// Run with OPENBLAS_NUM_THREADS=1 so that the BLAS adds no threads of its own.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <gsl/gsl_statistics_double.h>

#include <orv/stats.h>
#include <orv/threading.h>

namespace {

std::vector<double> make_data(long n, long p) {
    std::mt19937_64 g(42);
    std::normal_distribution<double> nd(0.0, 1.0);
    std::vector<double> x(n * p);
    for (auto& v : x) v = 3.0 + nd(g);
    return x;
}

// Moments of one variable.
struct Moments {
    long n;
    std::vector<double> x;
    double mean = 0, r2 = 0, r3 = 0, r4 = 0, c2 = 0, c3 = 0, c4 = 0, skew = 0, kurt = 0;
    explicit Moments(long n_) : n(n_), x(make_data(n_, 1)) {}
};

void orv_moments(benchmark::State& st, uint64_t method) {
    const int threads = static_cast<int>(st.range(1));
    Moments m(st.range(0));
    const int64_t p = 1, n = m.n, storage = SS_STORAGE_BY_VARIABLE;
    SsTask* task = nullptr;
    __vstdSSNewTask(&task, &p, &n, &storage, m.x.data(), nullptr, nullptr, 1);
    __vstdSSEditMoments(task, &m.mean, &m.r2, &m.r3, &m.r4, &m.c2, &m.c3, &m.c4);
    __vstdSSEditTask(task, SS_ED_skewness, &m.skew);
    __vstdSSEditTask(task, SS_ED_kurtosis, &m.kurt);
    orv_set_num_threads(threads);
    const uint64_t est = SS_EST_MEAN | SS_EST_CENTRAL2 | SS_EST_SKEWNESS | SS_EST_KURTOSIS;
    for (auto _ : st) {
        if (_vstdSSBasic(task, est, method, orv_ss_threading_openmp()) != 0) st.SkipWithError("status");
        benchmark::DoNotOptimize(m.kurt);
    }
    orv_set_num_threads(0);
    __vstSSDeleteTask(&task);
    st.SetItemsProcessed(st.iterations() * m.n);
}
void BM_orv_moments_plain_sums(benchmark::State& st) { orv_moments(st, SS_METHOD_PLAIN_SUMS); }
void BM_orv_moments_running(benchmark::State& st) { orv_moments(st, SS_METHOD_RUNNING); }

void BM_gsl_moments(benchmark::State& st) {
    Moments m(st.range(0));
    for (auto _ : st) {
        const double mean = gsl_stats_mean(m.x.data(), 1, m.n);
        const double var = gsl_stats_variance_m(m.x.data(), 1, m.n, mean);
        const double sd = std::sqrt(var);
        const double skew = gsl_stats_skew_m_sd(m.x.data(), 1, m.n, mean, sd);
        const double kurt = gsl_stats_kurtosis_m_sd(m.x.data(), 1, m.n, mean, sd);
        benchmark::DoNotOptimize(var + skew + kurt);
    }
    st.SetItemsProcessed(st.iterations() * m.n);
}

__attribute__((noinline)) void two_pass_moments(const double* x, long n, double* out) {
    double s = 0;
    for (long i = 0; i < n; ++i) s += x[i];
    const double mean = s / n;
    double s2 = 0, s3 = 0, s4 = 0;
    for (long i = 0; i < n; ++i) {
        const double d = x[i] - mean, d2 = d * d;
        s2 += d2;
        s3 += d2 * d;
        s4 += d2 * d2;
    }
    const double var = s2 / (n - 1);
    out[0] = mean;
    out[1] = var;
    out[2] = (s3 / n) / (var * std::sqrt(var));
    out[3] = (s4 / n) / (var * var) - 3;
}

void BM_two_pass_moments(benchmark::State& st) {
    Moments m(st.range(0));
    double out[4];
    for (auto _ : st) {
        two_pass_moments(m.x.data(), m.n, out);
        benchmark::DoNotOptimize(out[3]);
    }
    st.SetItemsProcessed(st.iterations() * m.n);
}

// Covariance of p variables.
void orv_cov(benchmark::State& st, uint64_t method) {
    const int64_t n = st.range(0), p = st.range(1), storage = SS_STORAGE_BY_VARIABLE, form = 0;
    const int threads = static_cast<int>(st.range(2));
    const auto x = make_data(n, p);
    std::vector<double> mean(p), cov(p * p);
    SsTask* task = nullptr;
    __vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
    __vstdSSEditCovCor(task, mean.data(), cov.data(), &form, nullptr, nullptr);
    orv_set_num_threads(threads);
    for (auto _ : st) {
        if (_vstdSSBasic(task, SS_EST_COV, method, orv_ss_threading_openmp()) != 0)
            st.SkipWithError("status");
        benchmark::DoNotOptimize(cov[1]);
    }
    orv_set_num_threads(0);
    __vstSSDeleteTask(&task);
    st.SetItemsProcessed(st.iterations() * n * p);
}
void BM_orv_cov_plain_sums(benchmark::State& st) { orv_cov(st, SS_METHOD_PLAIN_SUMS); }
void BM_orv_cov_running(benchmark::State& st) { orv_cov(st, SS_METHOD_RUNNING); }

void BM_gsl_cov(benchmark::State& st) {
    const long n = st.range(0), p = st.range(1);
    const auto x = make_data(n, p);
    std::vector<double> cov(p * p);
    for (auto _ : st) {
        for (long i = 0; i < p; ++i)
            for (long j = 0; j <= i; ++j)
                cov[i * p + j] = cov[j * p + i] =
                    gsl_stats_covariance(&x[i * n], 1, &x[j * n], 1, n);
        benchmark::DoNotOptimize(cov[1]);
    }
    st.SetItemsProcessed(st.iterations() * n * p);
}

__attribute__((noinline)) void two_pass_cov(const double* x, long n, long p, double* mean,
                                            double* cov) {
    for (long j = 0; j < p; ++j) {
        double s = 0;
        for (long i = 0; i < n; ++i) s += x[j * n + i];
        mean[j] = s / n;
    }
    for (long a = 0; a < p; ++a)
        for (long b = 0; b <= a; ++b) {
            double s = 0;
            for (long i = 0; i < n; ++i) s += (x[a * n + i] - mean[a]) * (x[b * n + i] - mean[b]);
            cov[a * p + b] = cov[b * p + a] = s / (n - 1);
        }
}

void BM_two_pass_cov(benchmark::State& st) {
    const long n = st.range(0), p = st.range(1);
    const auto x = make_data(n, p);
    std::vector<double> mean(p), cov(p * p);
    for (auto _ : st) {
        two_pass_cov(x.data(), n, p, mean.data(), cov.data());
        benchmark::DoNotOptimize(cov[1]);
    }
    st.SetItemsProcessed(st.iterations() * n * p);
}

// Order statistics of 10^7 values of one variable (one variable: the
// entries run it on one thread): sort, 5 quantiles, minimum and maximum.
// Each iteration sorts or selects on a fresh copy, as numpy's calls do.
constexpr double kOrders[5] = {0.01, 0.25, 0.5, 0.75, 0.99};

struct OneVariable {
    int64_t n, p = 1, storage = SS_STORAGE_BY_VARIABLE, count = 5;
    std::vector<double> x, out, q, orders{kOrders, kOrders + 5};
    double mn = INFINITY, mx = -INFINITY;
    SsTask* task = nullptr;
    explicit OneVariable(int64_t n_) : n(n_), x(make_data(n_, 1)), out(n_), q(5) {
        __vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
        __vstdSSEditTask(task, SS_ED_sorted, out.data());
        __vstiSSEditTask(task, SS_ED_sorted_storage, &storage);
        __vstdSSEditQuantiles(task, &count, orders.data(), q.data(), nullptr, nullptr);
        __vstdSSEditTask(task, SS_ED_minimum, &mn);
        __vstdSSEditTask(task, SS_ED_maximum, &mx);
    }
    ~OneVariable() { __vstSSDeleteTask(&task); }
};

void BM_orv_sort(benchmark::State& st) {
    OneVariable v(st.range(0));
    for (auto _ : st) {
        if (_vstdSSSort(v.task, 0, SS_METHOD_RADIX, orv_ss_threading_openmp()) != 0) st.SkipWithError("status");
        benchmark::DoNotOptimize(v.out[0]);
    }
}
void BM_std_sort(benchmark::State& st) {
    OneVariable v(st.range(0));
    for (auto _ : st) {
        std::memcpy(v.out.data(), v.x.data(), sizeof(double) * v.n);
        std::sort(v.out.begin(), v.out.end());
        benchmark::DoNotOptimize(v.out[0]);
    }
}
void BM_orv_quantiles(benchmark::State& st) {
    OneVariable v(st.range(0));
    for (auto _ : st) {
        if (_vstdSSQuantiles(v.task, SS_EST_QUANTILES, SS_METHOD_PLAIN_SUMS, orv_ss_threading_openmp()) != 0)
            st.SkipWithError("status");
        benchmark::DoNotOptimize(v.q[0]);
    }
}
// The same rule through std::nth_element, two selections per order.
void BM_std_nth_element_quantiles(benchmark::State& st) {
    OneVariable v(st.range(0));
    for (auto _ : st) {
        std::memcpy(v.out.data(), v.x.data(), sizeof(double) * v.n);
        for (int r = 0; r < 5; ++r) {
            const double h = kOrders[r] * (v.n - 1);
            const int64_t lo = static_cast<int64_t>(h), hi = std::min(lo + 1, v.n - 1);
            std::nth_element(v.out.begin(), v.out.begin() + lo, v.out.end());
            const double a = v.out[lo];
            std::nth_element(v.out.begin(), v.out.begin() + hi, v.out.end());
            v.q[r] = (v.out[hi] - a) * (h - lo) + a;
        }
        benchmark::DoNotOptimize(v.q[0]);
    }
}
void BM_orv_minmax(benchmark::State& st) {
    OneVariable v(st.range(0));
    for (auto _ : st) {
        v.mn = INFINITY;
        v.mx = -INFINITY;
        if (_vstdSSMinmax(v.task, SS_EST_MIN | SS_EST_MAX, SS_METHOD_RUNNING, nullptr) != 0)
            st.SkipWithError("status");
        benchmark::DoNotOptimize(v.mx);
    }
}

// Two variables of 10^7 (by variable) through the OpenMP table on 1 and 2
// threads: the entries split by variables. CPU time counts every thread of
// the process. Args: n, threads.
struct TwoVariables {
    int64_t n, p = 2, storage = SS_STORAGE_BY_VARIABLE, count = 5;
    std::vector<double> x, out, q, orders{kOrders, kOrders + 5};
    SsTask* task = nullptr;
    explicit TwoVariables(int64_t n_) : n(n_), x(make_data(n_, 2)), out(2 * n_), q(10) {
        __vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
        __vstdSSEditTask(task, SS_ED_sorted, out.data());
        __vstiSSEditTask(task, SS_ED_sorted_storage, &storage);
        __vstdSSEditQuantiles(task, &count, orders.data(), q.data(), nullptr, nullptr);
    }
    ~TwoVariables() { __vstSSDeleteTask(&task); }
};
void BM_orv_sort_2vars(benchmark::State& st) {
    TwoVariables v(st.range(0));
    orv_set_num_threads(static_cast<int>(st.range(1)));
    for (auto _ : st) {
        if (_vstdSSSort(v.task, 0, SS_METHOD_RADIX, orv_ss_threading_openmp()) != 0) st.SkipWithError("status");
        benchmark::DoNotOptimize(v.out[0]);
    }
    orv_set_num_threads(0);
}
void BM_orv_quantiles_2vars(benchmark::State& st) {
    TwoVariables v(st.range(0));
    orv_set_num_threads(static_cast<int>(st.range(1)));
    for (auto _ : st) {
        if (_vstdSSQuantiles(v.task, SS_EST_QUANTILES, SS_METHOD_PLAIN_SUMS, orv_ss_threading_openmp()) != 0)
            st.SkipWithError("status");
        benchmark::DoNotOptimize(v.q[0]);
    }
    orv_set_num_threads(0);
}

// One call in a fresh process, as a user who sorts once pays it: the result
// array is allocated (not yet touched) inside the timed call. Run alone:
//   bench_stats --benchmark_filter=BM_orv_sort_once
void BM_orv_sort_once(benchmark::State& st) {
    int64_t n = st.range(0), p = 1, storage = SS_STORAGE_BY_VARIABLE;
    const std::vector<double> x = make_data(n, 1);
    for (auto _ : st) {
        auto* out = static_cast<double*>(std::malloc(sizeof(double) * n));
        SsTask* task = nullptr;
        __vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
        __vstdSSEditTask(task, SS_ED_sorted, out);
        __vstiSSEditTask(task, SS_ED_sorted_storage, &storage);
        if (_vstdSSSort(task, 0, SS_METHOD_RADIX, nullptr) != 0) st.SkipWithError("status");
        benchmark::DoNotOptimize(out[n / 2]);
        __vstSSDeleteTask(&task);
        std::free(out);
    }
}

#define ORDER_OPTS ->Arg(10000000)->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(BM_orv_sort) ORDER_OPTS;
BENCHMARK(BM_std_sort) ORDER_OPTS;
BENCHMARK(BM_orv_quantiles) ORDER_OPTS;
BENCHMARK(BM_std_nth_element_quantiles) ORDER_OPTS;
BENCHMARK(BM_orv_minmax) ORDER_OPTS;
#define TWO_VAR_OPTS ->Args({10000000, 1})->Args({10000000, 2})->Unit(benchmark::kMillisecond) \
    ->UseRealTime()->MeasureProcessCPUTime()
BENCHMARK(BM_orv_sort_2vars) TWO_VAR_OPTS;
BENCHMARK(BM_orv_quantiles_2vars) TWO_VAR_OPTS;
BENCHMARK(BM_orv_sort_once)->Arg(10000000)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

#define MOMENT_SIZES ->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(BM_gsl_moments)->Arg(10000000) MOMENT_SIZES;
BENCHMARK(BM_two_pass_moments)->Arg(10000000) MOMENT_SIZES;
BENCHMARK(BM_orv_moments_plain_sums)->Args({10000000, 1})->Args({10000000, 2}) MOMENT_SIZES;
BENCHMARK(BM_orv_moments_running)->Args({10000000, 1})->Args({10000000, 2}) MOMENT_SIZES;

#define COV_OPTS ->Unit(benchmark::kMillisecond)->UseRealTime()
BENCHMARK(BM_gsl_cov)->Args({1000000, 10})->Args({100000, 100}) COV_OPTS->Iterations(2);
BENCHMARK(BM_two_pass_cov)->Args({1000000, 10})->Args({100000, 100}) COV_OPTS;
BENCHMARK(BM_orv_cov_plain_sums)
    ->Args({1000000, 10, 1})->Args({1000000, 10, 2})->Args({100000, 100, 1})->Args({100000, 100, 2})
    COV_OPTS;
BENCHMARK(BM_orv_cov_running)
    ->Args({1000000, 10, 1})->Args({1000000, 10, 2})->Args({100000, 100, 1})->Args({100000, 100, 2})
    COV_OPTS;

}  // namespace

BENCHMARK_MAIN();
