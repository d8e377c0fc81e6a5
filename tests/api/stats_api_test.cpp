// The public statistics calls: the compute call routes every estimate to its
// entry (min and max included), its default method is the accurate one, and
// every refusal writes nothing.
#include <gtest/gtest.h>

#include <orv/orv.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace {

constexpr double kSentinel = 12345.0;

// p = 2 variables of n observations, by variable, every result array armed
// with a sentinel.
struct Job {
    int64_t p = 2, n = 101, storage = SS_STORAGE_BY_VARIABLE, qcount = 3, form = SS_MATRIX_FULL;
    std::vector<double> x;
    double mean[2], raw2[2], c2[2], mn[2], mx[2], mad[2], cov[4], orders[3] = {0, 0.5, 0.9}, q[6];
    std::vector<double> sorted;
    SsTask* task = nullptr;
    explicit Job(double offset = 0) : x(p * n), sorted(p * n, kSentinel) {
        for (int64_t i = 0; i < n; ++i) {
            x[i] = offset + std::sin(0.7 * i + 1.0);
            x[n + i] = offset - 3.0 * std::cos(1.3 * i);
        }
        arm();
        EXPECT_EQ(vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr), 0);
        EXPECT_EQ(vstdSSEditMoments(task, mean, raw2, nullptr, nullptr, c2, nullptr, nullptr), 0);
        EXPECT_EQ(vstdSSEditCovCor(task, nullptr, cov, &form, nullptr, nullptr), 0);
        EXPECT_EQ(vstdSSEditQuantiles(task, &qcount, orders, q, nullptr, nullptr), 0);
        EXPECT_EQ(vstdSSEditTask(task, SS_ED_minimum, mn), 0);
        EXPECT_EQ(vstdSSEditTask(task, SS_ED_maximum, mx), 0);
        EXPECT_EQ(vstdSSEditTask(task, SS_ED_median_abs_dev, mad), 0);
        EXPECT_EQ(vstdSSEditTask(task, SS_ED_sorted, sorted.data()), 0);
        EXPECT_EQ(vstiSSEditTask(task, SS_ED_sorted_storage, &storage), 0);
    }
    ~Job() { vstSSDeleteTask(&task); }
    void arm() {
        for (double* a : {mean, raw2, c2, mn, mx, mad}) std::fill(a, a + 2, kSentinel);
        std::fill(cov, cov + 4, kSentinel);
        std::fill(q, q + 6, kSentinel);
        std::fill(sorted.begin(), sorted.end(), kSentinel);
    }
    bool untouched() const {
        auto all = [](const double* a, int k) {
            return std::all_of(a, a + k, [](double v) { return v == kSentinel; });
        };
        return all(mean, 2) && all(raw2, 2) && all(c2, 2) && all(mn, 2) && all(mx, 2) && all(mad, 2) &&
               all(cov, 4) && all(q, 6) && all(sorted.data(), int(sorted.size()));
    }
    std::vector<double> column(int j) const { return {x.begin() + j * n, x.begin() + (j + 1) * n}; }
};

constexpr uint64_t kAll = SS_EST_MEAN | SS_EST_CENTRAL2 | SS_EST_COV | SS_EST_MIN | SS_EST_MAX |
                          SS_EST_QUANTILES | SS_EST_SORTED | SS_EST_MEDIAN_ABS_DEV;

TEST(StatsCompute, EveryEstimateReachesItsEntry) {
    Job job;
    ASSERT_EQ(vstdSSCompute(job.task, kAll, 0), 0);
    for (int j = 0; j < 2; ++j) {
        std::vector<double> v = job.column(j);
        double m = 0, s2 = 0;
        for (double e : v) m += e / double(job.n);
        for (double e : v) s2 += (e - m) * (e - m) / double(job.n - 1);  // divisor W - W2/W
        EXPECT_NEAR(job.mean[j], m, 1e-14);
        EXPECT_NEAR(job.c2[j], s2, 1e-13);
        EXPECT_NEAR(job.cov[3 * j], s2, 1e-13);
        std::sort(v.begin(), v.end());
        EXPECT_EQ(job.mn[j], v.front());
        EXPECT_EQ(job.mx[j], v.back());
        EXPECT_EQ(job.q[3 * j + 1], v[50]);  // median of 101 values
        EXPECT_TRUE(std::equal(v.begin(), v.end(), job.sorted.begin() + j * job.n));
        for (double& e : v) e = std::fabs(e - job.q[3 * j + 1]);
        std::sort(v.begin(), v.end());
        EXPECT_EQ(job.mad[j], v[50]);
    }
}

