// Task creation, the single-field and grouped editors, and deletion.
#include "stats/ss_task.h"

#include <array>
#include <cstddef>

namespace {

using namespace orv::ss;

enum Via : uint8_t { NONE = 0, INT = 1, REAL = 2 };

struct ParamRow {
    std::size_t offset;
    Via via;
    int32_t null_status;
};

// Rows 1..79 of the parameter list, by number; row 0 is unused.
constexpr std::array<ParamRow, 80> make_param_table() {
    std::array<ParamRow, 80> t{};
#define SS_PARAM(no, field, side, status, compute_status) t[no] = ParamRow{offsetof(SsTask, field), side, status};
#include <orv/ss_params.def>
#undef SS_PARAM
    return t;
}
constexpr std::array<ParamRow, 80> kParams = make_param_table();

int32_t edit(SsTask* task, int32_t parameter, const void* value, Via side) {
    if (!task) return SS_ERR_NULL_TASK;
    if (parameter < 1 || parameter > SS_ED_COUNT) return SS_ERR_BAD_PARAMETER_NUMBER;
    const ParamRow& row = kParams[static_cast<std::size_t>(parameter)];
    if (row.via != side) return SS_ERR_BAD_PARAMETER_NUMBER;
    if (!value) return row.null_status;
    void* field = reinterpret_cast<char*>(task) + row.offset;
    std::memcpy(field, &value, sizeof(void*));
    return SS_OK;
}

int32_t new_task(SsTask** handle, const void* p, const void* n, const void* storage,
                 const void* x, const void* weights, const void* indices, int32_t int_is_64,
                 int32_t is_double) {
    if (!handle) return SS_ERR_NULL_TASK;
    const int is64 = int_is_64 != 0;
    if (!p || read_int(p, is64) < 1) return SS_ERR_DIMENSION;
    if (x) {
        if (!storage) return SS_ERR_STORAGE_WORD;
        // Compared for equality with each layout, not masked.
        const int64_t word = read_int(storage, is64);
        if (word == SS_STORAGE_BY_VARIABLE || word == SS_STORAGE_BY_OBSERVATION) {
            if (!n || read_int(n, is64) < 1) return SS_ERR_OBSERVATIONS;
        } else {
            return SS_ERR_STORAGE_VALUE;
        }
    }
    auto* task = static_cast<SsTask*>(orv_serv_allocate(sizeof(SsTask), orv::kAlignment));
    *handle = task;
    if (!task) return SS_ERR_NO_MEMORY;
    std::memset(static_cast<void*>(task), 0, sizeof(SsTask));
    task->int_is_64 = is64;
    task->type_tag = kTypeTag;
    task->is_double = is_double;
    task->dimension = const_cast<void*>(p);
    task->observations = const_cast<void*>(n);
    task->data = const_cast<void*>(x);
    task->data_storage = const_cast<void*>(storage);
    task->weights = const_cast<void*>(weights);
    task->indices = const_cast<void*>(indices);
    return SS_OK;
}

// Grouped edits: a null value keeps the field as it is.
inline void keep_or_set(void*& field, const void* value) {
    if (value) field = const_cast<void*>(value);
}

}  // namespace

ORV_EXPORT int32_t __vstdSSNewTask(SsTask** handle, const void* p, const void* n,
                                      const void* storage, const void* x, const void* weights,
                                      const void* indices, int32_t int_is_64) {
    return new_task(handle, p, n, storage, x, weights, indices, int_is_64, 1);
}

ORV_EXPORT int32_t __vstsSSNewTask(SsTask** handle, const void* p, const void* n,
                                      const void* storage, const void* x, const void* weights,
                                      const void* indices, int32_t int_is_64) {
    return new_task(handle, p, n, storage, x, weights, indices, int_is_64, 0);
}

ORV_EXPORT int32_t __vstiSSEditTask(SsTask* task, int32_t parameter, const void* value) {
    return edit(task, parameter, value, INT);
}

ORV_EXPORT int32_t __vstdSSEditTask(SsTask* task, int32_t parameter, const void* value) {
    return edit(task, parameter, value, REAL);
}

ORV_EXPORT int32_t __vstsSSEditTask(SsTask* task, int32_t parameter, const void* value) {
    return edit(task, parameter, value, REAL);
}

