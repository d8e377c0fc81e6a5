// Public statistics calls: checked task creation and editing, and one compute
// call that routes each estimate bit to the entry that computes it.
//
// Routing is a table of rows (estimate bits -> entry, method bits the entry
// reads, its default method). Before any entry runs, every row is validated
// by a dry run: the entry is called on a copy of the record whose observation
// count reads 0. The entries check their arrays, storage words and method
// before the count, so a well-formed request stops at SS_ERR_OBSERVATIONS
// (or, on the path from sums, at SS_ERR_ACCUM_WEIGHTS with the count and the
// accumulated weights hidden) and anything else is the refusal to report.
// What the entries check after the count (data, layout, sizes), this file
// checks itself. Then the rows run in order, so a refusal writes nothing.
#include <orv/orv.h>

#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>

namespace {

using Entry = int32_t (*)(SsTask*, uint64_t, uint64_t, const SsThreadingTable*);

constexpr uint64_t kBasicBits =
    SS_EST_MEAN | SS_EST_RAW2 | SS_EST_RAW3 | SS_EST_RAW4 | SS_EST_CENTRAL2 | SS_EST_CENTRAL3 |
    SS_EST_CENTRAL4 | SS_EST_KURTOSIS | SS_EST_SKEWNESS | SS_EST_VARIATION | SS_EST_COV |
    SS_EST_COR | SS_EST_SUM1 | SS_EST_SUM2 | SS_EST_SUM3 | SS_EST_SUM4 | SS_EST_CENTRAL_SUM2 |
    SS_EST_CENTRAL_SUM3 | SS_EST_CENTRAL_SUM4 | SS_EST_CROSS_PRODUCT;
constexpr uint64_t kFromSums = SS_METHOD_FROM_SUMS | SS_METHOD_FROM_SUMS_2;

struct Route {
    uint64_t estimates;    // bits this entry computes
    uint64_t methods;      // method bits this entry reads
    uint64_t default_method;
    bool pass_estimates;   // false: the entry takes no estimate bits
    Entry d, s;
};

// New entries join the front end by a row here.
constexpr Route kRoutes[] = {
    {kBasicBits, SS_METHOD_PLAIN_SUMS | SS_METHOD_RUNNING | SS_METHOD_GIVEN_MEAN | kFromSums,
     SS_METHOD_RUNNING, true, _vstdSSBasic, _vstsSSBasic},
    {SS_EST_MIN | SS_EST_MAX, SS_METHOD_PLAIN_SUMS | SS_METHOD_RUNNING, SS_METHOD_RUNNING, true,
     _vstdSSMinmax, _vstsSSMinmax},
    {SS_EST_QUANTILES | SS_EST_ORDER_STATS, SS_METHOD_PLAIN_SUMS, SS_METHOD_PLAIN_SUMS, true,
     _vstdSSQuantiles, _vstsSSQuantiles},
    {SS_EST_SORTED, SS_METHOD_RADIX, SS_METHOD_RADIX, false, _vstdSSSort, _vstsSSSort},
    {SS_EST_MEDIAN_ABS_DEV | SS_EST_MEAN_ABS_DEV, SS_METHOD_PLAIN_SUMS | SS_METHOD_GIVEN_MEAN,
     SS_METHOD_PLAIN_SUMS, true, _vstdSSMAD, _vstsSSMAD},
};

constexpr uint64_t known_bits() {
    uint64_t b = 0;
    for (const Route& r : kRoutes) b |= r.estimates;
    return b;
}

int64_t read_int(const void* p, int is64) {
    if (is64) return *static_cast<const int64_t*>(p);
    return *static_cast<const int32_t*>(p);
}

// p times n reals of `elem` bytes fit in a signed 64-bit byte count.
bool fits(int64_t p, int64_t n, std::size_t elem) {
    int64_t c = 0, bytes = 0;
    return !__builtin_mul_overflow(p, n, &c) &&
           !__builtin_mul_overflow(c, static_cast<int64_t>(elem), &bytes);
}

bool is_layout(int64_t w) { return w == SS_STORAGE_BY_VARIABLE || w == SS_STORAGE_BY_OBSERVATION; }

bool precision_is(const SsTask* t, bool dbl) { return (t->is_double != 0) == dbl; }

template <typename T>
int32_t new_task(SsTask** task, const int64_t* p, const int64_t* n, const int64_t* storage,
                 const T* x, const T* weights, const int64_t* indices) {
    if (!task) return SS_ERR_NULL_TASK;
    if (!p || *p < 1) return SS_ERR_DIMENSION;
    if (!n || *n < 1) return SS_ERR_OBSERVATIONS;
    if (!storage) return SS_ERR_STORAGE_WORD;
    if (!is_layout(*storage)) return SS_ERR_STORAGE_VALUE;
    if (!x) return SS_ERR_NULL_DATA;
    if (!fits(*p, *n, sizeof(T))) return SS_ERR_NO_MEMORY;
    SsTask* made = nullptr;
    const auto create = sizeof(T) == 8 ? __vstdSSNewTask : __vstsSSNewTask;
    const int32_t st = create(&made, p, n, storage, x, weights, indices, 1);
    if (st == SS_OK) *task = made;
    return st;
}

// The other counts a compute call reads: p and n against each other.
int32_t check_sizes(const SsTask* t, const void* p_ptr, const void* n_ptr, std::size_t elem) {
    const int is64 = t->int_is_64;
    if (!p_ptr || read_int(p_ptr, is64) < 1) return SS_ERR_DIMENSION;
    if (n_ptr) {
        const int64_t n = read_int(n_ptr, is64);
        if (n < 1) return SS_ERR_OBSERVATIONS;
        if (!fits(read_int(p_ptr, is64), n, elem)) return SS_ERR_NO_MEMORY;
    }
    return SS_OK;
}

int32_t edit_int(SsTask* task, int32_t parameter, const int64_t* value) {
    if (!task) return SS_ERR_NULL_TASK;
    if (!task->int_is_64) return SS_ERR_TASK_PRECISION;
    if (value) {
        const std::size_t elem = task->is_double ? 8 : 4;
        int32_t st = SS_OK;
        if (parameter == SS_ED_dimension) st = check_sizes(task, value, task->observations, elem);
        if (parameter == SS_ED_observations) {
            if (*value < 1) return SS_ERR_OBSERVATIONS;
            if (task->dimension) st = check_sizes(task, task->dimension, value, elem);
        }
        if (parameter == SS_ED_data_storage || parameter == SS_ED_order_stats_storage ||
            parameter == SS_ED_sorted_storage)
            if (!is_layout(*value)) st = SS_ERR_STORAGE_VALUE;
        if (st != SS_OK) return st;
    }
    return __vstiSSEditTask(task, parameter, value);
}

template <typename T>
int32_t edit_real(SsTask* task, int32_t parameter, const T* value) {
    if (!task) return SS_ERR_NULL_TASK;
    if (!precision_is(task, sizeof(T) == 8)) return SS_ERR_TASK_PRECISION;
    return __vstdSSEditTask(task, parameter, value);
}

// Checks the entries leave until after the observation count.
template <typename T>
int32_t check_after_count(const SsTask* t, uint64_t est, uint64_t basic_method, bool data_path) {
    const int is64 = t->int_is_64;
    if (int32_t st = check_sizes(t, t->dimension, data_path ? t->observations : nullptr, sizeof(T)))
        return st;
    const int64_t p = read_int(t->dimension, is64);
    if (data_path) {
        if (!t->observations) return SS_ERR_OBSERVATIONS;
        if (!t->data) return SS_ERR_NULL_DATA;
        if (!t->data_storage) return SS_ERR_STORAGE_WORD;
        if (!is_layout(read_int(t->data_storage, is64))) return SS_ERR_STORAGE_VALUE;
    }
    if (!(est & kBasicBits)) return SS_OK;
    const bool matrix = est & (SS_EST_COV | SS_EST_COR | SS_EST_CROSS_PRODUCT);
    if ((est & SS_EST_COV) && !t->cov_storage) return SS_ERR_STORAGE_WORD;
    if ((est & SS_EST_COR) && !t->cor_storage) return SS_ERR_STORAGE_WORD;
    if ((est & SS_EST_CROSS_PRODUCT) && !t->cross_product_storage) return SS_ERR_STORAGE_WORD;
    if (matrix && (basic_method & kFromSums)) {
        if (!t->cross_product) return SS_ERR_CROSS_PRODUCT;
        if (!t->cross_product_storage) return SS_ERR_STORAGE_WORD;
    }
    if (matrix && !fits(p, p, sizeof(T))) return SS_ERR_NO_MEMORY;
    if (matrix && data_path && !(basic_method & SS_METHOD_RUNNING) &&
        read_int(t->observations, is64) > INT32_MAX)
        return SS_ERR_NO_MEMORY;
    return SS_OK;
}

// A first call (no accumulated weight) starts min and max from the extremes.
template <typename T>
void seed_minmax(SsTask* t, uint64_t est) {
    const T* acc = static_cast<const T*>(t->accum_weights);
    if (acc && acc[0] != T(0)) return;
    const int is64 = t->int_is_64;
    const int64_t p = read_int(t->dimension, is64);
    T* mn = (est & SS_EST_MIN) ? static_cast<T*>(t->minimum) : nullptr;
    T* mx = (est & SS_EST_MAX) ? static_cast<T*>(t->maximum) : nullptr;
    for (int64_t j = 0; j < p; ++j) {
        if (t->indices && read_int(static_cast<const int32_t*>(t->indices) + j * (is64 + 1), is64) == 0)
            continue;
        if (mn) mn[j] = std::numeric_limits<T>::infinity();
        if (mx) mx[j] = -std::numeric_limits<T>::infinity();
    }
}

template <typename T>
int32_t compute(SsTask* task, uint64_t estimates, uint64_t method) {
    constexpr bool dbl = sizeof(T) == 8;
    if (!task) return SS_ERR_NULL_TASK;
    if (!precision_is(task, dbl)) return SS_ERR_TASK_PRECISION;
    if (estimates & ~known_bits()) return SS_ERR_ESTIMATE;
    const SsThreadingTable* threading = orv_ss_threading_openmp();

    uint64_t methods[std::size(kRoutes)] = {};
    bool data_path = false;
    const int64_t zero = 0;
    const T one = 1;
    for (std::size_t r = 0; r < std::size(kRoutes); ++r) {
        const Route& route = kRoutes[r];
        const uint64_t est = estimates & route.estimates;
        if (!est) continue;
        uint64_t m = method & route.methods;
        methods[r] = m ? m : route.default_method;
        const bool from_sums = route.d == _vstdSSBasic && (methods[r] & kFromSums);
        data_path |= !from_sums;
        // Dry run on a copy whose count reads 0 (see the top of the file).
        SsTask probe;
        std::memcpy(&probe, task, sizeof probe);
        probe.observations = const_cast<int64_t*>(&zero);
        if (from_sums) {
            probe.observations = nullptr;
            probe.accum_weights = nullptr;
            probe.weights = const_cast<T*>(&one);
        }
        const Entry entry = dbl ? route.d : route.s;
        const int32_t st = entry(&probe, route.pass_estimates ? est : 0, methods[r], threading);
        if (st != (from_sums ? SS_ERR_ACCUM_WEIGHTS : SS_ERR_OBSERVATIONS)) return st;
    }
    const uint64_t basic_method = methods[0];
    if (int32_t st = check_after_count<T>(task, estimates, basic_method, data_path)) return st;
    if (basic_method & kFromSums) {
        // The path from sums reads n for the total weight when none is kept.
        const int is64 = task->int_is_64;
        if (!task->accum_weights &&
            (!task->observations || task->weights || read_int(task->observations, is64) < 1))
            return SS_ERR_ACCUM_WEIGHTS;
    }

    if (estimates & (SS_EST_MIN | SS_EST_MAX)) seed_minmax<T>(task, estimates);
    for (std::size_t r = 0; r < std::size(kRoutes); ++r) {
        const Route& route = kRoutes[r];
        const uint64_t est = estimates & route.estimates;
        if (!est) continue;
        const Entry entry = dbl ? route.d : route.s;
        if (int32_t st = entry(task, route.pass_estimates ? est : 0, methods[r], threading))
            return st;
    }
    return SS_OK;
}

}  // namespace

