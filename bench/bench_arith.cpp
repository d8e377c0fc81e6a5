// Division, square root, reciprocal square root and the rounding family:
// our kernels against glibc's scalar functions in a loop and against SLEEF's
// SSE2 functions, side by side, for n = 1024, 10^5 and 10^7. The figure of
// merit is elements per nanosecond (items_per_second scaled by 1e-9).
#include <benchmark/benchmark.h>

#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include <orv/vtm.h>
#if __has_include(<sleef.h>)
#include <emmintrin.h>
#include <sleef.h>
#define HAVE_SLEEF 1
#endif

namespace {

enum class Input { Any, Positive, NonZero };

template <typename T>
struct Data {
    std::vector<T> a, b, r;
    Data(long n, Input in) : a(n), b(n), r(n) {
        std::mt19937_64 g(7);
        std::uniform_real_distribution<double> u(-1e6, 1e6), p(1e-3, 1e6);
        for (long i = 0; i < n; ++i) {
            a[i] = T(in == Input::Positive ? p(g) : u(g));
            b[i] = T(p(g));
        }
    }
};

template <typename T>
using Run = std::function<void(long, const T*, const T*, T*)>;

template <typename T>
void add(const std::string& name, Input in, Run<T> run) {
    for (long n : {1024L, 100000L, 10000000L}) {
        benchmark::RegisterBenchmark((name + "/" + std::to_string(n)).c_str(),
                                     [=](benchmark::State& st) {
                                         Data<T> d(n, in);
                                         for (auto _ : st) {
                                             run(n, d.a.data(), d.b.data(), d.r.data());
                                             benchmark::ClobberMemory();
                                         }
                                         st.SetItemsProcessed(st.iterations() * n);
                                     });
    }
}

// A scalar peer: one call a element, kept out of line so it is not fused.
template <typename T, T (*F)(T)>
__attribute__((noinline)) void scalar1(long n, const T* a, const T*, T* r) {
    for (long i = 0; i < n; ++i) r[i] = F(a[i]);
}

#ifdef HAVE_SLEEF
template <typename F>
Run<double> sleef_d(F f) {
    return [f](long n, const double* a, const double*, double* r) {
        for (long i = 0; i < n; i += 2) _mm_storeu_pd(r + i, f(_mm_loadu_pd(a + i)));
    };
}
template <typename F>
Run<float> sleef_s(F f) {
    return [f](long n, const float* a, const float*, float* r) {
        for (long i = 0; i < n; i += 4) _mm_storeu_ps(r + i, f(_mm_loadu_ps(a + i)));
    };
}
__m128d sleef_rsqrt_d(__m128d x) { return _mm_div_pd(_mm_set1_pd(1.0), Sleef_sqrtd2_u05sse2(x)); }
__m128 sleef_rsqrt_s(__m128 x) { return _mm_div_ps(_mm_set1_ps(1.0f), Sleef_sqrtf4_u05sse2(x)); }
#endif

double rsqrt_d(double x) { return 1.0 / std::sqrt(x); }
float rsqrt_f(float x) { return 1.0f / std::sqrt(x); }
double inv_d(double x) { return 1.0 / x; }
float inv_f(float x) { return 1.0f / x; }
__attribute__((noinline)) void div_loop_d(long n, const double* a, const double* b, double* r) {
    for (long i = 0; i < n; ++i) r[i] = a[i] / b[i];
}
__attribute__((noinline)) void div_loop_s(long n, const float* a, const float* b, float* r) {
    for (long i = 0; i < n; ++i) r[i] = a[i] / b[i];
}

template <typename T, typename K>
Run<T> ours1(K k) {
    return [k](long n, const T* a, const T*, T* r) { k(int(n), a, r); };
}
template <typename T, typename K>
Run<T> ours2(K k) {
    return [k](long n, const T* a, const T* b, T* r) { k(int(n), a, b, r); };
}

#define UNARY(FN, IN, GLIBC_D, GLIBC_F, SLEEF_D, SLEEF_F)                          \
    add<double>("d" #FN "/orv", IN, ours1<double>(_vtmd##FN));                    \
    add<double>("d" #FN "/glibc", IN, scalar1<double, GLIBC_D>);                  \
    SLEEF_ROW(add<double>("d" #FN "/sleef", IN, sleef_d(SLEEF_D)));               \
    add<float>("s" #FN "/orv", IN, ours1<float>(_vtms##FN));                      \
    add<float>("s" #FN "/glibc", IN, scalar1<float, GLIBC_F>);                    \
    SLEEF_ROW(add<float>("s" #FN "/sleef", IN, sleef_s(SLEEF_F)));

#ifdef HAVE_SLEEF
#define SLEEF_ROW(x) x
#else
#define SLEEF_ROW(x)
#endif

void register_all() {
    add<double>("dDiv/orv", Input::Any, ours2<double>(_vtmdDiv));
    add<double>("dDiv/glibc", Input::Any, div_loop_d);
    add<float>("sDiv/orv", Input::Any, ours2<float>(_vtmsDiv));
    add<float>("sDiv/glibc", Input::Any, div_loop_s);
    add<double>("dInv/orv", Input::Any, ours1<double>(_vtmdInv));
    add<double>("dInv/glibc", Input::Any, scalar1<double, inv_d>);
    add<float>("sInv/orv", Input::Any, ours1<float>(_vtmsInv));
    add<float>("sInv/glibc", Input::Any, scalar1<float, inv_f>);
    UNARY(Sqrt, Input::Positive, std::sqrt, std::sqrt, Sleef_sqrtd2_u05sse2, Sleef_sqrtf4_u05sse2)
    UNARY(InvSqrt, Input::Positive, rsqrt_d, rsqrt_f, sleef_rsqrt_d, sleef_rsqrt_s)
    UNARY(Ceil, Input::Any, std::ceil, std::ceil, Sleef_ceild2_sse2, Sleef_ceilf4_sse2)
    UNARY(Floor, Input::Any, std::floor, std::floor, Sleef_floord2_sse2, Sleef_floorf4_sse2)
    UNARY(Trunc, Input::Any, std::trunc, std::trunc, Sleef_truncd2_sse2, Sleef_truncf4_sse2)
    UNARY(Round, Input::Any, std::round, std::round, Sleef_roundd2_sse2, Sleef_roundf4_sse2)
    UNARY(Rint, Input::Any, std::rint, std::rint, Sleef_rintd2_sse2, Sleef_rintf4_sse2)
    UNARY(NearbyInt, Input::Any, std::nearbyint, std::nearbyint, Sleef_rintd2_sse2, Sleef_rintf4_sse2)
}

}  // namespace

int main(int argc, char** argv) {
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
