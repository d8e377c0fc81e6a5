// The loops every vector-function benchmark runs: ours through a kernel
// entry, a scalar peer element by element, and a vector peer one register
// at a time, over the same seeded inputs on [lo, hi). Registered as
// <function>/<implementation> at n = 1024 and 10^5.
#pragma once

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <immintrin.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include <orv/vtm.h>

namespace orv_bench {

template <typename T>
std::vector<T> inputs(long n, double lo, double hi, uint64_t seed = 42) {
    std::mt19937_64 g(seed);
    std::uniform_real_distribution<double> u(lo, hi);
    std::vector<T> v(n);
    for (auto& x : v) x = static_cast<T>(u(g));
    return v;
}

// Times body(a, b, r, n) over inputs a and b (second seed) on [lo, hi).
template <typename T, typename Body>
void timed(benchmark::State& st, double lo, double hi, Body body) {
    const long n = st.range(0);
    auto a = inputs<T>(n, lo, hi), b = inputs<T>(n, lo, hi, 7);
    std::vector<T> r(n);
    _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
    for (auto _ : st) {
        body(a.data(), b.data(), r.data(), n);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}

template <typename T, void (*Fn)(int, const T*, T*)>
void BM_orv(benchmark::State& st, double lo, double hi) {
    timed<T>(st, lo, hi, [](const T* a, const T*, T* r, long n) { Fn(int(n), a, r); });
}
template <typename T, void (*Fn)(int, const T*, const T*, T*)>
void BM_orv2(benchmark::State& st, double lo, double hi) {
    timed<T>(st, lo, hi, [](const T* a, const T* b, T* r, long n) { Fn(int(n), a, b, r); });
}
template <typename T, T (*Fn)(T)>
void BM_scalar(benchmark::State& st, double lo, double hi) {
    timed<T>(st, lo, hi, [](const T* a, const T*, T* r, long n) {
        for (long i = 0; i < n; ++i) r[i] = Fn(a[i]);
    });
}
template <typename T, T (*Fn)(T, T)>
void BM_scalar2(benchmark::State& st, double lo, double hi) {
    timed<T>(st, lo, hi, [](const T* a, const T* b, T* r, long n) {
        for (long i = 0; i < n; ++i) r[i] = Fn(a[i], b[i]);
    });
}
// A vector peer of any width: Step loads, calls and stores one register of
// L lanes (compiled for that register's instruction set).
template <typename T, void (*Step)(const T*, T*), int L>
void BM_vec(benchmark::State& st, double lo, double hi) {
    timed<T>(st, lo, hi, [](const T* a, const T*, T* r, long n) {
        for (long i = 0; i < n; i += L) Step(a + i, r + i);
    });
}
template <typename T, void (*Step)(const T*, const T*, T*), int L>
void BM_vec2(benchmark::State& st, double lo, double hi) {
    timed<T>(st, lo, hi, [](const T* a, const T* b, T* r, long n) {
        for (long i = 0; i < n; i += L) Step(a + i, b + i, r + i);
    });
}
// SSE2 peers taking one register.
template <__m128d (*Fn)(__m128d)>
void step_d2(const double* a, double* r) { _mm_storeu_pd(r, Fn(_mm_loadu_pd(a))); }
template <__m128 (*Fn)(__m128)>
void step_s4(const float* a, float* r) { _mm_storeu_ps(r, Fn(_mm_loadu_ps(a))); }
template <__m128d (*Fn)(__m128d)>
void BM_vec_d(benchmark::State& st, double lo, double hi) { BM_vec<double, step_d2<Fn>, 2>(st, lo, hi); }
template <__m128 (*Fn)(__m128)>
void BM_vec_s(benchmark::State& st, double lo, double hi) { BM_vec<float, step_s4<Fn>, 4>(st, lo, hi); }

// The HA slot of fn's table in the SSE2 baseline (0, the loaded library) or
// the AVX2 (1) or AVX-512 (2) kernel library, loaded from beside the
// baseline; null when it does not load or lacks fn.
inline void* variant_kernel(int variant, const char* fn) {
    static void* libs[3] = {nullptr, nullptr, nullptr};
    static const char* const files[3] = {nullptr, "liborv_kernel_avx2.so.0", "liborv_kernel_avx512.so.0"};
    if (variant != 0 && !libs[variant]) {
        Dl_info info;
        dladdr(reinterpret_cast<void*>(&_vtmGetMode), &info);
        std::string dir = info.dli_fname;
        dir = dir.substr(0, dir.rfind('/') + 1);
        libs[variant] = dlopen((dir + files[variant]).c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!libs[variant]) return nullptr;
    }
    const std::string table = std::string("orv_vtm_kernel_") + fn + "_ttab";
    void* const* tab =
        static_cast<void* const*>(dlsym(variant == 0 ? RTLD_DEFAULT : libs[variant], table.c_str()));
    return tab ? tab[1] : nullptr;
}

// Our kernel of one variant, unary or binary (second inputs on [lo2, hi2)),
// registered as <fn>/orv_avx2 and <fn>/orv_avx512 (variant 0 is the baseline).
template <typename T, int Arity>
void BM_orv_variant(benchmark::State& st, int variant, const char* fn, double lo, double hi, double lo2,
                    double hi2) {
    void* f = variant_kernel(variant, fn);
    if (!f) {
        st.SkipWithError("variant not loaded");
        return;
    }
    const long n = st.range(0);
    auto a = inputs<T>(n, lo, hi), b = inputs<T>(n, lo2, hi2, 7);
    std::vector<T> r(n);
    _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
    for (auto _ : st) {
        if constexpr (Arity == 1)
            reinterpret_cast<void (*)(int, const T*, T*)>(f)(int(n), a.data(), r.data());
        else
            reinterpret_cast<void (*)(int, const T*, const T*, T*)>(f)(int(n), a.data(), b.data(), r.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}
template <typename T, int Arity>
void register_variants(const char* fn, double lo, double hi, double lo2 = 0, double hi2 = 0) {
    static const char* const isa[3] = {nullptr, "/orv_avx2", "/orv_avx512"};
    if (Arity == 2 && lo2 == hi2) lo2 = lo, hi2 = hi;
    const char* keep = (new std::string(fn))->c_str();  // lives as long as the registration
    for (int v = 1; v <= 2; ++v)
        benchmark::RegisterBenchmark((std::string(fn) + isa[v]).c_str(), BM_orv_variant<T, Arity>, v, keep,
                                     lo, hi, lo2, hi2)
            ->Arg(1024)
            ->Arg(100000);
}

using BenchFn = void (*)(benchmark::State&, double, double);

// A peer's vector function of W lanes over the array, compiled for its ISA;
// the arrays run whole registers past n.
#define ORV_BENCH_PEER_LOOP(NAME, ISA, T, V, W, LOAD, STORE)                               \
    template <V (*Fn)(V)>                                                                \
    __attribute__((target(ISA))) void NAME(benchmark::State& st, double lo, double hi) { \
        const long n = st.range(0);                                                      \
        auto a = inputs<T>(n + W, lo, hi);                                               \
        std::vector<T> r(n + W);                                                         \
        for (auto _ : st) {                                                              \
            for (long i = 0; i < n; i += W) STORE(&r[i], Fn(LOAD(&a[i])));               \
            benchmark::ClobberMemory();                                                  \
        }                                                                                \
        st.SetItemsProcessed(st.iterations() * n);                                       \
    }
ORV_BENCH_PEER_LOOP(BM_peer_sse2_d, "sse2", double, __m128d, 2, _mm_loadu_pd, _mm_storeu_pd)
ORV_BENCH_PEER_LOOP(BM_peer_sse2_s, "sse2", float, __m128, 4, _mm_loadu_ps, _mm_storeu_ps)
ORV_BENCH_PEER_LOOP(BM_peer_avx2_d, "avx2", double, __m256d, 4, _mm256_loadu_pd, _mm256_storeu_pd)
ORV_BENCH_PEER_LOOP(BM_peer_avx2_s, "avx2", float, __m256, 8, _mm256_loadu_ps, _mm256_storeu_ps)
ORV_BENCH_PEER_LOOP(BM_peer_avx512_d, "avx512f", double, __m512d, 8, _mm512_loadu_pd, _mm512_storeu_pd)
ORV_BENCH_PEER_LOOP(BM_peer_avx512_s, "avx512f", float, __m512, 16, _mm512_loadu_ps, _mm512_storeu_ps)
#undef ORV_BENCH_PEER_LOOP

}  // namespace orv_bench

#define ORV_BENCH_REG(name, lo, hi, ...)                                                        \
    benchmark::RegisterBenchmark(name, static_cast<orv_bench::BenchFn>(__VA_ARGS__), double(lo), \
                                 double(hi))                                                    \
        ->Arg(1024)                                                                             \
        ->Arg(100000)
