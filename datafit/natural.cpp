// Natural cubic splines: C2 interpolating cubics whose breakpoint
// derivatives solve one tridiagonal system. The matrix depends only on the
// breakpoints, so it is factored once and all functions are solved together,
// one right-hand side each. The periodic system is cyclic; it is reduced to
// a tridiagonal one and closed with a rank-one (Sherman-Morrison) correction.
#include "datafit/df_task.h"

#include <climits>

namespace orv::df {
namespace {

template <typename T>
struct Tridiag;
template <>
struct Tridiag<double> {
    static void factor(int n, double* dl, double* d, double* du, int* info) {
        ddttrfb_4dfl(&n, dl, d, du, info);
    }
    static void solve(int n, int nrhs, const double* dl, const double* d, const double* du,
                      double* b, int ldb, int* info) {
        ddttrsb_4dfl("N", &n, &nrhs, dl, d, du, b, &ldb, info);
    }
};
template <>
struct Tridiag<float> {
    static void factor(int n, float* dl, float* d, float* du, int* info) {
        sdttrfb_4dfl(&n, dl, d, du, info);
    }
    static void solve(int n, int nrhs, const float* dl, const float* d, const float* du,
                      float* b, int ldb, int* info) {
        sdttrsb_4dfl("N", &n, &nrhs, dl, d, du, b, &ldb, info);
    }
};

// Breakpoint derivatives of the small cases that need no system: n = 2 (the
// single slope), and n = 3 with not-a-knot (d[1] = 0) or the free end.
template <typename T, int BI>
void small_derivatives(int64_t n, const T* h, const T* s, T* d) {
    if (n == 2) {
        d[0] = d[1] = s[0];
    } else if constexpr (BI == 0) {
        const T H = h[0] + h[1];
        d[1] = T(0);
        d[0] = (s[1] * h[0] * h[0] + (T(2) * H + h[0]) * h[1] * s[0]) / (H * h[1]);
        d[2] = (h[1] * h[1] * s[0] + s[1] * h[0] * (h[1] + T(2) * H)) / (h[0] * H);
    } else {
        d[1] = (h[1] * s[0] + h[0] * s[1]) / (h[0] + h[1]);
        d[0] = T(1.5) * s[0] - T(0.5) * d[1];
        d[2] = T(1.5) * s[1] - T(0.5) * d[1];
    }
}

template <typename T, bool Cols, bool Uniform, int BI>
int natural_worker(const DFTask* t) {
    const Grid<T> g = grid_of<T>(t);
    const int64_t n = g.n, ny = functions(t);
    const T* x = g.x;
    const T* bc = static_cast<const T*>(t->bc);
    if (BI == 6) {
        for (int64_t k = 0; k < ny; ++k) {
            const auto y = values_of<T, Cols>(t, k);
            if (!(y[0] == y[n - 1])) return DF_NOT_PERIODIC;
        }
    }
    if (n > INT_MAX / 2) return DF_NO_MEMORY;
    const bool small = n == 2 || (n == 3 && (BI == 0 || BI == 1));
    const int64_t m = BI == 6 ? n - 1 : n;  // order of the system
    const int64_t cols = ny + (BI == 6 ? 1 : 0);
    // Steps with their reciprocals, the three diagonals, and the right-hand
    // sides side by side in columns of n elements (the periodic system fills
    // n-1 of them). Three blocks rather than one keep each request moderate,
    // which lets the allocator serve repeated calls without fresh pages.
    T* work = scratch<T>(2 * n);
    T* band = scratch<T>(3 * m + 8);
    T* B = scratch<T>(n * cols);
    auto release = [&] {
        orv_serv_deallocate(work);
        orv_serv_deallocate(band);
        orv_serv_deallocate(B);
    };
    if (work == nullptr || band == nullptr || B == nullptr) {
        release();
        return DF_NO_MEMORY;
    }
    T* h = work;
    T* rh = h + n;
    T* dl = band;
    T* dd = dl + m;
    T* du = dd + m;
    for (int64_t i = 0; i + 1 < n; ++i) {
        if constexpr (Uniform) {
            h[i] = g.h;
            rh[i] = g.r;
        } else {
            h[i] = x[i + 1] - x[i];
            rh[i] = T(1) / h[i];
        }
    }
    auto span = [&](int64_t i) { return Uniform ? h[i - 1] + h[i] : x[i + 1] - x[i - 1]; };
    int info = 0;
    if (!small) {
        // Interior rows: continuity of the second derivative at x[i].
        for (int64_t i = 1; i + 1 < n; ++i) {
            dl[i - 1] = h[i];
            dd[i] = T(2) * span(i);
            du[i] = h[i - 1];
        }
        if constexpr (BI == 6) {
            // Cyclic rows 0 and m-1 with the corners h[0] and h[n-3] moved
            // into the rank-one term u v^T, u = (h[0], 0.., h[n-3]), v = (1, 0.., 1).
            dd[0] = T(2) * (h[n - 2] + h[0]) - h[0];
            du[0] = h[n - 2];
            if (m > 1) {
                dl[m - 2] = h[n - 2];
                dd[m - 1] = T(2) * (h[n - 3] + h[n - 2]) - h[n - 3];
            }
        } else {
            if constexpr (BI == 0) {
                dd[0] = h[1];
                du[0] = Uniform ? h[0] + h[1] : x[2] - x[0];
                dl[n - 2] = Uniform ? h[0] + h[1] : x[n - 1] - x[n - 3];
                dd[n - 1] = h[n - 3];
            }
            if constexpr (BI == 1 || BI == 4 || BI == 5) dd[0] = T(2), du[0] = T(1);
            if constexpr (BI == 2 || BI == 3) dd[0] = T(1), du[0] = T(0);
            if constexpr (BI == 1 || BI == 3 || BI == 5) dl[n - 2] = T(1), dd[n - 1] = T(2);
            if constexpr (BI == 2 || BI == 4) dl[n - 2] = T(0), dd[n - 1] = T(1);
        }
        Tridiag<T>::factor(static_cast<int>(m), dl, dd, du, &info);
        if (info != 0) {
            release();
            return DF_SOLVER_FAILED;
        }
    }
    // Right-hand sides, one column per function.
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* b = B + k * n;
        if (small) {
            T s[2];
            for (int64_t i = 0; i + 1 < n; ++i) s[i] = (y[i + 1] - y[i]) * rh[i];
            small_derivatives<T, BI>(n, h, s, b);
            continue;
        }
        // Slopes first, then the interior rows from them, from the top down
        // so that each row still reads the slopes it needs.
        for (int64_t i = 0; i + 1 < n; ++i) b[i] = (y[i + 1] - y[i]) * rh[i];
        for (int64_t i = n - 2; i >= 1; --i) b[i] = T(3) * (h[i] * b[i - 1] + h[i - 1] * b[i]);
        const T s0 = (y[1] - y[0]) * rh[0], s1 = (y[2] - y[1]) * rh[1];
        const T sl = (y[n - 1] - y[n - 2]) * rh[n - 2], sl1 = (y[n - 2] - y[n - 3]) * rh[n - 3];
        if constexpr (BI == 6) {
            b[0] = T(3) * (h[0] * sl + h[n - 2] * s0);
        } else {
            if constexpr (BI == 0) {
                const T H = Uniform ? h[0] + h[1] : x[2] - x[0];
                const T Hl = Uniform ? h[0] + h[1] : x[n - 1] - x[n - 3];
                const T a = h[n - 3], bb = h[n - 2];
                b[0] = (s1 * h[0] * h[0] + s0 * h[1] * (T(2) * H + h[0])) / H;
                b[n - 1] = (sl1 * bb * bb + sl * a * (T(2) * Hl + bb)) / Hl;
            }
            if constexpr (BI == 1) b[0] = T(3) * s0, b[n - 1] = T(3) * sl;
            if constexpr (BI == 2 || BI == 3) b[0] = bc[0];
            if constexpr (BI == 2 || BI == 4) b[n - 1] = bc[1];
            if constexpr (BI == 4 || BI == 5) b[0] = T(3) * s0 - T(0.5) * h[0] * bc[0];
            if constexpr (BI == 3 || BI == 5) b[n - 1] = T(3) * sl + T(0.5) * h[n - 2] * bc[1];
        }
    }
    if (!small) {
        if constexpr (BI == 6) {
            T* z = B + ny * n;
            for (int64_t i = 0; i < m; ++i) z[i] = T(0);
            z[0] = h[0];
            z[m - 1] += h[n - 3];
        }
        Tridiag<T>::solve(static_cast<int>(m), static_cast<int>(cols), dl, dd, du, B,
                          static_cast<int>(n), &info);
        if (info != 0) {
            release();
            return DF_SOLVER_FAILED;
        }
        if constexpr (BI == 6) {
            const T* z = B + ny * n;
            const T f = T(1) / (z[0] + T(1) + z[m - 1]);
            for (int64_t k = 0; k < ny; ++k) {
                T* b = B + k * n;
                const T c = (b[0] + b[m - 1]) * f;
                for (int64_t i = 0; i < m; ++i) b[i] -= c * z[i];
                b[n - 1] = b[0];
            }
        }
    }
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        const T* d = B + k * n;
        T* c = coeff_of<T>(t, k);
        for (int64_t i = 0; i + 1 < n; ++i)
            cubic_cell(c + 4 * i, y[i], (y[i + 1] - y[i]) * rh[i], d[i], d[i + 1], rh[i]);
    }
    release();
    return DF_OK;
}

