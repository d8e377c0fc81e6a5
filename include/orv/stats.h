/* Summary statistics: the task record, its parameter numbers, the status
 * codes, the estimate and method words, and the exported task functions and
 * compute entries. Plain C interface. */
#ifndef ORV_STATS_H
#define ORV_STATS_H

#include <stdint.h>
#include <orv/threading.h>

#if defined(ORV_BUILDING_KERNEL)
#define ORV_SS_API __attribute__((visibility("default")))
#else
#define ORV_SS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Status codes. 0 is success. */
#define SS_OK                               0
#define SS_ERR_BAD_PARAMETER_NUMBER         (-3)    /* editor does not own this parameter number */
#define SS_ERR_NO_MEMORY                    (-4000) /* allocation failed */
#define SS_ERR_DIMENSION                    (-4001) /* p missing or below 1 */
#define SS_ERR_OBSERVATIONS                 (-4002) /* n missing, below 1, or too small */
#define SS_ERR_STORAGE_VALUE                (-4003) /* storage word holds an unaccepted value */
#define SS_ERR_INDICES                      (-4004) /* indices missing or not the fixed set */
#define SS_ERR_WEIGHTS                      (-4005) /* weights missing (single-field edit) */
#define SS_ERR_MEAN                         (-4006) /* mean array missing */
#define SS_ERR_RAW2                         (-4007)
#define SS_ERR_RAW3                         (-4008)
#define SS_ERR_RAW4                         (-4009)
#define SS_ERR_CENTRAL2                     (-4010)
#define SS_ERR_CENTRAL3                     (-4011)
#define SS_ERR_CENTRAL4                     (-4012)
#define SS_ERR_KURTOSIS                     (-4013)
#define SS_ERR_SKEWNESS                     (-4014)
#define SS_ERR_MIN                          (-4015)
#define SS_ERR_MAX                          (-4016)
#define SS_ERR_VARIATION                    (-4017)
#define SS_ERR_COVARIANCE                   (-4018)
#define SS_ERR_CORRELATION                  (-4019)
#define SS_ERR_ACCUM_WEIGHTS                (-4020) /* accumulated weights missing where needed */
#define SS_ERR_QUANTILE_ORDERS              (-4021)
#define SS_ERR_QUANTILE_COUNT               (-4022)
#define SS_ERR_QUANTILES                    (-4023)
#define SS_ERR_ORDER_STATS                  (-4024)
#define SS_ERR_NO_GOOD_OBSERVATIONS         (-4026)
#define SS_ERR_ROBUST_COV                   (-4027)
#define SS_ERR_ROBUST_MEAN                  (-4028)
#define SS_ERR_METHOD                       (-4029) /* method word not accepted */
#define SS_ERR_GROUP_INDICES_MISSING        (-4030)
#define SS_ERR_NULL_TASK                    (-4031) /* record or handle address is null */
#define SS_ERR_NULL_DATA                    (-4032) /* observations matrix missing */
#define SS_ERR_COV_RANK                     (-4033)
#define SS_ERR_POOLED_COV                   (-4034)
#define SS_ERR_POOLED_MEAN                  (-4035)
#define SS_ERR_GROUP_COV                    (-4036)
#define SS_ERR_GROUP_MEANS                  (-4037)
#define SS_ERR_GROUP_VALUES                 (-4038)
#define SS_ERR_OUTLIER_PARAMS               (-4039)
#define SS_ERR_OUTLIER_PARAM_COUNT          (-4040)
#define SS_ERR_OUTLIER_WEIGHTS              (-4041)
#define SS_ERR_ROBUST_PARAMS                (-4042)
#define SS_ERR_ROBUST_PARAM_COUNT           (-4043)
#define SS_ERR_STORAGE_WORD                 (-4044) /* a storage word's pointer is null */
#define SS_ERR_PARTIAL_INDICES              (-4045)
#define SS_ERR_PARTIAL_COV                  (-4046)
#define SS_ERR_PARTIAL_COR                  (-4047)
#define SS_ERR_IMPUTE_PARAMS                (-4048)
#define SS_ERR_IMPUTE_PARAM_COUNT           (-4049)
#define SS_ERR_IMPUTE_PARAM_COUNT_VALUE     (-4050) /* imputation parameter count is not 5 */
#define SS_ERR_IMPUTE_INIT_COUNT            (-4052)
#define SS_ERR_IMPUTE_INIT                  (-4053)
#define SS_ERR_IMPUTE_SIMULATED             (-4054)
#define SS_ERR_IMPUTE_SIMULATED_COUNT       (-4055)
#define SS_ERR_IMPUTE_ESTIMATE_COUNT        (-4056)
#define SS_ERR_IMPUTE_ESTIMATES             (-4057)
#define SS_ERR_IMPUTE_PRIOR_COUNT           (-4061)
#define SS_ERR_IMPUTE_PRIOR                 (-4062)
#define SS_ERR_STREAM_PARAM_COUNT_MISSING   (-4064)
#define SS_ERR_STREAM_PARAMS                (-4065)
#define SS_ERR_STREAM_PARAM_COUNT           (-4066) /* count is not 1 */
#define SS_ERR_STREAM_EPSILON               (-4067) /* epsilon outside (0, 1] */
#define SS_ERR_STREAM_ORDERS                (-4068)
#define SS_ERR_STREAM_ORDER_VALUES          (-4069)
#define SS_ERR_STREAM_QUANTILES             (-4070)
#define SS_ERR_PARAMETRIZED_COR             (-4071)
#define SS_ERR_NOT_CORRELATION              (-4072)
#define SS_ERR_PARTIAL_INDEX_VALUE          (-4073)
#define SS_ERR_SUM1                         (-4074) /* first sum missing at compute time */
#define SS_ERR_SUM2                         (-4075)
#define SS_ERR_SUM3                         (-4076)
#define SS_ERR_SUM4                         (-4077)
#define SS_ERR_CENTRAL_SUM2                 (-4078)
#define SS_ERR_CENTRAL_SUM3                 (-4079)
#define SS_ERR_CENTRAL_SUM4                 (-4080)
#define SS_ERR_CROSS_PRODUCT                (-4081)
#define SS_ERR_MEDIAN_ABS_DEV               (-4082)
#define SS_ERR_MEAN_ABS_DEV                 (-4083)
#define SS_ERR_SORTED                       (-4084)
#define SS_ERR_SORT_IN_PLACE_INDICES        (-4085)
#define SS_ERR_EIGEN                        (-5000)
#define SS_ERR_LAPACK_SPECTRUM              (-5040)
#define SS_ERR_LAPACK_INVERT_FACTOR         (-5041)
#define SS_ERR_LAPACK_INVERT                (-5042)

