// MT19937 and SFMT19937: 32-bit words and doubles on [0, 1), 10^7 per call
// (and words 10^4 per call, in cache),
// beside the C++ standard library's std::mt19937 and GSL's gsl_rng_mt19937;
// and the jump of 10^12 outputs against plain stepping (whose rate is
// measured on 2^20 - 1 outputs, the largest count that steps plainly).
// bench/bench_twister.py runs this with numpy's MT19937 in the same job.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include <orv/rng_twister.h>

#if __has_include(<gsl/gsl_rng.h>)
#include <gsl/gsl_rng.h>
#define ORV_BENCH_GSL 1
#endif

namespace {

constexpr int kN = 10000000;
const uint32_t kKey[4] = {0x123, 0x234, 0x345, 0x456};

struct Stream {
    void* s = nullptr;
    BrngRow row{};
    explicit Stream(int32_t id) {
        __vstNewStreamEx(&s, id, 4, kKey);
        __vstGetBrngProperties(id, &row);
    }
    ~Stream() { __vstDeleteStream(&s); }
};

template <int32_t Id, int N = kN>
void BM_orv_words(benchmark::State& st) {
    Stream s(Id);
    std::vector<uint32_t> r(N);
    for (auto _ : st) {
        s.row.wordFill(s.s, N, r.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * N);
}

template <int32_t Id>
void BM_orv_doubles(benchmark::State& st) {
    Stream s(Id);
    std::vector<double> r(kN);
    for (auto _ : st) {
        s.row.doubleFill(s.s, kN, r.data(), 0.0, 1.0);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

void BM_std_mt19937_words(benchmark::State& st) {
    std::mt19937 g(12345);
    std::vector<uint32_t> r(kN);
    for (auto _ : st) {
        for (auto& x : r) x = static_cast<uint32_t>(g());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

void BM_std_mt19937_doubles(benchmark::State& st) {
    std::mt19937 g(12345);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    std::vector<double> r(kN);
    for (auto _ : st) {
        for (auto& x : r) x = u(g);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

#ifdef ORV_BENCH_GSL
void BM_gsl_mt19937_words(benchmark::State& st) {
    gsl_rng* g = gsl_rng_alloc(gsl_rng_mt19937);
    std::vector<uint32_t> r(kN);
    for (auto _ : st) {
        for (auto& x : r) x = static_cast<uint32_t>(gsl_rng_get(g));
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
    gsl_rng_free(g);
}

void BM_gsl_mt19937_doubles(benchmark::State& st) {
    gsl_rng* g = gsl_rng_alloc(gsl_rng_mt19937);
    std::vector<double> r(kN);
    for (auto _ : st) {
        for (auto& x : r) x = gsl_rng_uniform(g);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
    gsl_rng_free(g);
}
BENCHMARK(BM_gsl_mt19937_words)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_gsl_mt19937_doubles)->Unit(benchmark::kMillisecond);
#endif

// Jumps of 10^12 outputs (the polynomial path) on one stream, and plain
// stepping by 2^20 - 1 outputs.
template <int32_t Id>
void BM_orv_jump_1e12(benchmark::State& st) {
    Stream s(Id);
    for (auto _ : st) benchmark::DoNotOptimize(__vstSkipAheadStream(s.s, 1000000000000LL));
}

template <int32_t Id>
void BM_orv_plain_skip_2p20(benchmark::State& st) {
    Stream s(Id);
    for (auto _ : st) benchmark::DoNotOptimize(__vstSkipAheadStream(s.s, 0xFFFFF));
    st.SetItemsProcessed(st.iterations() * 0xFFFFF);
}

BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_MT19937)->Name("BM_orv_mt19937_words")->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_SFMT19937)->Name("BM_orv_sfmt19937_words")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_mt19937_words)->Unit(benchmark::kMillisecond);
// 10^4 per call: the output stays in cache, so the generators' own rates show.
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_MT19937, 10000)->Name("BM_orv_mt19937_words_1e4")->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_SFMT19937, 10000)->Name("BM_orv_sfmt19937_words_1e4")->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_MT19937)->Name("BM_orv_mt19937_doubles")->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_SFMT19937)
    ->Name("BM_orv_sfmt19937_doubles")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_std_mt19937_doubles)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_orv_jump_1e12, ORV_BRNG_MT19937)->Name("BM_orv_mt19937_jump_1e12")->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_orv_jump_1e12, ORV_BRNG_SFMT19937)
    ->Name("BM_orv_sfmt19937_jump_1e12")
    ->Unit(benchmark::kMicrosecond);
// One jump as the first call of a process (bench_twister.py runs these in a
// process of their own): scratch memory is touched for the first time.
BENCHMARK_TEMPLATE(BM_orv_jump_1e12, ORV_BRNG_MT19937)
    ->Name("BM_first_mt19937_jump_1e12")
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_orv_jump_1e12, ORV_BRNG_SFMT19937)
    ->Name("BM_first_sfmt19937_jump_1e12")
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_orv_plain_skip_2p20, ORV_BRNG_MT19937)
    ->Name("BM_orv_mt19937_plain_skip_2p20")
    ->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
