/* orv_core: memory, locks, environment, messages, dense linear algebra and
 * tridiagonal solvers for the kernel library. Plain C interface. */
#ifndef ORV_CORE_H
#define ORV_CORE_H

#include <stddef.h>
#include <stdint.h>

#if defined(ORV_BUILDING_CORE)
#define ORV_CORE_API __attribute__((visibility("default")))
#else
#define ORV_CORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Memory. alignment must be a power of two (0 means 64); the block is
 * released with orv_serv_deallocate. Null on failure or on size 0. */
ORV_CORE_API void* orv_serv_allocate(size_t size, size_t alignment);
ORV_CORE_API void orv_serv_deallocate(void* block);

/* Bounded copy: 0 on success; EINVAL for null pointers, ERANGE when count
 * exceeds dest_size (dest is then cleared to dest_size zero bytes). */
ORV_CORE_API int orv_serv_memcpy_s(void* dest, size_t dest_size, const void* src, size_t count);

/* Lock objects: zero-initialised storage is an unlocked lock. */
typedef struct orv_lock_t { volatile int32_t state; } orv_lock_t;
ORV_CORE_API void orv_serv_lock(orv_lock_t* lock);
ORV_CORE_API void orv_serv_unlock(orv_lock_t* lock);

/* Copies the value of the environment variable into buf (NUL-terminated,
 * truncated to buf_len - 1 characters) and returns the number of characters
 * copied; 0 when unset or empty, -1 on bad arguments. */
ORV_CORE_API int orv_serv_getenv(const char* name, char* buf, int buf_len);

/* Prints catalogue message msg_no on channel (1: standard error) with argc
 * arguments whose types the catalogue knows (names as const char*, indices
 * as int, values as double). */
ORV_CORE_API void orv_serv_print(int channel, int msg_no, int argc, ...);
/* Writes the catalogue text of msg_no with its arguments into buf (at most
 * buf_len bytes with the NUL); returns the length of the full text, or -1
 * for an unknown message number. */
ORV_CORE_API int orv_serv_format(char* buf, int buf_len, int msg_no, int argc, ...);

/* Ends the process with the given code. */
ORV_CORE_API void orv_serv_exit(int code) __attribute__((noreturn));

/* 1 when the processor and the operating system support the vector AES
 * instructions on 512-bit registers (VAES with AVX-512), else 0. */
ORV_CORE_API int orv_serv_cpuisicx(void);

/* BLAS, with the published Fortran argument lists (every argument by
 * pointer, column-major storage), forwarding to the system's BLAS. */
ORV_CORE_API void orv_blas_dgemm(const char* transa, const char* transb, const int* m, const int* n,
                                 const int* k, const double* alpha, const double* a, const int* lda,
                                 const double* b, const int* ldb, const double* beta, double* c,
                                 const int* ldc);
ORV_CORE_API void orv_blas_sgemm(const char* transa, const char* transb, const int* m, const int* n,
                                 const int* k, const float* alpha, const float* a, const int* lda,
                                 const float* b, const int* ldb, const float* beta, float* c,
                                 const int* ldc);
ORV_CORE_API void orv_blas_dgemv(const char* trans, const int* m, const int* n, const double* alpha,
                                 const double* a, const int* lda, const double* x, const int* incx,
                                 const double* beta, double* y, const int* incy);
ORV_CORE_API void orv_blas_sgemv(const char* trans, const int* m, const int* n, const float* alpha,
                                 const float* a, const int* lda, const float* x, const int* incx,
                                 const float* beta, float* y, const int* incy);
ORV_CORE_API void orv_blas_dsyr(const char* uplo, const int* n, const double* alpha, const double* x,
                                const int* incx, double* a, const int* lda);
ORV_CORE_API void orv_blas_ssyr(const char* uplo, const int* n, const float* alpha, const float* x,
                                const int* incx, float* a, const int* lda);
ORV_CORE_API void orv_blas_dsyrk(const char* uplo, const char* trans, const int* n, const int* k,
                                 const double* alpha, const double* a, const int* lda,
                                 const double* beta, double* c, const int* ldc);
ORV_CORE_API void orv_blas_ssyrk(const char* uplo, const char* trans, const int* n, const int* k,
                                 const float* alpha, const float* a, const int* lda,
                                 const float* beta, float* c, const int* ldc);
ORV_CORE_API void orv_blas_dtrmm(const char* side, const char* uplo, const char* transa,
                                 const char* diag, const int* m, const int* n, const double* alpha,
                                 const double* a, const int* lda, double* b, const int* ldb);
ORV_CORE_API void orv_blas_strmm(const char* side, const char* uplo, const char* transa,
                                 const char* diag, const int* m, const int* n, const float* alpha,
                                 const float* a, const int* lda, float* b, const int* ldb);
/* Triangular multiply for small matrices and the general one, as used by
 * the multivariate Gaussian; same argument lists as dtrmm. */
