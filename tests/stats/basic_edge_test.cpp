// Edge cases of the basic statistics: degenerate weights and sizes, the
// variable mask, the derived path, the method words and the order of checks.
#include "harness.h"

#include <functional>

extern "C" double __vstdSqrt(double x);

#if defined(__SANITIZE_ADDRESS__)
// Huge requests must come back as null for the allocation-failure test.
extern "C" __attribute__((visibility("default"), used)) const char* __asan_default_options() { return "allocator_may_return_null=1"; }
#endif

namespace {

using namespace harness;

constexpr uint64_t kAll = kMoments | kSums | kMatrices;
const uint64_t kMethods[] = {SS_METHOD_RUNNING, SS_METHOD_PLAIN_SUMS, SS_METHOD_GIVEN_MEAN};

class BasicEdge : public ::testing::TestWithParam<uint64_t> {};

TEST_P(BasicEdge, OneObservationGivesNanVariance) {
    const std::vector<double> xo = {2.5, -1.0};
    Task<double> t(xo, {}, 1, 2, true, 0);
    t.a[MEAN] = {2.5, -1.0};
    ASSERT_EQ(t.basic(SS_EST_MEAN | SS_EST_CENTRAL2 | SS_EST_COV, GetParam()), SS_OK);
    EXPECT_DOUBLE_EQ(t.a[MEAN][0], 2.5);
    EXPECT_TRUE(std::isnan(t.a[C2][0]));
    EXPECT_TRUE(std::isnan(t.a[COV][1]));
}

TEST_P(BasicEdge, AllZeroWeightsLeaveTheAccumulatorsEmpty) {
    const uint64_t method = GetParam();
    const auto xo = ref::make_data(50, 3, 41);
    Task<double> t(xo, std::vector<double>(50, 0.0), 50, 3, false, 0, 7.0);
    t.accum[0] = t.accum[1] = 0;
    t.a[MEAN].assign(3, 0.0);
    ASSERT_EQ(t.basic(kAll, method), SS_OK);
    EXPECT_EQ(t.accum[0], 0.0);
    for (int k : {RAW2, RAW3, RAW4, SUM1, SUM2, SUM3, SUM4, CS2, CS3, CS4, COV, CP})
        for (double v : t.a[k]) EXPECT_EQ(v, 0.0) << "array " << k;
    for (double v : t.a[C2]) EXPECT_TRUE(std::isnan(v));
    const bool plain = method == SS_METHOD_PLAIN_SUMS;
    for (int k : {C3, C4})
        for (double v : t.a[k]) EXPECT_EQ(std::isnan(v), !plain) << "array " << k;
}

TEST_P(BasicEdge, LeadingZeroWeightsAreAbsentObservations) {
    const uint64_t method = GetParam();
    const int64_t n = 300, p = 3, skip = 40;
    const auto xo = ref::make_data(n, p, 51);
    auto wo = ref::make_weights(n, 52);
    for (int64_t i = 0; i < skip; ++i) wo[i] = 0.0;
    const std::vector<double> xr(xo.begin() + skip * p, xo.end()), wr(wo.begin() + skip, wo.end());
    const auto e = ref::two_pass(xr, wr, n - skip, p);
    for (bool by_obs : {false, true}) {
        Task<double> t(xo, wo, n, p, by_obs, 0);
        run_and_expect(t, e, kAll, method, 1e-12);
    }
}

TEST_P(BasicEdge, IndicesLeaveUnadmittedResultsUntouched) {
    const uint64_t method = GetParam();
    const int64_t n = 200, p = 4;
    const auto xo = ref::make_data(n, p, 61);
    const auto e = ref::two_pass(xo, {}, n, p);
    const double sentinel = -12345.0;
    for (int form : {0, 1, 2}) {
        Task<double> t(xo, {}, n, p, form != 1, form, sentinel);
        const int64_t mask[4] = {1, 0, 1, 1};
        t.task->indices = const_cast<int64_t*>(mask);
        if (method == SS_METHOD_GIVEN_MEAN)
            for (int j = 0; j < p; ++j) t.a[MEAN][j] = (double)e.mean[j];
        ASSERT_EQ(t.basic(kAll, method), SS_OK);
        for (int k = 0; k < COV; ++k) {
            if (method == SS_METHOD_GIVEN_MEAN && k == MEAN) continue;
            EXPECT_EQ(t.a[k][1], sentinel) << "array " << k;
            EXPECT_NE(t.a[k][2], sentinel) << "array " << k;
        }
        for (int k : {COV, COR, CP})
            for (int64_t i = 0; i < p; ++i)
                for (int64_t j = 0; j < p; ++j) {
                    const double v = element(t.a[k], form, p, i, j);
                    EXPECT_EQ(v == sentinel, i == 1 || j == 1) << k << " " << i << " " << j;
                }
        // The pass still runs over all variables: admitted results are exact.
        for (int64_t i : {0, 2, 3})
            EXPECT_TRUE(close(element(t.a[COV], form, p, i, 3), e.cov[i * p + 3], 1e-12));
        for (int64_t j : {0, 2, 3}) EXPECT_TRUE(close(t.a[C4][j], e.c4[j], 1e-12));
    }
}

INSTANTIATE_TEST_SUITE_P(AllMethods, BasicEdge, ::testing::ValuesIn(kMethods));

TEST(BasicEdge, ZeroVarianceGivesNanCorrelationWithoutStatus) {
    std::vector<double> xo = ref::make_data(64, 2, 85);
    for (int i = 0; i < 64; ++i) xo[i * 2 + 1] = 4.0;
    Task<double> t(xo, {}, 64, 2, true, 0);
    ASSERT_EQ(t.basic(SS_EST_COR, SS_METHOD_PLAIN_SUMS), SS_OK);  // exact zero variance
    EXPECT_FALSE(std::isfinite(t.a[COR][1]));
    EXPECT_EQ(t.a[COR][3], 0.0);  // the variance, not 1
    EXPECT_GT(t.a[COR][0], 0.0);
}

TEST(BasicEdge, UnrequestedSumArrayEndsHoldingTheMoment) {
    const auto xo = ref::make_data(100, 2, 81);
    const auto e = ref::two_pass(xo, {}, 100, 2);
    Task<double> t(xo, {}, 100, 2, true, 0);
    ASSERT_EQ(t.basic(SS_EST_MEAN, SS_METHOD_RUNNING), SS_OK);
    for (int j = 0; j < 2; ++j) EXPECT_TRUE(close(t.a[SUM1][j], e.mean[j], 1e-13));
}

// Derived path: moments from sums and matrices from the cross-product.
TEST(BasicDerived, MomentsAndMatricesFromSums) {
    const int64_t n = 400, p = 3;
    const auto xo = ref::make_data(n, p, 91);
    const auto wo = ref::make_weights(n, 92);
    const auto e = ref::two_pass(xo, wo, n, p);
    for (int form : {0, 1, 2}) {
        // A direct bit beside a sums bit: the direct table, the derived path.
        for (uint64_t method : {0x200, 0x400, 0x202, 0x201}) {
            Task<double> t(xo, wo, n, p, true, form);
            t.accum[0] = (double)e.W;
            t.accum[1] = (double)e.W2;
            const std::vector<long double>* sums[] = {&e.sum1, &e.sum2, &e.sum3, &e.sum4, &e.cs2, &e.cs3, &e.cs4};
            for (int k = 0; k < 7; ++k)
                for (int j = 0; j < p; ++j) t.a[SUM1 + k][j] = (double)(*sums[k])[j];
            std::vector<double> cp(matrix_size(form, p));
            for (int64_t i = 0, k = 0; i < p; ++i)
                for (int64_t j = 0; j < p; ++j)
                    if (form == 0 || (form == 1 ? j <= i : j >= i)) cp[k++] = (double)e.cp[i * p + j];
            t.a[CP] = cp;
            t.task->cross_product = t.a[CP].data();
            const uint64_t est =
                kMoments | SS_EST_COV | SS_EST_COR | (method & 3 ? SS_EST_CROSS_PRODUCT : 0);
            ASSERT_EQ(t.basic(est, method), SS_OK);
            expect_vectors(t, e, est, method == 0x201 ? 1e-11 : 1e-13, false);
            expect_matrices(t, e, est, 1e-13);
        }
    }
    // Without accumulated weights and weights, W is the observation count.
    const auto eu = ref::two_pass(xo, {}, n, p);
    Task<double> t(xo, {}, n, p, true, 0);
    t.task->accum_weights = nullptr;
    for (int j = 0; j < p; ++j) t.a[SUM2][j] = (double)eu.sum2[j];
    ASSERT_EQ(t.basic(SS_EST_RAW2, SS_METHOD_FROM_SUMS), SS_OK);
    for (int j = 0; j < p; ++j) EXPECT_TRUE(close(t.a[RAW2][j], eu.raw2[j], 1e-14));
}

// The order of checks: each case is reached with every later cause present.
struct Order {
    const char* name;
    uint64_t est, method;
    std::function<void(Task<double>&)> spoil;
    int32_t want;
};

void null_from(Task<double>& t, int first) {
    void** f[NARR] = {&t.task->mean, &t.task->raw2, &t.task->raw3, &t.task->raw4,
                      &t.task->central2, &t.task->central3, &t.task->central4, &t.task->kurtosis,
                      &t.task->skewness, &t.task->variation, &t.task->sum1, &t.task->sum2,
                      &t.task->sum3, &t.task->sum4, &t.task->central_sum2, &t.task->central_sum3,
                      &t.task->central_sum4, &t.task->cov, &t.task->cor, &t.task->cross_product};
    // Reporting order: moments, cov, cor, kurtosis, skewness, variation, sums, cross-product.
    const int order[NARR] = {MEAN, RAW2, RAW3, RAW4, C2, C3, C4, COV, COR, KURT, SKEW, VAR,
                             SUM1, SUM2, SUM3, SUM4, CS2, CS3, CS4, CP};
    for (int k = first; k < NARR; ++k) *f[order[k]] = nullptr;
}

std::vector<Order> order_cases() {
    const int32_t array_status[NARR] = {
        SS_ERR_MEAN, SS_ERR_RAW2, SS_ERR_RAW3, SS_ERR_RAW4, SS_ERR_CENTRAL2, SS_ERR_CENTRAL3,
        SS_ERR_CENTRAL4, SS_ERR_COVARIANCE, SS_ERR_CORRELATION, SS_ERR_KURTOSIS, SS_ERR_SKEWNESS,
        SS_ERR_VARIATION, SS_ERR_SUM1, SS_ERR_SUM2, SS_ERR_SUM3, SS_ERR_SUM4, SS_ERR_CENTRAL_SUM2,
        SS_ERR_CENTRAL_SUM3, SS_ERR_CENTRAL_SUM4, SS_ERR_CROSS_PRODUCT};
    auto no_data = [](Task<double>& t) {
        t.task->observations = nullptr;
        t.task->data = nullptr;
        t.task->data_storage = nullptr;
    };
    std::vector<Order> v = {
        {"two direct bits", kAll, 0x3, [](Task<double>& t) { null_from(t, 0); }, SS_ERR_METHOD},
        {"no method bit", kAll, 0x0, [](Task<double>& t) { null_from(t, 0); }, SS_ERR_METHOD},
        {"direct and unknown", kAll, 0x102, [](Task<double>&) {}, SS_ERR_METHOD},
    };
    for (int k = 0; k < NARR; ++k)
        v.push_back({"array", kAll, SS_METHOD_RUNNING,
                     [k, no_data](Task<double>& t) { null_from(t, k); no_data(t); }, array_status[k]});
    v.push_back({"refused after arrays", SS_EST_MEAN | SS_EST_SUM1, SS_METHOD_FROM_SUMS,
                 [](Task<double>& t) { t.task->mean = nullptr; }, SS_ERR_MEAN});
    v.push_back({"refused", SS_EST_SUM1, SS_METHOD_FROM_SUMS, no_data, SS_ERR_METHOD});
    v.push_back({"plain table on derived path", SS_EST_CENTRAL_SUM2, 0x201,
                 [](Task<double>& t) { t.task->raw2 = nullptr; }, SS_ERR_RAW2});
    v.push_back({"dimension changed to zero", kAll, SS_METHOD_PLAIN_SUMS,
                 [no_data](Task<double>& t) { t.p = 0; no_data(t); }, SS_ERR_DIMENSION});
    v.push_back({"observations null", kAll, SS_METHOD_PLAIN_SUMS, no_data, SS_ERR_OBSERVATIONS});
    v.push_back({"observations zero", kAll, SS_METHOD_PLAIN_SUMS,
                 [](Task<double>& t) { t.n = 0; t.task->data = nullptr; }, SS_ERR_OBSERVATIONS});
    v.push_back({"data null", kAll, SS_METHOD_PLAIN_SUMS,
                 [](Task<double>& t) { t.task->data = nullptr; t.task->data_storage = nullptr; },
                 SS_ERR_NULL_DATA});
    v.push_back({"storage null", kAll, SS_METHOD_PLAIN_SUMS,
                 [](Task<double>& t) { t.task->data_storage = nullptr; }, SS_ERR_STORAGE_WORD});
    v.push_back({"storage value", kAll, SS_METHOD_GIVEN_MEAN,
                 [](Task<double>& t) { t.storage = 0x40000; }, SS_ERR_STORAGE_VALUE});
    v.push_back({"matrix storage null", SS_EST_COV, SS_METHOD_RUNNING,
                 [](Task<double>& t) { t.task->cov_storage = nullptr; }, SS_ERR_STORAGE_WORD});
    // A sums bit with a direct bit takes the derived path, which builds the
    // matrices from the cross-product: its absence is reported, not read.
    for (uint64_t m : {0x201, 0x202, 0x300, 0x401, 0x402}) {
        v.push_back({"direct and sums bits, no cross-product", SS_EST_COV, m,
                     [](Task<double>& t) { t.task->cross_product = nullptr; },
                     SS_ERR_CROSS_PRODUCT});
        v.push_back({"direct and sums bits, no cross-product storage", SS_EST_COR, m,
                     [](Task<double>& t) { t.task->cross_product_storage = nullptr; },
                     SS_ERR_STORAGE_WORD});
    }
    v.push_back({"derived with weights", SS_EST_MEAN, SS_METHOD_FROM_SUMS,
                 [](Task<double>& t) { t.task->accum_weights = nullptr; }, SS_ERR_ACCUM_WEIGHTS});
    v.push_back({"derived without n", SS_EST_MEAN, SS_METHOD_FROM_SUMS,
                 [](Task<double>& t) {
                     t.task->accum_weights = nullptr;
                     t.task->weights = nullptr;
                     t.task->observations = nullptr;
                 },
                 SS_ERR_ACCUM_WEIGHTS});
    return v;
}

void PrintTo(const Order& c, std::ostream* os) { *os << c.name; }

class BasicChecks : public ::testing::TestWithParam<Order> {};

TEST_P(BasicChecks, StatusInOrder) {
    const Order& c = GetParam();
    const auto xo = ref::make_data(20, 2, 101);
    Task<double> t(xo, std::vector<double>(20, 1.0), 20, 2, true, 0);
    c.spoil(t);
    EXPECT_EQ(t.basic(c.est, c.method), c.want);
    EXPECT_EQ(_vstdSSBasic(nullptr, c.est, c.method, orv_ss_threading_serial()), SS_ERR_NULL_TASK);
}

INSTANTIATE_TEST_SUITE_P(Order, BasicChecks, ::testing::ValuesIn(order_cases()));

TEST(BasicChecks, AllocationFailureIsReported) {
    // A packed covariance of 2^20 variables needs an unpacked copy of 8 TiB.
    const int64_t p = int64_t(1) << 20, n = 1, storage = SS_STORAGE_BY_VARIABLE, form = 1;
    std::vector<double> x(p, 1.0), mean(p), cov(1);
    SsTask* task = nullptr;
    ASSERT_EQ(__vstdSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 1), SS_OK);
    __vstdSSEditCovCor(task, mean.data(), cov.data(), &form, nullptr, nullptr);
    EXPECT_EQ(_vstdSSBasic(task, SS_EST_COV, SS_METHOD_RUNNING, orv_ss_threading_serial()),
              SS_ERR_NO_MEMORY);
    __vstSSDeleteTask(&task);
}