extern "C" {

int32_t vstdSSNewTask(SsTask** task, const int64_t* p, const int64_t* n, const int64_t* storage,
                      const double* x, const double* weights, const int64_t* indices) {
    return new_task(task, p, n, storage, x, weights, indices);
}
int32_t vstsSSNewTask(SsTask** task, const int64_t* p, const int64_t* n, const int64_t* storage,
                      const float* x, const float* weights, const int64_t* indices) {
    return new_task(task, p, n, storage, x, weights, indices);
}
int32_t vstSSDeleteTask(SsTask** task) { return __vstSSDeleteTask(task); }

int32_t vstiSSEditTask(SsTask* task, int32_t parameter, const int64_t* value) {
    return edit_int(task, parameter, value);
}
int32_t vstdSSEditTask(SsTask* task, int32_t parameter, const double* value) {
    return edit_real(task, parameter, value);
}
int32_t vstsSSEditTask(SsTask* task, int32_t parameter, const float* value) {
    return edit_real(task, parameter, value);
}

#define ORV_SS_GROUPED_CHECKED(t, T, name, params, args)                   \
    int32_t vst##t##SS##name params {                                      \
        if (!task) return SS_ERR_NULL_TASK;                                \
        if (!precision_is(task, sizeof(T) == 8)) return SS_ERR_TASK_PRECISION; \
        if (!task->int_is_64) return SS_ERR_TASK_PRECISION;                \
        return __vstdSS##name args;                                        \
    }