/* Parameter numbers of the single-field editors: SS_ED_<field>. */
enum SsParameterNumber {
#define SS_PARAM(no, field, via, status, compute_status) SS_ED_##field = no,
#include <orv/ss_params.def>
#undef SS_PARAM
    SS_ED_COUNT = 79
};

/* Layout words of the observations matrix (and order statistics, sorted). */
#define SS_STORAGE_BY_VARIABLE     0x10000  /* element (j, i) at j*n + i */
#define SS_STORAGE_BY_OBSERVATION  0x20000  /* element (j, i) at i*p + j */

/* Matrix storage forms (only the two low bits are read). */
#define SS_MATRIX_FULL          0
#define SS_MATRIX_LOWER_PACKED  1
#define SS_MATRIX_UPPER_PACKED  2

/* Estimate word bits. */
#define SS_EST_MEAN           0x1ULL
#define SS_EST_RAW2           0x2ULL
#define SS_EST_RAW3           0x4ULL
#define SS_EST_RAW4           0x8ULL
#define SS_EST_CENTRAL2       0x10ULL
#define SS_EST_CENTRAL3       0x20ULL
#define SS_EST_CENTRAL4       0x40ULL
#define SS_EST_KURTOSIS       0x80ULL
#define SS_EST_SKEWNESS       0x100ULL
#define SS_EST_VARIATION      0x200ULL
#define SS_EST_MIN            0x400ULL
#define SS_EST_MAX            0x800ULL
#define SS_EST_COV            0x1000ULL
#define SS_EST_COR            0x2000ULL
#define SS_EST_SUM1           0x2000000ULL
#define SS_EST_SUM2           0x4000000ULL
#define SS_EST_SUM3           0x8000000ULL
#define SS_EST_SUM4           0x10000000ULL
#define SS_EST_CENTRAL_SUM2   0x20000000ULL
#define SS_EST_CENTRAL_SUM3   0x40000000ULL
#define SS_EST_CENTRAL_SUM4   0x80000000ULL
#define SS_EST_CROSS_PRODUCT  0x100000000ULL
#define SS_EST_QUANTILES      0x10000ULL   /* _vstdSSQuantiles: quantiles */
#define SS_EST_ORDER_STATS    0x20000ULL   /* _vstdSSQuantiles: sorted observations */
#define SS_EST_MEDIAN_ABS_DEV 0x200000000ULL /* _vstdSSMAD: median absolute deviation */
#define SS_EST_MEAN_ABS_DEV   0x400000000ULL /* _vstdSSMAD: mean absolute deviation */

