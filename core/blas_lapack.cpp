// BLAS and LAPACK entry points of orv_core. Each forwards to the system's
// BLAS or LAPACK routine of the same argument list; the packed triangular
// multiply is a loop of packed triangular matrix-vector products.
#include <orv/orv_core.h>

extern "C" {
// Fortran symbols of the system's BLAS and LAPACK (32-bit integers).
void dgemm_(const char*, const char*, const int*, const int*, const int*, const double*,
            const double*, const int*, const double*, const int*, const double*, double*,
            const int*);
void sgemm_(const char*, const char*, const int*, const int*, const int*, const float*,
            const float*, const int*, const float*, const int*, const float*, float*, const int*);
void dgemv_(const char*, const int*, const int*, const double*, const double*, const int*,
            const double*, const int*, const double*, double*, const int*);
void sgemv_(const char*, const int*, const int*, const float*, const float*, const int*,
            const float*, const int*, const float*, float*, const int*);
void dsyr_(const char*, const int*, const double*, const double*, const int*, double*, const int*);
void ssyr_(const char*, const int*, const float*, const float*, const int*, float*, const int*);
void dsyrk_(const char*, const char*, const int*, const int*, const double*, const double*,
            const int*, const double*, double*, const int*);
void ssyrk_(const char*, const char*, const int*, const int*, const float*, const float*,
            const int*, const float*, float*, const int*);
void dtrmm_(const char*, const char*, const char*, const char*, const int*, const int*,
            const double*, const double*, const int*, double*, const int*);
void strmm_(const char*, const char*, const char*, const char*, const int*, const int*,
            const float*, const float*, const int*, float*, const int*);
void dtpmv_(const char*, const char*, const char*, const int*, const double*, double*, const int*);
void stpmv_(const char*, const char*, const char*, const int*, const float*, float*, const int*);
void dscal_(const int*, const double*, double*, const int*);
void sscal_(const int*, const float*, float*, const int*);
void dpotrf_(const char*, const int*, double*, const int*, int*);
void spotrf_(const char*, const int*, float*, const int*, int*);
void dpotri_(const char*, const int*, double*, const int*, int*);
void spotri_(const char*, const int*, float*, const int*, int*);
void dtrtri_(const char*, const char*, const int*, double*, const int*, int*);
void strtri_(const char*, const char*, const int*, float*, const int*, int*);
void dsyev_(const char*, const char*, const int*, double*, const int*, double*, double*,
            const int*, int*);
void ssyev_(const char*, const char*, const int*, float*, const int*, float*, float*, const int*,
            int*);
void dspevd_(const char*, const char*, const int*, double*, double*, double*, const int*, double*,
             const int*, int*, const int*, int*);
void sspevd_(const char*, const char*, const int*, float*, float*, float*, const int*, float*,
             const int*, int*, const int*, int*);
}

namespace {

inline bool is(const char* c, char u) { return c && (*c == u || *c == u + ('a' - 'A')); }

// B := alpha * op(A) * B (side L, each column of B) or alpha * B * op(A)
// (side R, each row of B: x^T op(A) = (op(A)^T x)^T, so the transpose flips).
template <typename T, typename Tpmv, typename Scal>
void packed_trmm(Tpmv tpmv, Scal scal, const char* side, const char* uplo, const char* transa,
                 const char* diag, const int* m, const int* n, const T* alpha, const T* ap, T* b,
                 const int* ldb) {
    if (*m <= 0 || *n <= 0) return;
    const int one = 1;
    if (is(side, 'L')) {
        for (int j = 0; j < *n; ++j) {
            T* col = b + static_cast<long>(j) * *ldb;
            tpmv(uplo, transa, diag, m, ap, col, &one);
            if (*alpha != T(1)) scal(m, alpha, col, &one);
        }
    } else {
        const char flipped = is(transa, 'N') ? 'T' : 'N';
        for (int i = 0; i < *m; ++i) {
            T* row = b + i;
            tpmv(uplo, &flipped, diag, n, ap, row, ldb);
            if (*alpha != T(1)) scal(n, alpha, row, ldb);
        }
    }
}

}  // namespace

