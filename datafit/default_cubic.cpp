// Cubic splines from second derivatives M at the interior breakpoints, given
// by the caller in ic. The end values M[0] and M[n-1] follow from the
// boundary condition, so that the end cells satisfy it exactly.
#include "datafit/df_task.h"

namespace orv::df {
namespace {

// Second derivative at the left end for boundary index BI. m1, m2: M[1], M[2]
// (m2 only for n >= 4); ml1: M[n-2].
template <typename T, int BI>
T left_second(const DFTask* t, int64_t n, T h0, T h1, T hl, T s0, T sl, T m1, T m2, T ml1) {
    if constexpr (BI == 0)  // third derivative continuous at x[1]
        return n == 3 ? m1 : m1 - h0 * (m2 - m1) / h1;
    if constexpr (BI == 1) return T(0);
    if constexpr (BI == 2 || BI == 3)  // slope of cell 0 at x[0] equals bc[0]
        return T(3) * (s0 - bc_value<T>(t, 0)) / h0 - m1 * T(0.5);
    if constexpr (BI == 4 || BI == 5) return bc_value<T>(t, 0);
    // Periodic: equal second derivatives and slopes at both ends.
    return (T(6) * (s0 - sl) - h0 * m1 - hl * ml1) / (T(2) * (h0 + hl));
}

template <typename T, int BI>
T right_second(const DFTask* t, int64_t n, T hl, T hl1, T sl, T ml1, T ml2, T m0) {
    if constexpr (BI == 0) return n == 3 ? ml1 : ml1 + hl * (ml1 - ml2) / hl1;
    if constexpr (BI == 1) return T(0);
    if constexpr (BI == 2 || BI == 4)
        return T(3) * (bc_value<T>(t, 1) - sl) / hl - ml1 * T(0.5);
    if constexpr (BI == 3 || BI == 5) return bc_value<T>(t, 1);
    return m0;
}

template <typename T, bool Cols, bool Uniform, int BI>
int default_worker(const DFTask* t) {
    const Grid<T> g = grid_of<T>(t);
    const int64_t n = g.n, ny = functions(t);
    const T* x = g.x;
    const T* ic = static_cast<const T*>(t->ic);
    if (BI == 6) {
        for (int64_t k = 0; k < ny; ++k) {
            const auto y = values_of<T, Cols>(t, k);
            if (!(y[0] == y[n - 1])) return DF_NOT_PERIODIC;
        }
    }
    auto step = [&](int64_t i) { return Uniform ? g.h : x[i + 1] - x[i]; };
    const T sixth = T(0.16666666666666666), third = T(-0.3333333333333333);
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* c = coeff_of<T>(t, k);
        const T h0 = step(0), h1 = step(1), hl = step(n - 2), hl1 = step(n - 3);
        const T s0 = (y[1] - y[0]) * (T(1) / h0), sl = (y[n - 1] - y[n - 2]) * (T(1) / hl);
        const T m1 = ic[0], ml1 = ic[n - 3];
        const T m2 = n >= 4 ? ic[1] : m1, ml2 = n >= 4 ? ic[n - 4] : ml1;
        const T m0 = left_second<T, BI>(t, n, h0, h1, hl, s0, sl, m1, m2, ml1);
        const T mn = right_second<T, BI>(t, n, hl, hl1, sl, ml1, ml2, m0);
        for (int64_t i = 0; i + 1 < n; ++i) {
            const T h = step(i);
            const T rh = Uniform ? g.r : T(1) / h;
            const T mi = i == 0 ? m0 : ic[i - 1];
            const T mj = i + 2 == n ? mn : ic[i];
            T* ci = c + 4 * i;
            ci[0] = y[i];
            ci[2] = mi * T(0.5);
            ci[3] = (mj - mi) * sixth / h;
            ci[1] = (mi * third - mj * sixth) * h + (y[i + 1] - y[i]) * rh;
        }
    }
    return DF_OK;
}

template <typename T, bool Cols, bool Uniform>
struct DefaultRow {
    using Worker = int (*)(const DFTask*);
    static constexpr Worker row[7] = {
        default_worker<T, Cols, Uniform, 0>, default_worker<T, Cols, Uniform, 1>,
        default_worker<T, Cols, Uniform, 2>, default_worker<T, Cols, Uniform, 3>,
        default_worker<T, Cols, Uniform, 4>, default_worker<T, Cols, Uniform, 5>,
        default_worker<T, Cols, Uniform, 6>};
};

template <typename T>
int default_entry(DFTask* t) {
    using Worker = int (*)(const DFTask*);
    static constexpr const Worker* kWorkers[2][2] = {
        {DefaultRow<T, true, false>::row, DefaultRow<T, true, true>::row},
        {DefaultRow<T, false, false>::row, DefaultRow<T, false, true>::row}};
    if (t == nullptr) return DF_NULL_TASK;
    if (!precision_matches<T>(t)) return DF_BAD_PRECISION;
    if (t->nx < 3) return DF_BAD_NX;
    if (!layout_legal(t->yhint)) return DF_BAD_YHINT;
    const int bi = boundary_index(t->bc_type);
    if (bi < 0 || bi == 7) return DF_BAD_BC_TYPE;
    if (t->bc == nullptr) {
        if (boundary_needs_values(bi)) return DF_NULL_BC;
        if (bi == 6 && (t->stype == 0 || t->stype == 3)) return DF_NULL_BC;
    }
    if (t->ic == nullptr) return DF_BAD_IC;
    if (const int st = check_build(t, 4); st != DF_OK) return st;
    return kWorkers[layout_row(t->yhint)][is_uniform(t->xhint)][bi](t);
}

}  // namespace
}  // namespace orv::df

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFDefaultCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                        const DFThreadOps*) {
    return default_entry<double>(t);
}
ORV_EXPORT int orv_df_kernel_sDFDefaultCubicSpline1D(DFTask* t, int64_t, int64_t,
                                                        const DFThreadOps*) {
    return default_entry<float>(t);
}
