// Erf, Erfc, CdfNorm, ErfInv, CdfNormInv and Erfcx at n = 1024 and 10^5: our HA
// kernels in the SSE2 baseline and the AVX2 and AVX-512 libraries (loaded
// from beside the baseline), beside glibc's scalar erf and erfc, libmvec at
// the same three widths (_ZGVb, _ZGVd, _ZGVe) and SLEEF's erf (1 ULP) and
// erfc (1.5 ULP) at the same widths. scipy.special's ufuncs are timed by
// bench/erf_peers.py. Names: <function>/<implementation>/<n>.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <immintrin.h>

#include <cmath>
#include <string>
#include <vector>

#include <orv/vtm.h>
#include <orv/vtm_functions.h>

#include "vector_bench.h"

extern "C" {
__m128d _ZGVbN2v_erf(__m128d);
__m128d _ZGVbN2v_erfc(__m128d);
__m128 _ZGVbN4v_erff(__m128);
__m128 _ZGVbN4v_erfcf(__m128);
__m256d _ZGVdN4v_erf(__m256d);
__m256d _ZGVdN4v_erfc(__m256d);
__m256 _ZGVdN8v_erff(__m256);
__m256 _ZGVdN8v_erfcf(__m256);
__m512d _ZGVeN8v_erf(__m512d);
__m512d _ZGVeN8v_erfc(__m512d);
__m512 _ZGVeN16v_erff(__m512);
__m512 _ZGVeN16v_erfcf(__m512);
#if __has_include(<sleef.h>)
#define HAVE_SLEEF 1
// SLEEF's header declares its AVX functions only to code compiled for AVX.
__m128d Sleef_erfd2_u10sse2(__m128d);
__m128d Sleef_erfcd2_u15sse2(__m128d);
__m128 Sleef_erff4_u10sse2(__m128);
__m128 Sleef_erfcf4_u15sse2(__m128);
__m256d Sleef_erfd4_u10avx2(__m256d);
__m256d Sleef_erfcd4_u15avx2(__m256d);
__m256 Sleef_erff8_u10avx2(__m256);
__m256 Sleef_erfcf8_u15avx2(__m256);
__m512d Sleef_erfd8_u10avx512f(__m512d);
__m512d Sleef_erfcd8_u15avx512f(__m512d);
__m512 Sleef_erff16_u10avx512f(__m512);
__m512 Sleef_erfcf16_u15avx512f(__m512);
#endif
}

