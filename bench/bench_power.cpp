// Pow, Cbrt and Hypot, single and double, at n = 1024 and 10^5: ours (the
// SSE2 baseline; the wider variants are pending) beside glibc's scalar
// functions, glibc's vector functions (libmvec) at 128, 256 and 512 bits,
// and SLEEF's 1-ULP (Hypot: 0.5-ULP) functions at the same widths.
// Names: <function>/<implementation>/<n>. The numpy peers are timed by
// bench/power_peers.py.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <orv/vtm.h>
#include <orv/vtm_functions.h>

#include "vector_bench.h"

#if __has_include(<sleef.h>)
#include <sleef.h>
#define HAVE_SLEEF 1
// sleef.h declares the wider variants only when the translation unit is
// built for them; these loops choose the instruction set per function.
extern "C" {
__m256d Sleef_powd4_u10avx2(__m256d, __m256d);
__m512d Sleef_powd8_u10avx512f(__m512d, __m512d);
__m256 Sleef_powf8_u10avx2(__m256, __m256);
__m512 Sleef_powf16_u10avx512f(__m512, __m512);
__m256d Sleef_hypotd4_u05avx2(__m256d, __m256d);
__m512d Sleef_hypotd8_u05avx512f(__m512d, __m512d);
__m256 Sleef_hypotf8_u05avx2(__m256, __m256);
__m512 Sleef_hypotf16_u05avx512f(__m512, __m512);
__m256d Sleef_cbrtd4_u10avx2(__m256d);
__m512d Sleef_cbrtd8_u10avx512f(__m512d);
__m256 Sleef_cbrtf8_u10avx2(__m256);
__m512 Sleef_cbrtf16_u10avx512f(__m512);
}
#endif

extern "C" {
__m128d _ZGVbN2vv_pow(__m128d, __m128d);
__m256d _ZGVdN4vv_pow(__m256d, __m256d);
__m512d _ZGVeN8vv_pow(__m512d, __m512d);
__m128 _ZGVbN4vv_powf(__m128, __m128);
__m256 _ZGVdN8vv_powf(__m256, __m256);
__m512 _ZGVeN16vv_powf(__m512, __m512);
__m128d _ZGVbN2vv_hypot(__m128d, __m128d);
__m256d _ZGVdN4vv_hypot(__m256d, __m256d);
__m512d _ZGVeN8vv_hypot(__m512d, __m512d);
__m128 _ZGVbN4vv_hypotf(__m128, __m128);
__m256 _ZGVdN8vv_hypotf(__m256, __m256);
__m512 _ZGVeN16vv_hypotf(__m512, __m512);
__m128d _ZGVbN2v_cbrt(__m128d);
__m256d _ZGVdN4v_cbrt(__m256d);
__m512d _ZGVeN8v_cbrt(__m512d);
__m128 _ZGVbN4v_cbrtf(__m128);
__m256 _ZGVdN8v_cbrtf(__m256);
__m512 _ZGVeN16v_cbrtf(__m512);
}

