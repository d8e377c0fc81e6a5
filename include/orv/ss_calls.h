/* Checked calls of the summary statistics: the compute entries with the
 * front end's threading table (OpenMP, orv_get_num_threads() threads).
 * Each returns the entry's status: SS_ERR_NULL_TASK for a null record,
 * SS_ERR_METHOD for a record made by the creator of the other precision,
 * and the statuses of the entry, checked before anything is written. */
#ifndef ORV_SS_CALLS_H
#define ORV_SS_CALLS_H

#include <orv/stats.h>
#include <orv/threading.h>

#ifdef __cplusplus
extern "C" {
#endif

ORV_API int32_t vstdSSBasic(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSBasic(SsTask* task, uint64_t estimates, uint64_t method);
/** Minimum and maximum, accumulated from what the arrays hold: seed them
 * (for example with +inf and -inf) before the first block. */
ORV_API int32_t vstdSSMinmax(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSMinmax(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstdSSQuantiles(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSQuantiles(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstdSSSort(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSSort(SsTask* task, uint64_t estimates, uint64_t method);
/* Median and mean absolute deviation, one result per variable at index v. */
ORV_API int32_t vstdSSMAD(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSMAD(SsTask* task, uint64_t estimates, uint64_t method);
/* Weighted quantile of order quantile_orders[0] into quantiles[v]: refuses a
 * missing p or n (SS_ERR_DIMENSION, SS_ERR_OBSERVATIONS), storage word
 * (SS_ERR_STORAGE_WORD), data, weights, orders or quantiles (their field
 * statuses); estimate and method words are not read. */
ORV_API int32_t vstdSSWMedian(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSWMedian(SsTask* task, uint64_t estimates, uint64_t method);
/* Streaming quantiles: feeds n observations into the task's summaries and,
 * with SS_METHOD_STREAM_QUERY, answers within eps*N ranks. */
ORV_API int32_t vstdSSStreamQuantiles(SsTask* task, uint64_t estimates, uint64_t method);
ORV_API int32_t vstsSSStreamQuantiles(SsTask* task, uint64_t estimates, uint64_t method);

#ifdef __cplusplus
}
#endif

#endif
