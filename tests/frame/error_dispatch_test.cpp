// Error entries and the dispatcher, driven directly.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "frame/error_dispatch.h"
#include "frame/fp_guard.h"

namespace fr = orv::frame;

namespace {

std::vector<VtmErrorContext> g_seen;
int32_t g_callback_result = 0;
double g_replacement = 0.0;

int32_t recording_callback(VtmErrorContext* c) {
    g_seen.push_back(*c);
    c->res1 = g_replacement;
    return g_callback_result;
}

// Each test runs in its own thread, so it starts from a fresh record, with
// the recording callback installed.
template <typename F>
void fresh(F f) {
    g_seen.clear();
    g_callback_result = 0;
    std::thread([f] {
        _vtmSetErrorCallBack(recording_callback);
        f();
    }).join();
}

// NOERR alone records nothing, IGNORE alone only the status; with another
// bit, IGNORE does not ignore.
TEST(ErrorEntry, NoErrAndIgnoreAlone) {
    fresh([] {
        double a[2] = {1, 2}, r[2] = {5, 6};
        _vtmSetMode(VTM_ERRMODE_NOERR);
        fr::error_d(VtmStatusDomain, 1, a, a, r, r, "vdLn");
        EXPECT_EQ(_vtmGetErrStatus(), 0);
        EXPECT_EQ(r[1], 6.0);
        _vtmSetMode(VTM_ERRMODE_IGNORE);
        fr::error_d(VtmStatusPole, 0, a, a, r, r, "vdLn");
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusPole);
        EXPECT_TRUE(g_seen.empty());
        _vtmSetMode(VTM_ERRMODE_IGNORE | VTM_ERRMODE_CALLBACK);
        fr::error_d(VtmStatusPole, 0, a, a, r, r, "vdLn");
        EXPECT_EQ(g_seen.size(), 1u);
    });
}

TEST(ErrorEntry, LastStatusWinsAndRecordCarriesElementValues) {
    fresh([] {
        _vtmSetMode(VTM_ERRMODE_CALLBACK);
        float a[4] = {1.5f, 2.5f, 3.5f, 4.5f}, b[4] = {-1, -2, -3, -4}, r[4] = {9, 8, 7, 6};
        g_replacement = 8.0;  // unchanged by the callback for element 1
        fr::error_s(VtmStatusDomain, 1, a, b, r, r, "vsDiv");
        g_replacement = 6.0;
        fr::error_s(VtmStatusOverflow, 3, a, b, r, r, "vsDiv");
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusOverflow);
        ASSERT_EQ(g_seen.size(), 2u);
        const VtmErrorContext& c = g_seen[1];
        EXPECT_EQ(std::make_tuple(c.code, c.index, c.arg1, c.arg2, c.res1, c.res2, std::string(c.functionName),
                                  c.functionNameLength),
                  std::make_tuple(3, 3, 4.5, -4.0, 6.0, 6.0, std::string("vsDiv"), 5));
    });
}

TEST(ErrorEntry, CallbackZeroReplacesResultNonZeroKeepsIt) {
    fresh([] {
        _vtmSetMode(VTM_ERRMODE_CALLBACK);
        float a[1] = {2}, r[1] = {7};
        g_replacement = 0.1;  // narrowed to float when written back
        g_callback_result = 1;
        fr::error_s(VtmStatusDomain, 0, a, a, r, r, "vsLn");
        EXPECT_EQ(r[0], 7.0f);
        g_callback_result = 0;
        fr::error_s(VtmStatusDomain, 0, a, a, r, r, "vsLn");
        EXPECT_EQ(r[0], 0.1f);
    });
}

