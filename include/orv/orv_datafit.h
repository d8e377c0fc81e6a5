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

/** Refusals of the front end, checked in this order after DF_NULL_TASK (null
 * task) and DF_BAD_PRECISION (a d call on an s task, or the reverse). */
#define ORV_DF_BAD_COUNT (-2001)    /* nsite or nlim negative */
#define ORV_DF_NULL_SITES (-2002)   /* sites or limits null while the count is positive */
#define ORV_DF_BAD_SITEHINT (-2003) /* site or limit hint not 0, DF_SITES_UNIFORM, DF_SITES_SORTED */
#define ORV_DF_NULL_RESULT (-2004)  /* result or cell array null while the count is positive */
#define ORV_DF_BAD_ORDERS (-2005)   /* ndorder outside 0..64, dorder null, or a flag not 0 or 1 */
#define ORV_DF_TOO_LARGE (-2006)    /* the results would not fit in the address space */

/** Cells of nsite sites (cell convention of orv/datafit_eval.h), as 64-bit
 * integers whatever the task's integer width. With sitehint DF_SITES_UNIFORM
 * `site` holds the two ends of a uniform grid of nsite sites. */
ORV_API int orv_df_dsearch(DFTask* task, int64_t nsite, const double* site, int64_t sitehint,
                           int64_t* cell);
ORV_API int orv_df_ssearch(DFTask* task, int64_t nsite, const float* site, int64_t sitehint,
                           int64_t* cell);

/** Values and derivatives of every function at nsite sites. dorder[k] is 1 to
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

/** Integrals of every function over nlim pairs (llim[i], rlim[i]); past the
 * partition the outermost polynomials extend. r holds ny * nlim results:
 * r[f*nlim + i] for rhint 0x10, r[i*ny + f] for rhint 0 or 0x20. */
ORV_API int orv_df_dintegrate(DFTask* task, int64_t nlim, const double* llim, int64_t llimhint,
                              const double* rlim, int64_t rlimhint, double* r, int64_t rhint);
ORV_API int orv_df_sintegrate(DFTask* task, int64_t nlim, const float* llim, int64_t llimhint,
                              const float* rlim, int64_t rlimhint, float* r, int64_t rhint);

/** Building a spline: checked creation, editing and construction. */
#define ORV_DF_BAD_BREAKPOINTS (-2007) /* breakpoints not finite or not strictly increasing */
#define ORV_DF_SHORT_COEFFS (-2008)    /* coefficient array shorter than order and kind need */

/** Cubic kinds (stype with sorder DF_PP_CUBIC) and the constructor each selects. */
#define ORV_DF_CUBIC_NATURAL 0 /* tridiagonal system for the first derivatives */
#define ORV_DF_CUBIC_AKIMA 2   /* Akima's local slopes */
#define ORV_DF_CUBIC_HERMITE 3 /* first derivatives given in ic */
#define ORV_DF_CUBIC_BESSEL 4  /* three-point parabola slopes */
#define ORV_DF_CUBIC_HYMAN 5   /* monotonicity-preserving (Hyman's filter) */
#define ORV_DF_CUBIC_DEFAULT 9 /* second derivatives given in ic */

/** A task over nx breakpoints x (xhint DF_X_*; with DF_X_UNIFORM x holds the
 * two ends) and ny functions y (yhint DF_Y_ROWS or DF_Y_COLUMNS), with 64-bit
 * integers. The breakpoints must be finite and strictly increasing; they are
 * checked here and again at each construction, since they stay the caller's
 * array (it must outlive the task: nothing is copied). Refusals: DF_NULL_TASK
 * for a null handle, DF_BAD_NX for nx below 2, DF_NULL_X, DF_BAD_XHINT,
 * ORV_DF_BAD_BREAKPOINTS, and the kernel's statuses for ny, y and yhint.
 * *task is left alone on a refusal. */
ORV_API int orv_df_dnew_task(DFTask** task, int64_t nx, const double* x, int64_t xhint,
                             int64_t ny, const double* y, int64_t yhint);
ORV_API int orv_df_snew_task(DFTask** task, int64_t nx, const float* x, int64_t xhint,
                             int64_t ny, const float* y, int64_t yhint);
ORV_API int orv_df_delete_task(DFTask** task);

/** Order (DF_PP_LINEAR, DF_PP_QUADRATIC, DF_PP_CUBIC) and kind of the spline,
 * boundary and internal conditions, and the coefficient array scoeff of
 * ncoeff elements, one block of (nx-1)*sorder per function, function after
 * function (nx*sorder for the quadratic on secondary knots). Refusals:
 * DF_NULL_TASK, DF_BAD_PRECISION, DF_BAD_SORDER for an order without a
 * constructor, DF_BAD_STYPE for a kind the order has not, DF_NULL_SCOEFF,
 * ORV_DF_SHORT_COEFFS (these store nothing), and the kernel editor's
 * statuses for the conditions. */
ORV_API int orv_df_dedit_spline(DFTask* task, int64_t sorder, int64_t stype, int64_t bc_type,
                                const double* bc, int64_t ic_type, const double* ic,
                                double* scoeff, int64_t ncoeff);
ORV_API int orv_df_sedit_spline(DFTask* task, int64_t sorder, int64_t stype, int64_t bc_type,
                                const float* bc, int64_t ic_type, const float* ic,
                                float* scoeff, int64_t ncoeff);

/** Build the coefficients with the constructor of the task's order and kind.
 * Refusals: DF_NULL_TASK, DF_BAD_PRECISION, ORV_DF_BAD_BREAKPOINTS,
 * DF_BAD_SORDER / DF_BAD_STYPE, and the constructor's statuses. Only the
 * coefficient array is written. */
ORV_API int orv_df_dconstruct(DFTask* task);
ORV_API int orv_df_sconstruct(DFTask* task);

#ifdef __cplusplus
}
#endif

#endif
