// Spline construction time per breakpoint and function, ours against GSL's
// gsl_spline_init, side by side: Natural (free end) against cspline, Natural
// periodic against cspline_periodic, Akima against akima, Hyman against
// steffen (both monotone). One thread. Arguments: nx, ny.
#include <benchmark/benchmark.h>

#include <orv/datafit.h>
#include <orv/threading.h>

#include <cmath>
#include <vector>

#if __has_include(<gsl/gsl_spline.h>)
#include <gsl/gsl_spline.h>
#define HAVE_GSL 1
#endif

namespace {

struct Data {
    std::vector<double> x, y, coef;
    Data(int64_t nx, int64_t ny, bool periodic) : x(nx), y(nx * ny), coef(4 * nx * ny) {
        for (int64_t i = 0; i < nx; ++i) x[i] = double(i) + 0.3 * std::sin(2.1 * double(i));
        for (int64_t k = 0; k < ny; ++k) {
            for (int64_t i = 0; i < nx; ++i)
                y[k * nx + i] = std::sin(0.01 * x[i] + double(k)) + 0.1 * std::cos(0.37 * x[i]);
            if (periodic) y[k * nx + nx - 1] = y[k * nx];
        }
    }
};

using Ctor = int (*)(DFTask*, int64_t, int64_t, const DFThreadOps*);

void run_ours(benchmark::State& st, Ctor ctor, int64_t bc_type) {
    const int64_t nx = st.range(0), ny = st.range(1);
    Data d(nx, ny, bc_type == DF_BC_PERIODIC);
    DFTask* t = nullptr;
    orv_df_kernel_dNewTask1D(&t, nx, d.x.data(), DF_X_NON_UNIFORM, ny, d.y.data(), DF_Y_ROWS, 0);
    // stype 2 lets the periodic kind go without boundary values.
    orv_df_kernel_dEditPPSpline1D(t, 4, 2, bc_type, nullptr, 0, nullptr, d.coef.data(), DF_Y_ROWS);
    const DFThreadOps* ops = orv_df_thread_ops_serial();
    for (auto _ : st) {
        const int s = ctor(t, 0, 0, ops);
        if (s != DF_OK) st.SkipWithError("construction failed");
        benchmark::DoNotOptimize(d.coef.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * nx * ny);
    orv_df_kernel_DeleteTask(&t);
}

void BM_orv_natural(benchmark::State& st) {
    run_ours(st, orv_df_kernel_dDFNaturalCubicSpline1D, DF_BC_FREE_END);
}
void BM_orv_natural_periodic(benchmark::State& st) {
    run_ours(st, orv_df_kernel_dDFNaturalCubicSpline1D, DF_BC_PERIODIC);
}
void BM_orv_akima(benchmark::State& st) {
    run_ours(st, orv_df_kernel_dDFAkimaCubicSpline1D, DF_BC_NONE);
}
void BM_orv_hyman(benchmark::State& st) {
    run_ours(st, orv_df_kernel_dDFHymanCubicSpline1D, DF_BC_FREE_END);
}

#ifdef HAVE_GSL
void run_gsl(benchmark::State& st, const gsl_interp_type* type, bool periodic) {
    const int64_t nx = st.range(0), ny = st.range(1);
    Data d(nx, ny, periodic);
    std::vector<gsl_spline*> s(ny);
    for (auto& p : s) p = gsl_spline_alloc(type, size_t(nx));
    for (auto _ : st) {
        for (int64_t k = 0; k < ny; ++k)
            gsl_spline_init(s[k], d.x.data(), d.y.data() + k * nx, size_t(nx));
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * nx * ny);
    for (auto* p : s) gsl_spline_free(p);
}
void BM_gsl_cspline(benchmark::State& st) { run_gsl(st, gsl_interp_cspline, false); }
void BM_gsl_cspline_periodic(benchmark::State& st) { run_gsl(st, gsl_interp_cspline_periodic, true); }
void BM_gsl_akima(benchmark::State& st) { run_gsl(st, gsl_interp_akima, false); }
void BM_gsl_steffen(benchmark::State& st) { run_gsl(st, gsl_interp_steffen, false); }
#endif

void sizes(benchmark::internal::Benchmark* b) {
    for (int64_t ny : {1, 16})
        for (int64_t nx : {1000, 100000, 1000000}) b->Args({nx, ny});
    b->Unit(benchmark::kMicrosecond);
}

BENCHMARK(BM_orv_natural)->Apply(sizes);
#ifdef HAVE_GSL
BENCHMARK(BM_gsl_cspline)->Apply(sizes);
#endif
BENCHMARK(BM_orv_natural_periodic)->Apply(sizes);
#ifdef HAVE_GSL
BENCHMARK(BM_gsl_cspline_periodic)->Apply(sizes);
#endif
BENCHMARK(BM_orv_akima)->Apply(sizes);
#ifdef HAVE_GSL
BENCHMARK(BM_gsl_akima)->Apply(sizes);
#endif
BENCHMARK(BM_orv_hyman)->Apply(sizes);
#ifdef HAVE_GSL
BENCHMARK(BM_gsl_steffen)->Apply(sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