/* Method word bits. */
#define SS_METHOD_PLAIN_SUMS   0x1ULL    /* power sums normalised by the total weight */
#define SS_METHOD_RUNNING      0x2ULL    /* one pass with running (Welford-style) updates */
#define SS_METHOD_GIVEN_MEAN   0x100ULL  /* central sums about the caller's mean */
#define SS_METHOD_FROM_SUMS    0x200ULL  /* no data pass: moments from sums */
#define SS_METHOD_FROM_SUMS_2  0x400ULL  /* same as SS_METHOD_FROM_SUMS */
#define SS_METHOD_RADIX        0x100000ULL  /* _vstdSSSort: radix sort */
#define SS_METHOD_STREAM_QUERY  0x40ULL  /* _vstdSSStreamQuantiles: summaries and quantiles */
#define SS_METHOD_STREAM_ONLY   0x80ULL  /* _vstdSSStreamQuantiles: summaries only */

typedef struct SsTask SsTask;
typedef void (*SsReleaseOp)(SsTask* task);

/* The task record. Every pointer field is an address in the caller's memory
 * (null until edited) except stream_state and carried_mean, which the task
 * owns. Integers reached through the record are 32-bit when int_is_64 is 0
 * and 64-bit when it is 1; reals are double or float as the compute entry. */
struct SsTask {
    int32_t int_is_64;
    uint8_t type_tag;  /* always 2 */
    int32_t is_double;
    void* dimension;
    void* observations;
    void* indices;
    void* data;
    void* weights;
    void* accum_weights;
    void* data_storage;
    void* parametrized_cor;
    void* parametrized_cor_storage;
    void* mean;
    void* raw2;
    void* raw3;
    void* raw4;
    void* central2;
    void* central3;
    void* central4;
    void* sum1;
    void* sum2;
    void* sum3;
    void* sum4;
    void* central_sum2;
    void* central_sum3;
    void* central_sum4;
    void* kurtosis;
    void* skewness;
    void* variation;
    void* minimum;
    void* maximum;
    void* cov_storage;
    void* cov;
    void* cor_storage;
    void* cor;
    void* cross_product_storage;
    void* cross_product;
    void* group_indices;
    void* group_flags;
    void* group_means;
    void* group_covs;
    void* group_cov_storage;
    void* pooled_mean;
    void* pooled_cov;
    void* pooled_cov_storage;
    void* quantile_count;
    void* quantile_orders;
    void* quantiles;
    void* order_stats;
    void* order_stats_storage;
    void* stream_order_count;
    void* stream_orders;
    void* stream_quantiles;
    void* stream_state;
    void* stream_param_count;
    void* stream_params;
    void* mean_abs_dev;
    void* median_abs_dev;
    void* robust_param_count;
    void* robust_params;
    void* robust_mean;
    void* robust_cov;
    void* robust_cov_storage;
    void* outlier_param_count;
    void* outlier_params;
    void* outlier_weights;
    void* partial_indices;
    void* partial_cov;
    void* partial_cov_storage;
    void* partial_cor;
    void* partial_cor_storage;
    void* impute_param_count;
    void* impute_params;
    void* impute_init_count;
    void* impute_init;
    void* impute_prior_count;
    void* impute_prior;
    void* impute_simulated_count;
    void* impute_simulated;
    void* impute_estimate_count;
    void* impute_estimates;
    void* distance_first;
    void* distance_end;
    void* distance_inv_cov;
    void* distance_mean;
    void* distances;
    void* distance_scratch;
    void* distance_scratch_length;
    int32_t release_count;
    SsReleaseOp release_ops[1];
    void* sorted;
    void* sorted_storage;
    void* carried_mean;
};

