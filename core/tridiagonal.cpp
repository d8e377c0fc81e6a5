// Tridiagonal solvers without pivoting (Gaussian elimination on the band,
// the Thomas algorithm), for many right-hand sides at once. The data-fitting
// systems are diagonally dominant, where no pivoting is needed.
#include <orv/orv_core.h>

#include <cmath>
#include <limits>

namespace {

inline bool is_n(const char* c) { return c && (*c == 'N' || *c == 'n'); }

// LU factors: L unit lower with multipliers in dl, U upper with pivots in d
// and the unchanged super-diagonal du. Pivot i is the ratio p[i]/p[i-1] of
// the continuants p[i+1] = d[i+1] p[i] - dl[i] du[i] p[i-1], p[-1] = 1: the
// recurrence has no division, so the divisions for the outputs run beside
// it instead of inside it. The rows go two a step, with e[i] = dl[i] du[i]:
//   p[i+2] = (d[i+2] d[i+1] - e[i+1]) p[i] - (d[i+2] e[i]) p[i-1],
// whose coefficients are formed off the chain, so that the chain of
// dependent operations is one multiply and one subtraction for two rows.
// The pair is rescaled by a power of two (exactly) when it drifts towards
// overflow or underflow: past a quarter of the exponent range in the
// two-row steps (two rows of growth and the products of the coefficients
// must stay finite), past half of it in the one-row tail.
template <typename T>
void factor(int n, T* dl, T* d, const T* du, int* info) {
    *info = 0;
    if (n <= 0) return;
    constexpr int kExp = std::numeric_limits<T>::max_exponent / 2;
    const T big = std::ldexp(T(1), kExp), small = std::ldexp(T(1), -kExp);
    const T big2 = std::ldexp(T(1), kExp / 2), small2 = std::ldexp(T(1), -kExp / 2);  // two-row steps
    T pm = T(1), pc = d[0], rm = T(1);
    if (pc == T(0)) { *info = 1; return; }
    // The pair (and the reciprocal of the older one) by a power of two once
    // pc leaves [lo, hi]; exact, and the pivots are ratios, so unchanged.
    const auto rescale = [&](T hi, T lo) {
        const T a = std::fabs(pc);
        if ((a > hi || a < lo) && std::isfinite(pc)) {
            const int e = std::ilogb(pc);
            pc = std::ldexp(pc, -e);
            pm = std::ldexp(pm, -e);
            rm = std::ldexp(rm, e);
        }
    };
    int i = 0;
    for (; i + 2 < n; i += 2) {
        const T e1 = dl[i] * du[i], e2 = dl[i + 1] * du[i + 1];
        const T b1 = d[i + 1], b2 = d[i + 2];
        const T p1 = b1 * pc - e1 * pm;
        const T p2 = (b2 * b1 - e2) * pc - (b2 * e1) * pm;
        const T rc = T(1) / pc;
        d[i] = pc * rm;
        dl[i] = dl[i] * pm * rc;
        if (p1 == T(0)) {
            d[i + 1] = T(0);
            *info = i + 2;
            return;
        }
        const T r1 = T(1) / p1;
        d[i + 1] = p1 * rc;
        dl[i + 1] = dl[i + 1] * pc * r1;
        if (p2 == T(0)) {
            d[i + 2] = T(0);
            *info = i + 3;
            return;
        }
        pm = p1;
        pc = p2;
        rm = r1;
        rescale(big2, small2);
    }
    for (; i < n - 1; ++i) {
        const T pn = d[i + 1] * pc - (dl[i] * du[i]) * pm;
        const T rc = T(1) / pc;
        d[i] = pc * rm;
        dl[i] = dl[i] * pm * rc;
        if (pn == T(0)) {
            d[i + 1] = T(0);
            *info = i + 2;
            return;
        }
        pm = pc;
        pc = pn;
        rm = rc;
        rescale(big, small);
    }
    d[n - 1] = pc * rm;
}

// A block of NB columns whose recurrences run side by side, so that one
// column's latency hides behind the others. The running values stay in
// registers; each row divides once and the block multiplies by the
// reciprocal pivot.
template <int NB, typename T>
void sweep_block(bool trans, int n, const T* dl, const T* d, const T* du, T* const* x) {
    T p[NB];
    if (!trans) {
        for (int j = 0; j < NB; ++j) p[j] = x[j][0];
        for (int i = 1; i < n; ++i) {  // L y = b
            const T l = dl[i - 1];
            for (int j = 0; j < NB; ++j) x[j][i] = p[j] = x[j][i] - l * p[j];
        }
        const T rl = T(1) / d[n - 1];  // U x = y
        for (int j = 0; j < NB; ++j) x[j][n - 1] = p[j] = x[j][n - 1] * rl;
        for (int i = n - 2; i >= 0; --i) {
            const T u = du[i], r = T(1) / d[i];
            for (int j = 0; j < NB; ++j) x[j][i] = p[j] = (x[j][i] - u * p[j]) * r;
        }
    } else {
        const T r0 = T(1) / d[0];  // U^T y = b
        for (int j = 0; j < NB; ++j) x[j][0] = p[j] = x[j][0] * r0;
        for (int i = 1; i < n; ++i) {
            const T u = du[i - 1], r = T(1) / d[i];
            for (int j = 0; j < NB; ++j) x[j][i] = p[j] = (x[j][i] - u * p[j]) * r;
        }
        for (int j = 0; j < NB; ++j) p[j] = x[j][n - 1];
        for (int i = n - 2; i >= 0; --i) {  // L^T x = y
            const T l = dl[i];
            for (int j = 0; j < NB; ++j) x[j][i] = p[j] = x[j][i] - l * p[j];
        }
    }
}

// One column without a transpose: nothing to overlap, so both sweeps advance
// two rows a step, y[i+1] = (b[i+1] - l[i] b[i]) + l[i] l[i-1] y[i-1], which
// halves the chain of dependent operations.
template <typename T>
void sweep_one(int n, const T* dl, const T* d, const T* du, T* y) {
    int i = 1;
    for (; i + 1 < n; i += 2) {
        const T yp = y[i - 1], bi = y[i];
        y[i] = bi - dl[i - 1] * yp;
        y[i + 1] = (y[i + 1] - dl[i] * bi) + (dl[i] * dl[i - 1]) * yp;
    }
    if (i < n) y[i] -= dl[i - 1] * y[i - 1];
    // Backward: y[i] = c[i] - g[i] y[i+1] with c = y/d, g = du/d.
    y[n - 1] *= T(1) / d[n - 1];
    i = n - 2;
    for (; i >= 1; i -= 2) {
        const T r1 = T(1) / d[i], r0 = T(1) / d[i - 1];
        const T c1 = y[i] * r1, g1 = du[i] * r1, c0 = y[i - 1] * r0, g0 = du[i - 1] * r0;
        const T yn = y[i + 1];
        y[i] = c1 - g1 * yn;
        y[i - 1] = (c0 - g0 * c1) + (g0 * g1) * yn;
    }
    if (i == 0) y[0] = (y[0] - du[0] * y[1]) * (T(1) / d[0]);
}

template <typename T>
void solve(bool trans, int n, int nrhs, const T* dl, const T* d, const T* du, T* b, int ldb) {
    constexpr int kBlock = 8;
    for (int j0 = 0; j0 < nrhs; j0 += kBlock) {
        const int nb = nrhs - j0 < kBlock ? nrhs - j0 : kBlock;
        T* x[kBlock];
        for (int j = 0; j < nb; ++j) x[j] = b + static_cast<long>(j0 + j) * ldb;
        switch (nb) {
            case 1:
                if (!trans) sweep_one(n, dl, d, du, x[0]);
                else sweep_block<1>(trans, n, dl, d, du, x);
                break;
            case 2: sweep_block<2>(trans, n, dl, d, du, x); break;
            case 3: sweep_block<3>(trans, n, dl, d, du, x); break;
            case 4: sweep_block<4>(trans, n, dl, d, du, x); break;
            case 5: sweep_block<5>(trans, n, dl, d, du, x); break;
            case 6: sweep_block<6>(trans, n, dl, d, du, x); break;
            case 7: sweep_block<7>(trans, n, dl, d, du, x); break;
            default: sweep_block<8>(trans, n, dl, d, du, x); break;
        }
    }
}

template <typename T>
int check(int n, int nrhs, int ldb) {
    if (n < 0) return -1;
    if (nrhs < 0) return -2;
    if (ldb < (n > 1 ? n : 1)) return -7;
    return 0;
}

template <typename T>
void dtsv(const int* n, const int* nrhs, T* dl, T* d, T* du, T* b, const int* ldb, int* info) {
    *info = check<T>(*n, *nrhs, *ldb);
    if (*info != 0 || *n == 0) return;
    factor(*n, dl, d, du, info);
    if (*info == 0) solve(false, *n, *nrhs, dl, d, du, b, *ldb);
}

template <typename T>
void dttrs(const char* trans, const int* n, const int* nrhs, const T* dl, const T* d, const T* du,
           T* b, const int* ldb, int* info) {
    *info = 0;
    if (!trans || !(is_n(trans) || *trans == 'T' || *trans == 't' || *trans == 'C' || *trans == 'c')) {
        *info = -1;
        return;
    }
    if (*n < 0) { *info = -2; return; }
    if (*nrhs < 0) { *info = -3; return; }
    if (*ldb < (*n > 1 ? *n : 1)) { *info = -8; return; }
    if (*n == 0 || *nrhs == 0) return;
    solve(!is_n(trans), *n, *nrhs, dl, d, du, b, *ldb);
}

}  // namespace

