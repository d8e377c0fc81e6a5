// Basic statistics against two-pass long-double references: every estimate,
// method, weighting, layout and matrix storage form; blocks fed in turn;
// pieces on several threads.
#include "harness.h"

#include <tuple>

namespace {

using namespace harness;

constexpr uint64_t kRunning = SS_METHOD_RUNNING, kPlain = SS_METHOD_PLAIN_SUMS,
                   kGiven = SS_METHOD_GIVEN_MEAN;

// method, weighted, by observation, matrix storage form
using OneCall = std::tuple<uint64_t, bool, bool, int>;
class BasicOneCall : public ::testing::TestWithParam<OneCall> {};

TEST_P(BasicOneCall, EveryEstimateMatchesTwoPassReference) {
    const auto [method, weighted, by_obs, form] = GetParam();
    const int64_t n = 777, p = 5;
    const auto xo = ref::make_data(n, p, 11);
    const auto wo = weighted ? ref::make_weights(n, 12) : std::vector<double>{};
    const auto e = ref::two_pass(xo, wo, n, p);
    const uint64_t est = kMoments | kSums | kMatrices;
    Task<double> t(xo, wo, n, p, by_obs, form);
    run_and_expect(t, e, est, method, 1e-12);
    EXPECT_DOUBLE_EQ(t.accum[0], (double)e.W);
    EXPECT_DOUBLE_EQ(t.accum[1], (double)e.W2);
    Task<float> ts(xo, wo, n, p, by_obs, form);
    run_and_expect(ts, e, est, method, 2e-3);
}

INSTANTIATE_TEST_SUITE_P(AllMethodsLayoutsForms, BasicOneCall,
                         ::testing::Combine(::testing::Values(kRunning, kPlain, kGiven),
                                            ::testing::Bool(), ::testing::Bool(),
                                            ::testing::Values(0, 1, 2)));

// method, estimate group (all vectors, each matrix, and requests that select
// each level of each method), weighted, by observation, number of blocks
using Blocks = std::tuple<uint64_t, uint64_t, bool, bool, int>;
class BasicBlocks : public ::testing::TestWithParam<Blocks> {};

TEST_P(BasicBlocks, FeedingBlocksGivesTheOneCallEstimates) {
    const auto [method, est, weighted, by_obs, nblocks] = GetParam();
    const int64_t n = 701, p = 4;
    const auto xo = ref::make_data(n, p, 21);
    const auto wo = weighted ? ref::make_weights(n, 22) : std::vector<double>{};
    const auto e = ref::two_pass(xo, wo, n, p);
    Task<double> t(xo, wo, n, p, by_obs, est == SS_EST_COR ? 2 : 1);
    for (int64_t j = 0; method == kGiven && j < p; ++j) t.a[MEAN][j] = (double)e.mean[j];
    // A sum array that is present serves as working array and then holds
    // moments; a chain registers only the sums it asks for.
    void** sums[] = {&t.task->sum1, &t.task->sum2, &t.task->sum3, &t.task->sum4,
                     &t.task->central_sum2, &t.task->central_sum3, &t.task->central_sum4};
    const uint64_t sum_bits[] = {SS_EST_SUM1, SS_EST_SUM2, SS_EST_SUM3, SS_EST_SUM4,
                                 SS_EST_CENTRAL_SUM2, SS_EST_CENTRAL_SUM3, SS_EST_CENTRAL_SUM4};
    for (int k = 0; k < 7; ++k)
        if (!(est & sum_bits[k])) *sums[k] = nullptr;
    const int64_t step = n / nblocks;
    for (int b = 0; b < nblocks; ++b) {
        const int64_t first = b * step, count = b == nblocks - 1 ? n - first : step;
        t.set_data(xo, wo, count, first);
        ASSERT_EQ(t.basic(est, method), SS_OK) << "block " << b;
    }
    expect_vectors(t, e, est, 1e-12, method == kGiven);
    expect_matrices(t, e, est, 1e-12);
    EXPECT_NEAR(t.accum[0], (double)e.W, 1e-12 * (double)e.W);
}

INSTANTIATE_TEST_SUITE_P(
    AllMethods, BasicBlocks,
    ::testing::Combine(::testing::Values(kRunning, kPlain, kGiven),
                       ::testing::Values(kMoments | kSums, uint64_t(SS_EST_COV), uint64_t(SS_EST_COR),
                                         uint64_t(SS_EST_CROSS_PRODUCT), uint64_t(SS_EST_MEAN),
                                         uint64_t(SS_EST_CENTRAL_SUM2), uint64_t(SS_EST_CENTRAL2),
                                         uint64_t(SS_EST_RAW2), uint64_t(SS_EST_SUM2),
                                         uint64_t(SS_EST_RAW3), uint64_t(SS_EST_CENTRAL_SUM3),
                                         uint64_t(SS_EST_CENTRAL3), uint64_t(SS_EST_CENTRAL_SUM4),
                                         uint64_t(SS_EST_SUM4)),
                       ::testing::Bool(), ::testing::Bool(), ::testing::Values(1, 3)));

// A table that runs the pieces on the calling thread, claims a number of
// threads, and records how many pieces it was given.
int g_claimed = 1, g_pieces = 0;
void record_pieces(int npieces, void* ctx, SsPieceFn fn) {
    g_pieces = npieces;
    for (int t = npieces - 1; t >= 0; --t) fn(t, 0, npieces, ctx);  // any order must do
}
int claimed() { return g_claimed; }
const SsThreadingTable kRecording = {nullptr, nullptr, record_pieces, nullptr, claimed};

// method, weighted, by observation
using Pieces = std::tuple<uint64_t, bool, bool>;
class BasicPieces : public ::testing::TestWithParam<Pieces> {};

TEST_P(BasicPieces, PiecesOnOneTwoFourThreadsAgree) {
    const auto [method, weighted, by_obs] = GetParam();
    const int64_t n = 20003, p = 4;  // n not divisible by the piece counts
    const auto xo = ref::make_data(n, p, 31);
    const auto wo = weighted ? ref::make_weights(n, 32) : std::vector<double>{};
    const auto e = ref::two_pass(xo, wo, n, p);
    const uint64_t est = kMoments | kSums | kMatrices;
    for (int threads : {1, 2, 4, 7}) {
        g_claimed = threads;
        Task<double> t(xo, wo, n, p, by_obs, 0);
        run_and_expect(t, e, est, method, 1e-12, &kRecording);
        EXPECT_EQ(g_pieces, threads);
    }
    g_claimed = 4;  // the single form merges in 32-bit floats
    Task<float> ts(xo, wo, n, p, by_obs, 2);
    run_and_expect(ts, e, est, method, 2e-3, &kRecording);
    EXPECT_EQ(g_pieces, 4);
    for (int threads : {1, 2, 4}) {
        orv_set_num_threads(threads);
        Task<double> t(xo, wo, n, p, by_obs, 1);
        run_and_expect(t, e, est, method, 1e-12, orv_ss_threading_openmp());
    }
    orv_set_num_threads(0);
}

INSTANTIATE_TEST_SUITE_P(AllMethods, BasicPieces,
                         ::testing::Combine(::testing::Values(kRunning, kPlain, kGiven),
                                            ::testing::Bool(), ::testing::Bool()));

// The carried mean undoes the previous centring of the matrix, so the caller
// may supply a different mean for each block.
TEST(BasicGivenMean, MeanMayChangeBetweenBlocks) {
    const int64_t n = 400, p = 3, half = 150;
    const auto xo = ref::make_data(n, p, 43);
    const auto e = ref::two_pass(xo, {}, n, p);
    const std::vector<double> first(xo.begin(), xo.begin() + half * p);
    const auto e1 = ref::two_pass(first, {}, half, p);
    for (int form : {0, 2}) {
        Task<double> t(xo, {}, n, p, true, form);
        for (int j = 0; j < p; ++j) t.a[MEAN][j] = (double)e1.mean[j];
        t.set_data(xo, {}, half, 0);
        ASSERT_EQ(t.basic(SS_EST_COV, kGiven), SS_OK);
        for (int j = 0; j < p; ++j) t.a[MEAN][j] = (double)e.mean[j];
        t.set_data(xo, {}, n - half, half);
        ASSERT_EQ(t.basic(SS_EST_COV, kGiven), SS_OK);
        expect_matrices(t, e, SS_EST_COV, 1e-12);
    }
}

// Data far from zero: the running method's matrix, merged block by block
// about each block's mean, keeps the accuracy of one-point updates.
TEST(BasicRunning, MatrixFarFromZeroKeepsAccuracy) {
    const int64_t n = 5000, p = 3;
    auto xo = ref::make_data(n, p, 47);
    for (double& v : xo) v += 1e8;
    for (bool weighted : {false, true}) {
        const auto wo = weighted ? ref::make_weights(n, 48) : std::vector<double>{};
        const auto e = ref::two_pass(xo, wo, n, p);
        for (bool by_obs : {false, true}) {
            Task<double> t(xo, wo, n, p, by_obs, 0);
            ASSERT_EQ(t.basic(SS_EST_COV | SS_EST_COR, kRunning), SS_OK);
            expect_matrices(t, e, SS_EST_COV | SS_EST_COR, 1e-9);
        }
    }
}

}  // namespace
