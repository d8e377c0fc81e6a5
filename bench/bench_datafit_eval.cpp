// Evaluation and integration of a natural cubic spline of 10^5 breakpoints:
// ours (interpolation and integration kernels, one thread unless the name
// says teams) beside GSL's gsl_spline_eval with and without its accelerator,
// gsl_spline_eval_deriv/deriv2 and gsl_spline_eval_integ. "warm" evaluates a
// spline built beforehand; "fresh" builds the spline and evaluates once in
// each iteration, as a user meets it. scipy is timed by
// bench/bench_datafit_eval.py in the same job.
#include <benchmark/benchmark.h>

#include <orv/orv_datafit.h>

#include <gsl/gsl_errno.h>
#include <gsl/gsl_spline.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

constexpr int64_t kNx = 100000, kSites = 1000000, kPairs = 100000;

struct Data {
    std::vector<double> x, y, random_sites, sorted_sites, lo, hi;
    Data() {
        std::mt19937_64 g(42);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        double v = 0.0;
        for (int64_t i = 0; i < kNx; ++i, v += 0.5 + u(g)) x.push_back(v);
        for (int64_t i = 0; i < kNx; ++i) y.push_back(std::sin(0.01 * x[i]) + 0.1 * u(g));
        std::uniform_real_distribution<double> s(x.front(), x.back());
        for (int64_t i = 0; i < kSites; ++i) random_sites.push_back(s(g));
        sorted_sites = random_sites;
        std::sort(sorted_sites.begin(), sorted_sites.end());
        // Limit pairs spanning up to about 100 cells, in random places.
        const double span = (x.back() - x.front()) / 1000.0;
        std::uniform_real_distribution<double> a(x.front(), x.back() - span);
        for (int64_t i = 0; i < kPairs; ++i) {
            lo.push_back(a(g));
            hi.push_back(lo.back() + span * u(g));
        }
    }
};
const Data& data() {
    static const Data d;
    return d;
}

struct Ours {
    std::vector<double> coeff = std::vector<double>(4 * (kNx - 1));
    DFTask* task = nullptr;
    Ours() {
        const Data& d = data();
        orv_df_kernel_dNewTask1D(&task, kNx, d.x.data(), DF_X_NON_UNIFORM, 1, d.y.data(), DF_Y_ROWS, 0);
        orv_df_kernel_dEditPPSpline1D(task, DF_PP_CUBIC, 0, DF_BC_FREE_END, nullptr, 0, nullptr,
                                      coeff.data(), DF_Y_ROWS);
        orv_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, orv_df_thread_ops_serial());
    }
    ~Ours() { orv_df_kernel_DeleteTask(&task); }
};

const std::vector<double>& sites(int sorted) { return sorted ? data().sorted_sites : data().random_sites; }

int interpolate(DFTask* t, const std::vector<double>& s, int nd, double* r, const DFThreadOps* ops) {
    const int32_t orders[3] = {1, 1, 1};
    return orv_df_kernel_dDFInterpolate1D(t, 0, 0, int64_t(s.size()), s.data(),
                                          &s == &data().sorted_sites ? DF_SITES_SORTED : 0, nd, orders,
                                          nullptr, r, 0x10, nullptr, nullptr, nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr, ops);
}

// Arguments: sorted sites (0/1), orders (1 value, 3 with two derivatives).
void BM_orv_eval_warm(benchmark::State& st) {
    Ours o;
    std::vector<double> r(kSites * st.range(1));
    for (auto _ : st) {
        interpolate(o.task, sites(int(st.range(0))), int(st.range(1)), r.data(), orv_df_thread_ops_serial());
        benchmark::DoNotOptimize(r.data());
    }
}
void BM_orv_eval_warm_teams(benchmark::State& st) {
    Ours o;
    std::vector<double> r(kSites * st.range(1));
    for (auto _ : st) {
        interpolate(o.task, sites(int(st.range(0))), int(st.range(1)), r.data(), orv_df_thread_ops_openmp());
        benchmark::DoNotOptimize(r.data());
    }
}
void BM_orv_eval_fresh(benchmark::State& st) {
    std::vector<double> r(kSites * st.range(1));
    for (auto _ : st) {
        Ours o;
        interpolate(o.task, sites(int(st.range(0))), int(st.range(1)), r.data(), orv_df_thread_ops_serial());
        benchmark::DoNotOptimize(r.data());
    }
}

