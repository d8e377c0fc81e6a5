/* Public summary statistics: checked task creation and editing, and one
 * compute call that sends each asked estimate to the entry that computes it.
 *
 * A task made here reads its integers (p, n, storage words, counts, masks)
 * as 64-bit values, and its reals in the precision of the creator used
 * (vstd... double, vsts... float). The task holds pointers into the
 * caller's arrays, which must outlive it: nothing is copied.
 *
 * Every call returns 0 or a negative status: the SS_ERR_ codes of
 * <orv/stats.h>, plus the two below. A refused call writes nothing, neither
 * in the task nor in a result array. */
#ifndef ORV_ORV_STATS_H
#define ORV_ORV_STATS_H

#include <stdint.h>
#include <orv/stats.h>
#include <orv/threading.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The task was made for the other precision (a double call on a task made
 * by vstsSSNewTask or the reverse), or with 32-bit integers by the kernel
 * creator where a 64-bit value is given. */
#define SS_ERR_TASK_PRECISION  (-4101)
/** The estimate word holds a bit that no present entry computes. */
#define SS_ERR_ESTIMATE        (-4102)

/** Estimates routed to the sort entry by vst[ds]SSCompute (the sort entry
 * itself has no estimate bit). */
#define SS_EST_SORTED          0x8000000000000000ULL

/** Create a task over the p by n observations x laid out as *storage says
 * (SS_STORAGE_BY_VARIABLE or SS_STORAGE_BY_OBSERVATION). weights (n reals)
 * and indices (p integers, non-zero where the variable takes part) may be
 * null. Refusals: SS_ERR_NULL_TASK for a null handle, SS_ERR_DIMENSION for a
 * null p or p below 1, SS_ERR_OBSERVATIONS for a null n or n below 1,
 * SS_ERR_STORAGE_WORD for a null storage, SS_ERR_STORAGE_VALUE for another
 * storage value, SS_ERR_NULL_DATA for a null x, SS_ERR_NO_MEMORY when p times
 * n reals cannot be addressed or the record cannot be allocated. On a refusal
 * *task is left alone. */
ORV_API int32_t vstdSSNewTask(SsTask** task, const int64_t* p, const int64_t* n,
                              const int64_t* storage, const double* x, const double* weights,
                              const int64_t* indices);
ORV_API int32_t vstsSSNewTask(SsTask** task, const int64_t* p, const int64_t* n,
                              const int64_t* storage, const float* x, const float* weights,
                              const int64_t* indices);

/** Free the record and the state it owns, and set *task to null. The
 * caller's arrays are not touched. SS_ERR_NULL_TASK for a null handle. */
ORV_API int32_t vstSSDeleteTask(SsTask** task);

/** Point one field at the caller's value (parameter numbers SS_ED_<field>).
 * vstiSSEditTask takes the integer fields; a value for p, n or a layout word
 * is checked as at creation (and p times n against overflow) before it is
 * stored. vstdSSEditTask / vstsSSEditTask take the real fields of a task of
 * their precision. Refusals: SS_ERR_NULL_TASK, SS_ERR_TASK_PRECISION,
 * SS_ERR_BAD_PARAMETER_NUMBER for a number of the other side, the field's
 * status for a null value, and the creation statuses for bad p, n or
 * storage values. */
ORV_API int32_t vstiSSEditTask(SsTask* task, int32_t parameter, const int64_t* value);
ORV_API int32_t vstdSSEditTask(SsTask* task, int32_t parameter, const double* value);
ORV_API int32_t vstsSSEditTask(SsTask* task, int32_t parameter, const float* value);

/** Grouped edits: a null value keeps the field. Storage forms are integers.
 * Refusals: SS_ERR_NULL_TASK, SS_ERR_TASK_PRECISION. */
ORV_API int32_t vstdSSEditMoments(SsTask* task, const double* mean, const double* raw2,
                                  const double* raw3, const double* raw4, const double* central2,
                                  const double* central3, const double* central4);
ORV_API int32_t vstsSSEditMoments(SsTask* task, const float* mean, const float* raw2,
                                  const float* raw3, const float* raw4, const float* central2,
                                  const float* central3, const float* central4);
ORV_API int32_t vstdSSEditCovCor(SsTask* task, const double* mean, const double* cov,
                                 const int64_t* cov_storage, const double* cor,
                                 const int64_t* cor_storage);
ORV_API int32_t vstsSSEditCovCor(SsTask* task, const float* mean, const float* cov,
                                 const int64_t* cov_storage, const float* cor,
                                 const int64_t* cor_storage);
ORV_API int32_t vstdSSEditQuantiles(SsTask* task, const int64_t* quantile_count,
                                    const double* quantile_orders, const double* quantiles,
                                    const double* order_stats, const int64_t* order_stats_storage);
ORV_API int32_t vstsSSEditQuantiles(SsTask* task, const int64_t* quantile_count,
                                    const float* quantile_orders, const float* quantiles,
                                    const float* order_stats, const int64_t* order_stats_storage);

/** Compute the estimates asked by the bits of `estimates` (SS_EST_...), each
 * by the entry that computes it, with the front end's OpenMP threading
 * table:
 *   basic moments, sums, covariance, correlation, cross-product -> basic
 *   SS_EST_MIN, SS_EST_MAX                                      -> min/max
 *   SS_EST_QUANTILES, SS_EST_ORDER_STATS                        -> quantiles
 *   SS_EST_SORTED                                               -> sort
 * Each entry reads only the method bits it knows; an entry given none of
 * them uses its default: the running method for basic statistics and for
 * min/max (pass SS_METHOD_PLAIN_SUMS or SS_METHOD_GIVEN_MEAN to choose
 * another), the only method of the others. A first call (accumulated weights
 * absent or 0) starts minimum and maximum from +inf and -inf; a continuing
 * call carries them on, as it carries the moments.
 * Every entry's arguments are checked before any of them runs, so a refused
 * call writes nothing (bar a failed allocation inside an entry, which returns
 * SS_ERR_NO_MEMORY with earlier results written). Refusals: SS_ERR_NULL_TASK,
 * SS_ERR_TASK_PRECISION, SS_ERR_ESTIMATE, the statuses of the entries
 * (missing arrays, method, storage), SS_ERR_DIMENSION / SS_ERR_OBSERVATIONS /
 * SS_ERR_NULL_DATA when p, n or x are missing or p or n below 1, and
 * SS_ERR_NO_MEMORY when p times n reals cannot be addressed. */
ORV_API int32_t vstdSSCompute(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSCompute(SsTask* task, uint64_t estimates, uint64_t method);

#ifdef __cplusplus
}
#endif

#endif
