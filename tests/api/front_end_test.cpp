// The front end: checked arguments, tier selection, chunked parallel calls
// and the threading tables.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include <orv/orv.h>

namespace {

// Every checked call, from the generated list: a negative n and each null
// array in turn are refused with their status and nothing is written or
// read; n = 0 does nothing, whatever the pointers.
struct Thunk {
    const char* name;
    int arrays;
    void (*call)(long long n, void* const* p);
};
const Thunk kThunks[] = {
#include "vtm_checked_thunks.inc"
};

TEST(FrontEnd, EveryCallRefusesBadArgumentsAndWritesNothing) {
    std::thread([] {
        unsigned char buf[4][64];
        std::memset(buf, 0x5A, sizeof buf);
        unsigned char before[sizeof buf];
        std::memcpy(before, buf, sizeof buf);
        for (const Thunk& t : kThunks) {
            ASSERT_LE(t.arrays, 4) << t.name;
            void* p[4] = {buf[0], buf[1], buf[2], buf[3]};
            _vtmClearErrStatus();
            t.call(-1, p);
            EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadArgument) << t.name;
            for (int i = 0; i < t.arrays; ++i) {
                void* q[4] = {buf[0], buf[1], buf[2], buf[3]};
                q[i] = nullptr;
                _vtmClearErrStatus();
                t.call(2, q);
                EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadPointer) << t.name << " array " << i;
            }
            void* none[4] = {};
            _vtmClearErrStatus();
            t.call(0, none);
            EXPECT_EQ(_vtmGetErrStatus(), 0) << t.name;
            EXPECT_EQ(std::memcmp(buf, before, sizeof buf), 0) << t.name << " wrote";
        }
        EXPECT_GE(sizeof kThunks / sizeof kThunks[0], 168u);
    }).join();
}

// The mode form applies its word to the one call (here: flushing denormals)
// and leaves the thread's word as it was.
TEST(FrontEnd, ModeFormsApplyTheirModeToOneCall) {
    std::thread([] {
        _vtmSetMode(VTM_HA | VTM_ERRMODE_IGNORE | VTM_FTZDAZ_OFF);
        const unsigned int word = _vtmGetMode();
        const double den[2] = {0x1p-1060, 4.0};
        double r[2];
        vtmdSqrtMode(2, den, r, VTM_FTZDAZ_ON);
        EXPECT_TRUE(r[0] == 0.0 && r[1] == 2.0) << r[0] << " " << r[1];
        EXPECT_EQ(_vtmGetMode(), word);
        vtmdSqrt(2, den, r);
        EXPECT_EQ(r[0], 0x1p-530);
        const double neg[1] = {-1.0};
        vtmdLnMode(1, neg, r, VTM_EP);
        EXPECT_EQ(_vtmGetErrStatus(), 1);
        vtmdSqrtIMode(-1, den, 1, r, 1, VTM_LA);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadArgument);
        EXPECT_EQ(_vtmGetMode(), word);
    }).join();
}

// A call cut into chunks over 1 to 4 threads gives the one call's results
// (two results and strided forms too) and keeps the caller's mode and status.
TEST(FrontEnd, ChunkedCallsMatchOneCallAndKeepTheCallersModeAndStatus) {
    std::thread([] {
        _vtmSetMode(VTM_EP | VTM_ERRMODE_ERRNO);
        _vtmSetErrStatus(4);
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
        // Two results: both arrays are shifted per chunk.
        std::vector<double> ip(n), fp(n);
        orv_set_num_threads(3);
        vtmdModf(n, a.data(), ip.data(), fp.data());
        for (int i = 0; i < n; i += 101) EXPECT_EQ(ip[i] + fp[i], a[i]) << i;
        std::vector<double> r(n / 2);
        vtmdAddI(n / 2, a.data(), 2, b.data(), 2, r.data(), 1);
        for (int i = 0; i < n / 2; i += 997) EXPECT_EQ(r[i], a[2 * i] + b[2 * i]);
        orv_set_num_threads(0);
        orv_set_parallel_threshold(saved);
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


// The public mode, status and callback names reach the thread's own record:
// what one name sets, the kernel library's entry reads back, and the reverse.
int32_t ignore_errors(VtmErrorContext*) { return 0; }

TEST(FrontEnd, PublicModeStatusAndCallbackNamesShareTheThreadRecord) {
    std::thread([] {
        const uint32_t first = vtmGetMode();
        EXPECT_EQ(first, _vtmGetMode());
        EXPECT_EQ(vtmSetMode(VTM_EP), first);
        EXPECT_EQ(_vtmGetMode() & VTM_ACCURACY_MASK, VTM_EP);
        _vtmSetMode(VTM_LA);
        EXPECT_EQ(vtmGetMode() & VTM_ACCURACY_MASK, VTM_LA);
        EXPECT_EQ(vtmSetErrStatus(VtmStatusPole), VtmStatusOk);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusPole);
        _vtmSetErrStatus(VtmStatusOverflow);
        EXPECT_EQ(vtmGetErrStatus(), VtmStatusOverflow);
        EXPECT_EQ(vtmClearErrStatus(), VtmStatusOverflow);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusOk);
        EXPECT_EQ(vtmSetErrorCallBack(ignore_errors), nullptr);
        EXPECT_EQ(_vtmGetErrorCallBack(), &ignore_errors);
        EXPECT_EQ(vtmGetErrorCallBack(), &ignore_errors);
        EXPECT_NE(vtmGetMode() & VTM_ERRMODE_CALLBACK, 0u);
        EXPECT_EQ(vtmClearErrorCallBack(), &ignore_errors);
        EXPECT_EQ(_vtmGetErrorCallBack(), nullptr);
        EXPECT_EQ(vtmGetMode() & VTM_ERRMODE_CALLBACK, 0u);
    }).join();
}

}  // namespace
