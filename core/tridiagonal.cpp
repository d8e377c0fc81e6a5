// Tridiagonal solvers without pivoting (Gaussian elimination on the band,
// the Thomas algorithm), for many right-hand sides at once. The data-fitting
// systems are diagonally dominant, where no pivoting is needed.
#include <orv/orv_core.h>

namespace {

inline bool is_n(const char* c) { return c && (*c == 'N' || *c == 'n'); }

// LU factors: L unit lower with multipliers in dl, U upper with pivots in d
// and the unchanged super-diagonal du.
template <typename T>
void factor(int n, T* dl, T* d, const T* du, int* info) {
    *info = 0;
    for (int i = 0; i < n - 1; ++i) {
        if (d[i] == T(0)) { *info = i + 1; return; }
        const T f = dl[i] / d[i];
        dl[i] = f;
        d[i + 1] -= f * du[i];
    }
    if (n > 0 && d[n - 1] == T(0)) *info = n;
}

template <typename T>
void solve(bool trans, int n, int nrhs, const T* dl, const T* d, const T* du, T* b, int ldb) {
    for (int j = 0; j < nrhs; ++j) {
        T* x = b + static_cast<long>(j) * ldb;
        if (!trans) {
            for (int i = 1; i < n; ++i) x[i] -= dl[i - 1] * x[i - 1];  // L y = b
            x[n - 1] /= d[n - 1];                                      // U x = y
            for (int i = n - 2; i >= 0; --i) x[i] = (x[i] - du[i] * x[i + 1]) / d[i];
        } else {
            x[0] /= d[0];                                              // U^T y = b
            for (int i = 1; i < n; ++i) x[i] = (x[i] - du[i - 1] * x[i - 1]) / d[i];
            for (int i = n - 2; i >= 0; --i) x[i] -= dl[i] * x[i + 1];  // L^T x = y
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