/* Creators: handle, &p, &n, &storage word, x, weights, indices, int_is_64. */
ORV_SS_API int32_t __vstdSSNewTask(SsTask** handle, const void* p, const void* n,
                                   const void* storage, const void* x, const void* weights,
                                   const void* indices, int32_t int_is_64);
ORV_SS_API int32_t __vstsSSNewTask(SsTask** handle, const void* p, const void* n,
                                   const void* storage, const void* x, const void* weights,
                                   const void* indices, int32_t int_is_64);
ORV_SS_API int32_t __vstSSDeleteTask(SsTask** handle);

/* Single-field editors: record, parameter number, address to store. */
ORV_SS_API int32_t __vstiSSEditTask(SsTask* task, int32_t parameter, const void* value);
ORV_SS_API int32_t __vstdSSEditTask(SsTask* task, int32_t parameter, const void* value);
ORV_SS_API int32_t __vstsSSEditTask(SsTask* task, int32_t parameter, const void* value);

/* Grouped editors: a null value keeps the field. Each d form and its s twin
 * are the same function. */
#define ORV_SS_GROUPED(name, ...) \
    ORV_SS_API int32_t __vstd##name(SsTask* task, __VA_ARGS__); \
    ORV_SS_API int32_t __vsts##name(SsTask* task, __VA_ARGS__);
#define V const void*
ORV_SS_GROUPED(SSEditMoments, V mean, V raw2, V raw3, V raw4, V central2, V central3, V central4)
ORV_SS_GROUPED(SSEditSums, V sum1, V sum2, V sum3, V sum4, V central_sum2, V central_sum3,
               V central_sum4)
ORV_SS_GROUPED(SSEditCovCor, V mean, V cov, V cov_storage, V cor, V cor_storage)
ORV_SS_GROUPED(SSEditCP, V mean, V sum1, V cross_product, V cross_product_storage)
ORV_SS_GROUPED(SSEditPartialCovCor, V partial_indices, V cov, V cov_storage, V cor,
               V cor_storage, V partial_cov, V partial_cov_storage, V partial_cor,
               V partial_cor_storage)
ORV_SS_GROUPED(SSEditQuantiles, V quantile_count, V quantile_orders, V quantiles,
               V order_stats, V order_stats_storage)
ORV_SS_GROUPED(SSEditStreamQuantiles, V stream_order_count, V stream_orders,
               V stream_quantiles, V stream_param_count, V stream_params)
ORV_SS_GROUPED(SSEditPooledCovariance, V group_indices, V pooled_mean, V pooled_cov,
               V group_flags, V group_means, V group_covs)
ORV_SS_GROUPED(SSEditRCov, V robust_cov_storage, V robust_param_count, V robust_params,
               V robust_mean, V robust_cov)
ORV_SS_GROUPED(SSEditMissingVals, V impute_param_count, V impute_params, V impute_init_count,
               V impute_init, V impute_prior_count, V impute_prior, V impute_simulated_count,
               V impute_simulated, V impute_estimate_count, V impute_estimates)
ORV_SS_GROUPED(SSEditOutDetect, V outlier_param_count, V outlier_params, V outlier_weights)
ORV_SS_GROUPED(SSEditMtxParametrz, V cor, V cor_storage, V parametrized_cor,
               V parametrized_cor_storage)
#undef V
#undef ORV_SS_GROUPED