template <typename T, bool Cols, bool Uniform>
struct NaturalRow {
    using Worker = int (*)(const DFTask*);
    static constexpr Worker row[7] = {
        natural_worker<T, Cols, Uniform, 0>, natural_worker<T, Cols, Uniform, 1>,
        natural_worker<T, Cols, Uniform, 2>, natural_worker<T, Cols, Uniform, 3>,
        natural_worker<T, Cols, Uniform, 4>, natural_worker<T, Cols, Uniform, 5>,
        natural_worker<T, Cols, Uniform, 6>};
};

template <typename T>
int natural_entry(DFTask* t, int64_t method) {
    using Worker = int (*)(const DFTask*);
    static constexpr const Worker* kWorkers[2][2] = {
        {NaturalRow<T, true, false>::row, NaturalRow<T, true, true>::row},
        {NaturalRow<T, false, false>::row, NaturalRow<T, false, true>::row}};
    if (t == nullptr) return DF_NULL_TASK;
    if (!precision_matches<T>(t)) return DF_BAD_PRECISION;
    if (method != 0) return DF_BAD_METHOD;
    if (t->nx < 2 || (t->nx == 2 && t->bc_type == DF_BC_NOT_A_KNOT)) return DF_BAD_NX;
    if (!layout_legal(t->yhint)) return DF_BAD_YHINT;
    const int bi = boundary_index(t->bc_type);
    if (bi < 0 || bi == 7) return DF_BAD_BC_TYPE;
    if (t->bc == nullptr) {
        if (boundary_needs_values(bi)) return DF_NULL_BC;
        if (bi == 6 && (t->stype == 0 || t->stype == 3)) return DF_NULL_BC;
    }
    if (const int st = check_build(t, 4); st != DF_OK) return st;
    return kWorkers[layout_row(t->yhint)][is_uniform(t->xhint)][bi](t);
}

}  // namespace
}  // namespace orv::df

using namespace orv::df;

ORV_DF_EXPORT int orv_df_kernel_dDFNaturalCubicSpline1D(DFTask* t, int64_t, int64_t method,
                                                        const DFThreadOps*) {
    return natural_entry<double>(t, method);
}
ORV_DF_EXPORT int orv_df_kernel_sDFNaturalCubicSpline1D(DFTask* t, int64_t, int64_t method,
                                                        const DFThreadOps*) {
    return natural_entry<float>(t, method);
}