extern "C" {

void ddtsvb_4dfl(const int* n, const int* nrhs, double* dl, double* d, double* du, double* b,
                 const int* ldb, int* info) {
    dtsv(n, nrhs, dl, d, du, b, ldb, info);
}
void sdtsvb_4dfl(const int* n, const int* nrhs, float* dl, float* d, float* du, float* b,
                 const int* ldb, int* info) {
    dtsv(n, nrhs, dl, d, du, b, ldb, info);
}
void ddttrfb_4dfl(const int* n, double* dl, double* d, double* du, int* info) {
    if (*n < 0) { *info = -1; return; }
    factor(*n, dl, d, du, info);
}
void sdttrfb_4dfl(const int* n, float* dl, float* d, float* du, int* info) {
    if (*n < 0) { *info = -1; return; }
    factor(*n, dl, d, du, info);
}
void ddttrsb_4dfl(const char* trans, const int* n, const int* nrhs, const double* dl,
                  const double* d, const double* du, double* b, const int* ldb, int* info) {
    dttrs(trans, n, nrhs, dl, d, du, b, ldb, info);
}
void sdttrsb_4dfl(const char* trans, const int* n, const int* nrhs, const float* dl,
                  const float* d, const float* du, float* b, const int* ldb, int* info) {
    dttrs(trans, n, nrhs, dl, d, du, b, ldb, info);
}

}  // extern "C"
