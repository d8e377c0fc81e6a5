/* Data fitting: cell search, interpolation and integration kernels, and the
 * user call-backs they accept. Plain C interface; every kernel returns 0 on
 * success or a negative DF_ code (or a call-back's negative status).
 *
 * Cells: cell 0 holds the sites left of x[0], cell i (1 <= i <= nx-1) the
 * sites with x[i-1] <= s < x[i], the right end x[nx-1] belongs to cell nx-1,
 * and cell nx holds the sites right of it. A NaN site is in cell nx. */
#ifndef ORV_DATAFIT_EVAL_H
#define ORV_DATAFIT_EVAL_H

#include <orv/datafit.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Site and limit hints. */
#define DF_SITES_UNIFORM 0x04 /* the array holds the two ends of a uniform grid */
#define DF_SITES_SORTED 0x40  /* the sites ascend */

/* Interpolation `type`: bit 1 also stores the cells found in `cell`; the
 * value 4 takes the cells from `cell` and runs no search. */
#define DF_INTERP_STORE_CELLS 0x02
#define DF_INTERP_CELLS_GIVEN 0x04

/* Result layouts of interpolation (rhint); f function, i site, d the rank of
 * the order among the requested ones, nd their count. 0 and 0x80 mean 0x10. */
#define DF_R_FUNCTION_SITE_ORDER 0x10  /* f*nsite*nd + i*nd + d */
#define DF_R_ORDER_FUNCTION_SITE 0x20  /* d*ny*nsite + f*nsite + i */
#define DF_R_SITE_FUNCTION_ORDER 0x100 /* i*ny*nd + f*nd + d */
#define DF_R_FUNCTION_ORDER_SITE 0x200 /* f*nd*nsite + d*nsite + i */
/* Result layouts of integration: 0x10 and 0x80 give f*nlim + i, 0 and 0x20 i*ny + f. */
#define DF_BAD_INTEGRATION_RHINT (-1034)

/* Search call-back: fills cells (int32 elements in the 32-bit forms, int64
 * otherwise) and one flag a site; a zero flag makes the kernel correct the
 * cell by a walk from it. Returning 1000 says every cell is final. Cells and
 * flags are cleared before the call. */
typedef int (*DFdSearchCallBack)(int64_t* n, const double* site, void* cell, int32_t* flag,
                                 void* params, void* word);
typedef int (*DFsSearchCallBack)(int64_t* n, const float* site, void* cell, int32_t* flag,
                                 void* params, void* word);
/* Evaluation call-back for a group of n sites (left of x[0], right of
 * x[nx-1], or inside): writes r[i*ny*nd + f*nd + d] for its sites i. */
typedef int (*DFdInterpCallBack)(int64_t* n, const int64_t* cell, const double* site, double* r,
                                 void* params, void* zero);
typedef int (*DFsInterpCallBack)(int64_t* n, const int64_t* cell, const float* site, float* r,
                                 void* params, void* zero);
/* Integration call-back for one piece [*llim, *rlim] (count always 1):
 * writes one result a function. */
typedef int (*DFdIntegrCallBack)(int64_t* n, const int64_t* lcell, const double* llim,
                                 const int64_t* rcell, const double* rlim, double* r, void* params,
                                 void* zero);
typedef int (*DFsIntegrCallBack)(int64_t* n, const int64_t* lcell, const float* llim,
                                 const int64_t* rcell, const float* rlim, float* r, void* params,
                                 void* zero);

/* Cell search of a batch by the task's partition. */
ORV_DF_API int orv_df_kernel_dDFSearch1D(DFTask* task, int64_t unused, int64_t nsite,
                                         const double* site, int64_t sitehint,
                                         const double* datahint, void* cell, DFdSearchCallBack cb,
                                         void* params, const DFThreadOps* ops);
ORV_DF_API int orv_df_kernel_sDFSearch1D(DFTask* task, int64_t unused, int64_t nsite,
                                         const float* site, int64_t sitehint,
                                         const float* datahint, void* cell, DFsSearchCallBack cb,
                                         void* params, const DFThreadOps* ops);

/* Search kernels: nx, x, n, site, running hint, scale, datahint, lut_size,
 * lut, cells. Forms: 32 (int32 cells), 64 (int64, computed in 64 bits),
 * 64Pack (int64 slots computed in 32 bits), and the unsuffixed form that
 * chooses by flags (bit 1 clear or both bits set: 64 or 64Pack by nx; bit 1
 * alone: 32). The user-defined kinds add the call-back, two words handed to
 * it and the flag array. */
