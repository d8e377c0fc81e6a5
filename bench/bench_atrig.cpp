// Inverse trigonometric and hyperbolic functions, single and double, at
// n = 1024 and 10^5, beside glibc's scalar functions, glibc's libmvec at its
// SSE, AVX2 and AVX-512 widths (_ZGVb, _ZGVd, _ZGVe) and SLEEF's 1-ULP and
// 3.5-ULP functions at the same widths. Names: <function>/<implementation>/<n>;
// the numpy figures come from bench/atrig_peers.py.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <orv/vtm.h>
#include <orv/vtm_functions.h>

#include "vector_bench.h"

#if __has_include(<sleef.h>)
#include <sleef.h>
#define HAVE_SLEEF 1
#endif

// glibc's vector entry points: b SSE (2 doubles, 4 floats), d AVX2 (4, 8),
// e AVX-512 (8, 16).
#define MVEC1(f)                                                                           \
    __m128d _ZGVbN2v_##f(__m128d);                                                         \
    __m256d _ZGVdN4v_##f(__m256d);                                                         \
    __m512d _ZGVeN8v_##f(__m512d);                                                         \
    __m128 _ZGVbN4v_##f##_f(__m128) __asm__("_ZGVbN4v_" #f "f");                           \
    __m256 _ZGVdN8v_##f##_f(__m256) __asm__("_ZGVdN8v_" #f "f");                           \
    __m512 _ZGVeN16v_##f##_f(__m512) __asm__("_ZGVeN16v_" #f "f");
extern "C" {
MVEC1(atan) MVEC1(asin) MVEC1(acos) MVEC1(sinh) MVEC1(cosh) MVEC1(tanh) MVEC1(asinh) MVEC1(acosh)
MVEC1(atanh)
__m128d _ZGVbN2vv_atan2(__m128d, __m128d);
__m256d _ZGVdN4vv_atan2(__m256d, __m256d);
__m512d _ZGVeN8vv_atan2(__m512d, __m512d);
__m128 _ZGVbN4vv_atan2f(__m128, __m128);
__m256 _ZGVdN8vv_atan2f(__m256, __m256);
__m512 _ZGVeN16vv_atan2f(__m512, __m512);
}