ORV_CORE_API void orv_blas_xdtrmm_4vtm(const char* side, const char* uplo, const char* transa,
                                       const char* diag, const int* m, const int* n,
                                       const double* alpha, const double* a, const int* lda,
                                       double* b, const int* ldb);
ORV_CORE_API void orv_blas_xstrmm_4vtm(const char* side, const char* uplo, const char* transa,
                                       const char* diag, const int* m, const int* n,
                                       const float* alpha, const float* a, const int* lda,
                                       float* b, const int* ldb);
ORV_CORE_API void orv_blas4vtm_dtrmm(const char* side, const char* uplo, const char* transa,
                                     const char* diag, const int* m, const int* n,
                                     const double* alpha, const double* a, const int* lda,
                                     double* b, const int* ldb);
ORV_CORE_API void orv_blas4vtm_strmm(const char* side, const char* uplo, const char* transa,
                                     const char* diag, const int* m, const int* n,
                                     const float* alpha, const float* a, const int* lda, float* b,
                                     const int* ldb);
/* Packed triangular multiply: B := alpha * op(A) * B or alpha * B * op(A),
 * with A triangular in packed column storage (as dtpmv takes it). */
ORV_CORE_API void orv_blas4vtm_dptrmm(const char* side, const char* uplo, const char* transa,
                                      const char* diag, const int* m, const int* n,
                                      const double* alpha, const double* ap, double* b,
                                      const int* ldb);
ORV_CORE_API void orv_blas4vtm_sptrmm(const char* side, const char* uplo, const char* transa,
                                      const char* diag, const int* m, const int* n,
                                      const float* alpha, const float* ap, float* b,
                                      const int* ldb);

/* LAPACK, with the published argument lists, forwarding to the system's LAPACK. */
ORV_CORE_API void orv_lapack_dpotrf(const char* uplo, const int* n, double* a, const int* lda, int* info);
ORV_CORE_API void orv_lapack_spotrf(const char* uplo, const int* n, float* a, const int* lda, int* info);
ORV_CORE_API void orv_lapack_dpotri(const char* uplo, const int* n, double* a, const int* lda, int* info);
ORV_CORE_API void orv_lapack_spotri(const char* uplo, const int* n, float* a, const int* lda, int* info);
ORV_CORE_API void orv_lapack_dtrtri(const char* uplo, const char* diag, const int* n, double* a,
                                    const int* lda, int* info);
ORV_CORE_API void orv_lapack_strtri(const char* uplo, const char* diag, const int* n, float* a,
                                    const int* lda, int* info);
ORV_CORE_API void orv_lapack_dsyev(const char* jobz, const char* uplo, const int* n, double* a,
                                   const int* lda, double* w, double* work, const int* lwork, int* info);
ORV_CORE_API void orv_lapack_ssyev(const char* jobz, const char* uplo, const int* n, float* a,
                                   const int* lda, float* w, float* work, const int* lwork, int* info);
ORV_CORE_API void orv_lapack_dspevd(const char* jobz, const char* uplo, const int* n, double* ap,
                                    double* w, double* z, const int* ldz, double* work,
                                    const int* lwork, int* iwork, const int* liwork, int* info);
ORV_CORE_API void orv_lapack_sspevd(const char* jobz, const char* uplo, const int* n, float* ap,
                                    float* w, float* z, const int* ldz, float* work,
                                    const int* lwork, int* iwork, const int* liwork, int* info);

/* Tridiagonal systems without pivoting, many right-hand sides (column-major,
 * leading dimension ldb). dl, d, du: sub-, main and super-diagonal (n-1, n,
 * n-1). info: 0 on success, k > 0 when the k-th pivot is zero, -i when
 * argument i is bad. */
ORV_CORE_API void ddtsvb_4dfl(const int* n, const int* nrhs, double* dl, double* d, double* du,
                              double* b, const int* ldb, int* info);
ORV_CORE_API void sdtsvb_4dfl(const int* n, const int* nrhs, float* dl, float* d, float* du,
                              float* b, const int* ldb, int* info);
/* Factor: on exit dl holds the multipliers, d the pivots, du unchanged. */
ORV_CORE_API void ddttrfb_4dfl(const int* n, double* dl, double* d, double* du, int* info);
ORV_CORE_API void sdttrfb_4dfl(const int* n, float* dl, float* d, float* du, int* info);
/* Solve with the factors of ddttrfb_4dfl; trans "N" or "T". */
ORV_CORE_API void ddttrsb_4dfl(const char* trans, const int* n, const int* nrhs, const double* dl,
                               const double* d, const double* du, double* b, const int* ldb,
                               int* info);
ORV_CORE_API void sdttrsb_4dfl(const char* trans, const int* n, const int* nrhs, const float* dl,
                               const float* d, const float* du, float* b, const int* ldb,
                               int* info);

#ifdef __cplusplus
}
#endif

#endif