namespace {

using namespace orv_bench;

template <typename T>
void BM_ours(benchmark::State& st, int variant, const char* fn, double lo, double hi) {
    auto f = reinterpret_cast<void (*)(int, const T*, T*)>(variant_kernel(variant, fn));
    if (!f) {
        st.SkipWithError("variant not loaded");
        return;
    }
    timed<T>(st, lo, hi, [f](const T* a, const T*, T* r, long n) { f(int(n), a, r); });
}


#define REG ORV_BENCH_REG

// Ours in the three libraries, under label (the function's name by default).
void ours(const char* fn, double lo, double hi, const char* label = nullptr) {
    static const char* const isa[3] = {"sse2", "avx2", "avx512"};
    for (int v = 0; v < 3; ++v) {
        auto* bm = fn[0] == 's' ? BM_ours<float> : BM_ours<double>;
        benchmark::RegisterBenchmark((std::string(label ? label : fn) + "/orv_" + isa[v]).c_str(), bm, v,
                                     fn, lo, hi)
            ->Arg(1024)
            ->Arg(100000);
    }
}

void register_all() {
    using FnD = double (*)(double);
    using FnS = float (*)(float);
    const bool avx512 = __builtin_cpu_supports("avx512f");
    // Erf and Erfc on [-5, 5] (double) and [-4, 4] (single); Erfc also in
    // its tail [5, 26].
    ours("dErf", -5, 5);
    REG("dErf/glibc", -5, 5, BM_scalar<double, static_cast<FnD>(::erf)>);
    REG("dErf/libmvec_sse2", -5, 5, BM_peer_sse2_d<_ZGVbN2v_erf>);
    REG("dErf/libmvec_avx2", -5, 5, BM_peer_avx2_d<_ZGVdN4v_erf>);
    if (avx512) REG("dErf/libmvec_avx512", -5, 5, BM_peer_avx512_d<_ZGVeN8v_erf>);
    ours("sErf", -4, 4);
    REG("sErf/glibc", -4, 4, BM_scalar<float, static_cast<FnS>(::erff)>);
    REG("sErf/libmvec_sse2", -4, 4, BM_peer_sse2_s<_ZGVbN4v_erff>);
    REG("sErf/libmvec_avx2", -4, 4, BM_peer_avx2_s<_ZGVdN8v_erff>);
    if (avx512) REG("sErf/libmvec_avx512", -4, 4, BM_peer_avx512_s<_ZGVeN16v_erff>);
    ours("dErfc", -5, 5);
    REG("dErfc/glibc", -5, 5, BM_scalar<double, static_cast<FnD>(::erfc)>);
    REG("dErfc/libmvec_sse2", -5, 5, BM_peer_sse2_d<_ZGVbN2v_erfc>);
    REG("dErfc/libmvec_avx2", -5, 5, BM_peer_avx2_d<_ZGVdN4v_erfc>);
    if (avx512) REG("dErfc/libmvec_avx512", -5, 5, BM_peer_avx512_d<_ZGVeN8v_erfc>);
    ours("sErfc", -4, 4);
    REG("sErfc/glibc", -4, 4, BM_scalar<float, static_cast<FnS>(::erfcf)>);
    REG("sErfc/libmvec_sse2", -4, 4, BM_peer_sse2_s<_ZGVbN4v_erfcf>);
    REG("sErfc/libmvec_avx2", -4, 4, BM_peer_avx2_s<_ZGVdN8v_erfcf>);
    if (avx512) REG("sErfc/libmvec_avx512", -4, 4, BM_peer_avx512_s<_ZGVeN16v_erfcf>);
#ifdef HAVE_SLEEF
    REG("dErf/sleef_u10_sse2", -5, 5, BM_peer_sse2_d<Sleef_erfd2_u10sse2>);
    REG("dErf/sleef_u10_avx2", -5, 5, BM_peer_avx2_d<Sleef_erfd4_u10avx2>);
    REG("sErf/sleef_u10_sse2", -4, 4, BM_peer_sse2_s<Sleef_erff4_u10sse2>);
    REG("sErf/sleef_u10_avx2", -4, 4, BM_peer_avx2_s<Sleef_erff8_u10avx2>);
    REG("dErfc/sleef_u15_sse2", -5, 5, BM_peer_sse2_d<Sleef_erfcd2_u15sse2>);
    REG("dErfc/sleef_u15_avx2", -5, 5, BM_peer_avx2_d<Sleef_erfcd4_u15avx2>);
    REG("sErfc/sleef_u15_sse2", -4, 4, BM_peer_sse2_s<Sleef_erfcf4_u15sse2>);
    REG("sErfc/sleef_u15_avx2", -4, 4, BM_peer_avx2_s<Sleef_erfcf8_u15avx2>);
    if (avx512) {
        REG("dErf/sleef_u10_avx512", -5, 5, BM_peer_avx512_d<Sleef_erfd8_u10avx512f>);
        REG("sErf/sleef_u10_avx512", -4, 4, BM_peer_avx512_s<Sleef_erff16_u10avx512f>);
        REG("dErfc/sleef_u15_avx512", -5, 5, BM_peer_avx512_d<Sleef_erfcd8_u15avx512f>);
        REG("sErfc/sleef_u15_avx512", -4, 4, BM_peer_avx512_s<Sleef_erfcf16_u15avx512f>);
    }
#endif
    ours("dErfc", 5, 26, "dErfcTail");
    REG("dErfcTail/glibc", 5, 26, BM_scalar<double, static_cast<FnD>(::erfc)>);
    // Functions without a C peer here (scipy.special in erf_peers.py).
    ours("dCdfNorm", -8, 8);
    ours("sCdfNorm", -8, 8);
    ours("dErfInv", -0.999, 0.999);
    ours("sErfInv", -0.999, 0.999);
    ours("dCdfNormInv", 1e-6, 1 - 1e-6);
    ours("sCdfNormInv", 1e-6, 1 - 1e-6);
    ours("dErfcInv", 1e-6, 2 - 1e-6);
    // Erfcx through its three paths: exp(x^2) below 1/2, the rows, and the
    // asymptotic form beyond 12.
    ours("dErfcx", -5, 25);
    ours("sErfcx", -5, 25);
}

}  // namespace

int main(int argc, char** argv) {
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