// A record carries the precision of its creator; the other entry refuses it
// and writes nothing.
TEST(BasicChecks, PrecisionOfTheRecordIsKept) {
    const auto xo = ref::make_data(40, 3, 103);
    const uint64_t est = kMoments | kMatrices;
    Task<float> ts(xo, {}, 40, 3, true, 0, -7.0f);
    EXPECT_EQ(_vstdSSBasic(ts.task, est, SS_METHOD_RUNNING, orv_ss_threading_serial()),
              SS_ERR_METHOD);
    Task<double> td(xo, {}, 40, 3, true, 0, -7.0);
    EXPECT_EQ(_vstsSSBasic(td.task, est, SS_METHOD_RUNNING, orv_ss_threading_serial()),
              SS_ERR_METHOD);
    for (int k = 0; k < NARR; ++k) {
        for (float v : ts.a[k]) ASSERT_EQ(v, -7.0f) << "array " << k;
        for (double v : td.a[k]) ASSERT_EQ(v, -7.0) << "array " << k;
    }
}

// Sizes that cannot be represented are refused before memory is touched:
// a packed covariance whose p x p copy overflows 64 bits, data of n x p
// elements beyond the address space.
TEST(BasicChecks, OverflowingSizesAreRefused) {
    struct Case { int64_t p, n; uint64_t est; int64_t form; bool derived; };
    const Case cases[] = {{(int64_t(1) << 31) + 1, 1, SS_EST_COV, 1, true},
                          {int64_t(1) << 40, int64_t(1) << 30, SS_EST_MEAN, 0, false},
                          {int64_t(1) << 61, 1, SS_EST_MEAN, 0, true}};
    const int64_t storage = SS_STORAGE_BY_VARIABLE;
    std::vector<double> x(4), mean(4), cov(4), cp(4);
    int64_t mask[4] = {1, 1, 1, 1};
    for (const Case& c : cases)
        for (uint64_t method : {SS_METHOD_RUNNING, SS_METHOD_PLAIN_SUMS, SS_METHOD_FROM_SUMS}) {
            if (method == SS_METHOD_FROM_SUMS && !c.derived) continue;  // the derived path reads no data
            SsTask* task = nullptr;
            ASSERT_EQ(__vstdSSNewTask(&task, &c.p, &c.n, &storage, x.data(), nullptr, mask, 1),
                      SS_OK);
            __vstdSSEditCovCor(task, mean.data(), cov.data(), &c.form, nullptr, nullptr);
            __vstdSSEditCP(task, nullptr, mean.data(), cp.data(), &c.form);
            EXPECT_EQ(_vstdSSBasic(task, c.est, method, orv_ss_threading_serial()),
                      SS_ERR_NO_MEMORY) << c.p << " " << c.n << " " << method;
            __vstSSDeleteTask(&task);
        }
}

TEST(TableSqrt, WithinOneUlpAndSpecialValues) {
    std::mt19937_64 g(5);
    std::uniform_real_distribution<double> u(-700.0, 700.0);
    for (int i = 0; i < 100000; ++i) {
        const double x = std::exp(u(g));
        const double want = std::sqrt(x), got = __vstdSqrt(x);
        EXPECT_LE(std::fabs(got - want), std::nextafter(want, INFINITY) - want) << x;
    }
    EXPECT_EQ(__vstdSqrt(4.0), 2.0);
    EXPECT_EQ(__vstdSqrt(0.0), 0.0);
    EXPECT_TRUE(std::signbit(__vstdSqrt(-0.0)));
    EXPECT_TRUE(std::isnan(__vstdSqrt(-1.0)));
    EXPECT_TRUE(std::isnan(__vstdSqrt(NAN)));
    EXPECT_EQ(__vstdSqrt(INFINITY), INFINITY);
    EXPECT_NEAR(__vstdSqrt(4.9406564584124654e-324), 2.2227587494850775e-162, 1e-175);
}

}  // namespace
