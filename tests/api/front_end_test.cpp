// The front end: checked arguments, tier selection, chunked parallel calls
// and the threading tables.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include <orv/orv.h>

namespace {

TEST(FrontEnd, BadArgumentsSetTheStatusAndWriteNothing) {
    std::thread([] {
        double a[2] = {1, 2}, r[2] = {7, 7};
        vtmdAdd(-1, a, a, r);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadArgument);
        vtmdMul(2, a, nullptr, r);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadPointer);
        vtmdSubI(2, a, 1, a, 1, nullptr, 1);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadPointer);
        EXPECT_EQ(r[0], 7.0);
        _vtmClearErrStatus();
        vtmdAdd(0, nullptr, nullptr, nullptr);  // nothing to do is not an error
        EXPECT_EQ(_vtmGetErrStatus(), 0);
    }).join();
}

TEST(FrontEnd, ChunkedCallsMatchOneCallOnEveryThreadCount) {
    const int n = 100003;
    std::vector<double> a(n), b(n), one(n), many(n);
    for (int i = 0; i < n; ++i) {
        a[i] = i * 0.001 - 3;
        b[i] = 1.0 / (i + 1);
    }
    const int saved = orv_get_parallel_threshold();
    orv_set_parallel_threshold(1 << 30);
    vtmdMul(n, a.data(), b.data(), one.data());
    orv_set_parallel_threshold(1000);
    for (int t : {1, 2, 3, 4}) {
        orv_set_num_threads(t);
        std::fill(many.begin(), many.end(), 0.0);
        vtmdMul(n, a.data(), b.data(), many.data());
        EXPECT_EQ(one, many) << t << " threads";
    }
    orv_set_num_threads(0);
    orv_set_parallel_threshold(saved);
    std::vector<double> r(n / 2);
    vtmdAddI(n / 2, a.data(), 2, b.data(), 2, r.data(), 1);
    for (int i = 0; i < n / 2; i += 997) EXPECT_EQ(r[i], a[2 * i] + b[2 * i]);
}

TEST(FrontEnd, ChunkedCallsKeepTheCallersModeAndStatus) {
    std::thread([] {
        _vtmSetMode(VTM_EP | VTM_ERRMODE_ERRNO);
        _vtmSetErrStatus(4);
        const int n = 50000;
        std::vector<double> a(n, 1.5), r(n);
        orv_set_parallel_threshold(1000);
        orv_set_num_threads(2);
        vtmdAdd(n, a.data(), a.data(), r.data());
        orv_set_num_threads(0);
        orv_set_parallel_threshold(1 << 16);
        EXPECT_EQ(r[n - 1], 3.0);
        EXPECT_EQ(_vtmGetMode(), VTM_EP | VTM_ERRMODE_ERRNO);
        EXPECT_EQ(_vtmGetErrStatus(), 4);  // no element reported: status untouched
    }).join();
}

TEST(Threading, EveryTableRunsEveryItemOnce) {
    for (const SsThreadingTable* t : {orv_ss_threading_serial(), orv_ss_threading_openmp()}) {
        std::vector<std::atomic<int>> hits(37);
        auto ctx = static_cast<void*>(&hits);
        t->run_items(37, 3, ctx, [](int item, int thread, int nthreads, void* c) {
            ASSERT_LT(thread, nthreads);
            (*static_cast<std::vector<std::atomic<int>>*>(c))[item]++;
        });
        for (auto& h : hits) EXPECT_EQ(h.load(), 1);
        std::vector<std::atomic<int>> pieces(5);
        t->run_pieces(5, &pieces, [](int piece, int, int np, void* c) {
            ASSERT_EQ(np, 5);
            (*static_cast<std::vector<std::atomic<int>>*>(c))[piece]++;
        });
        for (auto& h : pieces) EXPECT_EQ(h.load(), 1);
        EXPECT_GE(t->max_threads(), 1);
    }
    for (const DFThreadOps* t : {orv_df_thread_ops_serial(), orv_df_thread_ops_openmp()}) {
        std::vector<std::atomic<int>> teams(6);
        t->parallel_run(6, 6, &teams, [](int team, int nteams, void*, void* c) {
            ASSERT_EQ(nteams, 6);
            (*static_cast<std::vector<std::atomic<int>>*>(c))[team]++;
        });
        for (auto& h : teams) EXPECT_EQ(h.load(), 1);
    }
    EXPECT_EQ(orv_ss_threading_serial()->max_threads(), 1);
    orv_set_num_threads(3);
    EXPECT_EQ(orv_ss_threading_openmp()->max_threads(), 3);
    EXPECT_EQ(orv_df_thread_ops_openmp()->max_threads(), 3);
    orv_set_num_threads(0);
}

}  // namespace
