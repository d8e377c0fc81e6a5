// The kernel libraries side by side: SSE2 baseline, AVX2 and AVX-512
// variants (HA tables, loaded from beside the baseline), with SLEEF's AVX2
// and AVX-512 1-ULP functions and glibc's libmvec AVX2 (_ZGVd) and AVX-512
// (_ZGVe) entry points, for dExp, sExp, dLn, sLn, dSqrt, dInvSqrt,
// sInvSqrt and dAdd at n = 10^3, 10^5, 10^6. numpy's figures come from
// bench/variants_peers.py. Names: <function>/<implementation>/<n>.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
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
#endif

extern "C" {
__m256d _ZGVdN4v_exp(__m256d);
__m256 _ZGVdN8v_expf(__m256);
__m256d _ZGVdN4v_log(__m256d);
__m256 _ZGVdN8v_logf(__m256);
__m512d _ZGVeN8v_exp(__m512d);
__m512 _ZGVeN16v_expf(__m512);
__m512d _ZGVeN8v_log(__m512d);
__m512 _ZGVeN16v_logf(__m512);
}

namespace {

using namespace orv_bench;


// 1/sqrt(x) as a plain loop, the reference of the single InvSqrt goal.
template <typename T>
void BM_inv_sqrt_loop(benchmark::State& st, double lo, double hi) {
    const long n = st.range(0);
    auto a = inputs<T>(n, lo, hi);
    std::vector<T> r(n);
    for (auto _ : st) {
        for (long i = 0; i < n; ++i) r[i] = T(1) / std::sqrt(a[i]);
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * n);
}

#ifdef HAVE_SLEEF
// SLEEF's header declares its AVX functions only to code compiled for AVX;
// the same declarations here, called from the AVX loops above.
extern "C" {
__m256d Sleef_expd4_u10avx2(__m256d);
__m256 Sleef_expf8_u10avx2(__m256);
__m256d Sleef_logd4_u10avx2(__m256d);
__m256 Sleef_logf8_u10avx2(__m256);
__m256d Sleef_sqrtd4_u05avx2(__m256d);
__m512d Sleef_expd8_u10avx512f(__m512d);
__m512 Sleef_expf16_u10avx512f(__m512);
__m512d Sleef_logd8_u10avx512f(__m512d);
__m512 Sleef_logf16_u10avx512f(__m512);
__m512d Sleef_sqrtd8_u05avx512f(__m512d);
}
#endif

using PeerFn = void (*)(benchmark::State&, double, double);
#define SIZES ->Arg(1000)->Arg(100000)->Arg(1000000)
#define PEER(name, lo, hi, ...) \
    benchmark::RegisterBenchmark(name, static_cast<PeerFn>(__VA_ARGS__), double(lo), double(hi)) SIZES

template <typename T, int Arity>
void ours(const char* fn, double lo, double hi) {
    static const char* const isa[3] = {"sse2", "avx2", "avx512"};
    for (int v = 0; v < 3; ++v)
        benchmark::RegisterBenchmark((std::string(fn) + "/orv_" + isa[v]).c_str(), BM_orv_variant<T, Arity>, v,
                                     fn, lo, hi, lo, hi) SIZES;
}

void register_all() {
    const bool avx512 = __builtin_cpu_supports("avx512f");
    ours<double, 1>("dExp", -700, 700);
    PEER("dExp/libmvec_avx2", -700, 700, BM_peer_avx2_d<_ZGVdN4v_exp>);
    if (avx512) PEER("dExp/libmvec_avx512", -700, 700, BM_peer_avx512_d<_ZGVeN8v_exp>);
    ours<float, 1>("sExp", -80, 80);
    PEER("sExp/libmvec_avx2", -80, 80, BM_peer_avx2_s<_ZGVdN8v_expf>);
    if (avx512) PEER("sExp/libmvec_avx512", -80, 80, BM_peer_avx512_s<_ZGVeN16v_expf>);
    ours<double, 1>("dLn", 1e-3, 1e3);
    PEER("dLn/libmvec_avx2", 1e-3, 1e3, BM_peer_avx2_d<_ZGVdN4v_log>);
    if (avx512) PEER("dLn/libmvec_avx512", 1e-3, 1e3, BM_peer_avx512_d<_ZGVeN8v_log>);
    ours<float, 1>("sLn", 1e-3, 1e3);
    PEER("sLn/libmvec_avx2", 1e-3, 1e3, BM_peer_avx2_s<_ZGVdN8v_logf>);
    if (avx512) PEER("sLn/libmvec_avx512", 1e-3, 1e3, BM_peer_avx512_s<_ZGVeN16v_logf>);
    ours<double, 1>("dSqrt", 1e-3, 1e3);
    ours<double, 1>("dInvSqrt", 1e-3, 1e3);
    PEER("dInvSqrt/loop_1_over_sqrt", 1e-3, 1e3, BM_inv_sqrt_loop<double>);
    ours<float, 1>("sInvSqrt", 1e-3, 1e3);
    PEER("sInvSqrt/loop_1_over_sqrt", 1e-3, 1e3, BM_inv_sqrt_loop<float>);
    ours<double, 2>("dAdd", -1e3, 1e3);
#ifdef HAVE_SLEEF
    PEER("dExp/sleef_avx2", -700, 700, BM_peer_avx2_d<Sleef_expd4_u10avx2>);
    PEER("sExp/sleef_avx2", -80, 80, BM_peer_avx2_s<Sleef_expf8_u10avx2>);
    PEER("dLn/sleef_avx2", 1e-3, 1e3, BM_peer_avx2_d<Sleef_logd4_u10avx2>);
    PEER("sLn/sleef_avx2", 1e-3, 1e3, BM_peer_avx2_s<Sleef_logf8_u10avx2>);
    PEER("dSqrt/sleef_avx2", 1e-3, 1e3, BM_peer_avx2_d<Sleef_sqrtd4_u05avx2>);
    if (avx512) {
        PEER("dExp/sleef_avx512", -700, 700, BM_peer_avx512_d<Sleef_expd8_u10avx512f>);
        PEER("sExp/sleef_avx512", -80, 80, BM_peer_avx512_s<Sleef_expf16_u10avx512f>);
        PEER("dLn/sleef_avx512", 1e-3, 1e3, BM_peer_avx512_d<Sleef_logd8_u10avx512f>);
        PEER("sLn/sleef_avx512", 1e-3, 1e3, BM_peer_avx512_s<Sleef_logf16_u10avx512f>);
        PEER("dSqrt/sleef_avx512", 1e-3, 1e3, BM_peer_avx512_d<Sleef_sqrtd8_u05avx512f>);
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
