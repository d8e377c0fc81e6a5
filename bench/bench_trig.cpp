// Sin, Cos and Tan, single and double, at n = 1024 and 10^5, beside glibc's
// scalar functions, libmvec's SSE, AVX2 and AVX-512 entry points
// (_ZGVbN*, _ZGVdN*, _ZGVeN*) and SLEEF's 1-ULP (u10) and 3.5-ULP (u35)
// functions of the same three widths. Inputs uniform on [-100, 100].
// Names: <function>/<implementation>/<n>; orv is the SSE2 baseline, orv_avx2
// and orv_avx512 the wider kernel libraries. Below, the pi- and degree-scaled
// functions in their three tiers, with SLEEF's sinpi and cospi.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cmath>
#include <random>
#include <vector>

#include <orv/vtm.h>
#include <orv/vtm_functions.h>

#include "vector_bench.h"

#if __has_include(<sleef.h>)
#include <sleef.h>
#define HAVE_SLEEF 1
#endif

#define MVEC(fn)                                                                   \
    __m128d _ZGVbN2v_##fn(__m128d);                                                \
    __m128 _ZGVbN4v_##fn##f(__m128);                                               \
    __attribute__((target("avx2"))) __m256d _ZGVdN4v_##fn(__m256d);                \
    __attribute__((target("avx2"))) __m256 _ZGVdN8v_##fn##f(__m256);               \
    __attribute__((target("avx512f"))) __m512d _ZGVeN8v_##fn(__m512d);             \
    __attribute__((target("avx512f"))) __m512 _ZGVeN16v_##fn##f(__m512);
extern "C" {
MVEC(sin) MVEC(cos) MVEC(tan)
}