namespace {

using namespace orv_bench;

// Step functions: NAME_<width> for a peer call F on register type Vt.
#define STEP(name, Vt, T, tgt, F)                                                     \
    [[gnu::target(tgt)]] void name(const T* a, T* r) {                                \
        Vt v;                                                                         \
        std::memcpy(&v, a, sizeof v);                                                 \
        const Vt y = F(v);                                                            \
        std::memcpy(r, &y, sizeof y);                                                 \
    }
#define STEP2(name, Vt, T, tgt, F)                                                    \
    [[gnu::target(tgt)]] void name(const T* a, const T* b, T* r) {                    \
        Vt v, w;                                                                      \
        std::memcpy(&v, a, sizeof v);                                                 \
        std::memcpy(&w, b, sizeof w);                                                 \
        const Vt y = F(v, w);                                                         \
        std::memcpy(r, &y, sizeof y);                                                 \
    }

#define MVEC_STEPS(f)                                                                 \
    STEP(mv_##f##_d2, __m128d, double, "sse2", _ZGVbN2v_##f)                          \
    STEP(mv_##f##_d4, __m256d, double, "avx2", _ZGVdN4v_##f)                          \
    STEP(mv_##f##_d8, __m512d, double, "avx512f", _ZGVeN8v_##f)                       \
    STEP(mv_##f##_s4, __m128, float, "sse2", _ZGVbN4v_##f##_f)                        \
    STEP(mv_##f##_s8, __m256, float, "avx2", _ZGVdN8v_##f##_f)                        \
    STEP(mv_##f##_s16, __m512, float, "avx512f", _ZGVeN16v_##f##_f)
MVEC_STEPS(atan) MVEC_STEPS(asin) MVEC_STEPS(acos) MVEC_STEPS(sinh) MVEC_STEPS(cosh)
MVEC_STEPS(tanh) MVEC_STEPS(asinh) MVEC_STEPS(acosh) MVEC_STEPS(atanh)
STEP2(mv_atan2_d2, __m128d, double, "sse2", _ZGVbN2vv_atan2)
STEP2(mv_atan2_d4, __m256d, double, "avx2", _ZGVdN4vv_atan2)
STEP2(mv_atan2_d8, __m512d, double, "avx512f", _ZGVeN8vv_atan2)
STEP2(mv_atan2_s4, __m128, float, "sse2", _ZGVbN4vv_atan2f)
STEP2(mv_atan2_s8, __m256, float, "avx2", _ZGVdN8vv_atan2f)
STEP2(mv_atan2_s16, __m512, float, "avx512f", _ZGVeN16vv_atan2f)

#ifdef HAVE_SLEEF
// SLEEF at SSE2, AVX2 and AVX-512 (its single AVX-512 entries are absent from
// the Debian build), 1 ULP (u10) and 3.5 ULP (u35).
// sleef.h declares the AVX2 and AVX-512 entries only when the translation unit
// is compiled for them; they are declared here instead.
#define SLEEF_WIDE(f, u)                                                              \
    extern "C" __m256d Sleef_##f##d4_##u##avx2(__m256d);                              \
    extern "C" __m512d Sleef_##f##d8_##u##avx512f(__m512d);                           \
    extern "C" __m256 Sleef_##f##f8_##u##avx2(__m256);
#define SLEEF_STEPS(f, u)                                                             \
    SLEEF_WIDE(f, u)                                                                  \
    STEP(sl_##f##_##u##_d2, __m128d, double, "sse2", Sleef_##f##d2_##u##sse2)         \
    STEP(sl_##f##_##u##_d4, __m256d, double, "avx2", Sleef_##f##d4_##u##avx2)         \
    STEP(sl_##f##_##u##_d8, __m512d, double, "avx512f", Sleef_##f##d8_##u##avx512f)   \
    STEP(sl_##f##_##u##_s4, __m128, float, "sse2", Sleef_##f##f4_##u##sse2)           \
    STEP(sl_##f##_##u##_s8, __m256, float, "avx2", Sleef_##f##f8_##u##avx2)
SLEEF_STEPS(atan, u10) SLEEF_STEPS(atan, u35) SLEEF_STEPS(asin, u10) SLEEF_STEPS(asin, u35)
SLEEF_STEPS(acos, u10) SLEEF_STEPS(acos, u35) SLEEF_STEPS(sinh, u10) SLEEF_STEPS(sinh, u35)
SLEEF_STEPS(cosh, u10) SLEEF_STEPS(cosh, u35) SLEEF_STEPS(tanh, u10) SLEEF_STEPS(tanh, u35)
SLEEF_STEPS(asinh, u10) SLEEF_STEPS(acosh, u10) SLEEF_STEPS(atanh, u10)
extern "C" __m256d Sleef_atan2d4_u10avx2(__m256d, __m256d);
extern "C" __m512d Sleef_atan2d8_u10avx512f(__m512d, __m512d);
extern "C" __m256 Sleef_atan2f8_u10avx2(__m256, __m256);
extern "C" __m256d Sleef_atan2d4_u35avx2(__m256d, __m256d);
extern "C" __m512d Sleef_atan2d8_u35avx512f(__m512d, __m512d);
extern "C" __m256 Sleef_atan2f8_u35avx2(__m256, __m256);
STEP2(sl_atan2_u10_d2, __m128d, double, "sse2", Sleef_atan2d2_u10sse2)
STEP2(sl_atan2_u10_d4, __m256d, double, "avx2", Sleef_atan2d4_u10avx2)
STEP2(sl_atan2_u10_d8, __m512d, double, "avx512f", Sleef_atan2d8_u10avx512f)
STEP2(sl_atan2_u10_s4, __m128, float, "sse2", Sleef_atan2f4_u10sse2)
STEP2(sl_atan2_u10_s8, __m256, float, "avx2", Sleef_atan2f8_u10avx2)
STEP2(sl_atan2_u35_d2, __m128d, double, "sse2", Sleef_atan2d2_u35sse2)
STEP2(sl_atan2_u35_d4, __m256d, double, "avx2", Sleef_atan2d4_u35avx2)
STEP2(sl_atan2_u35_d8, __m512d, double, "avx512f", Sleef_atan2d8_u35avx512f)
STEP2(sl_atan2_u35_s4, __m128, float, "sse2", Sleef_atan2f4_u35sse2)
STEP2(sl_atan2_u35_s8, __m256, float, "avx2", Sleef_atan2f8_u35avx2)
#endif

#define REG ORV_BENCH_REG

#define cpu_has(feature) __builtin_cpu_supports(feature)

#define SCALAR_S(name) static_cast<float (*)(float)>(::name##f)
#define SCALAR_D(name) static_cast<double (*)(double)>(::name)

// One function in both precisions: ours, glibc scalar, libmvec at three widths.
#define FAMILY(Fn, f, lo, hi)                                                           \
    REG("s" #Fn "/orv", lo, hi, BM_orv<float, _vtms##Fn##_HA>);                         \
    REG("d" #Fn "/orv", lo, hi, BM_orv<double, _vtmd##Fn##_HA>);                        \
    REG("s" #Fn "/glibc", lo, hi, BM_scalar<float, SCALAR_S(f)>);                        \
    REG("d" #Fn "/glibc", lo, hi, BM_scalar<double, SCALAR_D(f)>);                       \
    REG("s" #Fn "/libmvec_sse", lo, hi, BM_vec<float, mv_##f##_s4, 4>);                 \
    REG("d" #Fn "/libmvec_sse", lo, hi, BM_vec<double, mv_##f##_d2, 2>);                \
    if (cpu_has("avx2")) {                                                              \
        REG("s" #Fn "/libmvec_avx2", lo, hi, BM_vec<float, mv_##f##_s8, 8>);            \
        REG("d" #Fn "/libmvec_avx2", lo, hi, BM_vec<double, mv_##f##_d4, 4>);           \
    }                                                                                   \
    if (cpu_has("avx512f")) {                                                           \
        REG("s" #Fn "/libmvec_avx512", lo, hi, BM_vec<float, mv_##f##_s16, 16>);        \
        REG("d" #Fn "/libmvec_avx512", lo, hi, BM_vec<double, mv_##f##_d8, 8>);         \
    }
#define SLEEF(Fn, f, u, lo, hi)                                                         \
    REG("s" #Fn "/sleef_" #u "_sse2", lo, hi, BM_vec<float, sl_##f##_##u##_s4, 4>);      \
    REG("d" #Fn "/sleef_" #u "_sse2", lo, hi, BM_vec<double, sl_##f##_##u##_d2, 2>);     \
    if (cpu_has("avx2")) {                                                              \
        REG("s" #Fn "/sleef_" #u "_avx2", lo, hi, BM_vec<float, sl_##f##_##u##_s8, 8>);  \
        REG("d" #Fn "/sleef_" #u "_avx2", lo, hi, BM_vec<double, sl_##f##_##u##_d4, 4>); \
    }                                                                                   \
    if (cpu_has("avx512f"))                                                             \
        REG("d" #Fn "/sleef_" #u "_avx512", lo, hi, BM_vec<double, sl_##f##_##u##_d8, 8>);

void register_all() {
    FAMILY(Atan, atan, -10, 10)
    FAMILY(Asin, asin, -1, 1)
    FAMILY(Acos, acos, -1, 1)
    FAMILY(Sinh, sinh, -20, 20)
    FAMILY(Cosh, cosh, -20, 20)
    FAMILY(Tanh, tanh, -5, 5)
    FAMILY(Asinh, asinh, -100, 100)
    FAMILY(Acosh, acosh, 1, 100)
    FAMILY(Atanh, atanh, -0.99, 0.99)
    // The wider kernel libraries, for the functions with speed goals.
    orv_bench::register_variants<float, 1>("sAtan", -10, 10);
    orv_bench::register_variants<double, 1>("dAtan", -10, 10);
    orv_bench::register_variants<float, 1>("sAsin", -1, 1);
    orv_bench::register_variants<double, 1>("dAsin", -1, 1);
    orv_bench::register_variants<float, 1>("sSinh", -20, 20);
    orv_bench::register_variants<double, 1>("dSinh", -20, 20);
    orv_bench::register_variants<float, 1>("sTanh", -5, 5);
    orv_bench::register_variants<double, 1>("dTanh", -5, 5);
    REG("sAtan2/orv", -10, 10, BM_orv2<float, _vtmsAtan2_HA>);
    REG("dAtan2/orv", -10, 10, BM_orv2<double, _vtmdAtan2_HA>);
    REG("sAtan2/glibc", -10, 10, BM_scalar2<float, static_cast<float (*)(float, float)>(::atan2f)>);
    REG("dAtan2/glibc", -10, 10, BM_scalar2<double, static_cast<double (*)(double, double)>(::atan2)>);
    REG("sAtan2/libmvec_sse", -10, 10, BM_vec2<float, mv_atan2_s4, 4>);
    REG("dAtan2/libmvec_sse", -10, 10, BM_vec2<double, mv_atan2_d2, 2>);
    if (cpu_has("avx2")) {
        REG("sAtan2/libmvec_avx2", -10, 10, BM_vec2<float, mv_atan2_s8, 8>);
        REG("dAtan2/libmvec_avx2", -10, 10, BM_vec2<double, mv_atan2_d4, 4>);
    }
    if (cpu_has("avx512f")) {
        REG("sAtan2/libmvec_avx512", -10, 10, BM_vec2<float, mv_atan2_s16, 16>);
        REG("dAtan2/libmvec_avx512", -10, 10, BM_vec2<double, mv_atan2_d8, 8>);
    }
    // The pi forms, ours only (no peer has them in vector form).
    REG("sAtanpi/orv", -10, 10, BM_orv<float, _vtmsAtanpi_HA>);
    REG("dAtanpi/orv", -10, 10, BM_orv<double, _vtmdAtanpi_HA>);
    REG("sAsinpi/orv", -1, 1, BM_orv<float, _vtmsAsinpi_HA>);
    REG("dAsinpi/orv", -1, 1, BM_orv<double, _vtmdAsinpi_HA>);
    REG("sAcospi/orv", -1, 1, BM_orv<float, _vtmsAcospi_HA>);
    REG("dAcospi/orv", -1, 1, BM_orv<double, _vtmdAcospi_HA>);
    REG("sAtan2pi/orv", -10, 10, BM_orv2<float, _vtmsAtan2pi_HA>);
    REG("dAtan2pi/orv", -10, 10, BM_orv2<double, _vtmdAtan2pi_HA>);
#ifdef HAVE_SLEEF
    SLEEF(Atan, atan, u10, -10, 10) SLEEF(Atan, atan, u35, -10, 10)
    SLEEF(Asin, asin, u10, -1, 1) SLEEF(Asin, asin, u35, -1, 1)
    SLEEF(Acos, acos, u10, -1, 1) SLEEF(Acos, acos, u35, -1, 1)
    SLEEF(Sinh, sinh, u10, -20, 20) SLEEF(Sinh, sinh, u35, -20, 20)
    SLEEF(Cosh, cosh, u10, -20, 20) SLEEF(Cosh, cosh, u35, -20, 20)
    SLEEF(Tanh, tanh, u10, -5, 5) SLEEF(Tanh, tanh, u35, -5, 5)
    SLEEF(Asinh, asinh, u10, -100, 100)
    SLEEF(Acosh, acosh, u10, 1, 100)
    SLEEF(Atanh, atanh, u10, -0.99, 0.99)
    REG("sAtan2/sleef_u10_sse2", -10, 10, BM_vec2<float, sl_atan2_u10_s4, 4>);
    REG("dAtan2/sleef_u10_sse2", -10, 10, BM_vec2<double, sl_atan2_u10_d2, 2>);
    REG("sAtan2/sleef_u35_sse2", -10, 10, BM_vec2<float, sl_atan2_u35_s4, 4>);
    REG("dAtan2/sleef_u35_sse2", -10, 10, BM_vec2<double, sl_atan2_u35_d2, 2>);
    if (cpu_has("avx2")) {
        REG("sAtan2/sleef_u10_avx2", -10, 10, BM_vec2<float, sl_atan2_u10_s8, 8>);
        REG("dAtan2/sleef_u10_avx2", -10, 10, BM_vec2<double, sl_atan2_u10_d4, 4>);
        REG("sAtan2/sleef_u35_avx2", -10, 10, BM_vec2<float, sl_atan2_u35_s8, 8>);
        REG("dAtan2/sleef_u35_avx2", -10, 10, BM_vec2<double, sl_atan2_u35_d4, 4>);
    }
    if (cpu_has("avx512f")) {
        REG("dAtan2/sleef_u10_avx512", -10, 10, BM_vec2<double, sl_atan2_u10_d8, 8>);
        REG("dAtan2/sleef_u35_avx512", -10, 10, BM_vec2<double, sl_atan2_u35_d8, 8>);
    }
#endif
}

}  // namespace

int main(int argc, char** argv) {
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
