/* Checked front-end calls of data fitting: cell search, interpolation and
 * integration of a constructed spline task, run over the OpenMP table of
 * thread services. Every argument is checked before anything is written; a
 * refusal returns one of the negative statuses below (or the kernel's DF_
 * status for what the task itself says) and leaves every output untouched. */
#ifndef ORV_ORV_DATAFIT_H
#define ORV_ORV_DATAFIT_H

#include <orv/datafit_eval.h>
#include <orv/threading.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Refusals of the front end, checked in this order after DF_NULL_TASK (null
 * task) and DF_BAD_PRECISION (a d call on an s task, or the reverse). */
#define ORV_DF_BAD_COUNT (-2001)    /* nsite or nlim negative */
#define ORV_DF_NULL_SITES (-2002)   /* sites or limits null while the count is positive */
#define ORV_DF_BAD_SITEHINT (-2003) /* site or limit hint not 0, DF_SITES_UNIFORM, DF_SITES_SORTED */
#define ORV_DF_NULL_RESULT (-2004)  /* result or cell array null while the count is positive */
#define ORV_DF_BAD_ORDERS (-2005)   /* ndorder outside 0..64, dorder null, or a flag not 0 or 1 */
#define ORV_DF_TOO_LARGE (-2006)    /* the results would not fit in the address space */

/* Cells of nsite sites (cell convention of orv/datafit_eval.h), as 64-bit
 * integers whatever the task's integer width. With sitehint DF_SITES_UNIFORM
 * `site` holds the two ends of a uniform grid of nsite sites. */
ORV_API int orv_df_dsearch(DFTask* task, int64_t nsite, const double* site, int64_t sitehint,
                           int64_t* cell);
ORV_API int orv_df_ssearch(DFTask* task, int64_t nsite, const float* site, int64_t sitehint,
                           int64_t* cell);

/* Values and derivatives of every function at nsite sites. dorder[k] is 1 to
 * ask for the derivative of order k (k = 0 the value); ndorder 0 asks for
 * values. r holds ny * nsite * nd results, nd the number of orders asked, in
 * layout rhint (DF_R_*; 0 means DF_R_FUNCTION_SITE_ORDER). A non-null cell
 * receives the 64-bit cell of every site. */
ORV_API int orv_df_dinterpolate(DFTask* task, int64_t nsite, const double* site, int64_t sitehint,
                                int64_t ndorder, const int32_t* dorder, double* r, int64_t rhint,
                                int64_t* cell);
ORV_API int orv_df_sinterpolate(DFTask* task, int64_t nsite, const float* site, int64_t sitehint,
                                int64_t ndorder, const int32_t* dorder, float* r, int64_t rhint,
                                int64_t* cell);

/* Integrals of every function over nlim pairs (llim[i], rlim[i]); past the
 * partition the outermost polynomials extend. r holds ny * nlim results:
 * r[f*nlim + i] for rhint 0x10, r[i*ny + f] for rhint 0 or 0x20. */
ORV_API int orv_df_dintegrate(DFTask* task, int64_t nlim, const double* llim, int64_t llimhint,
                              const double* rlim, int64_t rlimhint, double* r, int64_t rhint);
ORV_API int orv_df_sintegrate(DFTask* task, int64_t nlim, const float* llim, int64_t llimhint,
                              const float* rlim, int64_t rlimhint, float* r, int64_t rhint);

#ifdef __cplusplus
}
#endif

#endif