namespace {

constexpr double kLo = -100.0, kHi = 100.0;

template <typename T>
std::vector<T> inputs(long n) {
    std::mt19937_64 g(42);
    std::uniform_real_distribution<double> u(kLo, kHi);
    std::vector<T> v(n + 16);
    for (auto& x : v) x = static_cast<T>(u(g));
    return v;
}

template <typename T, void (*Fn)(int, const T*, T*)>
void BM_orv(benchmark::State& st) {
    const long n = st.range(0);
    auto a = inputs<T>(n);
    std::vector<T> r(n + 16);
    _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
    for (auto _ : st) {
        Fn(static_cast<int>(n), a.data(), r.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}

template <typename T, T (*Fn)(T)>
void BM_scalar(benchmark::State& st) {
    const long n = st.range(0);
    auto a = inputs<T>(n);
    std::vector<T> r(n + 16);
    for (auto _ : st) {
        for (long i = 0; i < n; ++i) r[i] = Fn(a[i]);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}

// A loop over one vector entry point of width W, compiled for its
// instruction set.
#define VEC_BENCH(NAME, TARGET, T, W, VT, LOAD, STORE)                                    \
    template <VT (*Fn)(VT)>                                                                \
    __attribute__((target(TARGET))) void NAME##_loop(const T* a, T* r, long n) {           \
        for (long i = 0; i < n; i += W) STORE(r + i, Fn(LOAD(a + i)));                     \
    }                                                                                      \
    template <VT (*Fn)(VT)>                                                                \
    void NAME(benchmark::State& st) {                                                      \
        const long n = st.range(0);                                                        \
        auto a = inputs<T>(n);                                                             \
        std::vector<T> r(n + 16);                                                          \
        for (auto _ : st) {                                                                \
            NAME##_loop<Fn>(a.data(), r.data(), n);                                        \
            benchmark::ClobberMemory();                                                    \
        }                                                                                  \
        st.SetItemsProcessed(st.iterations() * n);                                         \
    }
VEC_BENCH(BM_sse_d, "sse2", double, 2, __m128d, _mm_loadu_pd, _mm_storeu_pd)
VEC_BENCH(BM_sse_s, "sse2", float, 4, __m128, _mm_loadu_ps, _mm_storeu_ps)
VEC_BENCH(BM_avx2_d, "avx2", double, 4, __m256d, _mm256_loadu_pd, _mm256_storeu_pd)
VEC_BENCH(BM_avx2_s, "avx2", float, 8, __m256, _mm256_loadu_ps, _mm256_storeu_ps)
VEC_BENCH(BM_avx512_d, "avx512f", double, 8, __m512d, _mm512_loadu_pd, _mm512_storeu_pd)
VEC_BENCH(BM_avx512_s, "avx512f", float, 16, __m512, _mm512_loadu_ps, _mm512_storeu_ps)

#ifdef HAVE_SLEEF
// sleef.h declares the AVX2 and AVX-512 functions only when the unit is
// compiled for them; the library has them all.
#define SLEEF_DECL(fn, u)                                                              \
    extern "C" __attribute__((target("avx2"))) __m256d Sleef_##fn##d4_##u##avx2(__m256d); \
    extern "C" __attribute__((target("avx2"))) __m256 Sleef_##fn##f8_##u##avx2(__m256);   \
    extern "C" __attribute__((target("avx512f"))) __m512d Sleef_##fn##d8_##u##avx512f(__m512d); \
    extern "C" __attribute__((target("avx512f"))) __m512 Sleef_##fn##f16_##u##avx512f(__m512);
SLEEF_DECL(sin, u10) SLEEF_DECL(sin, u35) SLEEF_DECL(cos, u10) SLEEF_DECL(cos, u35)
SLEEF_DECL(tan, u10) SLEEF_DECL(tan, u35)
// SLEEF's declarations carry attributes that keep their addresses from being
// template arguments; these forwarders inline to the call.
#define SLEEF_WRAP(fn, u)                                                                          \
    __m128d w_##fn##d2_##u(__m128d x) { return Sleef_##fn##d2_##u##sse2(x); }                      \
    __m128 w_##fn##f4_##u(__m128 x) { return Sleef_##fn##f4_##u##sse2(x); }                        \
    __attribute__((target("avx2"))) __m256d w_##fn##d4_##u(__m256d x) { return Sleef_##fn##d4_##u##avx2(x); } \
    __attribute__((target("avx2"))) __m256 w_##fn##f8_##u(__m256 x) { return Sleef_##fn##f8_##u##avx2(x); }   \
    __attribute__((target("avx512f"))) __m512d w_##fn##d8_##u(__m512d x) {                          \
        return Sleef_##fn##d8_##u##avx512f(x);                                                       \
    }                                                                                              \
    __attribute__((target("avx512f"))) __m512 w_##fn##f16_##u(__m512 x) {                           \
        return Sleef_##fn##f16_##u##avx512f(x);                                                      \
    }
SLEEF_WRAP(sin, u10) SLEEF_WRAP(sin, u35) SLEEF_WRAP(cos, u10) SLEEF_WRAP(cos, u35)
SLEEF_WRAP(tan, u10) SLEEF_WRAP(tan, u35)
// The pi-scaled peers: SLEEF has sinpi and cospi at 0.5 ULP (u05) only, and
// no tanpi or degree functions.
SLEEF_DECL(sinpi, u05) SLEEF_DECL(cospi, u05)
SLEEF_WRAP(sinpi, u05) SLEEF_WRAP(cospi, u05)
#endif

#define SIZES ->Arg(1024)->Arg(100000)
#define REG(name, ...) benchmark::RegisterBenchmark(name, __VA_ARGS__) SIZES

#define SLEEF_ROWS(Fn, fn, u)                                                 \
    REG("s" #Fn "/sleef_" #u "_sse", BM_sse_s<w_##fn##f4_##u>);               \
    REG("s" #Fn "/sleef_" #u "_avx2", BM_avx2_s<w_##fn##f8_##u>);             \
    REG("s" #Fn "/sleef_" #u "_avx512", BM_avx512_s<w_##fn##f16_##u>);        \
    REG("d" #Fn "/sleef_" #u "_sse", BM_sse_d<w_##fn##d2_##u>);               \
    REG("d" #Fn "/sleef_" #u "_avx2", BM_avx2_d<w_##fn##d4_##u>);             \
    REG("d" #Fn "/sleef_" #u "_avx512", BM_avx512_d<w_##fn##d8_##u>);

#define FAMILY(Fn, fn)                                                                        \
    REG("s" #Fn "/orv", BM_orv<float, _vtms##Fn##_HA>);                                       \
    REG("s" #Fn "/glibc", BM_scalar<float, static_cast<float (*)(float)>(::fn##f)>);          \
    REG("s" #Fn "/libmvec_sse", BM_sse_s<_ZGVbN4v_##fn##f>);                                  \
    REG("s" #Fn "/libmvec_avx2", BM_avx2_s<_ZGVdN8v_##fn##f>);                                \
    REG("s" #Fn "/libmvec_avx512", BM_avx512_s<_ZGVeN16v_##fn##f>);                           \
    REG("d" #Fn "/orv", BM_orv<double, _vtmd##Fn##_HA>);                                      \
    REG("d" #Fn "/glibc", BM_scalar<double, static_cast<double (*)(double)>(::fn)>);          \
    REG("d" #Fn "/libmvec_sse", BM_sse_d<_ZGVbN2v_##fn>);                                     \
    REG("d" #Fn "/libmvec_avx2", BM_avx2_d<_ZGVdN4v_##fn>);                                   \
    REG("d" #Fn "/libmvec_avx512", BM_avx512_d<_ZGVeN8v_##fn>);

// The pi- and degree-scaled functions in each tier (they hold different
// kernels); glibc 2.36 and numpy have none of them.
template <typename T, void (*Fn)(int, const T*, T*, T*)>
void BM_orv2(benchmark::State& st) {
    const long n = st.range(0);
    auto a = inputs<T>(n);
    std::vector<T> r1(n + 16), r2(n + 16);
    for (auto _ : st) {
        Fn(static_cast<int>(n), a.data(), r1.data(), r2.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}
#define TIERS(Fn)                                         \
    REG("s" #Fn "/orv", BM_orv<float, _vtms##Fn##_HA>);   \
    REG("s" #Fn "/orv_la", BM_orv<float, _vtms##Fn##_21>); \
    REG("s" #Fn "/orv_ep", BM_orv<float, _vtms##Fn##_11>); \
    REG("d" #Fn "/orv", BM_orv<double, _vtmd##Fn##_HA>);  \
    REG("d" #Fn "/orv_la", BM_orv<double, _vtmd##Fn##_50>); \
    REG("d" #Fn "/orv_ep", BM_orv<double, _vtmd##Fn##_26>);

void register_scaled() {
    TIERS(Sinpi) TIERS(Cospi) TIERS(Tanpi) TIERS(Sind) TIERS(Cosd) TIERS(Tand)
    REG("sSinCospi/orv", BM_orv2<float, _vtmsSinCospi_HA>);
    REG("dSinCospi/orv", BM_orv2<double, _vtmdSinCospi_HA>);
#ifdef HAVE_SLEEF
    REG("sSinpi/sleef_u05_sse", BM_sse_s<w_sinpif4_u05>);
    REG("sSinpi/sleef_u05_avx2", BM_avx2_s<w_sinpif8_u05>);
    REG("sSinpi/sleef_u05_avx512", BM_avx512_s<w_sinpif16_u05>);
    REG("dSinpi/sleef_u05_sse", BM_sse_d<w_sinpid2_u05>);
    REG("dSinpi/sleef_u05_avx2", BM_avx2_d<w_sinpid4_u05>);
    REG("dSinpi/sleef_u05_avx512", BM_avx512_d<w_sinpid8_u05>);
    REG("sCospi/sleef_u05_sse", BM_sse_s<w_cospif4_u05>);
    REG("sCospi/sleef_u05_avx2", BM_avx2_s<w_cospif8_u05>);
    REG("sCospi/sleef_u05_avx512", BM_avx512_s<w_cospif16_u05>);
    REG("dCospi/sleef_u05_sse", BM_sse_d<w_cospid2_u05>);
    REG("dCospi/sleef_u05_avx2", BM_avx2_d<w_cospid4_u05>);
    REG("dCospi/sleef_u05_avx512", BM_avx512_d<w_cospid8_u05>);
#endif
}

// SinCos, both results of one call, in the baseline (0) and the AVX2 (1) and
// AVX-512 (2) kernel libraries, beside Sin and Cos of the same inputs.
template <typename T>
void BM_sincos(benchmark::State& st, int variant, const char* fn) {
    auto f = reinterpret_cast<void (*)(int, const T*, T*, T*)>(orv_bench::variant_kernel(variant, fn));
    if (!f) {
        st.SkipWithError("variant not loaded");
        return;
    }
    const long n = st.range(0);
    auto a = inputs<T>(n);
    std::vector<T> r1(n + 16), r2(n + 16);
    _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
    for (auto _ : st) {
        f(static_cast<int>(n), a.data(), r1.data(), r2.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}
void register_sincos() {
    static const char* const isa[3] = {"/orv", "/orv_avx2", "/orv_avx512"};
    for (int v = 0; v < 3; ++v) {
        benchmark::RegisterBenchmark((std::string("sSinCos") + isa[v]).c_str(), BM_sincos<float>, v, "sSinCos")
            ->Arg(1024)->Arg(100000);
        benchmark::RegisterBenchmark((std::string("dSinCos") + isa[v]).c_str(), BM_sincos<double>, v, "dSinCos")
            ->Arg(1024)->Arg(100000);
    }
}

void register_all() {
    FAMILY(Sin, sin)
    FAMILY(Cos, cos)
    FAMILY(Tan, tan)
    for (const char* fn : {"Sin", "Cos", "Tan"}) {
        orv_bench::register_variants<float, 1>((std::string("s") + fn).c_str(), kLo, kHi);
        orv_bench::register_variants<double, 1>((std::string("d") + fn).c_str(), kLo, kHi);
    }
#ifdef HAVE_SLEEF
    SLEEF_ROWS(Sin, sin, u10) SLEEF_ROWS(Sin, sin, u35)
    SLEEF_ROWS(Cos, cos, u10) SLEEF_ROWS(Cos, cos, u35)
    SLEEF_ROWS(Tan, tan, u10) SLEEF_ROWS(Tan, tan, u35)
#endif
}

}  // namespace

int main(int argc, char** argv) {
    register_all();
    register_scaled();
    register_sincos();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
