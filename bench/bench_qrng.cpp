// Quasi-random points and counter-based words per nanosecond: our Sobol and
// Niederr beside GSL's gsl_qrng_sobol and gsl_qrng_niederreiter_2 (one point
// a call, as GSL hands them out), and our PHILOX4X32X10 beside Random123's
// philox4x32 in its scalar use (one block a call, counter bumped by the
// caller). bench/bench_qrng_peers.py runs this program and times numpy's
// Philox and scipy's Sobol engine in the same job.
#include <benchmark/benchmark.h>

#include <Random123/philox.h>

#include <cstdint>
#include <vector>

#include <orv/rng.h>

#if __has_include(<gsl/gsl_qrng.h>)
#include <gsl/gsl_qrng.h>
#define ORV_BENCH_GSL 1
#endif

namespace {

constexpr int kPoints = 4096;
constexpr int kWords = 1 << 16;

// ---------------------------------------------------------------- quasi
template <int32_t Id>
void BM_orv_quasi(benchmark::State& st) {
    const uint32_t dim = static_cast<uint32_t>(st.range(0));
    void* s = nullptr;
    __vstNewStreamEx(&s, Id, 1, &dim);
    BrngRow row;
    __vstGetBrngProperties(Id, &row);
    std::vector<double> r(static_cast<size_t>(kPoints) * dim);
    for (auto _ : st) {
        if (row.doubleFill(s, static_cast<int32_t>(r.size()), r.data(), 0.0, 1.0) != 0) {
            __vstDeleteStream(&s);  // the sequence's end: start again
            __vstNewStreamEx(&s, Id, 1, &dim);
        }
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kPoints);
    __vstDeleteStream(&s);
}
BENCHMARK(BM_orv_quasi<ORV_BRNG_SOBOL>)->Name("sobol/orv")->Arg(1)->Arg(8)->Arg(40);
BENCHMARK(BM_orv_quasi<ORV_BRNG_NIEDERR>)->Name("niederr/orv")->Arg(1)->Arg(8)->Arg(12)->Arg(40);

#ifdef ORV_BENCH_GSL
void run_gsl(benchmark::State& st, const gsl_qrng_type* type) {
    const unsigned dim = static_cast<unsigned>(st.range(0));
    gsl_qrng* q = gsl_qrng_alloc(type, dim);
    std::vector<double> r(static_cast<size_t>(kPoints) * dim);
    for (auto _ : st) {
        for (int p = 0; p < kPoints; ++p) gsl_qrng_get(q, r.data() + static_cast<size_t>(p) * dim);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kPoints);
    gsl_qrng_free(q);
}
void BM_gsl_sobol(benchmark::State& st) { run_gsl(st, gsl_qrng_sobol); }
void BM_gsl_niederreiter(benchmark::State& st) { run_gsl(st, gsl_qrng_niederreiter_2); }
BENCHMARK(BM_gsl_sobol)->Name("sobol/gsl")->Arg(1)->Arg(8)->Arg(40);
BENCHMARK(BM_gsl_niederreiter)->Name("niederr/gsl")->Arg(1)->Arg(8)->Arg(12);  // GSL stops at 12
#endif

// ---------------------------------------------------------------- Philox
void BM_orv_philox_words(benchmark::State& st) {
    const uint32_t seed[2] = {0x243F6A88, 0x85A308D3};
    void* s = nullptr;
    __vstNewStreamEx(&s, ORV_BRNG_PHILOX4X32X10, 2, seed);
    std::vector<uint32_t> r(kWords);
    for (auto _ : st) {
        __vstiBRngPHILOX4X32X10(s, kWords, r.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kWords);
    __vstDeleteStream(&s);
}
void BM_orv_philox_doubles(benchmark::State& st) {
    const uint32_t seed[2] = {0x243F6A88, 0x85A308D3};
    void* s = nullptr;
    __vstNewStreamEx(&s, ORV_BRNG_PHILOX4X32X10, 2, seed);
    std::vector<double> r(kWords);
    for (auto _ : st) {
        __vstdBRngPHILOX4X32X10(s, kWords, r.data(), 0.0, 1.0);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kWords);
    __vstDeleteStream(&s);
}
BENCHMARK(BM_orv_philox_words)->Name("philox_words/orv");
BENCHMARK(BM_orv_philox_doubles)->Name("philox_doubles/orv");

// Random123 as its documentation uses it: one block per call.
void BM_r123_philox_words(benchmark::State& st) {
    philox4x32_key_t k = {{0x243F6A88, 0x85A308D3}};
    philox4x32_ctr_t c = {{0, 0, 0, 0}};
    std::vector<uint32_t> r(kWords);
    for (auto _ : st) {
        for (int i = 0; i < kWords; i += 4) {
            const philox4x32_ctr_t b = philox4x32(c, k);
            ++c.v[0];
            for (int j = 0; j < 4; ++j) r[i + j] = b.v[j];
        }
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kWords);
}
void BM_r123_philox_doubles(benchmark::State& st) {
    philox4x32_key_t k = {{0x243F6A88, 0x85A308D3}};
    philox4x32_ctr_t c = {{0, 0, 0, 0}};
    std::vector<double> r(kWords);
    for (auto _ : st) {
        for (int i = 0; i < kWords; i += 4) {
            const philox4x32_ctr_t b = philox4x32(c, k);
            ++c.v[0];
            for (int j = 0; j < 4; ++j) r[i + j] = b.v[j] * 0x1p-32;
        }
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kWords);
}
BENCHMARK(BM_r123_philox_words)->Name("philox_words/random123");
BENCHMARK(BM_r123_philox_doubles)->Name("philox_doubles/random123");

}  // namespace

BENCHMARK_MAIN();