#define ORV_SS_GROUPED_BOTH(T, t)                                                               \
    ORV_SS_GROUPED_CHECKED(t, T, EditMoments,                                                   \
        (SsTask * task, const T* mean, const T* raw2, const T* raw3, const T* raw4,             \
         const T* central2, const T* central3, const T* central4),                              \
        (task, mean, raw2, raw3, raw4, central2, central3, central4))                           \
    ORV_SS_GROUPED_CHECKED(t, T, EditCovCor,                                                    \
        (SsTask * task, const T* mean, const T* cov, const int64_t* cov_storage, const T* cor,  \
         const int64_t* cor_storage),                                                           \
        (task, mean, cov, cov_storage, cor, cor_storage))                                       \
    ORV_SS_GROUPED_CHECKED(t, T, EditQuantiles,                                                 \
        (SsTask * task, const int64_t* quantile_count, const T* quantile_orders,                \
         const T* quantiles, const T* order_stats, const int64_t* order_stats_storage),         \
        (task, quantile_count, quantile_orders, quantiles, order_stats, order_stats_storage))
ORV_SS_GROUPED_BOTH(double, d)
ORV_SS_GROUPED_BOTH(float, s)

int32_t vstdSSCompute(SsTask* task, uint64_t estimates, uint64_t method) {
    return compute<double>(task, estimates, method);
}
int32_t vstsSSCompute(SsTask* task, uint64_t estimates, uint64_t method) {
    return compute<float>(task, estimates, method);
}

}  // extern "C"
