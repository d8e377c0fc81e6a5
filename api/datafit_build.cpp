// Checked spline building: creation and editing that test what the
// constructors trust (ordered finite breakpoints, a coefficient array as long
// as the order and kind need), and one construct call that picks the
// constructor by order and kind.
#include <orv/orv_datafit.h>

#include <cmath>

namespace {

template <typename T>
constexpr int32_t is_double = sizeof(T) == 8 ? 1 : 0;

template <typename T>
struct Kernels;
template <>
struct Kernels<double> {
    static constexpr auto create = orv_df_kernel_dNewTask1D;
    static constexpr auto edit = orv_df_kernel_dEditPPSpline1D;
    using Ctor = int (*)(DFTask*, int64_t, int64_t, const DFThreadOps*);
    static constexpr Ctor linear = orv_df_kernel_dDFLinearSpline1D,
                          quadratic = orv_df_kernel_dDFQuadraticSpline1D,
                          natural = orv_df_kernel_dDFNaturalCubicSpline1D,
                          akima = orv_df_kernel_dDFAkimaCubicSpline1D,
                          hermite = orv_df_kernel_dDFHermiteCubicSpline1D,
                          bessel = orv_df_kernel_dDFBesselCubicSpline1D,
                          hyman = orv_df_kernel_dDFHymanCubicSpline1D,
                          deflt = orv_df_kernel_dDFDefaultCubicSpline1D;
};
template <>
struct Kernels<float> {
    static constexpr auto create = orv_df_kernel_sNewTask1D;
    static constexpr auto edit = orv_df_kernel_sEditPPSpline1D;
    using Ctor = int (*)(DFTask*, int64_t, int64_t, const DFThreadOps*);
    static constexpr Ctor linear = orv_df_kernel_sDFLinearSpline1D,
                          quadratic = orv_df_kernel_sDFQuadraticSpline1D,
                          natural = orv_df_kernel_sDFNaturalCubicSpline1D,
                          akima = orv_df_kernel_sDFAkimaCubicSpline1D,
                          hermite = orv_df_kernel_sDFHermiteCubicSpline1D,
                          bessel = orv_df_kernel_sDFBesselCubicSpline1D,
                          hyman = orv_df_kernel_sDFHymanCubicSpline1D,
                          deflt = orv_df_kernel_sDFDefaultCubicSpline1D;
};

// The breakpoints a constructor will read: finite and strictly increasing
// (with a uniform partition, the two ends).
template <typename T>
bool breakpoints_ok(const T* x, int64_t nx, int64_t xhint) {
    const int64_t m = xhint == DF_X_UNIFORM ? 2 : nx;
    for (int64_t i = 0; i < m; ++i)
        if (!std::isfinite(x[i]) || (i > 0 && !(x[i] > x[i - 1]))) return false;
    return true;
}

// The constructor of an order and kind, or null.
template <typename T>
typename Kernels<T>::Ctor constructor(int64_t sorder, int64_t stype) {
    using K = Kernels<T>;
    if (sorder == DF_PP_LINEAR) return K::linear;
    if (sorder == DF_PP_QUADRATIC) return stype == 0 || stype == 1 ? K::quadratic : nullptr;
    if (sorder != DF_PP_CUBIC) return nullptr;
    switch (stype) {
        case ORV_DF_CUBIC_NATURAL: return K::natural;
        case ORV_DF_CUBIC_AKIMA: return K::akima;
        case ORV_DF_CUBIC_HERMITE: return K::hermite;
        case ORV_DF_CUBIC_BESSEL: return K::bessel;
        case ORV_DF_CUBIC_HYMAN: return K::hyman;
        case ORV_DF_CUBIC_DEFAULT: return K::deflt;
        default: return nullptr;
    }
}

int order_status(int64_t sorder) {
    return sorder == DF_PP_LINEAR || sorder == DF_PP_QUADRATIC || sorder == DF_PP_CUBIC
               ? DF_BAD_STYPE
               : DF_BAD_SORDER;
}

template <typename T>
int new_task(DFTask** task, int64_t nx, const T* x, int64_t xhint, int64_t ny, const T* y,
             int64_t yhint) {
    if (task == nullptr) return DF_NULL_TASK;
    if (nx < 2) return DF_BAD_NX;
    if (x == nullptr) return DF_NULL_X;
    if (xhint != DF_X_UNKNOWN && xhint != DF_X_NON_UNIFORM && xhint != DF_X_QUASI_UNIFORM &&
        xhint != DF_X_UNIFORM)
        return DF_BAD_XHINT;
    if (!breakpoints_ok(x, nx, xhint)) return ORV_DF_BAD_BREAKPOINTS;
    DFTask* made = nullptr;
    const int st = Kernels<T>::create(&made, nx, x, xhint, ny, y, yhint, 1);
    if (st == DF_OK) *task = made;
    return st;
}

template <typename T>
int edit_spline(DFTask* t, int64_t sorder, int64_t stype, int64_t bc_type, const T* bc,
                int64_t ic_type, const T* ic, T* scoeff, int64_t ncoeff) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->is_double != is_double<T>) return DF_BAD_PRECISION;
    if (constructor<T>(sorder, stype) == nullptr) return order_status(sorder);
    if (scoeff == nullptr) return DF_NULL_SCOEFF;
    const int64_t cells = sorder == DF_PP_QUADRATIC && stype == 1 ? t->nx : t->nx - 1;
    const int64_t functions = t->ny < 1 ? 1 : t->ny;
    int64_t need = 0;
    if (__builtin_mul_overflow(cells, sorder, &need) ||
        __builtin_mul_overflow(need, functions, &need) || ncoeff < need)
        return ORV_DF_SHORT_COEFFS;
    return Kernels<T>::edit(t, sorder, stype, bc_type, bc, ic_type, ic, scoeff, DF_Y_ROWS);
}

