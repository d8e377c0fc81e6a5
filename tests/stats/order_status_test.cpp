// Every refusal of the order-statistics calls, in the order of the checks:
// row k of an entry applies its own cause last, over every later cause, on a
// record that is otherwise good, so the status must be that of cause k; and
// nothing is written (results, data, stream state) on a refusal.
#include <orv/orv.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>
#include <vector>

namespace {

struct Record {
    int64_t p = 2, n = 4, storage = SS_STORAGE_BY_VARIABLE, os_storage = SS_STORAGE_BY_VARIABLE;
    int64_t count = 2, sorted_storage = SS_STORAGE_BY_OBSERVATION, mask[2] = {1, 1};
    int64_t stream_count = 2, param_count = 1;
    double x[8] = {4, 3, 2, 1, 8, 7, 6, 5}, w[4] = {1, 2, 3, 4}, orders[2] = {0.5, 1.0};
    double eps = 0.01;
    double out[64];  // every result array, carved below
    uint64_t est = 0, method = 0;
    SsTask* task = nullptr;
    Record() {
        std::fill(std::begin(out), std::end(out), 7.0);
        EXPECT_EQ(__vstdSSNewTask(&task, &p, &n, &storage, x, w, mask, 1), SS_OK);
        __vstdSSEditQuantiles(task, &count, orders, out, out + 8, &os_storage);
        __vstdSSEditStreamQuantiles(task, &stream_count, orders, out + 16, &param_count, &eps);
        task->minimum = out + 24;
        task->maximum = out + 26;
        task->median_abs_dev = out + 28;
        task->mean_abs_dev = out + 30;
        task->mean = out + 32;
        task->sorted = out + 40;
        task->sorted_storage = &sorted_storage;
    }
    ~Record() { __vstSSDeleteTask(&task); }
    bool untouched() const {
        return std::accumulate(std::begin(out), std::end(out), 0.0) == 7.0 * 64 &&
               x[0] == 4 && x[7] == 5 && !task->stream_state;
    }
};

struct Cause {
    const char* what;
    int32_t want;
    std::function<void(Record&)> apply;
};

struct Entry {
    const char* name;
    int32_t (*call)(SsTask*, uint64_t, uint64_t);
    uint64_t est, method;
    std::vector<Cause> causes;
};

const Cause kNullTask{"null task", SS_ERR_NULL_TASK, [](Record&) {}};
const Cause kPrecision{"record of the other precision", SS_ERR_METHOD,
                       [](Record& r) { r.task->is_double = 0; }};
const Cause kNoP{"dimension", SS_ERR_DIMENSION, [](Record& r) { r.p = 0; }};
const Cause kNoN{"observations", SS_ERR_OBSERVATIONS, [](Record& r) { r.n = 0; }};
const Cause kNoStorage{"storage pointer", SS_ERR_STORAGE_WORD,
                       [](Record& r) { r.task->data_storage = nullptr; }};
const Cause kBadStorage{"storage value", SS_ERR_STORAGE_VALUE, [](Record& r) { r.storage = 0x40000; }};
const Cause kNoData{"data", SS_ERR_NULL_DATA, [](Record& r) { r.task->data = nullptr; }};
Cause null_field(const char* what, int32_t want, void* SsTask::*field) {
    return {what, want, [field](Record& r) { r.task->*field = nullptr; }};
}
Cause method(uint64_t m) {
    return {"method", SS_ERR_METHOD, [m](Record& r) { r.method = m; }};
}

std::vector<Entry> entries() {
    return {
        {"quantiles", vstdSSQuantiles, SS_EST_QUANTILES | SS_EST_ORDER_STATS, SS_METHOD_PLAIN_SUMS,
         {kNullTask, kPrecision, kNoStorage, kBadStorage,
          null_field("quantiles", SS_ERR_QUANTILES, &SsTask::quantiles),
          null_field("orders", SS_ERR_QUANTILE_ORDERS, &SsTask::quantile_orders),
          null_field("count pointer", SS_ERR_QUANTILE_COUNT, &SsTask::quantile_count),
          {"count negative", SS_ERR_QUANTILE_COUNT, [](Record& r) { r.count = -1; }},
          {"order NaN", SS_ERR_QUANTILE_COUNT, [](Record& r) { r.orders[1] = NAN; }},
          null_field("order stats", SS_ERR_ORDER_STATS, &SsTask::order_stats),
          null_field("order stats storage", SS_ERR_STORAGE_WORD, &SsTask::order_stats_storage),
          {"order stats layout", SS_ERR_STORAGE_VALUE, [](Record& r) { r.os_storage = 1; }},
          method(SS_METHOD_RUNNING), kNoP, kNoN, kNoData}},
        {"sort", vstdSSSort, 0, SS_METHOD_RADIX,
         {kNullTask, kPrecision, null_field("sorted", SS_ERR_SORTED, &SsTask::sorted),
          null_field("sorted storage", SS_ERR_STORAGE_WORD, &SsTask::sorted_storage),
          // In place: `sorted` is the data (which the later cause took away).
          {"in place, layouts differ", SS_ERR_STORAGE_WORD,
           [](Record& r) {
               r.task->sorted = r.task->data = r.x;
               r.sorted_storage = SS_STORAGE_BY_OBSERVATION;
           }},
          {"in place with indices", SS_ERR_SORT_IN_PLACE_INDICES,
           [](Record& r) { r.task->sorted = r.task->data = r.x, r.sorted_storage = r.storage; }},
          {"layout value", SS_ERR_STORAGE_VALUE, [](Record& r) { r.sorted_storage = 0x40000; }},
          method(SS_METHOD_PLAIN_SUMS), kNoP, kNoN, kNoData}},
        {"minmax", vstdSSMinmax, SS_EST_MIN | SS_EST_MAX, SS_METHOD_RUNNING,
         {kNullTask, kPrecision, kNoStorage, kBadStorage,
          null_field("minimum", SS_ERR_MIN, &SsTask::minimum),
          null_field("maximum", SS_ERR_MAX, &SsTask::maximum), method(SS_METHOD_GIVEN_MEAN), kNoP,
          kNoN, kNoData}},
        // The status of the last form asked for is returned: the median
        // form's causes are seen with the median form alone.
        {"absolute deviations", vstdSSMAD, SS_EST_MEDIAN_ABS_DEV | SS_EST_MEAN_ABS_DEV,
         SS_METHOD_PLAIN_SUMS,
         {kNullTask, kPrecision, kNoP, kNoN, kNoStorage,
          {"storage value", SS_ERR_STORAGE_VALUE,
           [](Record& r) { r.storage = SS_STORAGE_BY_VARIABLE | SS_STORAGE_BY_OBSERVATION; }},
          {"median form's result", SS_ERR_MEDIAN_ABS_DEV,
           [](Record& r) { r.task->median_abs_dev = nullptr, r.est = SS_EST_MEDIAN_ABS_DEV; }},
          {"median form's method", SS_ERR_METHOD,
           [](Record& r) { r.method = SS_METHOD_GIVEN_MEAN, r.est = SS_EST_MEDIAN_ABS_DEV; }},
          null_field("mean form's result", SS_ERR_MEAN_ABS_DEV, &SsTask::mean_abs_dev),
          method(SS_METHOD_RUNNING),
          {"given mean", SS_ERR_MEAN,
           [](Record& r) { r.task->mean = nullptr, r.method = SS_METHOD_GIVEN_MEAN; }},
          kNoData}},
        {"weighted median", vstdSSWMedian, 0, 0,
         {kNullTask, kPrecision, kNoP, kNoN, kNoStorage, kNoData,
          null_field("weights", SS_ERR_WEIGHTS, &SsTask::weights),
          null_field("orders", SS_ERR_QUANTILE_ORDERS, &SsTask::quantile_orders),
          null_field("quantiles", SS_ERR_QUANTILES, &SsTask::quantiles)}},
        {"streaming quantiles", vstdSSStreamQuantiles, 0, SS_METHOD_STREAM_QUERY,
         {kNullTask, kPrecision,
          null_field("observations pointer", SS_ERR_OBSERVATIONS, &SsTask::observations),
          {"observations negative", SS_ERR_OBSERVATIONS, [](Record& r) { r.n = -1; }}, kNoData,
          kNoStorage, kBadStorage,
          null_field("results", SS_ERR_STREAM_QUANTILES, &SsTask::stream_quantiles),
          null_field("orders", SS_ERR_STREAM_ORDERS, &SsTask::stream_orders),
          null_field("order count pointer", SS_ERR_STREAM_ORDER_VALUES, &SsTask::stream_order_count),
          {"order count negative", SS_ERR_STREAM_ORDER_VALUES, [](Record& r) { r.stream_count = -1; }},
          null_field("parameter count pointer", SS_ERR_STREAM_PARAM_COUNT_MISSING,
                     &SsTask::stream_param_count),
          {"parameter count", SS_ERR_STREAM_PARAM_COUNT, [](Record& r) { r.param_count = 2; }},
          {"order above 1", SS_ERR_STREAM_ORDER_VALUES, [](Record& r) { r.orders[1] = 1.5; }},
          null_field("parameters", SS_ERR_STREAM_PARAMS, &SsTask::stream_params),
          method(SS_METHOD_PLAIN_SUMS),
          {"epsilon", SS_ERR_STREAM_EPSILON, [](Record& r) { r.eps = 0; }}, kNoP}},
    };
}

TEST(OrderStatistics, EveryStatusInTheOrderOfTheChecks) {
    for (const Entry& e : entries()) {
        const std::size_t last = e.causes.size() - 1;
        for (std::size_t k = 0; k <= last; ++k) {
            Record r;
            r.est = e.est;
            r.method = e.method;
            for (std::size_t j = last; j >= k && j <= last; --j) e.causes[j].apply(r);
            EXPECT_EQ(e.call(k == 0 ? nullptr : r.task, r.est, r.method), e.causes[k].want)
                << e.name << ": " << e.causes[k].what;
            EXPECT_TRUE(r.untouched()) << e.name << ": " << e.causes[k].what;
        }
        // The good record passes (and the test's record is sound).
        Record r;
        EXPECT_EQ(e.call(r.task, e.est, e.method), SS_OK) << e.name;
    }
}

// Both deviation forms asked for: the mean form's good status stands over
// the median form's refused method.
TEST(OrderStatistics, LastDeviationFormDecidesTheStatus) {
    Record r;
    EXPECT_EQ(vstdSSMAD(r.task, SS_EST_MEDIAN_ABS_DEV | SS_EST_MEAN_ABS_DEV, SS_METHOD_GIVEN_MEAN),
              SS_OK);
    EXPECT_EQ(r.out[28], 7.0);  // median form refused
    // Weights 1..4 about the given centres 7: |4 3 2 1 - 7| and |8 7 6 5 - 7|.
    EXPECT_DOUBLE_EQ(r.out[30], (3 * 1 + 4 * 2 + 5 * 3 + 6 * 4) / 10.0);
    EXPECT_DOUBLE_EQ(r.out[31], (1 * 1 + 0 * 2 + 1 * 3 + 2 * 4) / 10.0);
}

}  // namespace