struct Gsl {
    gsl_spline* s;
    Gsl() {
        const Data& d = data();
        s = gsl_spline_alloc(gsl_interp_cspline, kNx);
        gsl_spline_init(s, d.x.data(), d.y.data(), kNx);
    }
    ~Gsl() { gsl_spline_free(s); }
};

// Arguments: sorted sites, orders, accelerator (0/1).
void gsl_eval(const Gsl& g, const std::vector<double>& s, int nd, bool use_acc, double* r) {
    gsl_interp_accel* acc = use_acc ? gsl_interp_accel_alloc() : nullptr;
    if (nd == 1) {
        for (size_t i = 0; i < s.size(); ++i) r[i] = gsl_spline_eval(g.s, s[i], acc);
    } else {
        for (size_t i = 0; i < s.size(); ++i) {
            r[3 * i] = gsl_spline_eval(g.s, s[i], acc);
            r[3 * i + 1] = gsl_spline_eval_deriv(g.s, s[i], acc);
            r[3 * i + 2] = gsl_spline_eval_deriv2(g.s, s[i], acc);
        }
    }
    if (acc) gsl_interp_accel_free(acc);
}
void BM_gsl_eval_warm(benchmark::State& st) {
    Gsl g;
    std::vector<double> r(kSites * st.range(1));
    for (auto _ : st) {
        gsl_eval(g, sites(int(st.range(0))), int(st.range(1)), st.range(2) != 0, r.data());
        benchmark::DoNotOptimize(r.data());
    }
}
void BM_gsl_eval_fresh(benchmark::State& st) {
    std::vector<double> r(kSites * st.range(1));
    for (auto _ : st) {
        Gsl g;
        gsl_eval(g, sites(int(st.range(0))), int(st.range(1)), st.range(2) != 0, r.data());
        benchmark::DoNotOptimize(r.data());
    }
}

void BM_orv_integ_warm(benchmark::State& st) {
    Ours o;
    const Data& d = data();
    std::vector<double> r(kPairs);
    for (auto _ : st) {
        orv_df_kernel_dDFIntegrate1D(o.task, 0, kPairs, d.lo.data(), 0, d.hi.data(), 0, nullptr, nullptr,
                                     r.data(), 0x10, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, orv_df_thread_ops_serial());
        benchmark::DoNotOptimize(r.data());
    }
}
void BM_orv_integ_fresh(benchmark::State& st) {
    const Data& d = data();
    std::vector<double> r(kPairs);
    for (auto _ : st) {
        Ours o;
        orv_df_kernel_dDFIntegrate1D(o.task, 0, kPairs, d.lo.data(), 0, d.hi.data(), 0, nullptr, nullptr,
                                     r.data(), 0x10, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, orv_df_thread_ops_serial());
        benchmark::DoNotOptimize(r.data());
    }
}
void gsl_integ(const Gsl& g, double* r) {
    const Data& d = data();
    gsl_interp_accel* acc = gsl_interp_accel_alloc();
    for (int64_t i = 0; i < kPairs; ++i) r[i] = gsl_spline_eval_integ(g.s, d.lo[i], d.hi[i], acc);
    gsl_interp_accel_free(acc);
}
void BM_gsl_integ_warm(benchmark::State& st) {
    Gsl g;
    std::vector<double> r(kPairs);
    for (auto _ : st) {
        gsl_integ(g, r.data());
        benchmark::DoNotOptimize(r.data());
    }
}
void BM_gsl_integ_fresh(benchmark::State& st) {
    std::vector<double> r(kPairs);
    for (auto _ : st) {
        Gsl g;
        gsl_integ(g, r.data());
        benchmark::DoNotOptimize(r.data());
    }
}

void eval_args(benchmark::internal::Benchmark* b) {
    for (int sorted : {0, 1})
        for (int nd : {1, 3}) b->Args({sorted, nd});
    b->Unit(benchmark::kMillisecond);
}
void gsl_args(benchmark::internal::Benchmark* b) {
    for (int sorted : {0, 1})
        for (int nd : {1, 3})
            for (int acc : {0, 1}) b->Args({sorted, nd, acc});
    b->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_orv_eval_warm)->Apply(eval_args);
BENCHMARK(BM_orv_eval_warm_teams)->Apply(eval_args);
BENCHMARK(BM_orv_eval_fresh)->Apply(eval_args);
BENCHMARK(BM_gsl_eval_warm)->Apply(gsl_args);
BENCHMARK(BM_gsl_eval_fresh)->Apply(gsl_args);
BENCHMARK(BM_orv_integ_warm)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_orv_integ_fresh)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_gsl_integ_warm)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_gsl_integ_fresh)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    gsl_set_error_handler_off();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
