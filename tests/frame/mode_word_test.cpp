// Mode word: environment parser, lazy default per thread, merge rule.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "frame/mode_word.h"
#include "frame/thread_record.h"

namespace {

// The mode a fresh thread decides with ORV_VTM_MODE set to value (or unset).
uint32_t fresh_thread_mode(const char* value) {
    if (value) setenv("ORV_VTM_MODE", value, 1);
    else unsetenv("ORV_VTM_MODE");
    uint32_t mode = 0;
    std::thread([&] { mode = _vtmGetMode(); }).join();
    unsetenv("ORV_VTM_MODE");
    return mode;
}

struct EnvCase { const char* value; uint32_t mode; };

class ModeFromEnvironment : public testing::TestWithParam<EnvCase> {};

TEST_P(ModeFromEnvironment, FreshThreadDecidesItsDefault) {
    EXPECT_EQ(fresh_thread_mode(GetParam().value), GetParam().mode) << GetParam().value;
}

INSTANTIATE_TEST_SUITE_P(
    Values, ModeFromEnvironment,
    testing::Values(EnvCase{"VTM_LA", 0x1A01}, EnvCase{"VTM_ERRMODE_ERRNO", 0x202},
                    EnvCase{"VTM_EP,VTM_ERRMODE_STDERR,VTM_TRAP_INVALID", 0x1000403},
                    EnvCase{"VTM_DEFAULT_PRECISION", 0x1A02}, EnvCase{"VTM_RESTORE", 0x1A32},
                    EnvCase{"VTM_LA,VTM_HA", 0x1A03},  // tokens are or-ed: accuracy 3
                    EnvCase{"VTM_DOUBLE_CONSISTEN", 0x1A22},
                    EnvCase{"VTM_ERRMODE_NOERR,VTM_TRAP_OVERFLOW", 0x4002002},
                    // refused values fall back to the built-in default
                    EnvCase{"VTM_LA,", 0x1A02}, EnvCase{"VTM_LA, VTM_HA", 0x1A02},
                    EnvCase{"vtm_LA", 0x1A02}, EnvCase{"VTM_LAX", 0x1A02},
                    EnvCase{"VTM_DOUBLE_CONSISTENT", 0x1A02}, EnvCase{"LA", 0x1A02},
                    EnvCase{"VTM_HA,VTM_BOGUS", 0x1A02}, EnvCase{"", 0x1A02},
                    EnvCase{nullptr, 0x1A02}));

TEST(ModeParser, TokensNearTheEndOfTheBufferAreSkipped) {
    // 35 tokens "VTM_HA" joined by commas take 244 bytes.
    std::string ok = "VTM_HA";
    for (int i = 1; i < 35; ++i) ok += ",VTM_HA";
    ASSERT_EQ(ok.size(), 244u);
    EXPECT_EQ(orv::frame::parse_mode_text(ok.c_str()), 0x2);
    // A name that would reach past position 255 is skipped, so the parse fails.
    std::string longer = ok + ",VTM_ERRMODE_ERRNO";  // the name would end at 262
    EXPECT_EQ(orv::frame::parse_mode_text(longer.c_str()), -1);
    // A value of 300 bytes is cut to 255 by the service call.
    setenv("ORV_VTM_MODE", (ok + ",VTM_LA" + std::string(50, 'X')).c_str(), 1);
    EXPECT_EQ(orv::frame::parse_mode_environment(), -1);
    setenv("ORV_VTM_MODE", (ok + ",VTM_LA").c_str(), 1);
    EXPECT_EQ(orv::frame::parse_mode_environment(), 0x3);
    unsetenv("ORV_VTM_MODE");
}

struct MergeCase { uint32_t current, update, merged; };
class ModeMerge : public testing::TestWithParam<MergeCase> {};

TEST_P(ModeMerge, FieldsAreReplacedAsWholesAndNeverCleared) {
    const auto& c = GetParam();
    EXPECT_EQ(orv::frame::merge_mode(c.current, c.update), c.merged);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ModeMerge,
    testing::Values(MergeCase{0x1A02, 0x200, 0x202}, MergeCase{0x1A02, 0, 0x1A02},
                    MergeCase{0x1A32, 0x3, 0x1A33},            // consistency untouched
                    MergeCase{0x1A02, 0x30, 0x1A02},           // consistency cannot be set
                    MergeCase{0x1A02, 0x280000, 0x281A02},
                    MergeCase{0x281A02, 0x140000, 0x141A02},
                    MergeCase{0x1A02, 0x30000, 0x31A02},       // spare pair kept
                    MergeCase{0x3001A02, 0x4000000, 0x4001A02},
                    MergeCase{0x1A02, 0x80000001, 0x1A01}));  // bits outside the masks ignored

TEST(ModeWord, SetModeReturnsTheWordBeforeTheMerge) {
    std::thread([] {
        EXPECT_EQ(_vtmSetMode(0x200), 0x1A02u);
        EXPECT_EQ(_vtmGetMode(), 0x202u);
        EXPECT_EQ(orv_vtm_kernel_SetMode(0), 0x202u);
        EXPECT_EQ(_vtmSetMode(0x280000), 0x202u);
        _vtmSetMode(0x140000);
        EXPECT_EQ(_vtmGetMode() & VTM_DENORMAL_MASK, 0x140000u);
        EXPECT_EQ(orv_vtm_kernel_GetMode(), _vtmGetMode());
    }).join();
}

TEST(ModeWord, TableIndexFollowsTheAccuracyField) {
    std::thread([] {
        EXPECT_EQ(orv_vtm_kernel_GetTTableIndex(), 1);
        for (auto [mode, index] : {std::pair{VTM_LA, 0}, {VTM_EP, 2}, {0xCu, 11}}) {  // 0xC: no range check
            _vtmSetMode(mode);
            EXPECT_EQ(orv_vtm_kernel_GetTTableIndex(), index) << mode;
        }
    }).join();
    std::thread([] {
        EXPECT_EQ(orv_vtm_kernel_GetTTableIndexM(12345, 0x1A03), 2);
        EXPECT_EQ(orv_vtm_kernel_GetTTableIndexM(0, 0x1A00), -1);
        EXPECT_EQ(orv::frame::peek_thread_record(), nullptr);  // no thread state touched
    }).join();
}

}  // namespace