TEST(StatsCompute, SinglePrecisionTakesTheSingleEntries) {
    int64_t p = 1, n = 4, st = SS_STORAGE_BY_OBSERVATION;
    float x[4] = {3, -1, 8, 2}, m = 0, lo = 0, hi = 0;
    SsTask* t = nullptr;
    ASSERT_EQ(vstsSSNewTask(&t, &p, &n, &st, x, nullptr, nullptr), 0);
    vstsSSEditMoments(t, &m, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    vstsSSEditTask(t, SS_ED_minimum, &lo);
    vstsSSEditTask(t, SS_ED_maximum, &hi);
    EXPECT_EQ(vstsSSCompute(t, SS_EST_MEAN | SS_EST_MIN | SS_EST_MAX, 0), 0);
    EXPECT_EQ((std::vector<float>{m, lo, hi}), (std::vector<float>{3, -1, 8}));
    vstSSDeleteTask(&t);
}

// Without a method the running updates are used: plain power sums lose most
// digits of a variance far below the square of the mean.
TEST(StatsCompute, DefaultMethodKeepsTheVarianceOfOffsetData) {
    Job job(1e6);
    ASSERT_EQ(vstdSSCompute(job.task, SS_EST_CENTRAL2, 0), 0);
    std::vector<double> v = job.column(0);
    double m = 0, s2 = 0;
    for (double e : v) m += (e - 1e6) / double(job.n);
    for (double e : v) s2 += (e - 1e6 - m) * (e - 1e6 - m) / double(job.n - 1);
    EXPECT_NEAR(job.c2[0] / s2, 1.0, 1e-8);
}

struct Refusal {
    const char* name;
    std::function<void(Job&)> spoil;
    uint64_t estimates, method;
    int32_t status;
};

class ComputeRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(ComputeRefusal, WritesNothing) {
    Job job;
    GetParam().spoil(job);
    EXPECT_EQ(vstdSSCompute(job.task, GetParam().estimates, GetParam().method), GetParam().status);
    EXPECT_TRUE(job.untouched());
}

const int64_t kZero = 0, kHuge = int64_t(1) << 61, kBadLayout = 0x30000;
INSTANTIATE_TEST_SUITE_P(
    Each, ComputeRefusal,
    testing::Values(
        Refusal{"Unrouted", [](Job&) {}, SS_EST_MEAN | 0x4000, 0, SS_ERR_ESTIMATE},
        Refusal{"Method", [](Job&) {}, kAll, SS_METHOD_PLAIN_SUMS | SS_METHOD_RUNNING, SS_ERR_METHOD},
        Refusal{"Mean", [](Job& j) { j.task->mean = nullptr; }, kAll, 0, SS_ERR_MEAN},
        Refusal{"Min", [](Job& j) { j.task->minimum = nullptr; }, kAll, 0, SS_ERR_MIN},
        Refusal{"Max", [](Job& j) { j.task->maximum = nullptr; }, kAll, 0, SS_ERR_MAX},
        Refusal{"Quantiles", [](Job& j) { j.task->quantiles = nullptr; }, kAll, 0, SS_ERR_QUANTILES},
        Refusal{"Order", [](Job& j) { j.orders[2] = 1.5; }, kAll, 0, SS_ERR_QUANTILE_COUNT},
        Refusal{"Sorted", [](Job& j) { j.task->sorted = nullptr; }, kAll, 0, SS_ERR_SORTED},
        Refusal{"CovForm", [](Job& j) { j.task->cov_storage = nullptr; }, kAll, 0,
                SS_ERR_STORAGE_WORD},
        Refusal{"Dimension", [](Job& j) { j.task->dimension = (void*)&kZero; }, kAll, 0,
                SS_ERR_DIMENSION},
        Refusal{"Data", [](Job& j) { j.task->data = nullptr; }, kAll, 0, SS_ERR_NULL_DATA},
        Refusal{"Layout", [](Job& j) { j.task->data_storage = (void*)&kBadLayout; }, SS_EST_MIN, 0,
                SS_ERR_STORAGE_VALUE},
        Refusal{"Overflow", [](Job& j) { j.task->observations = (void*)&kHuge; }, kAll, 0,
                SS_ERR_NO_MEMORY},
        Refusal{"FromSumsNoWeight", [](Job& j) { j.task->weights = j.task->sum1 = j.raw2; }, SS_EST_MEAN,
                SS_METHOD_FROM_SUMS, SS_ERR_ACCUM_WEIGHTS}),
    [](const testing::TestParamInfo<Refusal>& i) { return std::string(i.param.name); });

TEST(StatsFrontEnd, TaskRefusalsLeaveEverythingAlone) {
    Job job;
    int64_t p = 2, n = 5, zero = 0, by_var = SS_STORAGE_BY_VARIABLE, bad = 0x30000, huge = kHuge;
    double x[10] = {};
    SsTask* t = reinterpret_cast<SsTask*>(&job);  // must stay as it is
    SsTask* const before = t;
    EXPECT_EQ(vstdSSNewTask(nullptr, &p, &n, &by_var, x, nullptr, nullptr), SS_ERR_NULL_TASK);
    EXPECT_EQ(vstdSSNewTask(&t, nullptr, &n, &by_var, x, nullptr, nullptr), SS_ERR_DIMENSION);
    EXPECT_EQ(vstdSSNewTask(&t, &zero, &n, &by_var, x, nullptr, nullptr), SS_ERR_DIMENSION);
    EXPECT_EQ(vstdSSNewTask(&t, &p, &zero, &by_var, x, nullptr, nullptr), SS_ERR_OBSERVATIONS);
    EXPECT_EQ(vstdSSNewTask(&t, &p, &n, nullptr, x, nullptr, nullptr), SS_ERR_STORAGE_WORD);
    EXPECT_EQ(vstdSSNewTask(&t, &p, &n, &bad, x, nullptr, nullptr), SS_ERR_STORAGE_VALUE);
    EXPECT_EQ(vstdSSNewTask(&t, &p, &n, &by_var, nullptr, nullptr, nullptr), SS_ERR_NULL_DATA);
    EXPECT_EQ(vstdSSNewTask(&t, &p, &huge, &by_var, x, nullptr, nullptr), SS_ERR_NO_MEMORY);
    EXPECT_EQ(t, before);

    // Edits: the field keeps its value on every refusal.
    SsTask* single = nullptr;
    float fx[10] = {}, fm[2] = {};
    ASSERT_EQ(vstsSSNewTask(&single, &p, &n, &by_var, fx, nullptr, nullptr), 0);
    SsTask* narrow = nullptr;
    int32_t p32 = 2;
    ASSERT_EQ(__vstdSSNewTask(&narrow, &p32, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
    void* const dim = job.task->dimension;
    EXPECT_EQ(vstiSSEditTask(nullptr, SS_ED_dimension, &p), SS_ERR_NULL_TASK);
    EXPECT_EQ(vstiSSEditTask(job.task, SS_ED_dimension, &zero), SS_ERR_DIMENSION);
    EXPECT_EQ(vstiSSEditTask(job.task, SS_ED_dimension, &huge), SS_ERR_NO_MEMORY);
    EXPECT_EQ(vstiSSEditTask(job.task, SS_ED_observations, &zero), SS_ERR_OBSERVATIONS);
    EXPECT_EQ(vstiSSEditTask(job.task, SS_ED_data_storage, &bad), SS_ERR_STORAGE_VALUE);
    EXPECT_EQ(vstiSSEditTask(job.task, SS_ED_dimension, nullptr), SS_ERR_DIMENSION);
    EXPECT_EQ(vstiSSEditTask(job.task, SS_ED_mean, &p), SS_ERR_BAD_PARAMETER_NUMBER);
    EXPECT_EQ(vstiSSEditTask(narrow, SS_ED_dimension, &p), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(job.task->dimension, dim);
    EXPECT_EQ(vstdSSEditTask(nullptr, SS_ED_mean, job.mean), SS_ERR_NULL_TASK);
    EXPECT_EQ(vstdSSEditTask(single, SS_ED_mean, job.mean), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(vstsSSEditTask(job.task, SS_ED_mean, fm), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(vstdSSEditMoments(single, job.mean, 0, 0, 0, 0, 0, 0), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(vstsSSEditCovCor(job.task, fm, 0, 0, 0, 0), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(vstsSSEditQuantiles(nullptr, 0, 0, 0, 0, 0), SS_ERR_NULL_TASK);
    EXPECT_EQ(single->mean, nullptr);
    EXPECT_EQ(vstdSSCompute(nullptr, SS_EST_MEAN, 0), SS_ERR_NULL_TASK);
    EXPECT_EQ(vstdSSCompute(single, SS_EST_MEAN, 0), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(vstsSSCompute(job.task, SS_EST_MEAN, 0), SS_ERR_TASK_PRECISION);
    EXPECT_EQ(vstSSDeleteTask(nullptr), SS_ERR_NULL_TASK);
    EXPECT_TRUE(job.untouched());
    vstSSDeleteTask(&single);
    __vstSSDeleteTask(&narrow);
}

}  // namespace