extern "C" {

void orv_blas_dgemm(const char* ta, const char* tb, const int* m, const int* n, const int* k,
                    const double* alpha, const double* a, const int* lda, const double* b,
                    const int* ldb, const double* beta, double* c, const int* ldc) {
    dgemm_(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
void orv_blas_sgemm(const char* ta, const char* tb, const int* m, const int* n, const int* k,
                    const float* alpha, const float* a, const int* lda, const float* b,
                    const int* ldb, const float* beta, float* c, const int* ldc) {
    sgemm_(ta, tb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
void orv_blas_dgemv(const char* t, const int* m, const int* n, const double* alpha,
                    const double* a, const int* lda, const double* x, const int* incx,
                    const double* beta, double* y, const int* incy) {
    dgemv_(t, m, n, alpha, a, lda, x, incx, beta, y, incy);
}
void orv_blas_sgemv(const char* t, const int* m, const int* n, const float* alpha, const float* a,
                    const int* lda, const float* x, const int* incx, const float* beta, float* y,
                    const int* incy) {
    sgemv_(t, m, n, alpha, a, lda, x, incx, beta, y, incy);
}
void orv_blas_dsyr(const char* uplo, const int* n, const double* alpha, const double* x,
                   const int* incx, double* a, const int* lda) {
    dsyr_(uplo, n, alpha, x, incx, a, lda);
}
void orv_blas_ssyr(const char* uplo, const int* n, const float* alpha, const float* x,
                   const int* incx, float* a, const int* lda) {
    ssyr_(uplo, n, alpha, x, incx, a, lda);
}
void orv_blas_dsyrk(const char* uplo, const char* t, const int* n, const int* k,
                    const double* alpha, const double* a, const int* lda, const double* beta,
                    double* c, const int* ldc) {
    dsyrk_(uplo, t, n, k, alpha, a, lda, beta, c, ldc);
}
void orv_blas_ssyrk(const char* uplo, const char* t, const int* n, const int* k,
                    const float* alpha, const float* a, const int* lda, const float* beta,
                    float* c, const int* ldc) {
    ssyrk_(uplo, t, n, k, alpha, a, lda, beta, c, ldc);
}
void orv_blas_dtrmm(const char* s, const char* u, const char* t, const char* d, const int* m,
                    const int* n, const double* alpha, const double* a, const int* lda, double* b,
                    const int* ldb) {
    dtrmm_(s, u, t, d, m, n, alpha, a, lda, b, ldb);
}
void orv_blas_strmm(const char* s, const char* u, const char* t, const char* d, const int* m,
                    const int* n, const float* alpha, const float* a, const int* lda, float* b,
                    const int* ldb) {
    strmm_(s, u, t, d, m, n, alpha, a, lda, b, ldb);
}
void orv_blas_xdtrmm_4vtm(const char* s, const char* u, const char* t, const char* d,
                          const int* m, const int* n, const double* alpha, const double* a,
                          const int* lda, double* b, const int* ldb) {
    dtrmm_(s, u, t, d, m, n, alpha, a, lda, b, ldb);
}
void orv_blas_xstrmm_4vtm(const char* s, const char* u, const char* t, const char* d,
                          const int* m, const int* n, const float* alpha, const float* a,
                          const int* lda, float* b, const int* ldb) {
    strmm_(s, u, t, d, m, n, alpha, a, lda, b, ldb);
}
void orv_blas4vtm_dtrmm(const char* s, const char* u, const char* t, const char* d, const int* m,
                        const int* n, const double* alpha, const double* a, const int* lda,
                        double* b, const int* ldb) {
    dtrmm_(s, u, t, d, m, n, alpha, a, lda, b, ldb);
}
void orv_blas4vtm_strmm(const char* s, const char* u, const char* t, const char* d, const int* m,
                        const int* n, const float* alpha, const float* a, const int* lda,
                        float* b, const int* ldb) {
    strmm_(s, u, t, d, m, n, alpha, a, lda, b, ldb);
}
void orv_blas4vtm_dptrmm(const char* s, const char* u, const char* t, const char* d, const int* m,
                         const int* n, const double* alpha, const double* ap, double* b,
                         const int* ldb) {
    packed_trmm<double>(dtpmv_, dscal_, s, u, t, d, m, n, alpha, ap, b, ldb);
}
void orv_blas4vtm_sptrmm(const char* s, const char* u, const char* t, const char* d, const int* m,
                         const int* n, const float* alpha, const float* ap, float* b,
                         const int* ldb) {
    packed_trmm<float>(stpmv_, sscal_, s, u, t, d, m, n, alpha, ap, b, ldb);
}

void orv_lapack_dpotrf(const char* u, const int* n, double* a, const int* lda, int* info) {
    dpotrf_(u, n, a, lda, info);
}
void orv_lapack_spotrf(const char* u, const int* n, float* a, const int* lda, int* info) {
    spotrf_(u, n, a, lda, info);
}
void orv_lapack_dpotri(const char* u, const int* n, double* a, const int* lda, int* info) {
    dpotri_(u, n, a, lda, info);
}
void orv_lapack_spotri(const char* u, const int* n, float* a, const int* lda, int* info) {
    spotri_(u, n, a, lda, info);
}
void orv_lapack_dtrtri(const char* u, const char* d, const int* n, double* a, const int* lda,
                       int* info) {
    dtrtri_(u, d, n, a, lda, info);
}
void orv_lapack_strtri(const char* u, const char* d, const int* n, float* a, const int* lda,
                       int* info) {
    strtri_(u, d, n, a, lda, info);
}
void orv_lapack_dsyev(const char* j, const char* u, const int* n, double* a, const int* lda,
                      double* w, double* work, const int* lwork, int* info) {
    dsyev_(j, u, n, a, lda, w, work, lwork, info);
}
void orv_lapack_ssyev(const char* j, const char* u, const int* n, float* a, const int* lda,
                      float* w, float* work, const int* lwork, int* info) {
    ssyev_(j, u, n, a, lda, w, work, lwork, info);
}
void orv_lapack_dspevd(const char* j, const char* u, const int* n, double* ap, double* w,
                       double* z, const int* ldz, double* work, const int* lwork, int* iwork,
                       const int* liwork, int* info) {
    dspevd_(j, u, n, ap, w, z, ldz, work, lwork, iwork, liwork, info);
}
void orv_lapack_sspevd(const char* j, const char* u, const int* n, float* ap, float* w, float* z,
                       const int* ldz, float* work, const int* lwork, int* iwork,
                       const int* liwork, int* info) {
    sspevd_(j, u, n, ap, w, z, ldz, work, lwork, iwork, liwork, info);
}

}  // extern "C"
