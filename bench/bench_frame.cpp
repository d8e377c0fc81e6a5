// dAdd, dSub and dMul against a plain loop and against a copy of the same
// bytes. Bandwidth counts every byte read and written: 24 bytes an element
// for the kernels and the loop, 16 for the copy (read a, write r).
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include <orv/vtm.h>

namespace {

struct Data {
    std::vector<double> a, b, r;
    explicit Data(long n) : a(n), b(n), r(n) {
        for (long i = 0; i < n; ++i) {
            a[i] = 1.0 + i * 1e-7;
            b[i] = 2.0 - i * 1e-7;
        }
    }
};

template <void (*Kernel)(int, const double*, const double*, double*)>
void BM_kernel(benchmark::State& st) {
    const long n = st.range(0);
    Data d(n);
    for (auto _ : st) {
        Kernel(static_cast<int>(n), d.a.data(), d.b.data(), d.r.data());
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(st.iterations() * n * 24);
    st.SetItemsProcessed(st.iterations() * n);
}

__attribute__((noinline)) void plain_add(long n, const double* a, const double* b, double* r) {
    for (long i = 0; i < n; ++i) r[i] = a[i] + b[i];
}

void BM_loop_add(benchmark::State& st) {
    const long n = st.range(0);
    Data d(n);
    for (auto _ : st) {
        plain_add(n, d.a.data(), d.b.data(), d.r.data());
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(st.iterations() * n * 24);
    st.SetItemsProcessed(st.iterations() * n);
}

void BM_copy(benchmark::State& st) {
    const long n = st.range(0);
    Data d(n);
    for (auto _ : st) {
        std::memcpy(d.r.data(), d.a.data(), n * sizeof(double));
        benchmark::ClobberMemory();
    }
    st.SetBytesProcessed(st.iterations() * n * 16);
    st.SetItemsProcessed(st.iterations() * n);
}

#define SIZES ->Arg(1000)->Arg(100000)->Arg(10000000)
BENCHMARK(BM_copy) SIZES;
BENCHMARK(BM_loop_add) SIZES;
BENCHMARK_TEMPLATE(BM_kernel, _vtmdAdd) SIZES;
BENCHMARK_TEMPLATE(BM_kernel, _vtmdSub) SIZES;
BENCHMARK_TEMPLATE(BM_kernel, _vtmdMul) SIZES;

}  // namespace

BENCHMARK_MAIN();