ORV_EXPORT int32_t __vstSSDeleteTask(SsTask** handle) {
    if (!handle) return SS_ERR_NULL_TASK;
    SsTask* task = *handle;
    if (task) {
        if (task->carried_mean) orv_serv_deallocate(task->carried_mean);
        task->carried_mean = nullptr;
        for (int32_t i = 0; i < task->release_count; ++i) task->release_ops[i](task);
        orv_serv_deallocate(task);
    }
    *handle = nullptr;
    return SS_OK;
}

// One body per grouped editor; the s name is an alias of the d name.
#define V const void*
#define GROUPED(name, params, body)                                   \
    ORV_EXPORT int32_t __vstd##name params {                       \
        if (!task) return SS_ERR_NULL_TASK;                           \
        body return SS_OK;                                            \
    }                                                                 \
    ORV_EXPORT int32_t __vsts##name params __attribute__((alias("__vstd" #name)));
#define K(f) keep_or_set(task->f, f);

GROUPED(SSEditMoments,
        (SsTask* task, V mean, V raw2, V raw3, V raw4, V central2, V central3, V central4),
        K(mean) K(raw2) K(raw3) K(raw4) K(central2) K(central3) K(central4))
GROUPED(SSEditSums,
        (SsTask* task, V sum1, V sum2, V sum3, V sum4, V central_sum2, V central_sum3,
         V central_sum4),
        K(sum1) K(sum2) K(sum3) K(sum4) K(central_sum2) K(central_sum3) K(central_sum4))
GROUPED(SSEditCovCor, (SsTask* task, V mean, V cov, V cov_storage, V cor, V cor_storage),
        K(mean) K(cov) K(cov_storage) K(cor) K(cor_storage))
GROUPED(SSEditCP, (SsTask* task, V mean, V sum1, V cross_product, V cross_product_storage),
        K(mean) K(sum1) K(cross_product) K(cross_product_storage))
GROUPED(SSEditPartialCovCor,
        (SsTask* task, V partial_indices, V cov, V cov_storage, V cor, V cor_storage,
         V partial_cov, V partial_cov_storage, V partial_cor, V partial_cor_storage),
        K(partial_indices) K(cov) K(cov_storage) K(cor) K(cor_storage) K(partial_cov)
        K(partial_cov_storage) K(partial_cor) K(partial_cor_storage))
GROUPED(SSEditQuantiles,
        (SsTask* task, V quantile_count, V quantile_orders, V quantiles, V order_stats,
         V order_stats_storage),
        K(quantile_count) K(quantile_orders) K(quantiles) K(order_stats) K(order_stats_storage))
GROUPED(SSEditStreamQuantiles,
        (SsTask* task, V stream_order_count, V stream_orders, V stream_quantiles,
         V stream_param_count, V stream_params),
        K(stream_order_count) K(stream_orders) K(stream_quantiles) K(stream_param_count)
        K(stream_params))
GROUPED(SSEditPooledCovariance,
        (SsTask* task, V group_indices, V pooled_mean, V pooled_cov, V group_flags,
         V group_means, V group_covs),
        K(group_indices) K(pooled_mean) K(pooled_cov) K(group_flags) K(group_means)
        K(group_covs))
GROUPED(SSEditRCov,
        (SsTask* task, V robust_cov_storage, V robust_param_count, V robust_params,
         V robust_mean, V robust_cov),
        K(robust_cov_storage) K(robust_param_count) K(robust_params) K(robust_mean)
        K(robust_cov))
GROUPED(SSEditMissingVals,
        (SsTask* task, V impute_param_count, V impute_params, V impute_init_count,
         V impute_init, V impute_prior_count, V impute_prior, V impute_simulated_count,
         V impute_simulated, V impute_estimate_count, V impute_estimates),
        K(impute_param_count) K(impute_params) K(impute_init_count) K(impute_init)
        K(impute_prior_count) K(impute_prior) K(impute_simulated_count) K(impute_simulated)
        K(impute_estimate_count) K(impute_estimates))
GROUPED(SSEditOutDetect,
        (SsTask* task, V outlier_param_count, V outlier_params, V outlier_weights),
        K(outlier_param_count) K(outlier_params) K(outlier_weights))
GROUPED(SSEditMtxParametrz,
        (SsTask* task, V cor, V cor_storage, V parametrized_cor, V parametrized_cor_storage),
        K(cor) K(cor_storage) K(parametrized_cor) K(parametrized_cor_storage))

#undef K
#undef GROUPED
#undef V
