// Natural cubic splines: C2 interpolating cubics whose breakpoint
// derivatives solve one tridiagonal system. The matrix depends only on the
// breakpoints, so it is factored once and all functions are solved together,
// one right-hand side each. The periodic system is cyclic; it is reduced to
// a tridiagonal one and closed with a rank-one (Sherman-Morrison) correction.
#include "datafit/df_task.h"

#include <emmintrin.h>

#include <climits>
#include <cmath>
#include <limits>
#include <type_traits>

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

// Whether x[i+1] > x[i] for every i (a NaN fails), two steps a lane for double.
template <typename T>
bool strictly_increasing(const T* x, int64_t n) {
    int64_t i = 0;
    bool up = true;
    if constexpr (std::is_same_v<T, double>) {
        __m128d bad = _mm_setzero_pd(), bad2 = _mm_setzero_pd();
        for (; i + 4 < n; i += 4) {
            const __m128d a = _mm_loadu_pd(x + i), b = _mm_loadu_pd(x + i + 2);
            const __m128d a1 = _mm_loadu_pd(x + i + 1), b1 = _mm_loadu_pd(x + i + 3);
            bad = _mm_or_pd(bad, _mm_cmpngt_pd(a1, a)), bad2 = _mm_or_pd(bad2, _mm_cmpngt_pd(b1, b));
        }
        for (; i + 2 < n; i += 2) bad = _mm_or_pd(bad, _mm_cmpngt_pd(_mm_loadu_pd(x + i + 1), _mm_loadu_pd(x + i)));
        up = _mm_movemask_pd(_mm_or_pd(bad, bad2)) == 0;
    }
    for (; i + 1 < n; ++i) up &= x[i + 1] > x[i];
    return up;
}

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

// Solves the columns whose right-hand sides stand at offset `at` of every
// coefficient block: in one call when the blocks are evenly spaced (so the
// columns overlap in the solver as before), otherwise block by block.
template <typename T>
int solve_columns(const DFTask* t, int64_t ny, int64_t m, int64_t at, const T* dl, const T* dd,
                  const T* du) {
    T* first = coeff_of<T>(t, 0) + at;
    int64_t stride = ny > 1 ? coeff_of<T>(t, 1) - coeff_of<T>(t, 0) : m;
    bool even = stride >= m && stride <= INT_MAX && ny <= INT_MAX;
    for (int64_t k = 2; even && k < ny; ++k) even = coeff_of<T>(t, k) - coeff_of<T>(t, 0) == k * stride;
    int info = 0;
    if (even) {
        Tridiag<T>::solve(static_cast<int>(m), static_cast<int>(ny), dl, dd, du, first,
                          static_cast<int>(stride), &info);
        return info;
    }
    for (int64_t k = 0; k < ny && info == 0; ++k)
        Tridiag<T>::solve(static_cast<int>(m), 1, dl, dd, du, coeff_of<T>(t, k) + at,
                          static_cast<int>(m), &info);
    return info;
}