namespace {

template <typename T>
using Loop = void (*)(const T* a, const T* b, T* r, long n);

// Loops over whole registers of the peers' vector functions (n is a
// multiple of 16 here).
#define VLOOP_(NAME, TGT, T, VT, W, LD, ST, EXPR)                                  \
    __attribute__((target(TGT))) void NAME(const T* a, const T* b, T* r, long n) { \
        for (long i = 0; i < n; i += W) {                                          \
            const VT x = LD(a + i), y = LD(b + i);                                 \
            (void)y;                                                               \
            ST(r + i, EXPR);                                                       \
        }                                                                          \
    }
#define VLOOP(...) VLOOP_(__VA_ARGS__)
#define D128 "sse2", double, __m128d, 2, _mm_loadu_pd, _mm_storeu_pd
#define D256 "avx2,fma", double, __m256d, 4, _mm256_loadu_pd, _mm256_storeu_pd
#define D512 "avx512f", double, __m512d, 8, _mm512_loadu_pd, _mm512_storeu_pd
#define S128 "sse2", float, __m128, 4, _mm_loadu_ps, _mm_storeu_ps
#define S256 "avx2,fma", float, __m256, 8, _mm256_loadu_ps, _mm256_storeu_ps
#define S512 "avx512f", float, __m512, 16, _mm512_loadu_ps, _mm512_storeu_ps

VLOOP(mvec_pow_d2, D128, _ZGVbN2vv_pow(x, y))
VLOOP(mvec_pow_d4, D256, _ZGVdN4vv_pow(x, y))
VLOOP(mvec_pow_d8, D512, _ZGVeN8vv_pow(x, y))
VLOOP(mvec_pow_s4, S128, _ZGVbN4vv_powf(x, y))
VLOOP(mvec_pow_s8, S256, _ZGVdN8vv_powf(x, y))
VLOOP(mvec_pow_s16, S512, _ZGVeN16vv_powf(x, y))
VLOOP(mvec_hypot_d2, D128, _ZGVbN2vv_hypot(x, y))
VLOOP(mvec_hypot_d4, D256, _ZGVdN4vv_hypot(x, y))
VLOOP(mvec_hypot_d8, D512, _ZGVeN8vv_hypot(x, y))
VLOOP(mvec_hypot_s4, S128, _ZGVbN4vv_hypotf(x, y))
VLOOP(mvec_hypot_s8, S256, _ZGVdN8vv_hypotf(x, y))
VLOOP(mvec_hypot_s16, S512, _ZGVeN16vv_hypotf(x, y))
VLOOP(mvec_cbrt_d2, D128, _ZGVbN2v_cbrt(x))
VLOOP(mvec_cbrt_d4, D256, _ZGVdN4v_cbrt(x))
VLOOP(mvec_cbrt_d8, D512, _ZGVeN8v_cbrt(x))
VLOOP(mvec_cbrt_s4, S128, _ZGVbN4v_cbrtf(x))
VLOOP(mvec_cbrt_s8, S256, _ZGVdN8v_cbrtf(x))
VLOOP(mvec_cbrt_s16, S512, _ZGVeN16v_cbrtf(x))
#ifdef HAVE_SLEEF
VLOOP(sleef_pow_d2, D128, Sleef_powd2_u10sse2(x, y))
VLOOP(sleef_pow_d4, D256, Sleef_powd4_u10avx2(x, y))
VLOOP(sleef_pow_d8, D512, Sleef_powd8_u10avx512f(x, y))
VLOOP(sleef_pow_s4, S128, Sleef_powf4_u10sse2(x, y))
VLOOP(sleef_pow_s8, S256, Sleef_powf8_u10avx2(x, y))
VLOOP(sleef_pow_s16, S512, Sleef_powf16_u10avx512f(x, y))
VLOOP(sleef_hypot_d2, D128, Sleef_hypotd2_u05sse2(x, y))
VLOOP(sleef_hypot_d4, D256, Sleef_hypotd4_u05avx2(x, y))
VLOOP(sleef_hypot_d8, D512, Sleef_hypotd8_u05avx512f(x, y))
VLOOP(sleef_hypot_s4, S128, Sleef_hypotf4_u05sse2(x, y))
VLOOP(sleef_hypot_s8, S256, Sleef_hypotf8_u05avx2(x, y))
VLOOP(sleef_hypot_s16, S512, Sleef_hypotf16_u05avx512f(x, y))
VLOOP(sleef_cbrt_d2, D128, Sleef_cbrtd2_u10sse2(x))
VLOOP(sleef_cbrt_d4, D256, Sleef_cbrtd4_u10avx2(x))
VLOOP(sleef_cbrt_d8, D512, Sleef_cbrtd8_u10avx512f(x))
VLOOP(sleef_cbrt_s4, S128, Sleef_cbrtf4_u10sse2(x))
VLOOP(sleef_cbrt_s8, S256, Sleef_cbrtf8_u10avx2(x))
VLOOP(sleef_cbrt_s16, S512, Sleef_cbrtf16_u10avx512f(x))
#endif

template <typename T, T (*F)(T, T)>
void glibc2(const T* a, const T* b, T* r, long n) {
    for (long i = 0; i < n; ++i) r[i] = F(a[i], b[i]);
}
template <typename T, T (*F)(T)>
void glibc1(const T* a, const T*, T* r, long n) {
    for (long i = 0; i < n; ++i) r[i] = F(a[i]);
}
double pow_d(double x, double y) { return std::pow(x, y); }
float pow_s(float x, float y) { return std::pow(x, y); }
double hypot_d(double x, double y) { return std::hypot(x, y); }
float hypot_s(float x, float y) { return std::hypot(x, y); }
double cbrt_d(double x) { return std::cbrt(x); }
float cbrt_s(float x) { return std::cbrt(x); }

template <typename T, void (*F)(int, const T*, const T*, T*)>
void orv2(const T* a, const T* b, T* r, long n) { F(int(n), a, b, r); }
template <typename T, void (*F)(int, const T*, T*)>
void orv1(const T* a, const T*, T* r, long n) { F(int(n), a, r); }

template <typename T>
void run(benchmark::State& st, Loop<T> loop, double lo, double hi, double lo_b, double hi_b) {
    const long n = st.range(0);
    std::mt19937_64 g(42);
    std::uniform_real_distribution<double> u(lo, hi), ub(lo_b, hi_b);
    std::vector<T> a(n), b(n), r(n);
    for (long i = 0; i < n; ++i) a[i] = T(u(g)), b[i] = T(ub(g));
    _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE);
    for (auto _ : st) {
        loop(a.data(), b.data(), r.data(), n);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}

bool cpu_has(const char* feature) {
    const std::string f = feature;
    return f == "avx2" ? __builtin_cpu_supports("avx2") : __builtin_cpu_supports("avx512f");
}

template <typename T>
void reg(const char* name, Loop<T> loop, const double (&range)[4], const char* needs = nullptr) {
    if (needs && !cpu_has(needs)) return;
    benchmark::RegisterBenchmark(name, [=](benchmark::State& st) {
        run<T>(st, loop, range[0], range[1], range[2], range[3]);
    })->Arg(1024)->Arg(100000);
}

// Bases in [0.1, 10] with exponents in [-20, 20]; cube roots of [-1e3, 1e3];
// hypot of two components in [-1e3, 1e3].
const double kPowR[4] = {0.1, 10, -20, 20};
const double kCbrtR[4] = {-1e3, 1e3, 0, 0};
const double kHypotR[4] = {-1e3, 1e3, -1e3, 1e3};

#define PEERS(Fn, lower, R, t, ORV, W1, W2, W3)                                             \
    reg<T_##t>(#t #Fn "/orv", ORV, R);                                                     \
    reg<T_##t>(#t #Fn "/glibc", GLIBC_##t(lower), R);                                      \
    reg<T_##t>(#t #Fn "/libmvec_128", mvec_##lower##_##t##W1, R);                           \
    reg<T_##t>(#t #Fn "/libmvec_256", mvec_##lower##_##t##W2, R, "avx2");                   \
    reg<T_##t>(#t #Fn "/libmvec_512", mvec_##lower##_##t##W3, R, "avx512f");                \
    SLEEF_PEERS(Fn, lower, R, t, W1, W2, W3)
#ifdef HAVE_SLEEF
#define SLEEF_PEERS(Fn, lower, R, t, W1, W2, W3)                                            \
    reg<T_##t>(#t #Fn "/sleef_128", sleef_##lower##_##t##W1, R);                            \
    reg<T_##t>(#t #Fn "/sleef_256", sleef_##lower##_##t##W2, R, "avx2");                    \
    reg<T_##t>(#t #Fn "/sleef_512", sleef_##lower##_##t##W3, R, "avx512f");
#else
#define SLEEF_PEERS(...)
#endif
using T_s = float;
using T_d = double;

void register_all() {
#define GLIBC_d(f) glibc2<double, f##_d>
#define GLIBC_s(f) glibc2<float, f##_s>
    PEERS(Pow, pow, kPowR, d, (orv2<double, _vtmdPow_HA>), 2, 4, 8)
    PEERS(Pow, pow, kPowR, s, (orv2<float, _vtmsPow_HA>), 4, 8, 16)
    PEERS(Hypot, hypot, kHypotR, d, (orv2<double, _vtmdHypot_HA>), 2, 4, 8)
    PEERS(Hypot, hypot, kHypotR, s, (orv2<float, _vtmsHypot_HA>), 4, 8, 16)
#undef GLIBC_d
#undef GLIBC_s
#define GLIBC_d(f) glibc1<double, f##_d>
#define GLIBC_s(f) glibc1<float, f##_s>
    PEERS(Cbrt, cbrt, kCbrtR, d, (orv1<double, _vtmdCbrt_HA>), 2, 4, 8)
    PEERS(Cbrt, cbrt, kCbrtR, s, (orv1<float, _vtmsCbrt_HA>), 4, 8, 16)
    // The wider kernel libraries (orv is the SSE2 baseline).
    for (const char* t : {"s", "d"}) {
        const bool s = t[0] == 's';
        const std::string p = t;
        (s ? orv_bench::register_variants<float, 2> : orv_bench::register_variants<double, 2>)(
            (p + "Pow").c_str(), kPowR[0], kPowR[1], kPowR[2], kPowR[3]);
        (s ? orv_bench::register_variants<float, 2> : orv_bench::register_variants<double, 2>)(
            (p + "Hypot").c_str(), kHypotR[0], kHypotR[1], kHypotR[2], kHypotR[3]);
        (s ? orv_bench::register_variants<float, 1> : orv_bench::register_variants<double, 1>)(
            (p + "Cbrt").c_str(), kCbrtR[0], kCbrtR[1], 0, 0);
    }
}

}  // namespace

int main(int argc, char** argv) {
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
