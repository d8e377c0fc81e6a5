// Distributions, 10^7 draws per call: uniform doubles, integers on [0, 1000),
// exponential, Laplace, Gumbel and Rayleigh doubles on our MCG59, MRG32K3A,
// MT19937 and SFMT19937 streams, beside the C++ standard library's
// distributions over std::mt19937_64 (where it has the distribution).
// bench/dist_peers.py runs this with numpy's Generator (PCG64) in the same job.
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
BENCHMARK(BM_std_uniform)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_integers)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_exponential)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_gumbel)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
