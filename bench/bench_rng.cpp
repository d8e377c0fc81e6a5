// Raw words and uniform doubles per nanosecond: our five congruential
// generators beside the plain scalar form of each recursion, GSL's nearest
// generators (R250, MRG, minstd), the standard library's minstd_rand, and
// L'Ecuyer's MRG32k3a in double arithmetic as published.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include <orv/rng.h>

#if __has_include(<gsl/gsl_rng.h>)
#include <gsl/gsl_rng.h>
#define ORV_BENCH_GSL 1
#endif

namespace {

constexpr int kN = 10000;
const uint32_t kSeed[6] = {12345, 23456, 34567, 45678, 56789, 67890};

// ---------------------------------------------------------------- ours
template <int32_t Id>
void BM_orv_words(benchmark::State& st) {
    void* s = nullptr;
    __vstNewStreamEx(&s, Id, 6, kSeed);
    BrngRow row;
    __vstGetBrngProperties(Id, &row);
    std::vector<uint32_t> r(static_cast<size_t>(kN) * 4);
    for (auto _ : st) {
        row.wordFill(s, kN, r.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
    __vstDeleteStream(&s);
}

template <int32_t Id>
void BM_orv_doubles(benchmark::State& st) {
    void* s = nullptr;
    __vstNewStreamEx(&s, Id, 6, kSeed);
    BrngRow row;
    __vstGetBrngProperties(Id, &row);
    std::vector<double> r(kN);
    for (auto _ : st) {
        row.doubleFill(s, kN, r.data(), 0.0, 1.0);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
    __vstDeleteStream(&s);
}

// ---------------------------------------------------- plain scalar forms
// One output at a time, the reduction by the % operator.
struct PlainMcg31 {
    uint64_t x = 12345;
    uint32_t word() { return static_cast<uint32_t>(x = x * 1132489760u % 2147483647u); }
    double uniform() { return word() / 2147483647.0; }
};
struct PlainMcg59 {
    uint64_t x = 12345;
    uint64_t word() { return x = x * 302875106592253ull % (uint64_t{1} << 59); }
    double uniform() { return static_cast<double>(word()) * 0x1p-59; }
};
// The set is read at run time, as a generator with 273 sets must.
volatile int g_wh_set = 0;
const uint64_t kWhM[2][4] = {{16770647, 16770643, 16770623, 16770617}, {16770311, 16770283, 16770263, 16770209}};
const uint64_t kWhA[2][4] = {{125, 117, 127, 126}, {127, 126, 125, 123}};
struct PlainWh {
    uint64_t x[4] = {1, 2, 3, 4};
    const uint64_t* a = kWhA[g_wh_set];
    const uint64_t* m = kWhM[g_wh_set];
    uint32_t word() {
        for (int i = 0; i < 4; ++i) x[i] = a[i] * x[i] % m[i];
        return static_cast<uint32_t>(x[0]);
    }
    double uniform() {
        word();
        double u = 0;
        for (int i = 0; i < 4; ++i) u += static_cast<double>(x[i]) / m[i];
        return u - std::floor(u);
    }
};
struct PlainR250 {
    uint32_t w[250];
    int i = 0;
    PlainR250() {
        uint32_t s = 1;
        for (auto& v : w) v = s *= 69069u;
    }
    uint32_t word() {
        const uint32_t v = w[i] ^ w[(i + 103) % 250];
        w[i] = v;
        i = (i + 1) % 250;
        return v;
    }
    double uniform() { return word() * 0x1p-32; }
};
// L'Ecuyer's MRG32k3a as published, in double arithmetic.
struct PlainMrg32k3a {
    double s10 = 12345, s11 = 12345, s12 = 12345, s20 = 12345, s21 = 12345, s22 = 12345;
    double step() {
        constexpr double m1 = 4294967087.0, m2 = 4294944443.0;
        double p1 = 1403580.0 * s11 - 810728.0 * s10;
        long k = static_cast<long>(p1 / m1);
        p1 -= k * m1;
        if (p1 < 0.0) p1 += m1;
        s10 = s11, s11 = s12, s12 = p1;
        double p2 = 527612.0 * s22 - 1370589.0 * s20;
        k = static_cast<long>(p2 / m2);
        p2 -= k * m2;
        if (p2 < 0.0) p2 += m2;
        s20 = s21, s21 = s22, s22 = p2;
        return p1 > p2 ? p1 - p2 : p1 - p2 + m1;
    }
    uint32_t word() { return static_cast<uint32_t>(step()); }
    double uniform() { return step() * 2.328306549295727688e-10; }
};

template <typename G>
void BM_plain_words(benchmark::State& st) {
    G g;
    std::vector<uint64_t> r(kN);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) r[i] = g.word();
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

template <typename G>
void BM_plain_doubles(benchmark::State& st) {
    G g;
    std::vector<double> r(kN);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) r[i] = g.uniform();
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

// WH words are the four parts of the state, as our word fill writes them.
void BM_plain_wh_words(benchmark::State& st) {
    PlainWh g;
    std::vector<uint32_t> r(static_cast<size_t>(kN) * 4);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) {
            g.word();
            for (int k = 0; k < 4; ++k) r[4 * i + k] = static_cast<uint32_t>(g.x[k]);
        }
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

// ---------------------------------------------------------------- peers
void BM_std_minstd_words(benchmark::State& st) {
    std::minstd_rand g(12345);
    std::vector<uint32_t> r(kN);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) r[i] = static_cast<uint32_t>(g());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

void BM_std_minstd_doubles(benchmark::State& st) {
    std::minstd_rand g(12345);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    std::vector<double> r(kN);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) r[i] = u(g);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
}

#ifdef ORV_BENCH_GSL
const gsl_rng_type* gsl_type(int which) {
    return which == 0 ? gsl_rng_r250 : which == 1 ? gsl_rng_mrg : gsl_rng_minstd;
}

void BM_gsl_words(benchmark::State& st) {
    gsl_rng* g = gsl_rng_alloc(gsl_type(static_cast<int>(st.range(0))));
    std::vector<uint32_t> r(kN);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) r[i] = static_cast<uint32_t>(gsl_rng_get(g));
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
    st.SetLabel(gsl_rng_name(g));
    gsl_rng_free(g);
}

void BM_gsl_doubles(benchmark::State& st) {
    gsl_rng* g = gsl_rng_alloc(gsl_type(static_cast<int>(st.range(0))));
    std::vector<double> r(kN);
    for (auto _ : st) {
        for (int i = 0; i < kN; ++i) r[i] = gsl_rng_uniform(g);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * kN);
    st.SetLabel(gsl_rng_name(g));
    gsl_rng_free(g);
}
BENCHMARK(BM_gsl_words)->Arg(0)->Arg(1)->Arg(2);
BENCHMARK(BM_gsl_doubles)->Arg(0)->Arg(1)->Arg(2);
#endif

BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_MCG31M1);
BENCHMARK_TEMPLATE(BM_plain_words, PlainMcg31);
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_MCG59);
BENCHMARK_TEMPLATE(BM_plain_words, PlainMcg59);
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_MRG32K3A);
BENCHMARK_TEMPLATE(BM_plain_words, PlainMrg32k3a);
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_WH);
BENCHMARK(BM_plain_wh_words);
BENCHMARK_TEMPLATE(BM_orv_words, ORV_BRNG_R250);
BENCHMARK_TEMPLATE(BM_plain_words, PlainR250);
BENCHMARK(BM_std_minstd_words);

BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_MCG31M1);
BENCHMARK_TEMPLATE(BM_plain_doubles, PlainMcg31);
BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_MCG59);
BENCHMARK_TEMPLATE(BM_plain_doubles, PlainMcg59);
BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_MRG32K3A);
BENCHMARK_TEMPLATE(BM_plain_doubles, PlainMrg32k3a);
BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_WH);
BENCHMARK_TEMPLATE(BM_plain_doubles, PlainWh);
BENCHMARK_TEMPLATE(BM_orv_doubles, ORV_BRNG_R250);
BENCHMARK_TEMPLATE(BM_plain_doubles, PlainR250);
BENCHMARK(BM_std_minstd_doubles);

}  // namespace

BENCHMARK_MAIN();
