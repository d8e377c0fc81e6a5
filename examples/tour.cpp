// A tour of what the library has: the kernel tables, the per-thread mode,
// error reporting, and the first vector functions with their timings.
#include <orv/datafit.h>
#include <orv/orv.h>
#include <orv/rng.h>
#include <orv/stats.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

const char* const kPresent[] = {
#define X(name, family, slots, errname) #name,
#include "vtm_present.inc"
#undef X
};

double seconds_per_call(void (*f)(int, const double*, const double*, double*), int n,
                        const double* a, const double* b, double* r) {
    using clock = std::chrono::steady_clock;
    int reps = 1;
    for (;;) {
        const auto t0 = clock::now();
        for (int i = 0; i < reps; ++i) f(n, a, b, r);
        const double s = std::chrono::duration<double>(clock::now() - t0).count();
        if (s > 0.05) return s / reps;
        reps *= 2;
    }
}

int32_t show_error(VtmErrorContext* c) {
    std::printf("    callback: %s status %d at element %d, argument %g\n", c->functionName, c->code,
                c->index, c->arg1);
    return 0;
}

using clock_type = std::chrono::steady_clock;
double since(clock_type::time_point t0) {
    return std::chrono::duration<double>(clock_type::now() - t0).count();
}

template <typename T>
double ns_per_element(void (*f)(int, const T*, T*), const std::vector<T>& a, std::vector<T>& r) {
    const int n = static_cast<int>(a.size());
    int reps = 1;
    for (;;) {
        const auto t0 = clock_type::now();
        for (int i = 0; i < reps; ++i) f(n, a.data(), r.data());
        const double s = since(t0);
        if (s > 0.02) return s * 1e9 / (static_cast<double>(reps) * n);
        reps *= 2;
    }
}

void vector_functions() {
    std::printf("\nVector functions\n----------------\n");
    const double x[6] = {0.5, 1.0, 710.0, -1.0, 0.0, 1e-310};
    double e[6], l[6], q[6];
    vtmClearErrStatus();
    vtmdExp(6, x, e);
    const int32_t exp_status = vtmGetErrStatus();
    vtmClearErrStatus();
    vtmdLn(6, x, l);
    const int32_t ln_status = vtmGetErrStatus();
    vtmdSqrt(6, x, q);
    std::printf("  x      %12g %12g %12g %12g %12g %12g\n", x[0], x[1], x[2], x[3], x[4], x[5]);
    std::printf("  exp    %12.6g %12.6g %12.6g %12.6g %12.6g %12.6g  status %d\n", e[0], e[1], e[2],
                e[3], e[4], e[5], exp_status);
    std::printf("  ln     %12.6g %12.6g %12.6g %12.6g %12.6g %12.6g  status %d\n", l[0], l[1], l[2],
                l[3], l[4], l[5], ln_status);
    std::printf("  sqrt   %12.6g %12.6g %12.6g %12.6g %12.6g %12.6g\n", q[0], q[1], q[2], q[3],
                q[4], q[5]);
    std::printf("  error record of each bad element of Ln, through a callback:\n");
    vtmSetErrorCallBack(show_error);
    vtmdLn(6, x, l);
    vtmClearErrorCallBack();
    vtmClearErrStatus();

    std::printf("  ns per element, HA tier, one thread:\n  %-8s %10s %10s %10s %10s\n", "n",
                "sExp", "dExp", "sLn", "dLn");
    for (int n : {1000, 100000}) {
        std::vector<float> fa(n), fr(n);
        std::vector<double> da(n), dr(n);
        for (int i = 0; i < n; ++i) da[i] = fa[i] = 0.001f * (i % 5000) + 0.01f;
        std::printf("  %-8d %10.3f %10.3f %10.3f %10.3f\n", n, ns_per_element(vtmsExp, fa, fr),
                    ns_per_element(vtmdExp, da, dr), ns_per_element(vtmsLn, fa, fr),
                    ns_per_element(vtmdLn, da, dr));
    }
}

