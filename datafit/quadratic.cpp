// Quadratic splines. Kind 0: one parabola a cell, C1 at the breakpoints,
// fixed by the value at the middle of the first cell and carried cell to
// cell by the midpoint recursion. Kind 1: parabolas centred on the
// breakpoints, joined C1 at secondary knots t[k] between them; the
// breakpoint derivatives solve one tridiagonal system.
#include "datafit/df_task.h"

namespace orv::df {
namespace {

// The midpoint values are carried cell to cell: cell c is written as soon as
// its midpoint m[c+1] is known, so no scratch is needed.
template <typename T, bool Cols, bool Uniform>
int midpoint_worker(const DFTask* t) {
    const int64_t n = t->nx, ny = functions(t);
    const T* x = static_cast<const T*>(t->x);
    const T bc0 = bc_value<T>(t, 0);
    // Uniform: hh = half the cell width, with its reciprocal.
    const T hh_u = Uniform ? (x[1] - x[0]) * T(0.5) * (T(1) / T(n - 1)) : T(0);
    const T rhh_u = Uniform ? T(1) / hh_u : T(0);
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* c = coeff_of<T>(t, k);
        T mid = bc0;  // value at the middle of cell i
        for (int64_t i = 0; i + 1 < n; ++i) {
            const T yl = y[i], yr = y[i + 1];
            T* ci = c + 3 * i;
            if constexpr (Uniform) {
                ci[2] = ((yl - T(2) * mid + yr) * T(0.5)) / (hh_u * hh_u);
                ci[1] = (mid - (hh_u * hh_u * ci[2] + yl)) * rhh_u;
            } else {
                const T w = x[i + 1] - x[i], hh = w * T(0.5);
                ci[2] = ((yl - T(2) * mid + yr) * T(0.5)) / (hh * hh);
                ci[1] = T(2) * (mid - (hh * hh * ci[2] + yl)) / w;
            }
            ci[0] = yl;
            if (i + 2 < n) {
                // First derivative continuous at x[i+1].
                if constexpr (Uniform) {
                    mid = (y[i] + y[i + 2]) * T(0.25) + (y[i + 1] * T(1.5) - mid);
                } else {
                    const T hp = x[i + 1] - x[i], hn = x[i + 2] - x[i + 1];
                    mid = hn * T(0.25) *
                              ((T(3) * y[i + 1] + y[i + 2]) / hn + (T(3) * y[i + 1] + y[i]) / hp) -
                          (mid * hn) / hp;
                }
            }
        }
    }
    return DF_OK;
}

template <typename T>
void tridiag_solve(int n, T* dl, T* d, T* du, T* b, int* info);
template <>
void tridiag_solve<double>(int n, double* dl, double* d, double* du, double* b, int* info) {
    const int one = 1;
    ddtsvb_4dfl(&n, &one, dl, d, du, b, &n, info);
}
template <>
void tridiag_solve<float>(int n, float* dl, float* d, float* du, float* b, int* info) {
    const int one = 1;
    sdtsvb_4dfl(&n, &one, dl, d, du, b, &n, info);
}

// Rows of the knot system, in the unknowns v[k] = derivative at x[k]. With
// H, D, q = t - x[k-1] and p = x[k] - t of cell k (between x[k-1] and x[k]),
// the parabola around x[k] has second coefficient
//   a(right cell) = (2D' - (v[k]+v[k+1])H' + (v[k+1]-v[k]) q') / (2H'q')
//   a(left cell)  = -(2D - (v[k-1]+v[k])H - (v[k]-v[k-1]) p) / (2Hp),
// and equating both, scaled by H H'/(H + H'), gives the interior row
//   sub = λ q/(H p), super = λ p'/(H' q'), diag = sub + super + 2,
//   rhs = λ (2D/(H p) + 2D'/(H' q')), λ = H H'/(H + H').
// End rows: a = 0 (free), a = bc/2 (second derivative), v = bc (first).
template <typename T, bool Cols, bool Uniform, int BI>
int knot_worker(const DFTask* t) {
    const int64_t n = t->nx, ny = functions(t);
    const T* x0 = static_cast<const T*>(t->x);
    const T hu = Uniform ? (x0[1] - x0[0]) / T(n - 1) : T(0);
    auto X = [&](int64_t i) { return Uniform ? x0[0] + T(i) * hu : x0[i]; };
    T* w = scratch<T>(8 * (n + 1));
    if (w == nullptr) return DF_NO_MEMORY;
    T* tk = w;               // knots t[0..n]
    T* dl = w + (n + 1);     // system
    T* dd = w + 2 * (n + 1);
    T* du = w + 3 * (n + 1);
    T* v = w + 4 * (n + 1);
    T* H = w + 5 * (n + 1);  // H[k], q[k], p[k] of cell k, k = 1..n-1
    T* q = w + 6 * (n + 1);
    T* p = w + 7 * (n + 1);
    const T* ic = static_cast<const T*>(t->ic);
    if (ic == nullptr) {
        tk[0] = X(0);
        tk[n] = X(n - 1);
        for (int64_t k = 1; k < n; ++k) tk[k] = (X(k - 1) + X(k)) * T(0.5);
    } else {
        bool ok = ic[0] - X(0) == T(0) && ic[n] - X(n - 1) == T(0);
        for (int64_t k = 1; ok && n > 2 && k < n; ++k) ok = X(k - 1) < ic[k] && ic[k] < X(k);
        if (!ok) {
            orv_serv_deallocate(w);
            return DF_BAD_IC;
        }
        for (int64_t k = 0; k <= n; ++k) tk[k] = ic[k];
    }
    for (int64_t k = 1; k < n; ++k) {
        H[k] = X(k) - X(k - 1);
        q[k] = tk[k] - X(k - 1);
        p[k] = X(k) - tk[k];
    }
    const T* bc = static_cast<const T*>(t->bc);
    for (int64_t f = 0; f < ny; ++f) {
        const auto y = values_of<T, Cols>(t, f);
        // Row 0.
        const T a1 = p[1] / H[1];
        const T D1 = y[1] - y[0];
        if constexpr (BI == 2 || BI == 3) {
            dd[0] = T(1), du[0] = T(0), v[0] = bc[0];
        } else {
            dd[0] = T(2) - a1, du[0] = a1, v[0] = T(2) * D1 / H[1];
            if constexpr (BI == 4 || BI == 5) v[0] -= bc[0] * q[1];
        }
        for (int64_t k = 1; k + 1 < n; ++k) {
            const T lam = H[k] * H[k + 1] / (H[k] + H[k + 1]);
            const T sub = lam * q[k] / (H[k] * p[k]);
            const T sup = lam * p[k + 1] / (H[k + 1] * q[k + 1]);
            dl[k - 1] = sub;
            du[k] = sup;
            dd[k] = sub + sup + T(2);
            const T Dl = y[k] - y[k - 1], Dr = y[k + 1] - y[k];
            v[k] = lam * (T(2) * Dl / (H[k] * p[k]) + T(2) * Dr / (H[k + 1] * q[k + 1]));
        }
        // Last row.
        const int64_t L = n - 1;
        const T b = p[L] / H[L];
        const T DL = y[L] - y[L - 1];
        if constexpr (BI == 2 || BI == 4) {
            dl[L - 1] = T(0), dd[L] = T(1), v[L] = bc[1];
        } else {
            dl[L - 1] = T(1) - b, dd[L] = b + T(1), v[L] = T(2) * DL / H[L];
            if constexpr (BI == 3 || BI == 5) v[L] += bc[1] * p[L];
        }
        int info = 0;
        tridiag_solve<T>(static_cast<int>(n), dl, dd, du, v, &info);
        if (info != 0) {
            orv_serv_deallocate(w);
            return DF_SOLVER_FAILED;
        }
        T* c = coeff_of<T>(t, f);
        for (int64_t k = 0; k + 1 < n; ++k) {
            const T Hc = H[k + 1], qc = q[k + 1], Dc = y[k + 1] - y[k];
            c[3 * k] = y[k];
            c[3 * k + 1] = v[k];
            c[3 * k + 2] = (T(2) * Dc - (v[k + 1] + v[k]) * Hc) / (T(2) * Hc * qc) +
                           (v[k + 1] - v[k]) / (T(2) * Hc);
        }
        // The last parabola, around x[n-1] on [t[n-1], x[n-1]], from the right
        // piece of the last cell.
        c[3 * L] = y[L];
        c[3 * L + 1] = v[L];
        c[3 * L + 2] = -(T(2) * DL - (v[L - 1] + v[L]) * H[L] - (v[L] - v[L - 1]) * p[L]) /
                       (T(2) * H[L] * p[L]);
    }
    orv_serv_deallocate(w);
    return DF_OK;
}

// Boundary index 0 and 6 (not-a-knot, periodic) have no knot worker.
template <typename T, bool Cols, bool Uniform>
struct KnotRow {
    using Worker = int (*)(const DFTask*);
    static constexpr Worker row[7] = {
        nullptr, knot_worker<T, Cols, Uniform, 1>, knot_worker<T, Cols, Uniform, 2>,
        knot_worker<T, Cols, Uniform, 3>, knot_worker<T, Cols, Uniform, 4>,
        knot_worker<T, Cols, Uniform, 5>, nullptr};
};

template <typename T>
int quadratic_entry(DFTask* t) {
    using Worker = int (*)(const DFTask*);
    static constexpr Worker kMidpoint[2][2] = {
        {midpoint_worker<T, true, false>, midpoint_worker<T, true, true>},
        {midpoint_worker<T, false, false>, midpoint_worker<T, false, true>}};
    // By ic_type bit 2, row, uniform flag; both variants share the rows.
    static constexpr const Worker* kKnot[2][2][2] = {
        {{KnotRow<T, true, false>::row, KnotRow<T, true, true>::row},
         {KnotRow<T, false, false>::row, KnotRow<T, false, true>::row}},
        {{KnotRow<T, true, false>::row, KnotRow<T, true, true>::row},
         {KnotRow<T, false, false>::row, KnotRow<T, false, true>::row}}};
    if (t == nullptr) return DF_NULL_TASK;
    if (!precision_matches<T>(t)) return DF_BAD_PRECISION;
    if (!layout_legal(t->yhint)) return DF_BAD_YHINT;
    if (t->stype == 0) {
        if (t->bc_type != DF_BC_Q_VALUE) return DF_BAD_BC_TYPE;
        if (t->bc == nullptr) return DF_NULL_BC;
        if (const int st = check_build(t, 3); st != DF_OK) return st;
        return kMidpoint[layout_row(t->yhint)][is_uniform(t->xhint)](t);
    }
    if (t->stype != 1) return DF_BAD_METHOD;
    if ((t->ic_type & 8) == 0) return DF_BAD_IC_TYPE;
    const int bi = boundary_index(t->bc_type);
    if (bi < 0 || bi == 7) return DF_BAD_BC_TYPE;
    if (boundary_needs_values(bi) && t->bc == nullptr) return DF_NULL_BC;
    const Worker w = kKnot[(t->ic_type >> 2) & 1][layout_row(t->yhint)][is_uniform(t->xhint)][bi];
    if (w == nullptr) return DF_BAD_BC_TYPE;
    if (t->nx > INT32_MAX) return DF_NO_MEMORY;
    if (const int st = check_build(t, 3); st != DF_OK) return st;
    return w(t);
}

}  // namespace
}  // namespace orv::df

using namespace orv::df;

ORV_EXPORT int orv_df_kernel_dDFQuadraticSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps*) {
    return quadratic_entry<double>(t);
}
ORV_EXPORT int orv_df_kernel_sDFQuadraticSpline1D(DFTask* t, int64_t, int64_t,
                                                     const DFThreadOps*) {
    return quadratic_entry<float>(t);
}