TEST(ErrorEntry, TwoResultsAreWrittenSecondThenFirst) {
    fresh([] {
        _vtmSetErrorCallBack(+[](VtmErrorContext* c) -> int32_t {
            c->res1 = 11;
            c->res2 = 22;
            return 0;
        });
        double a[1] = {1}, r1[1] = {0}, r2[1] = {0}, same[1] = {0};
        fr::error_d(VtmStatusDomain, 0, a, a, r1, r2, "vdSinCos");
        EXPECT_EQ(r1[0], 11.0);
        EXPECT_EQ(r2[0], 22.0);
        fr::error_d(VtmStatusDomain, 0, a, a, same, same, "vdExp");
        EXPECT_EQ(same[0], 11.0);  // res1 is written last
    });
}

TEST(ErrorEntry, IndexIsRelativeToTheCallersWholeArray) {
    fresh([] {
        std::vector<double> whole(2000);
        for (int i = 0; i < 2000; ++i) whole[i] = i;
        std::vector<OrvComplex16> zwhole(100);
        _vtmSetInterfInputVectorPointer(whole.data());
        double* chunk = whole.data() + 1000;
        fr::error_d(VtmStatusDomain, 5, chunk, chunk, chunk, chunk, "vdLn");
        fr::error_d_strided(VtmStatusDomain, 5, chunk, 3, chunk, 3, chunk, 3, chunk, 3, "vdLn");
        _vtmSetInterfInputVectorPointer(zwhole.data());
        zwhole[17] = {1.25, -2.5};
        fr::error_z(VtmStatusDomain, 7, zwhole.data() + 10, zwhole.data() + 10, zwhole.data() + 10,
                    zwhole.data() + 10, "vzLn");
        ASSERT_EQ(g_seen.size(), 3u);
        // Chunk element 5; strided: the distance is not divided by the
        // increment, the element is read at index times increment.
        std::vector<std::pair<int32_t, double>> got;
        for (const VtmErrorContext& c : g_seen) got.push_back({c.index, c.arg1});
        EXPECT_EQ(got, (std::vector<std::pair<int32_t, double>>{{1005, 1005.0}, {1005, 1015.0}, {17, 1.25}}));
        EXPECT_EQ(g_seen[2].arg1Imag, -2.5);
    });
}

TEST(ErrorEntry, LongNameIsCutTo47) {
    fresh([] {
        const std::string name(50, 'n');
        double a[1] = {0};
        fr::error_d(VtmStatusPole, 0, a, a, a, a, name.c_str());
        ASSERT_EQ(g_seen.size(), 1u);
        EXPECT_EQ(g_seen[0].functionNameLength, 47);
        EXPECT_EQ(std::string(g_seen[0].functionName), std::string(47, 'n'));
    });
}

TEST(ErrorEntry, BadArgumentAndPointerLeaveArraysAlone) {
    fresh([] {
        g_replacement = 99;
        double a[1] = {3}, r[1] = {4};
        fr::error_d(VtmStatusBadArgument, 2, a, a, r, r, "vdAdd");
        fr::error_d(VtmStatusBadPointer, 0, a, a, r, r, "vdAdd");
        EXPECT_EQ(r[0], 4.0);
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusBadPointer);
        ASSERT_EQ(g_seen.size(), 2u);
        EXPECT_EQ(g_seen[0].index, 2);
    });
}

struct ErrnoCase { int32_t status; int err; };
class ErrnoMode : public testing::TestWithParam<ErrnoCase> {};

TEST_P(ErrnoMode, StatusSetsTheCRuntimesErrno) {
    const ErrnoCase c = GetParam();
    fresh([c] {
        _vtmSetMode(VTM_ERRMODE_ERRNO);
        double a[1] = {1};
        errno = 12345;
        fr::error_d(c.status, 0, a, a, a, a, "vdExp");
        EXPECT_EQ(errno, c.err);
        EXPECT_EQ(fr::errno_for_status(c.status), c.err);
    });
}

INSTANTIATE_TEST_SUITE_P(Statuses, ErrnoMode,
                         testing::Values(ErrnoCase{1, 33}, ErrnoCase{2, 34}, ErrnoCase{3, 34},
                                         ErrnoCase{4, 34}, ErrnoCase{-1, 22}, ErrnoCase{-2, 13},
                                         ErrnoCase{7, 14}));

