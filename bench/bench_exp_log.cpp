// Exp, Exp2, Exp10, Expm1, Ln, Log2, Log10, Log1p and Logb, single and
// double, at n = 1024 and 10^5, beside glibc's scalar functions, glibc's
// SSE2 vector functions (libmvec, _ZGVbN2v_* and _ZGVbN4v_*) and SLEEF's
// SSE2 functions of 1 and 3.5 ULP. Names: <function>/<implementation>/<n>.
#include <benchmark/benchmark.h>
#include <emmintrin.h>

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

extern "C" {
__m128d _ZGVbN2v_exp(__m128d);
__m128d _ZGVbN2v_exp2(__m128d);
__m128d _ZGVbN2v_exp10(__m128d);
__m128d _ZGVbN2v_expm1(__m128d);
__m128d _ZGVbN2v_log(__m128d);
__m128d _ZGVbN2v_log2(__m128d);
__m128d _ZGVbN2v_log10(__m128d);
__m128d _ZGVbN2v_log1p(__m128d);
__m128 _ZGVbN4v_expf(__m128);
__m128 _ZGVbN4v_exp2f(__m128);
__m128 _ZGVbN4v_exp10f(__m128);
__m128 _ZGVbN4v_expm1f(__m128);
__m128 _ZGVbN4v_logf(__m128);
__m128 _ZGVbN4v_log2f(__m128);
__m128 _ZGVbN4v_log10f(__m128);
__m128 _ZGVbN4v_log1pf(__m128);
}

namespace {

using namespace orv_bench;

double logb_d(double x) { return std::logb(x); }
float logb_s(float x) { return std::logb(x); }

#define REG ORV_BENCH_REG

// One function in both precisions: ours, glibc scalar, libmvec, SLEEF.
#define FAMILY(Fn, libm, lo_s, hi_s, lo_d, hi_d)                                              \
    REG("s" #Fn "/orv", lo_s, hi_s, BM_orv<float, _vtms##Fn##_HA>);                           \
    REG("s" #Fn "/glibc", lo_s, hi_s, BM_scalar<float, static_cast<float (*)(float)>(::libm##f)>);                              \
    REG("s" #Fn "/libmvec", lo_s, hi_s, BM_vec_s<_ZGVbN4v_##libm##f>);                         \
    REG("d" #Fn "/orv", lo_d, hi_d, BM_orv<double, _vtmd##Fn##_HA>);                          \
    REG("d" #Fn "/glibc", lo_d, hi_d, BM_scalar<double, static_cast<double (*)(double)>(::libm)>);                                \
    REG("d" #Fn "/libmvec", lo_d, hi_d, BM_vec_d<_ZGVbN2v_##libm>);

// SLEEF declares its functions with attributes that keep their addresses
// from being template arguments; these forwarders inline to the call.
#define SLEEF_S(Fn, sl, v, lo, hi) REG("s" #Fn "/sleef_" #v, lo, hi, BM_vec_s<w_##sl##f_##v>);
#define SLEEF_D(Fn, sl, v, lo, hi) REG("d" #Fn "/sleef_" #v, lo, hi, BM_vec_d<w_##sl##d_##v>);
#ifdef HAVE_SLEEF
#define WRAP(sl, v)                                                                  \
    __m128 w_##sl##f_##v(__m128 x) { return Sleef_##sl##f4_##v##sse2(x); }           \
    __m128d w_##sl##d_##v(__m128d x) { return Sleef_##sl##d2_##v##sse2(x); }
WRAP(exp, u10) WRAP(exp2, u10) WRAP(exp2, u35) WRAP(exp10, u10) WRAP(exp10, u35) WRAP(expm1, u10)
WRAP(log, u10) WRAP(log, u35) WRAP(log2, u10) WRAP(log2, u35) WRAP(log10, u10) WRAP(log1p, u10)
#endif


void register_all() {
    FAMILY(Exp, exp, -80, 80, -700, 700)
    FAMILY(Exp2, exp2, -120, 120, -1000, 1000)
    FAMILY(Exp10, exp10, -35, 35, -300, 300)
    FAMILY(Expm1, expm1, -5, 5, -5, 5)
    FAMILY(Ln, log, 1e-3, 1e3, 1e-3, 1e3)
    FAMILY(Log2, log2, 1e-3, 1e3, 1e-3, 1e3)
    FAMILY(Log10, log10, 1e-3, 1e3, 1e-3, 1e3)
    FAMILY(Log1p, log1p, -0.9, 10, -0.9, 10)
    REG("sLogb/orv", -1e30, 1e30, BM_orv<float, _vtmsLogb_HA>);
    REG("sLogb/glibc", -1e30, 1e30, BM_scalar<float, logb_s>);
    REG("dLogb/orv", -1e300, 1e300, BM_orv<double, _vtmdLogb_HA>);
    REG("dLogb/glibc", -1e300, 1e300, BM_scalar<double, logb_d>);
#ifdef HAVE_SLEEF
    SLEEF_S(Exp, exp, u10, -80, 80)
    SLEEF_D(Exp, exp, u10, -700, 700)
    SLEEF_S(Exp2, exp2, u10, -120, 120)
    SLEEF_S(Exp2, exp2, u35, -120, 120)
    SLEEF_D(Exp2, exp2, u10, -1000, 1000)
    SLEEF_D(Exp2, exp2, u35, -1000, 1000)
    SLEEF_S(Exp10, exp10, u10, -35, 35)
    SLEEF_S(Exp10, exp10, u35, -35, 35)
    SLEEF_D(Exp10, exp10, u10, -300, 300)
    SLEEF_D(Exp10, exp10, u35, -300, 300)
    SLEEF_S(Expm1, expm1, u10, -5, 5)
    SLEEF_D(Expm1, expm1, u10, -5, 5)
    SLEEF_S(Ln, log, u10, 1e-3, 1e3)
    SLEEF_S(Ln, log, u35, 1e-3, 1e3)
    SLEEF_D(Ln, log, u10, 1e-3, 1e3)
    SLEEF_D(Ln, log, u35, 1e-3, 1e3)
    SLEEF_S(Log2, log2, u10, 1e-3, 1e3)
    SLEEF_S(Log2, log2, u35, 1e-3, 1e3)
    SLEEF_D(Log2, log2, u10, 1e-3, 1e3)
    SLEEF_D(Log2, log2, u35, 1e-3, 1e3)
    SLEEF_S(Log10, log10, u10, 1e-3, 1e3)
    SLEEF_D(Log10, log10, u10, 1e-3, 1e3)
    SLEEF_S(Log1p, log1p, u10, -0.9, 10)
    SLEEF_D(Log1p, log1p, u10, -0.9, 10)
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