#define ORV_DF_SEARCH_FORMS(t, T, name)                                                           \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D32(                                       \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, int32_t* cell);                  \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D64(                                       \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, int64_t* cell);                  \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D64Pack(                                   \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, int64_t* cell);                  \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D(                                         \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, void* cell, int64_t flags);
#define ORV_DF_USER_SEARCH_FORMS(t, T, name)                                                      \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D32(                                       \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, int32_t* cell,                   \
        DF##t##SearchCallBack cb, void* params, void* word, int32_t* flag);                       \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D64(                                       \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, int64_t* cell,                   \
        DF##t##SearchCallBack cb, void* params, void* word, int32_t* flag);                       \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D64Pack(                                   \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, int64_t* cell,                   \
        DF##t##SearchCallBack cb, void* params, void* word, int32_t* flag);                       \
    ORV_DF_API int orv_df_kernel_##t##DF##name##Search1D(                                         \
        int64_t nx, const T* x, int64_t n, const T* site, int64_t* hint, T scale,                 \
        const T* datahint, int64_t lut_size, const int64_t* lut, void* cell, int64_t flags,       \
        DF##t##SearchCallBack cb, void* params, void* word, int32_t* flag);
#define ORV_DF_SEARCH_KINDS(t, T)                \
    ORV_DF_SEARCH_FORMS(t, T, Uniform)           \
    ORV_DF_SEARCH_FORMS(t, T, QuasiUniform)      \
    ORV_DF_SEARCH_FORMS(t, T, Sorted)            \
    ORV_DF_SEARCH_FORMS(t, T, Peak)              \
    ORV_DF_SEARCH_FORMS(t, T, Hybrid)            \
    ORV_DF_USER_SEARCH_FORMS(t, T, UserDef)      \
    ORV_DF_USER_SEARCH_FORMS(t, T, UniUserDef)
ORV_DF_SEARCH_KINDS(d, double)
ORV_DF_SEARCH_KINDS(s, float)
#undef ORV_DF_SEARCH_KINDS
#undef ORV_DF_USER_SEARCH_FORMS
#undef ORV_DF_SEARCH_FORMS

/* Evaluation of every function of the task at a batch of sites. */
ORV_DF_API int orv_df_kernel_dDFInterpolate1D(
    DFTask* task, int64_t type, int64_t method, int64_t nsite, const double* site,
    int64_t sitehint, int64_t ndorder, const void* dorder, const double* datahint, double* r,
    int64_t rhint, void* cell, DFdInterpCallBack le_cb, void* le_params, DFdInterpCallBack re_cb,
    void* re_params, DFdInterpCallBack i_cb, void* i_params, DFdSearchCallBack search_cb,
    void* search_params, const DFThreadOps* ops);
ORV_DF_API int orv_df_kernel_sDFInterpolate1D(
    DFTask* task, int64_t type, int64_t method, int64_t nsite, const float* site,
    int64_t sitehint, int64_t ndorder, const void* dorder, const float* datahint, float* r,
    int64_t rhint, void* cell, DFsInterpCallBack le_cb, void* le_params, DFsInterpCallBack re_cb,
    void* re_params, DFsInterpCallBack i_cb, void* i_params, DFsSearchCallBack search_cb,
    void* search_params, const DFThreadOps* ops);

/* Definite integrals of every function over a batch of limit pairs. */
ORV_DF_API int orv_df_kernel_dDFIntegrate1D(
    DFTask* task, int64_t unused, int64_t nlim, const double* llim, int64_t llimhint,
    const double* rlim, int64_t rlimhint, const double* ldatahint, const double* rdatahint,
    double* r, int64_t rhint, DFdIntegrCallBack le_cb, void* le_params, DFdIntegrCallBack re_cb,
    void* re_params, DFdIntegrCallBack i_cb, void* i_params, DFdSearchCallBack search_cb,
    void* search_params, const DFThreadOps* ops);
ORV_DF_API int orv_df_kernel_sDFIntegrate1D(
    DFTask* task, int64_t unused, int64_t nlim, const float* llim, int64_t llimhint,
    const float* rlim, int64_t rlimhint, const float* ldatahint, const float* rdatahint, float* r,
    int64_t rhint, DFsIntegrCallBack le_cb, void* le_params, DFsIntegrCallBack re_cb,
    void* re_params, DFsIntegrCallBack i_cb, void* i_params, DFsSearchCallBack search_cb,
    void* search_params, const DFThreadOps* ops);

#ifdef __cplusplus
}
#endif

#endif