TEST(Dispatcher, StderrNamesFunctionElementAndValues) {
    fresh([] {
        _vtmSetMode(VTM_ERRMODE_STDERR);
        double a[3] = {0, 0, -2.5}, b[3] = {0, 0, 4}, r[3] = {0, 0, 0.5};
        testing::internal::CaptureStderr();
        fr::error_d(VtmStatusDomain, 2, a, b, r, r, "vdPow");
        const std::string two_args = testing::internal::GetCapturedStderr();
        for (const char* part : {"vdPow", "domain", "element 2: first argument = -2.5", "second argument = 4",
                                 "result = 0.5"})
            EXPECT_NE(two_args.find(part), std::string::npos) << part;
        testing::internal::CaptureStderr();
        fr::error_d(VtmStatusOverflow, 2, a, a, r, r, "vdExp");
        const std::string one_arg = testing::internal::GetCapturedStderr();
        EXPECT_NE(one_arg.find("element 2: argument = -2.5"), std::string::npos);
        EXPECT_EQ(one_arg.find("second"), std::string::npos);
        testing::internal::CaptureStderr();
        fr::error_d(VtmStatusBadArgument, 3, a, a, r, r, "vdExp");
        EXPECT_NE(testing::internal::GetCapturedStderr().find("argument 3 is invalid"),
                  std::string::npos);
    });
}

TEST(Dispatcher, MaskedTrapLeavesOnlyTheStickyFlag) {
    fresh([] {
        _vtmSetMode(VTM_ERRMODE_EXCEPT | VTM_TRAP_DIVBYZERO);
        fr::x87_clear_exceptions();
        double a[1] = {-1};
        fr::error_d(VtmStatusDomain, 0, a, a, a, a, "vdLn");
        EXPECT_EQ(fr::x87_status() & 0x3F, 0x01);  // invalid raised, nothing delivered
        EXPECT_EQ(fr::x87_control() & 0x3F, 0x3F);
        fr::x87_clear_exceptions();
    });
}

TEST(DispatcherDeathTest, UnmaskedTrapArrivesAsSigfpe) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            _vtmSetMode(VTM_ERRMODE_EXCEPT | VTM_TRAP_DIVBYZERO);
            double a[1] = {0};
            fr::error_d(VtmStatusPole, 0, a, a, a, a, "vdInv");
        },
        testing::KilledBySignal(SIGFPE), "");
}

TEST(Callbacks, SetAndClearGoThroughTheMerge) {
    std::thread([] {
        EXPECT_EQ(_vtmSetErrorCallBack(recording_callback), nullptr);
        EXPECT_EQ(_vtmGetErrorCallBack(), recording_callback);
        EXPECT_EQ(_vtmGetMode() & VTM_ERRMODE_MASK, 0x1A00u);
        _vtmSetMode(VTM_ERRMODE_CALLBACK);
        // Callback the only error bit: clearing hands the merge an empty field.
        EXPECT_EQ(_vtmClearErrorCallBack(), recording_callback);
        EXPECT_EQ(_vtmGetErrorCallBack(), nullptr);
        EXPECT_EQ(_vtmGetMode() & VTM_ERRMODE_MASK, VTM_ERRMODE_CALLBACK);
        double a[1] = {1};
        fr::error_d(VtmStatusDomain, 0, a, a, a, a, "vdLn");  // null callback skipped
        EXPECT_EQ(_vtmGetErrStatus(), VtmStatusDomain);
        _vtmSetMode(VTM_ERRMODE_ERRNO | VTM_ERRMODE_CALLBACK);
        _vtmClearErrorCallBack();
        EXPECT_EQ(_vtmGetMode() & VTM_ERRMODE_MASK, VTM_ERRMODE_ERRNO);
        EXPECT_EQ(_vtmSetErrStatus(-7), VtmStatusDomain);
        EXPECT_EQ(_vtmClearErrStatus(), -7);
        EXPECT_EQ(orv_vtm_kernel_GetErrStatus(), 0);
    }).join();
}

}  // namespace
