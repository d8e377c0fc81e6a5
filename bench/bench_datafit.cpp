// Spline construction, ours against GSL side by side, measured two ways.
//
// Warm: the task is made once and the constructor runs in a loop, so the C
// library's heap hands the same scratch back on every call.
// Built once: each iteration starts this program afresh (it runs itself with
// --fresh), which prepares the caller's arrays, builds one small spline
// untimed (so that code and libraries are loaded), and then times one task
// creation, edit and construction (GSL: gsl_spline_alloc and
// gsl_spline_init of every function), the way a user builds a spline once.
// The child reports its thread's CPU time and its wall time; fresh_pair runs
// ours and the peer alternately and gives both ratios. Peers: Natural (free end) against cspline, Natural periodic against
// cspline_periodic, Akima against akima, Hyman against steffen. One thread.
// Arguments: nx, ny.
#include <benchmark/benchmark.h>

#include <orv/datafit.h>
#include <orv/threading.h>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <ctime>
#include <utility>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#if __has_include(<gsl/gsl_spline.h>)
#include <gsl/gsl_spline.h>
#define HAVE_GSL 1
#endif

extern char** environ;

namespace {

using Ctor = int (*)(DFTask*, int64_t, int64_t, const DFThreadOps*);

// One of our constructors with a task description that it builds.
struct Kind {
    const char* name;
    Ctor ctor;
    int64_t order, stype, bc_type;
    bool ic;  // needs ic: n-2 interior values
};

const Kind kKinds[] = {
    {"linear", orv_df_kernel_dDFLinearSpline1D, 2, 0, DF_BC_FREE_END, false},
    {"quadratic", orv_df_kernel_dDFQuadraticSpline1D, 3, 0, DF_BC_Q_VALUE, false},
    {"natural", orv_df_kernel_dDFNaturalCubicSpline1D, 4, 0, DF_BC_FREE_END, false},
    {"natural_notaknot", orv_df_kernel_dDFNaturalCubicSpline1D, 4, 0, DF_BC_NOT_A_KNOT, false},
    // stype 2 lets the periodic kind go without boundary values.
    {"natural_periodic", orv_df_kernel_dDFNaturalCubicSpline1D, 4, 2, DF_BC_PERIODIC, false},
    {"akima", orv_df_kernel_dDFAkimaCubicSpline1D, 4, 0, DF_BC_NONE, false},
    {"bessel", orv_df_kernel_dDFBesselCubicSpline1D, 4, 0, DF_BC_FREE_END, false},
    {"hyman", orv_df_kernel_dDFHymanCubicSpline1D, 4, 0, DF_BC_FREE_END, false},
    {"hermite", orv_df_kernel_dDFHermiteCubicSpline1D, 4, 0, DF_BC_FREE_END, true},
    {"default", orv_df_kernel_dDFDefaultCubicSpline1D, 4, 0, DF_BC_FREE_END, true},
};

const Kind* kind_named(const std::string& s) {
    for (const Kind& k : kKinds)
        if (s == k.name) return &k;
    return nullptr;
}

bool periodic(const std::string& name) { return name.find("periodic") != std::string::npos; }

// The caller's arrays, filled (so touched) before anything is timed.
struct Data {
    std::vector<double> x, y, ic, coef, bc{0.25, 0.0};
    Data(int64_t nx, int64_t ny, bool per) : x(nx), y(nx * ny), ic(nx), coef(4 * nx * ny) {
        for (int64_t i = 0; i < nx; ++i) x[i] = double(i) + 0.3 * std::sin(2.1 * double(i));
        for (int64_t i = 0; i < nx; ++i) ic[i] = 0.1 * std::cos(0.37 * double(i));
        for (int64_t k = 0; k < ny; ++k) {
            for (int64_t i = 0; i < nx; ++i)
                y[k * nx + i] = std::sin(0.01 * x[i] + double(k)) + 0.1 * std::cos(0.37 * x[i]);
            if (per) y[k * nx + nx - 1] = y[k * nx];
        }
    }
};

// Task creation, edit and construction: what a user does to build once.
// coef: the coefficient block, the caller's (d.coef) unless given.
int build_ours(const Kind& k, Data& d, int64_t nx, int64_t ny, bool keep, DFTask** out,
               double* coef = nullptr) {
    DFTask* t = nullptr;
    int s = orv_df_kernel_dNewTask1D(&t, nx, d.x.data(), DF_X_NON_UNIFORM, ny, d.y.data(),
                                     DF_Y_ROWS, 0);
    if (s != DF_OK) return s;
    s = orv_df_kernel_dEditPPSpline1D(t, k.order, k.stype, k.bc_type, d.bc.data(), k.ic ? 1 : 0,
                                      k.ic ? d.ic.data() : nullptr, coef ? coef : d.coef.data(),
                                      DF_Y_ROWS);
    if (s == DF_OK) s = k.ctor(t, 0, 0, orv_df_thread_ops_serial());
    if (keep) *out = t;
    else orv_df_kernel_DeleteTask(&t);
    return s;
}

void BM_warm(benchmark::State& st, const Kind* k) {
    const int64_t nx = st.range(0), ny = st.range(1);
    Data d(nx, ny, periodic(k->name));
    DFTask* t = nullptr;
    if (build_ours(*k, d, nx, ny, true, &t) != DF_OK) st.SkipWithError("construction failed");
    const DFThreadOps* ops = orv_df_thread_ops_serial();
    for (auto _ : st) {
        if (k->ctor(t, 0, 0, ops) != DF_OK) st.SkipWithError("construction failed");
        benchmark::DoNotOptimize(d.coef.data());
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * nx * ny);
    orv_df_kernel_DeleteTask(&t);
}

#ifdef HAVE_GSL
const gsl_interp_type* gsl_type(const std::string& s) {
    if (s == "gsl_cspline") return gsl_interp_cspline;
    if (s == "gsl_cspline_periodic") return gsl_interp_cspline_periodic;
    if (s == "gsl_akima") return gsl_interp_akima;
    if (s == "gsl_steffen") return gsl_interp_steffen;
    return nullptr;
}

void BM_gsl_warm(benchmark::State& st, const char* name) {
    const int64_t nx = st.range(0), ny = st.range(1);
    Data d(nx, ny, periodic(name));
    std::vector<gsl_spline*> s(ny);
    for (auto& p : s) p = gsl_spline_alloc(gsl_type(name), size_t(nx));
    for (auto _ : st) {
        for (int64_t k = 0; k < ny; ++k)
            gsl_spline_init(s[k], d.x.data(), d.y.data() + k * nx, size_t(nx));
        benchmark::ClobberMemory();
    }
    st.SetItemsProcessed(st.iterations() * nx * ny);
    for (auto* p : s) gsl_spline_free(p);
}
#endif

// The child's side of a built-once run: prints the nanoseconds of one build.
// A name ending in "+cold" also allocates the coefficient block inside the
// timed part, so that its pages are first touched by the construction.
int fresh_child(std::string name, int64_t nx, int64_t ny) {
    const bool cold = name.size() > 5 && name.compare(name.size() - 5, 5, "+cold") == 0;
    if (cold) name.resize(name.size() - 5);
    Data d(nx, ny, periodic(name));
    Data small(64, 1, periodic(name));
    // CPU time of this thread (page faults included): the machine is shared,
    // and time spent waiting for a core would swamp the figures.
    // The wall time is printed beside it.
    struct Clock {
        static int64_t at(clockid_t c) {
            timespec ts;
            clock_gettime(c, &ts);
            return int64_t(ts.tv_sec) * 1000000000 + ts.tv_nsec;
        }
        static std::pair<int64_t, int64_t> now() {
            return {at(CLOCK_THREAD_CPUTIME_ID), at(CLOCK_MONOTONIC)};
        }
    };
    std::pair<int64_t, int64_t> t0, t1;
    if (const Kind* k = kind_named(name)) {
        if (build_ours(*k, small, 64, 1, false, nullptr) != DF_OK) return 1;
        DFTask* t = nullptr;
        double* coef = nullptr;
        t0 = Clock::now();
        if (cold) coef = static_cast<double*>(std::malloc(sizeof(double) * 4 * size_t(nx * ny)));
        const int s = build_ours(*k, d, nx, ny, true, &t, coef);
        t1 = Clock::now();
        if (s != DF_OK) return 1;
        orv_df_kernel_DeleteTask(&t);
        std::free(coef);
    } else {
#ifdef HAVE_GSL
        const gsl_interp_type* type = gsl_type(name);
        if (type == nullptr) return 1;
        gsl_spline* warm = gsl_spline_alloc(type, 64);
        gsl_spline_init(warm, small.x.data(), small.y.data(), 64);
        gsl_spline_free(warm);
        std::vector<gsl_spline*> s(ny);
        t0 = Clock::now();
        for (int64_t k = 0; k < ny; ++k) {
            s[k] = gsl_spline_alloc(type, size_t(nx));
            gsl_spline_init(s[k], d.x.data(), d.y.data() + k * nx, size_t(nx));
        }
        t1 = Clock::now();
        for (auto* p : s) gsl_spline_free(p);
#else
        return 1;
#endif
    }
    std::printf("%lld %lld\n", static_cast<long long>(t1.first - t0.first),
                static_cast<long long>(t1.second - t0.second));
    return 0;
}

// Runs this program with --fresh and reads the child's CPU time in seconds
// (negative on failure); wall receives its wall time.
double fresh_run(const char* name, int64_t nx, int64_t ny, double* wall = nullptr) {
    int fds[2];
    if (pipe(fds) != 0) return -1;
    posix_spawn_file_actions_t fa;
    posix_spawn_file_actions_init(&fa);
    posix_spawn_file_actions_adddup2(&fa, fds[1], 1);
    posix_spawn_file_actions_addclose(&fa, fds[0]);
    const std::string snx = std::to_string(nx), sny = std::to_string(ny);
    char self[] = "/proc/self/exe";
    char flag[] = "--fresh";
    char* argv[] = {self, flag, const_cast<char*>(name), const_cast<char*>(snx.c_str()),
                    const_cast<char*>(sny.c_str()), nullptr};
    pid_t pid;
    const int e = posix_spawn(&pid, "/proc/self/exe", &fa, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&fa);
    close(fds[1]);
    if (e != 0) {
        close(fds[0]);
        return -1;
    }
    char buf[64] = {};
    ssize_t got = 0, r;
    while ((r = read(fds[0], buf + got, sizeof buf - 1 - size_t(got))) > 0) got += r;
    close(fds[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || got == 0) return -1;
    char* rest = nullptr;
    const double cpu = std::strtod(buf, &rest) * 1e-9;
    if (wall != nullptr) *wall = std::strtod(rest, nullptr) * 1e-9;
    return cpu;
}

void BM_fresh(benchmark::State& st, const char* name) {
    const int64_t nx = st.range(0), ny = st.range(1);
    for (auto _ : st) {
        const double s = fresh_run(name, nx, ny);
        if (s < 0) {
            st.SkipWithError("fresh run failed");
            break;
        }
        st.SetIterationTime(s);
    }
    st.SetItemsProcessed(st.iterations() * nx * ny);
}

// Ours and the peer built once, alternately, so that both meet the same load;
// the counter speed_ratio is the peer's total time over ours.
void BM_fresh_pair(benchmark::State& st, const char* ours, const char* peer) {
    const int64_t nx = st.range(0), ny = st.range(1);
    double t_ours = 0, t_peer = 0, w_ours = 0, w_peer = 0;
    for (auto _ : st) {
        double wa = 0, wb = 0;
        const double a = fresh_run(ours, nx, ny, &wa), b = fresh_run(peer, nx, ny, &wb);
        if (a < 0 || b < 0) {
            st.SkipWithError("fresh run failed");
            break;
        }
        t_ours += a, t_peer += b, w_ours += wa, w_peer += wb;
        st.SetIterationTime(a);
    }
    const double n = double(st.iterations());
    st.counters["peer_us"] = t_peer / n * 1e6;
    st.counters["speed_ratio"] = t_peer / t_ours;
    st.counters["wall_us"] = w_ours / n * 1e6;
    st.counters["peer_wall_us"] = w_peer / n * 1e6;
    st.counters["wall_ratio"] = w_peer / w_ours;
    st.SetItemsProcessed(st.iterations() * nx * ny);
}

void warm_sizes(benchmark::internal::Benchmark* b) {
    for (int64_t ny : {1, 16})
        for (int64_t nx : {1000, 100000, 1000000}) b->Args({nx, ny});
    b->Unit(benchmark::kMicrosecond);
}

void fresh_sizes(benchmark::internal::Benchmark* b) {
    for (int64_t nx : {1000, 100000, 1000000}) b->Args({nx, 1});
    b->Args({100000, 16});
    b->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(7);
}

void register_all() {
    for (const Kind& k : kKinds) {
        benchmark::RegisterBenchmark((std::string("warm/orv_") + k.name).c_str(), BM_warm, &k)
            ->Apply(warm_sizes);
        benchmark::RegisterBenchmark((std::string("fresh/orv_") + k.name).c_str(), BM_fresh, k.name)
            ->Apply(fresh_sizes);
    }
#ifdef HAVE_GSL
    static const char* const kPairs[][2] = {
        {"natural", "gsl_cspline"},        {"natural+cold", "gsl_cspline"},
        {"natural_periodic", "gsl_cspline_periodic"},
        {"akima", "gsl_akima"},            {"akima+cold", "gsl_akima"},
        {"hyman", "gsl_steffen"}};
    for (const auto& p : kPairs)
        benchmark::RegisterBenchmark((std::string("fresh_pair/orv_") + p[0] + "/" + p[1]).c_str(),
                                     BM_fresh_pair, p[0], p[1])
            ->Apply(fresh_sizes);
    for (const char* g : {"gsl_cspline", "gsl_cspline_periodic", "gsl_akima", "gsl_steffen"}) {
        benchmark::RegisterBenchmark((std::string("warm/") + g).c_str(), BM_gsl_warm, g)
            ->Apply(warm_sizes);
    }
#endif
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::strcmp(argv[1], "--fresh") == 0)
        return fresh_child(argv[2], std::atoll(argv[3]), std::atoll(argv[4]));
    register_all();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