// The derivatives d of function k are solved in the top n elements of its
// coefficient block (4(n-1) elements), and the cells are then written from
// the first on: cell i overwrites no derivative above d[i+1]. Scratch holds
// what all functions share: 1/h, the pivots, and the two off-diagonals
// unless they can sit below the derivatives of block 0, which is done when
// the factorisation cannot fail (strictly increasing breakpoints and a
// diagonally dominant matrix: every kind but not-a-knot), so that a refused
// system leaves every block as it was.
// One function on an increasing non-uniform partition with a diagonally
// dominant system (boundary kinds 1 to 5): the system is built, eliminated
// and solved in one forward and one backward pass, with no scratch. The
// forward pass runs the Thomas elimination through continuants (p[i] the
// leading principal minors, q[i] = p[i] times the eliminated right-hand
// side), so that its chain has no division, and leaves in the four slots of
// cell i the eliminated right-hand side, the multiplier of d[i+1], the slope
// and 1/h; the backward pass turns them into d and the cell's coefficients.
template <typename T, bool Cols, int BI>
void natural_fused(const DFTask* t, const T* x, int64_t n, T* c) {
    constexpr int kExp = std::numeric_limits<T>::max_exponent / 2;
    const T big = std::ldexp(T(1), kExp), tiny = std::ldexp(T(1), -kExp);
    const auto y = values_of<T, Cols>(t, 0);
    const T* bc = static_cast<const T*>(t->bc);
    // Row 0.
    T h0 = x[1] - x[0], rh0 = T(1) / h0, s0 = (y[1] - y[0]) * rh0;
    T b0 = T(2), c0 = T(1), r0 = T(3) * s0;
    if constexpr (BI == 2 || BI == 3) b0 = T(1), c0 = T(0), r0 = bc[0];
    if constexpr (BI == 4 || BI == 5) r0 = T(3) * s0 - T(0.5) * h0 * bc[0];
    T pm = T(1), pc = b0, q = r0;
    T inv = T(1) / pc;
    c[0] = q * inv, c[1] = c0 * inv, c[2] = s0, c[3] = rh0;
    T cprev = c0, hprev = h0, sprev = s0;
    // Interior rows i = 1 .. n-2: sub-diagonal h[i], diagonal 2 (x[i+1] - x[i-1]),
    // super-diagonal h[i-1]; right-hand side 3 (h[i] s[i-1] + h[i-1] s[i]).
    for (int64_t i = 1; i + 1 < n; ++i) {
        const T h = x[i + 1] - x[i], rh = T(1) / h, sl = (y[i + 1] - y[i]) * rh;
        const T a = h, b = T(2) * (x[i + 1] - x[i - 1]), r = T(3) * (h * sprev + hprev * sl);
        const T pn = b * pc - (a * cprev) * pm;
        q = r * pc - a * q;
        pm = pc;
        pc = pn;
        inv = T(1) / pc;
        T* ci = c + 4 * i;
        ci[0] = q * inv, ci[1] = hprev * pm * inv, ci[2] = sl, ci[3] = rh;
        cprev = hprev, hprev = h, sprev = sl;
        const T m = std::fabs(pc);
        if (m > big || m < tiny) {
            const int e = std::ilogb(pc);
            pc = std::ldexp(pc, -e), pm = std::ldexp(pm, -e), q = std::ldexp(q, -e);
        }
    }
    // Row n-1.
    T an = T(1), bn = T(2), rn = T(3) * sprev;
    if constexpr (BI == 2 || BI == 4) an = T(0), bn = T(1), rn = bc[1];
    if constexpr (BI == 3 || BI == 5) rn = T(3) * sprev + T(0.5) * hprev * bc[1];
    const T pn = bn * pc - (an * cprev) * pm;
    q = rn * pc - an * q;
    // Backward: d[i] = r'[i] - g[i] d[i+1], and cell i from d[i], d[i+1].
    // Two rows a step, d[i-1] = (r'[i-1] - g[i-1] r'[i]) + g[i-1] g[i] d[i+1], which
    // halves the chain of dependent operations.
    T d2 = q / pn;
    int64_t i = n - 2;
    if constexpr (std::is_same_v<T, double>) {
        // The two cells of a step side by side in one register (lane 0 cell
        // i-1, lane 1 cell i): the same operations in the same order.
        const __m128d two = _mm_set1_pd(2.0), three = _mm_set1_pd(3.0);
        for (; i >= 1; i -= 2) {
            double* c1 = c + 4 * i;
            double* c0 = c1 - 4;
            const double d1 = c1[0] - c1[1] * d2;
            const double d0 = (c0[0] - c0[1] * c1[0]) + (c0[1] * c1[1]) * d2;
            const __m128d a0 = _mm_loadu_pd(c0 + 2), a1 = _mm_loadu_pd(c1 + 2);
            const __m128d sl = _mm_unpacklo_pd(a0, a1), rh = _mm_unpackhi_pd(a0, a1);
            const __m128d da = _mm_set_pd(d1, d0), db = _mm_set_pd(d2, d1);
            const __m128d k2 = _mm_mul_pd(_mm_sub_pd(_mm_sub_pd(_mm_mul_pd(three, sl), _mm_mul_pd(two, da)), db), rh);
            const __m128d k3 = _mm_mul_pd(_mm_mul_pd(_mm_sub_pd(_mm_add_pd(da, db), _mm_mul_pd(two, sl)), rh), rh);
            const __m128d yv = _mm_set_pd(y[i], y[i - 1]);
            _mm_storeu_pd(c0, _mm_unpacklo_pd(yv, da));
            _mm_storeu_pd(c1, _mm_unpackhi_pd(yv, da));
            _mm_storeu_pd(c0 + 2, _mm_unpacklo_pd(k2, k3));
            _mm_storeu_pd(c1 + 2, _mm_unpackhi_pd(k2, k3));
            d2 = d0;
        }
    }
    for (; i >= 1; i -= 2) {
        T* c1 = c + 4 * i;
        T* c0 = c1 - 4;
        const T d1 = c1[0] - c1[1] * d2;
        const T d0 = (c0[0] - c0[1] * c1[0]) + (c0[1] * c1[1]) * d2;
        cubic_cell(c1, y[i], c1[2], d1, d2, c1[3]);
        cubic_cell(c0, y[i - 1], c0[2], d0, d1, c0[3]);
        d2 = d0;
    }
    if (i == 0) cubic_cell(c, y[0], c[2], c[0] - c[1] * d2, d2, c[3]);
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
    const int64_t at = 3 * n - 4;           // derivatives within a block
    bool increasing = Uniform ? g.h > T(0) : true;
    if constexpr (!Uniform) increasing = strictly_increasing(x, n);
    const bool host = !small && increasing && BI != 0;
    if constexpr (!Uniform && BI >= 1 && BI <= 5) {
        if (host && ny == 1) {
            natural_fused<T, Cols, BI>(t, x, n, coeff_of<T>(t, 0));
            return DF_OK;
        }
    }
    const int64_t rh_len = Uniform ? 0 : n - 1;
    const int64_t band_len = small ? 0 : (host ? m : 3 * m);
    const int64_t z_len = BI == 6 && !small ? m : 0;
    T* work = scratch<T>(rh_len + band_len + z_len + 1);
    if (work == nullptr) return DF_NO_MEMORY;
    T* rh_store = work;
    auto rh = [&](int64_t i) { if constexpr (Uniform) return g.r; else return rh_store[i]; };
    auto h = [&](int64_t i) { if constexpr (Uniform) return g.h; else return x[i + 1] - x[i]; };
    if constexpr (!Uniform)
        for (int64_t i = 0; i + 1 < n; ++i) rh_store[i] = T(1) / (x[i + 1] - x[i]);
    T* dd = work + rh_len;
    T* dl = host ? coeff_of<T>(t, 0) : dd + m;
    T* du = dl + m;
    T* z = work + rh_len + band_len;
    auto span = [&](int64_t i) { return Uniform ? g.h + g.h : x[i + 1] - x[i - 1]; };
    if (!small) {
        // Interior rows: continuity of the second derivative at x[i].
        for (int64_t i = 1; i + 1 < n; ++i) {
            dl[i - 1] = h(i);
            dd[i] = T(2) * span(i);
            du[i] = h(i - 1);
        }
        if constexpr (BI == 6) {
            // Cyclic rows 0 and m-1 with the corners h[0] and h[n-3] moved
            // into the rank-one term u v^T, u = (h[0], 0.., h[n-3]), v = (1, 0.., 1).
            dd[0] = T(2) * (h(n - 2) + h(0)) - h(0);
            du[0] = h(n - 2);
            if (m > 1) {
                dl[m - 2] = h(n - 2);
                dd[m - 1] = T(2) * (h(n - 3) + h(n - 2)) - h(n - 3);
            }
        } else {
            if constexpr (BI == 0) {
                dd[0] = h(1);
                du[0] = Uniform ? g.h + g.h : x[2] - x[0];
                dl[n - 2] = Uniform ? g.h + g.h : x[n - 1] - x[n - 3];
                dd[n - 1] = h(n - 3);
            }
            if constexpr (BI == 1 || BI == 4 || BI == 5) dd[0] = T(2), du[0] = T(1);
            if constexpr (BI == 2 || BI == 3) dd[0] = T(1), du[0] = T(0);
            if constexpr (BI == 1 || BI == 3 || BI == 5) dl[n - 2] = T(1), dd[n - 1] = T(2);
            if constexpr (BI == 2 || BI == 4) dl[n - 2] = T(0), dd[n - 1] = T(1);
        }
        int info = 0;
        Tridiag<T>::factor(static_cast<int>(m), dl, dd, du, &info);
        if (info != 0) {
            orv_serv_deallocate(work);
            return DF_SOLVER_FAILED;
        }
    }
    // Right-hand sides, one column per function.
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* b = coeff_of<T>(t, k) + at;
        if (small) {
            T s[2], hs[2];
            for (int64_t i = 0; i + 1 < n; ++i) s[i] = (y[i + 1] - y[i]) * rh(i), hs[i] = h(i);
            small_derivatives<T, BI>(n, hs, s, b);
            continue;
        }
        // Slopes first, then the interior rows from them, from the top down
        // so that each row still reads the slopes it needs.
        for (int64_t i = 0; i + 1 < n; ++i) b[i] = (y[i + 1] - y[i]) * rh(i);
        for (int64_t i = n - 2; i >= 1; --i) b[i] = T(3) * (h(i) * b[i - 1] + h(i - 1) * b[i]);
        const T s0 = (y[1] - y[0]) * rh(0), s1 = (y[2] - y[1]) * rh(1);
        const T sl = (y[n - 1] - y[n - 2]) * rh(n - 2), sl1 = (y[n - 2] - y[n - 3]) * rh(n - 3);
        if constexpr (BI == 6) {
            b[0] = T(3) * (h(0) * sl + h(n - 2) * s0);
        } else {
            if constexpr (BI == 0) {
                const T H = Uniform ? g.h + g.h : x[2] - x[0];
                const T Hl = Uniform ? g.h + g.h : x[n - 1] - x[n - 3];
                const T a = h(n - 3), bb = h(n - 2), h0 = h(0), h1 = h(1);
                b[0] = (s1 * h0 * h0 + s0 * h1 * (T(2) * H + h0)) / H;
                b[n - 1] = (sl1 * bb * bb + sl * a * (T(2) * Hl + bb)) / Hl;
            }
            if constexpr (BI == 1) b[0] = T(3) * s0, b[n - 1] = T(3) * sl;
            if constexpr (BI == 2 || BI == 3) b[0] = bc[0];
            if constexpr (BI == 2 || BI == 4) b[n - 1] = bc[1];
            if constexpr (BI == 4 || BI == 5) b[0] = T(3) * s0 - T(0.5) * h(0) * bc[0];
            if constexpr (BI == 3 || BI == 5) b[n - 1] = T(3) * sl + T(0.5) * h(n - 2) * bc[1];
        }
    }
    if (!small) {
        int info = solve_columns<T>(t, ny, m, at, dl, dd, du);
        if constexpr (BI == 6) {
            for (int64_t i = 0; i < m; ++i) z[i] = T(0);
            z[0] = h(0);
            z[m - 1] += h(n - 3);
            if (info == 0)
                Tridiag<T>::solve(static_cast<int>(m), 1, dl, dd, du, z, static_cast<int>(m), &info);
            const T f = T(1) / (z[0] + T(1) + z[m - 1]);
            for (int64_t k = 0; k < ny; ++k) {
                T* b = coeff_of<T>(t, k) + at;
                const T c = (b[0] + b[m - 1]) * f;
                for (int64_t i = 0; i < m; ++i) b[i] -= c * z[i];
                b[n - 1] = b[0];
            }
        }
        if (info != 0) {
            orv_serv_deallocate(work);
            return DF_SOLVER_FAILED;
        }
    }
    for (int64_t k = 0; k < ny; ++k) {
        const auto y = values_of<T, Cols>(t, k);
        T* c = coeff_of<T>(t, k);
        const T* d = c + at;
        T d0 = d[0];
        for (int64_t i = 0; i + 1 < n; ++i) {
            const T d1 = d[i + 1];
            cubic_cell(c + 4 * i, y[i], (y[i + 1] - y[i]) * rh(i), d0, d1, rh(i));
            d0 = d1;
        }
    }
    orv_serv_deallocate(work);
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

ORV_EXPORT int orv_df_kernel_dDFNaturalCubicSpline1D(DFTask* t, int64_t, int64_t method,
                                                        const DFThreadOps*) {
    return natural_entry<double>(t, method);
}
ORV_EXPORT int orv_df_kernel_sDFNaturalCubicSpline1D(DFTask* t, int64_t, int64_t method,
                                                        const DFThreadOps*) {
    return natural_entry<float>(t, method);
}
