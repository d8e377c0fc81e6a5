// Linear splines: two coefficients a cell, the value at the left breakpoint
// and the slope of the cell.
#include "datafit/df_task.h"

namespace orv::df {
namespace {

template <typename T, bool Cols, bool Uniform>
int linear_worker(const DFTask* t) {
    const int64_t nx = t->nx, ny = functions(t);
    const T* x = static_cast<const T*>(t->x);
    const T r = Uniform ? T(1) / (x[1] - x[0]) : T(0);
    const T steps = T(nx - 1);
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* c = coeff_of<T>(t, k);
        for (int64_t i = 0; i + 1 < nx; ++i) {
            c[2 * i] = y[i];
            if constexpr (Uniform)
                c[2 * i + 1] = ((y[i + 1] - y[i]) * steps) * r;
            else
                c[2 * i + 1] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]);
        }
    }
    return DF_OK;
}

template <typename T>
int linear_entry(DFTask* t, int64_t method) {
    using Worker = int (*)(const DFTask*);
    static constexpr Worker kWorkers[2][2] = {
        {linear_worker<T, true, false>, linear_worker<T, true, true>},
        {linear_worker<T, false, false>, linear_worker<T, false, true>}};
    if (t == nullptr) return DF_NULL_TASK;
    if (!precision_matches<T>(t)) return DF_BAD_PRECISION;
    if (method != 0) return DF_BAD_METHOD;
    if (t->nx < 2) return DF_BAD_NX;
    if (!layout_legal(t->yhint)) return DF_BAD_YHINT;
    if (const int st = check_build(t, 2); st != DF_OK) return st;
    return kWorkers[layout_row(t->yhint)][is_uniform(t->xhint)](t);
}

}  // namespace
}  // namespace orv::df

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFLinearSpline1D(DFTask* t, int64_t, int64_t method,
                                                  const DFThreadOps*) {
    return linear_entry<double>(t, method);
}
ORV_EXPORT int orv_df_kernel_sDFLinearSpline1D(DFTask* t, int64_t, int64_t method,
                                                  const DFThreadOps*) {
    return linear_entry<float>(t, method);
}