/* Basic statistics over one block of observations (double and single). */
ORV_SS_API int32_t _vstdSSBasic(SsTask* task, uint64_t estimates, uint64_t method,
                                const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSBasic(SsTask* task, uint64_t estimates, uint64_t method,
                                const SsThreadingTable* threading);

/* Minimum (estimate SS_EST_MIN) and maximum (SS_EST_MAX) of each admitted
 * variable, accumulated from what minimum and maximum hold (method 0x1 or
 * 0x2). */
ORV_SS_API int32_t _vstdSSMinmax(SsTask* task, uint64_t estimates, uint64_t method,
                                 const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSMinmax(SsTask* task, uint64_t estimates, uint64_t method,
                                 const SsThreadingTable* threading);

/* Quantiles (SS_EST_QUANTILES) of the orders in quantile_orders, by linear
 * interpolation between order statistics, and the sorted observations
 * (SS_EST_ORDER_STATS) of each admitted variable, one compact row per
 * admitted variable (method 0x1). */
ORV_SS_API int32_t _vstdSSQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                    const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                    const SsThreadingTable* threading);

/* Each admitted variable's observations sorted ascending into a compact row
 * of `sorted` (layout by sorted_storage), method SS_METHOD_RADIX. Order:
 * -NaN, -inf, negatives, -0, +0, positives, +inf, +NaN. `sorted` may be
 * `data` (same layout, no indices). */
ORV_SS_API int32_t _vstdSSSort(SsTask* task, uint64_t estimates, uint64_t method,
                               const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSSort(SsTask* task, uint64_t estimates, uint64_t method,
                               const SsThreadingTable* threading);

/* Median absolute deviation (SS_EST_MEDIAN_ABS_DEV, method 0x1): the median
 * of |x - median| (unscaled), and mean absolute deviation
 * (SS_EST_MEAN_ABS_DEV): the (weighted) mean of |x - centre|, the centre
 * being mean[v] with method SS_METHOD_GIVEN_MEAN, else the (weighted) mean
 * (method 0x1). One result per variable at index v. */
ORV_SS_API int32_t _vstdSSMAD(SsTask* task, uint64_t estimates, uint64_t method,
                              const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSMAD(SsTask* task, uint64_t estimates, uint64_t method,
                              const SsThreadingTable* threading);

/* Weighted median (order quantile_orders[0]) of every variable into
 * quantiles[v], by the weights; estimate and method words are not read. */
ORV_SS_API int32_t _vstdSSWMedian(SsTask* task, uint64_t estimates, uint64_t method,
                                  const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSWMedian(SsTask* task, uint64_t estimates, uint64_t method,
                                  const SsThreadingTable* threading);

/* Streaming quantiles within rank error eps*N (eps = stream_params[0]) of the
 * N observations fed so far, from summaries kept in the task across calls
 * (Zhang-Wang). Method SS_METHOD_STREAM_QUERY feeds and answers into one
 * compact row of stream_quantiles per active variable; SS_METHOD_STREAM_ONLY
 * only feeds. The summaries are released with the task. */
ORV_SS_API int32_t _vstdSSStreamQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                          const SsThreadingTable* threading);
ORV_SS_API int32_t _vstsSSStreamQuantiles(SsTask* task, uint64_t estimates, uint64_t method,
                                          const SsThreadingTable* threading);
/* Releases the streaming summaries of a task and clears stream_state. */
ORV_SS_API void __vstSQuantilesFreeBuffers(SsTask* task);

/* In-place ascending sort of n reals (a stride apart), and selection of the
 * element of rank k (0-based), which leaves a partially ordered. Nothing
 * happens for n below 2 or a null array; a rank outside [0, n) gives NaN. */
ORV_SS_API void __vstdQSort(int64_t n, double* a);
ORV_SS_API void __vstsQSort(int64_t n, float* a);
ORV_SS_API void __vstdQSortStep(int64_t n, double* a, int64_t stride);
ORV_SS_API void __vstsQSortStep(int64_t n, float* a, int64_t stride);
ORV_SS_API double __vstdQSortSelect(int64_t n, double* a, int64_t k);
ORV_SS_API float __vstsQSortSelect(int64_t n, float* a, int64_t k);

#ifdef __cplusplus
}
#endif

#endif
