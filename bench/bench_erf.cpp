// Erf, Erfc, CdfNorm, ErfInv and CdfNormInv, single and double, at n = 1024
// and 10^5, beside glibc's scalar erf and erfc, glibc's SSE2 vector
// functions (libmvec, _ZGVbN2v_* and _ZGVbN4v_*) and SLEEF's SSE2 erf (1 ULP)
// and erfc (1.5 ULP). scipy.special's ufuncs are timed by
// bench/erf_peers.py. Names: <function>/<implementation>/<n>.
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
__m128d _ZGVbN2v_erf(__m128d);
__m128d _ZGVbN2v_erfc(__m128d);
__m128 _ZGVbN4v_erff(__m128);
__m128 _ZGVbN4v_erfcf(__m128);
}

namespace {

using namespace orv_bench;

#ifdef HAVE_SLEEF
// SLEEF's declarations keep their addresses from being template arguments.
__m128d sleef_erf_d(__m128d x) { return Sleef_erfd2_u10sse2(x); }
__m128d sleef_erfc_d(__m128d x) { return Sleef_erfcd2_u15sse2(x); }
__m128 sleef_erf_s(__m128 x) { return Sleef_erff4_u10sse2(x); }
__m128 sleef_erfc_s(__m128 x) { return Sleef_erfcf4_u15sse2(x); }
#endif

#define REG ORV_BENCH_REG

void register_all() {
    using FnD = double (*)(double);
    using FnS = float (*)(float);
    // Erf and Erfc on [-5, 5] (double) and [-4, 4] (single); Erfc also in
    // its tail [5, 26].
    REG("dErf/orv", -5, 5, BM_orv<double, _vtmdErf_HA>);
    REG("dErf/glibc", -5, 5, BM_scalar<double, static_cast<FnD>(::erf)>);
    REG("dErf/libmvec", -5, 5, BM_vec_d<_ZGVbN2v_erf>);
    REG("sErf/orv", -4, 4, BM_orv<float, _vtmsErf_HA>);
    REG("sErf/glibc", -4, 4, BM_scalar<float, static_cast<FnS>(::erff)>);
    REG("sErf/libmvec", -4, 4, BM_vec_s<_ZGVbN4v_erff>);
    REG("dErfc/orv", -5, 5, BM_orv<double, _vtmdErfc_HA>);
    REG("dErfc/glibc", -5, 5, BM_scalar<double, static_cast<FnD>(::erfc)>);
    REG("dErfc/libmvec", -5, 5, BM_vec_d<_ZGVbN2v_erfc>);
    REG("dErfcTail/orv", 5, 26, BM_orv<double, _vtmdErfc_HA>);
    REG("dErfcTail/glibc", 5, 26, BM_scalar<double, static_cast<FnD>(::erfc)>);
    REG("sErfc/orv", -4, 4, BM_orv<float, _vtmsErfc_HA>);
    REG("sErfc/glibc", -4, 4, BM_scalar<float, static_cast<FnS>(::erfcf)>);
    REG("sErfc/libmvec", -4, 4, BM_vec_s<_ZGVbN4v_erfcf>);
#ifdef HAVE_SLEEF
    REG("dErf/sleef_u10", -5, 5, BM_vec_d<sleef_erf_d>);
    REG("sErf/sleef_u10", -4, 4, BM_vec_s<sleef_erf_s>);
    REG("dErfc/sleef_u15", -5, 5, BM_vec_d<sleef_erfc_d>);
    REG("dErfcTail/sleef_u15", 5, 26, BM_vec_d<sleef_erfc_d>);
    REG("sErfc/sleef_u15", -4, 4, BM_vec_s<sleef_erfc_s>);
#endif
    // Functions without a peer here (scipy.special in erf_peers.py).
    REG("dCdfNorm/orv", -8, 8, BM_orv<double, _vtmdCdfNorm_HA>);
    REG("dErfInv/orv", -0.999, 0.999, BM_orv<double, _vtmdErfInv_HA>);
    REG("sErfInv/orv", -0.999, 0.999, BM_orv<float, _vtmsErfInv_HA>);
    REG("sErfInv_EP/orv", -0.999, 0.999, BM_orv<float, _vtmsErfInv_11>);
    REG("dCdfNormInv/orv", 1e-6, 1 - 1e-6, BM_orv<double, _vtmdCdfNormInv_HA>);
    REG("dErfcInv/orv", 1e-6, 2 - 1e-6, BM_orv<double, _vtmdErfcInv_HA>);
}

}  // namespace

int main(int argc, char** argv) {
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