template <typename T>
int construct(DFTask* t) {
    if (t == nullptr) return DF_NULL_TASK;
    if (t->is_double != is_double<T>) return DF_BAD_PRECISION;
    if (t->x == nullptr) return DF_NULL_X;
    if (t->nx < 2) return DF_BAD_NX;
    if (!breakpoints_ok(static_cast<const T*>(t->x), t->nx, t->xhint)) return ORV_DF_BAD_BREAKPOINTS;
    const auto ctor = constructor<T>(t->sorder, t->stype);
    if (ctor == nullptr) return order_status(t->sorder);
    return ctor(t, 0, 0, orv_df_thread_ops_openmp());
}

}  // namespace

extern "C" {

int orv_df_dnew_task(DFTask** task, int64_t nx, const double* x, int64_t xhint, int64_t ny,
                     const double* y, int64_t yhint) {
    return new_task(task, nx, x, xhint, ny, y, yhint);
}
int orv_df_snew_task(DFTask** task, int64_t nx, const float* x, int64_t xhint, int64_t ny,
                     const float* y, int64_t yhint) {
    return new_task(task, nx, x, xhint, ny, y, yhint);
}
int orv_df_delete_task(DFTask** task) { return orv_df_kernel_DeleteTask(task); }
int orv_df_dedit_spline(DFTask* t, int64_t sorder, int64_t stype, int64_t bc_type,
                        const double* bc, int64_t ic_type, const double* ic, double* scoeff,
                        int64_t ncoeff) {
    return edit_spline(t, sorder, stype, bc_type, bc, ic_type, ic, scoeff, ncoeff);
}
int orv_df_sedit_spline(DFTask* t, int64_t sorder, int64_t stype, int64_t bc_type,
                        const float* bc, int64_t ic_type, const float* ic, float* scoeff,
                        int64_t ncoeff) {
    return edit_spline(t, sorder, stype, bc_type, bc, ic_type, ic, scoeff, ncoeff);
}
int orv_df_dconstruct(DFTask* t) { return construct<double>(t); }
int orv_df_sconstruct(DFTask* t) { return construct<float>(t); }

}  // extern "C"
