// A tour of what the library has: the kernel tables, the per-thread mode,
// error reporting, and the first vector functions with their timings.
#include <orv/orv.h>

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

}  // namespace

int main() {
    std::printf("orv tour\n========\n\n");
    std::printf("Library variant (dll_cpu_version): %d (baseline SSE2)\n", dll_cpu_version());
    const int present = static_cast<int>(sizeof kPresent / sizeof kPresent[0]);
    std::printf("Vector functions present: %d of 480:", present);
    for (int i = 0; i < present; ++i) std::printf(" %s", kPresent[i]);
    std::printf("\n\n");

    std::printf("Mode word of this thread: 0x%X (tier slot %d)\n", _vtmGetMode(),
                orv_vtm_kernel_GetTTableIndex());
    const uint32_t before = _vtmSetMode(VTM_EP);
    std::printf("After vtmSetMode(EP): 0x%X (was 0x%X), tier slot %d\n", _vtmGetMode(), before,
                orv_vtm_kernel_GetTTableIndex());
    _vtmSetMode(VTM_HA);

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
    std::printf("  vtmdAdd with n = -3 -> status %d\n", _vtmGetErrStatus());
    vtmdAdd(5, a, nullptr, r);
    std::printf("  vtmdAdd with a null array -> status %d\n", _vtmGetErrStatus());
    _vtmClearErrStatus();
    _vtmSetErrorCallBack(show_error);
    std::printf("  error callback installed; mode now 0x%X\n", _vtmGetMode());
    _vtmClearErrorCallBack();

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
    return 0;
}
