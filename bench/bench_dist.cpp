// Distributions, 10^7 draws per call: uniform doubles, integers on [0, 1000),
// exponential, Laplace, Gumbel, Rayleigh, Cauchy, Weibull, Gaussian (each
// method), lognormal and multivariate Gaussian doubles on our MCG59,
// MRG32K3A, MT19937 and SFMT19937 streams, beside the C++ standard library's
// distributions over std::mt19937_64 (where it has the distribution).
// bench/dist_peers.py runs this with numpy's Generator (PCG64) in the same job.
// The distributions run the kernels of the widest kernel library the front
// end loaded (ORV_ISA=sse2 keeps them on the baseline's).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include <orv/orv.h>

namespace {

constexpr int kN = 10000000;

struct Stream {
    OrvStreamPtr s = nullptr;
    explicit Stream(int id) { vstNewStream(&s, id, 12345); }
    ~Stream() { vstDeleteStream(&s); }
};

using DoubleDist = int (*)(int, OrvStreamPtr, int, double*, double, double);

template <int Id>
void orv_doubles(benchmark::State& st, DoubleDist dist, double a, double b) {
    Stream s(Id);
    std::vector<double> r(kN);
    for (auto _ : st) {
        dist(0, s.s, kN, r.data(), a, b);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

template <int Id>
void BM_orv_uniform(benchmark::State& st) { orv_doubles<Id>(st, vstdRngUniform, 0.0, 1.0); }
template <int Id>
void BM_orv_exponential(benchmark::State& st) { orv_doubles<Id>(st, vstdRngExponential, 0.0, 1.0); }
template <int Id>
void BM_orv_laplace(benchmark::State& st) { orv_doubles<Id>(st, vstdRngLaplace, 0.0, 1.0); }
template <int Id>
void BM_orv_gumbel(benchmark::State& st) { orv_doubles<Id>(st, vstdRngGumbel, 0.0, 1.0); }
template <int Id>
void BM_orv_rayleigh(benchmark::State& st) { orv_doubles<Id>(st, vstdRngRayleigh, 0.0, 1.0); }

// Calls with other parameter lists, through a lambda on (stream, n, r).
template <int Id, typename Draw>
void orv_draws(benchmark::State& st, Draw draw) {
    Stream s(Id);
    std::vector<double> r(kN);
    for (auto _ : st) {
        draw(s.s, kN, r.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

template <int Id>
void BM_orv_cauchy(benchmark::State& st) { orv_doubles<Id>(st, vstdRngCauchy, 0.0, 1.0); }
template <int Id>
void BM_orv_weibull(benchmark::State& st) {
    orv_draws<Id>(st, [](OrvStreamPtr s, int n, double* r) { return vstdRngWeibull(0, s, n, r, 1.5, 0.0, 1.0); });
}
template <int Id, int Method>
void gaussian(benchmark::State& st) {
    orv_draws<Id>(st, [](OrvStreamPtr s, int n, double* r) { return vstdRngGaussian(Method, s, n, r, 0.0, 1.0); });
}
template <int Id>
void BM_orv_normal_bm(benchmark::State& st) { gaussian<Id, ORV_RNG_METHOD_GAUSSIAN_BOXMULLER>(st); }
template <int Id>
void BM_orv_normal_bm2(benchmark::State& st) { gaussian<Id, ORV_RNG_METHOD_GAUSSIAN_BOXMULLER2>(st); }
template <int Id>
void BM_orv_normal_icdf(benchmark::State& st) { gaussian<Id, ORV_RNG_METHOD_GAUSSIAN_ICDF>(st); }
template <int Id>
void BM_orv_lognormal(benchmark::State& st) {
    orv_draws<Id>(st, [](OrvStreamPtr s, int n, double* r) { return vstdRngLognormal(0, s, n, r, 0.0, 1.0, 0.0, 1.0); });
}
// 2.5 10^6 vectors of 4 (10^7 numbers), a full lower factor.
constexpr int kDimen = 4;
constexpr double kMean[kDimen] = {0, 1, 2, 3};
constexpr double kFactor[kDimen * kDimen] = {1, 0, 0, 0, 0.5, 1, 0, 0, 0.25, 0.5, 1, 0, 0.125, 0.25, 0.5, 1};
template <int Id>
void BM_orv_multivariate_normal(benchmark::State& st) {
    orv_draws<Id>(st, [](OrvStreamPtr s, int n, double* r) {
        return vstdRngGaussianMV(ORV_RNG_METHOD_GAUSSIAN_BOXMULLER2, s, n / kDimen, r, kDimen,
                                 ORV_RNG_MATRIX_STORAGE_FULL, kMean, kFactor);
    });
}

template <int Id>
void BM_orv_integers(benchmark::State& st) {
    Stream s(Id);
    std::vector<int> r(kN);
    for (auto _ : st) {
        vstiRngUniform(0, s.s, kN, r.data(), 0, 1000);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

template <typename Dist, typename Out = typename Dist::result_type>
void std_draws(benchmark::State& st, Dist dist) {
    std::mt19937_64 g(12345);
    std::vector<Out> r(kN);
    for (auto _ : st) {
        for (auto& v : r) v = dist(g);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

void BM_std_uniform(benchmark::State& st) { std_draws(st, std::uniform_real_distribution<double>(0.0, 1.0)); }
void BM_std_integers(benchmark::State& st) { std_draws(st, std::uniform_int_distribution<int>(0, 999)); }
void BM_std_exponential(benchmark::State& st) { std_draws(st, std::exponential_distribution<double>(1.0)); }
void BM_std_gumbel(benchmark::State& st) { std_draws(st, std::extreme_value_distribution<double>(0.0, 1.0)); }
void BM_std_cauchy(benchmark::State& st) { std_draws(st, std::cauchy_distribution<double>(0.0, 1.0)); }
void BM_std_weibull(benchmark::State& st) { std_draws(st, std::weibull_distribution<double>(1.5, 1.0)); }
void BM_std_normal(benchmark::State& st) { std_draws(st, std::normal_distribution<double>(0.0, 1.0)); }
void BM_std_lognormal(benchmark::State& st) { std_draws(st, std::lognormal_distribution<double>(0.0, 1.0)); }

#define ORV_BENCH_ON_STREAMS(fn)                                                                   \
    BENCHMARK(fn<ORV_BRNG_MCG59>)->Name(#fn "/mcg59")->Unit(benchmark::kMillisecond);             \
    BENCHMARK(fn<ORV_BRNG_MRG32K3A>)->Name(#fn "/mrg32k3a")->Unit(benchmark::kMillisecond);       \
    BENCHMARK(fn<ORV_BRNG_MT19937>)->Name(#fn "/mt19937")->Unit(benchmark::kMillisecond);         \
    BENCHMARK(fn<ORV_BRNG_SFMT19937>)->Name(#fn "/sfmt19937")->Unit(benchmark::kMillisecond);

ORV_BENCH_ON_STREAMS(BM_orv_uniform)
ORV_BENCH_ON_STREAMS(BM_orv_integers)
ORV_BENCH_ON_STREAMS(BM_orv_exponential)
ORV_BENCH_ON_STREAMS(BM_orv_laplace)
ORV_BENCH_ON_STREAMS(BM_orv_gumbel)
ORV_BENCH_ON_STREAMS(BM_orv_rayleigh)
ORV_BENCH_ON_STREAMS(BM_orv_cauchy)
ORV_BENCH_ON_STREAMS(BM_orv_weibull)
ORV_BENCH_ON_STREAMS(BM_orv_normal_bm)
ORV_BENCH_ON_STREAMS(BM_orv_normal_bm2)
ORV_BENCH_ON_STREAMS(BM_orv_normal_icdf)
ORV_BENCH_ON_STREAMS(BM_orv_lognormal)
ORV_BENCH_ON_STREAMS(BM_orv_multivariate_normal)
BENCHMARK(BM_std_uniform)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_integers)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_exponential)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_gumbel)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_cauchy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_weibull)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_normal)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_lognormal)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