void random_streams() {
    std::printf("\nRandom streams\n--------------\n");
    std::printf("Generators registered: %d\n", vstGetNumRegBrngs());
    const struct {
        const char* name;
        int32_t id;
    } gens[] = {{"MCG31M1", ORV_BRNG_MCG31M1}, {"R250", ORV_BRNG_R250},
                {"MRG32K3A", ORV_BRNG_MRG32K3A}, {"MCG59", ORV_BRNG_MCG59}, {"WH", ORV_BRNG_WH}};
    const uint32_t seed = 7777777;
    std::vector<double> u(1 << 20);
    std::printf("  %-9s %-44s %s\n", "generator", "first uniforms on [0,1)", "ns per double");
    for (const auto& g : gens) {
        void* s = nullptr;
        if (vstNewStreamEx(&s, g.id, 1, &seed) != 0) continue;
        BrngRow row;
        vstGetBrngProperties(g.id, &row);
        double first[4];
        row.doubleFill(s, 4, first, 0.0, 1.0);
        const auto t0 = clock_type::now();
        for (int rep = 0; rep < 8; ++rep) row.doubleFill(s, static_cast<int32_t>(u.size()), u.data(), 0.0, 1.0);
        const double ns = since(t0) * 1e9 / (8.0 * u.size());
        std::printf("  %-9s %.6f %.6f %.6f %.6f   %.2f\n", g.name, first[0], first[1], first[2],
                    first[3], ns);
        vstDeleteStream(&s);
    }
    // Skip-ahead equals drawing and discarding; a saved image continues the stream.
    void *a = nullptr, *b = nullptr, *c = nullptr;
    vstNewStreamEx(&a, ORV_BRNG_MRG32K3A, 1, &seed);
    vstNewStreamEx(&b, ORV_BRNG_MRG32K3A, 1, &seed);
    std::vector<double> skip(1000001);
    __vstdBRngMRG32K3A(a, 1000000, skip.data(), 0.0, 1.0);
    vstSkipAheadStream(b, 1000000);
    double xa, xb, xc;
    __vstdBRngMRG32K3A(a, 1, &xa, 0.0, 1.0);
    std::vector<char> image(vstGetStreamSize(b));
    vstSaveStreamM(b, image.data());
    __vstdBRngMRG32K3A(b, 1, &xb, 0.0, 1.0);
    vstLoadStreamM(&c, image.data());
    __vstdBRngMRG32K3A(c, 1, &xc, 0.0, 1.0);
    std::printf("MRG32K3A: draw 10^6 then one: %.12f; skip 10^6 then one: %.12f; "
                "saved image then one: %.12f\n", xa, xb, xc);
    vstDeleteStream(&a);
    vstDeleteStream(&b);
    vstDeleteStream(&c);
}

void statistics() {
    std::printf("\nSummary statistics\n------------------\n");
    const int64_t p = 3, n = 1000000, storage = SS_STORAGE_BY_OBSERVATION, form = SS_MATRIX_FULL;
    std::vector<double> x(p * n);
    void* s = nullptr;
    const uint32_t seed = 1;
    vstNewStreamEx(&s, ORV_BRNG_MRG32K3A, 1, &seed);
    __vstdBRngMRG32K3A(s, static_cast<int32_t>(x.size()), x.data(), 0.0, 1.0);
    vstDeleteStream(&s);
    for (int64_t i = 0; i < n; ++i) {  // correlate the variables: y = x0 + x1, z = 2 x0
        x[i * p + 1] += x[i * p];
        x[i * p + 2] = 2.0 * x[i * p];
    }
    std::vector<double> mean(p), c2(p), skew(p), kurt(p), cov(p * p), cor(p * p), c3(p), c4(p),
        r2(p), r3(p), r4(p);
    SsTask* task = nullptr;
    __vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1);
    // The plain-sums method forms central moments from the raw ones.
    __vstdSSEditMoments(task, mean.data(), r2.data(), r3.data(), r4.data(), c2.data(), c3.data(),
                        c4.data());
    __vstdSSEditCovCor(task, mean.data(), cov.data(), &form, cor.data(), &form);
    __vstdSSEditTask(task, SS_ED_skewness, skew.data());
    __vstdSSEditTask(task, SS_ED_kurtosis, kurt.data());
    const uint64_t est = SS_EST_MEAN | SS_EST_CENTRAL2 | SS_EST_CENTRAL3 | SS_EST_CENTRAL4 |
                         SS_EST_SKEWNESS | SS_EST_KURTOSIS | SS_EST_COV | SS_EST_COR;
    const auto t0 = clock_type::now();
    const int32_t st = _vstdSSBasic(task, est, SS_METHOD_PLAIN_SUMS, orv_ss_threading_openmp());
    const double secs = since(t0);
    std::printf("3 variables x 10^6 uniform observations (status %d, %.1f ms):\n", st, secs * 1e3);
    std::printf("  mean       %.5f %.5f %.5f   (expected 0.5, 1.0, 1.0)\n", mean[0], mean[1], mean[2]);
    std::printf("  variance   %.5f %.5f %.5f   (expected 1/12, 1/6, 1/3)\n", c2[0], c2[1], c2[2]);
    std::printf("  skewness   %.4f  kurtosis %.4f   (expected 0 and -1.2 for a uniform)\n", skew[0], kurt[0]);
    std::printf("  cor(x0,x1) %.4f  cor(x0,x2) %.4f   (expected 0.7071 and 1)\n", cor[1], cor[2]);
    __vstSSDeleteTask(&task);
}

