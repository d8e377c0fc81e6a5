// Per-thread records and the module handler.
#include <gtest/gtest.h>

#include <thread>

#include "frame/fault_injection.h"
#include "frame/platform.h"
#include "frame/thread_record.h"

namespace fr = orv::frame;

namespace {

template <typename F>
void in_new_thread(F f) {
    std::thread t(f);
    t.join();
}

TEST(ThreadRecord, LoadingThreadHasRecordAndOthersGetOneOnFirstUse) {
    ASSERT_TRUE(fr::has_slot());
    EXPECT_NE(fr::peek_thread_record(), nullptr);  // made by the load
    const std::size_t before = fr::live_records();
    in_new_thread([&] {
        EXPECT_EQ(fr::peek_thread_record(), nullptr);
        EXPECT_EQ(fr::live_records(), before);
        _vtmGetErrStatus();
        EXPECT_NE(fr::peek_thread_record(), nullptr);
        EXPECT_EQ(fr::live_records(), before + 1);
    });
    EXPECT_EQ(fr::live_records(), before);  // released at thread end
}

TEST(ThreadRecord, KernelCallAloneCreatesRecord) {
    const std::size_t before = fr::live_records();
    in_new_thread([&] {
        double a[20] = {}, r[20];
        _vtmdAddI(10, a, 1, a, 2, r, 1);  // strided form reads the mode word
        EXPECT_NE(fr::peek_thread_record(), nullptr);
    });
    in_new_thread([&] { EXPECT_EQ(fr::live_records(), before); });  // untouched thread frees nothing
}

TEST(ThreadRecord, ThreadDetachReleasesAndNextUseStartsFresh) {
    _vtmSetMode(VTM_EP);
    _vtmSetErrStatus(3);
    const std::size_t before = fr::live_records();
    EXPECT_EQ(fr::module_entry(nullptr, fr::kThreadDetach, nullptr), 1);
    EXPECT_EQ(fr::peek_thread_record(), nullptr);
    EXPECT_EQ(fr::live_records(), before - 1);
    EXPECT_EQ(_vtmGetErrStatus(), 0);
    EXPECT_EQ(_vtmGetMode(), VTM_MODE_BUILTIN_DEFAULT);  // decided anew
    EXPECT_EQ(fr::module_entry(nullptr, fr::kThreadAttach, nullptr), 1);
}

TEST(ThreadRecord, ProcessEndingDoesNothingAndUnloadReleasesEverything) {
    _vtmGetMode();
    int ending = 1;
    EXPECT_EQ(fr::module_entry(nullptr, fr::kProcessDetach, &ending), 1);
    EXPECT_TRUE(fr::has_slot());
    EXPECT_NE(fr::peek_thread_record(), nullptr);

    EXPECT_EQ(fr::module_entry(nullptr, fr::kProcessDetach, nullptr), 1);
    EXPECT_FALSE(fr::has_slot());
    EXPECT_EQ(fr::live_records(), 0u);
    // The next use loads the module state again.
    EXPECT_EQ(_vtmGetMode(), VTM_MODE_BUILTIN_DEFAULT);
    EXPECT_TRUE(fr::has_slot());
    EXPECT_EQ(fr::live_records(), 1u);
}

TEST(ThreadRecord, RefusedLoadPrintsMessage773) {
    orv::fault::DisarmOnExit g;
    ASSERT_EQ(fr::module_entry(nullptr, fr::kProcessDetach, nullptr), 1);
    for (auto point : {orv::fault::kTlsAlloc, orv::fault::kHeapCreate}) {  // no slot; a slot but no heap
        orv::fault::arm(point, 0, orv::fault::kEveryHit);
        testing::internal::CaptureStderr();
        EXPECT_EQ(fr::module_entry(nullptr, fr::kProcessAttach, nullptr), 0);
        EXPECT_NE(testing::internal::GetCapturedStderr().find("per-thread state"), std::string::npos);
        orv::fault::disarm_all();
    }
    EXPECT_EQ(fr::module_entry(nullptr, fr::kProcessAttach, nullptr), 1);
}

TEST(ThreadRecordDeathTest, LaterThreadWithoutMemoryEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (auto which : {0, 1}) {
        EXPECT_EXIT(
            {
                orv::fault::arm(which == 0 ? orv::fault::kHeapAlloc : orv::fault::kTlsSet, 0, orv::fault::kEveryHit);
                std::thread([] { _vtmGetMode(); }).join();
            },
            testing::ExitedWithCode(3), "per-thread state");
    }
}

}  // namespace