void data_fitting() {
    std::printf("\nData fitting\n------------\n");
    const int64_t nx = 100001;
    std::vector<double> x(nx), y(nx), coef(4 * (nx - 1));
    for (int64_t i = 0; i < nx; ++i) {
        x[i] = 10.0 * i / (nx - 1);
        y[i] = std::sin(x[i]);
    }
    DFTask* t = nullptr;
    orv_df_kernel_dNewTask1D(&t, nx, x.data(), DF_X_NON_UNIFORM, 1, y.data(), DF_Y_ROWS, 0);
    int st = orv_df_kernel_dEditPPSpline1D(t, DF_PP_CUBIC, 2, DF_BC_NOT_A_KNOT, nullptr, 0,
                                           nullptr, coef.data(), DF_Y_ROWS);
    const auto t0 = clock_type::now();
    if (st == 0) st = orv_df_kernel_dDFNaturalCubicSpline1D(t, 0, 0, orv_df_thread_ops_serial());
    const double secs = since(t0);
    // Evaluate the cell polynomial at the middle of a cell and compare with sin.
    const int64_t c = 31415;
    const double h = 0.5 * (x[c + 1] - x[c]);
    const double* q = &coef[4 * c];
    const double v = q[0] + h * (q[1] + h * (q[2] + h * q[3]));
    std::printf("Natural cubic, not-a-knot, %lld breakpoints of sin on [0,10] (status %d): "
                "%.1f ns per breakpoint\n", static_cast<long long>(nx), st, secs * 1e9 / nx);
    std::printf("  at x = %.7f: spline %.12f, sin %.12f, difference %.1e\n", x[c] + h, v,
                std::sin(x[c] + h), v - std::sin(x[c] + h));
    orv_df_kernel_DeleteTask(&t);
}

}  // namespace

int main() {
    std::printf("orv tour\n========\n\n");
    std::printf("Library variant (dll_cpu_version): %d (baseline SSE2)\n", dll_cpu_version());
    const int present = static_cast<int>(sizeof kPresent / sizeof kPresent[0]);
    std::printf("Vector functions present: %d of 480:", present);
    for (int i = 0; i < present; ++i) std::printf(" %s", kPresent[i]);
    std::printf("\n\n");

    std::printf("Mode word of this thread: 0x%X (tier slot %d)\n", vtmGetMode(),
                orv_vtm_kernel_GetTTableIndex());
    const uint32_t before = vtmSetMode(VTM_EP);
    std::printf("After vtmSetMode(EP): 0x%X (was 0x%X), tier slot %d\n", vtmGetMode(), before,
                orv_vtm_kernel_GetTTableIndex());
    vtmSetMode(VTM_HA);

    const double a[5] = {1, 2, 3, 4, 5}, b[5] = {0.5, -1, 1e300, 0.25, -5};
    double r[5];
    vtmdAdd(5, a, b, r);
    std::printf("\ndAdd  {1,2,3,4,5} + {0.5,-1,1e300,0.25,-5} = {%g, %g, %g, %g, %g}\n", r[0], r[1],
                r[2], r[3], r[4]);
    vtmdMul(5, a, b, r);
    std::printf("dMul  = {%g, %g, %g, %g, %g}\n", r[0], r[1], r[2], r[3], r[4]);
    vtmdSubI(2, a, 2, b, 2, r, 1);
    std::printf("dSubI with increments 2,2,1 = {%g, %g}\n", r[0], r[1]);

    std::printf("\nChecked calls:\n");
    vtmdAdd(-3, a, b, r);
    std::printf("  vtmdAdd with n = -3 -> status %d\n", vtmGetErrStatus());
    vtmdAdd(5, a, nullptr, r);
    std::printf("  vtmdAdd with a null array -> status %d\n", vtmGetErrStatus());
    vtmClearErrStatus();
    vtmSetErrorCallBack(show_error);
    std::printf("  error callback installed; mode now 0x%X\n", vtmGetMode());
    vtmClearErrorCallBack();

    std::printf("\nTimings (one thread, ns per element):\n");
    std::printf("  %-10s %10s %10s %10s\n", "n", "dAdd", "dSub", "dMul");
    for (int n : {1000, 100000, 10000000}) {
        std::vector<double> x(n, 1.25), y(n, 0.75), z(n);
        const double ta = seconds_per_call(_vtmdAdd, n, x.data(), y.data(), z.data());
        const double ts = seconds_per_call(_vtmdSub, n, x.data(), y.data(), z.data());
        const double tm = seconds_per_call(_vtmdMul, n, x.data(), y.data(), z.data());
        std::printf("  %-10d %10.3f %10.3f %10.3f\n", n, ta * 1e9 / n, ts * 1e9 / n, tm * 1e9 / n);
    }
    std::printf("\nThreads available to the front end: %d\n", orv_get_num_threads());
    vector_functions();
    random_streams();
    statistics();
    data_fitting();
    return 0;
}
