// Task creation, the editors and deletion.
#include <orv/stats.h>

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <tuple>
#include <vector>

namespace {

struct Creation {
    const char* name;
    bool p_null, x_given, storage_null;
    int64_t p, n, storage;
    bool n_null;
    int32_t want;
};

void PrintTo(const Creation& c, std::ostream* os) { *os << c.name; }

class NewTaskChecks : public ::testing::TestWithParam<Creation> {};

// Checks of creation in their order, for 32- and 64-bit integers.
TEST_P(NewTaskChecks, StatusInOrder) {
    const Creation& c = GetParam();
    double x[4] = {1, 2, 3, 4};
    for (int is64 : {0, 1}) {
        int32_t p32 = (int32_t)c.p, n32 = (int32_t)c.n, s32 = (int32_t)c.storage;
        int64_t p64 = c.p, n64 = c.n, s64 = c.storage;
        const void* pp = c.p_null ? nullptr : is64 ? (const void*)&p64 : &p32;
        const void* np = c.n_null ? nullptr : is64 ? (const void*)&n64 : &n32;
        const void* sp = c.storage_null ? nullptr : is64 ? (const void*)&s64 : &s32;
        SsTask* task = reinterpret_cast<SsTask*>(0x1);
        const int32_t rc = __vstdSSNewTask(&task, pp, np, sp, c.x_given ? x : nullptr, nullptr,
                                           nullptr, is64);
        EXPECT_EQ(rc, c.want) << c.name << " int_is_64 " << is64;
        if (rc != SS_OK) {
            EXPECT_EQ(task, reinterpret_cast<SsTask*>(0x1)) << "handle written before allocation";
            continue;
        }
        EXPECT_EQ(std::make_tuple(task->int_is_64, int(task->type_tag), task->is_double, task->dimension, task->mean),
                  std::make_tuple(is64, 2, 1, pp, (void*)nullptr));
        EXPECT_EQ(__vstSSDeleteTask(&task), SS_OK);
        EXPECT_EQ(task, nullptr);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Creation, NewTaskChecks,
    ::testing::Values(
        Creation{"p null", true, true, false, 2, 4, 0x10000, false, SS_ERR_DIMENSION},
        Creation{"p zero", false, true, false, 0, 4, 0x10000, false, SS_ERR_DIMENSION},
        Creation{"p negative before storage", false, true, true, -1, 4, 0, false, SS_ERR_DIMENSION},
        Creation{"storage null", false, true, true, 2, 4, 0, false, SS_ERR_STORAGE_WORD},
        Creation{"n null", false, true, false, 2, 0, 0x20000, true, SS_ERR_OBSERVATIONS},
        Creation{"n zero", false, true, false, 2, 0, 0x10000, false, SS_ERR_OBSERVATIONS},
        Creation{"both layout bits", false, true, false, 2, 2, 0x30000, false, SS_ERR_STORAGE_VALUE},
        Creation{"storage word zero", false, true, false, 2, 2, 0, false, SS_ERR_STORAGE_VALUE},
        Creation{"x null: n and storage unread", false, false, true, 3, 0, 0, true, SS_OK},
        Creation{"by observation", false, true, false, 2, 2, 0x20000, false, SS_OK}));

TEST(NewTask, SixtyFourBitValuesAreReadWhole) {
    // 2^32 reads as 0 in its low word: accepted only as a 64-bit value.
    const int64_t big = int64_t(1) << 32, storage = 0x10000;
    double x = 0;
    SsTask* task = nullptr;
    EXPECT_EQ(__vstsSSNewTask(&task, &big, &big, &storage, &x, nullptr, nullptr, 1), SS_OK);
    EXPECT_EQ(task->is_double, 0);
    __vstSSDeleteTask(&task);
    const int64_t one = 1;
    EXPECT_EQ(__vstdSSNewTask(&task, &one, &big, &storage, &x, nullptr, nullptr, 0),
              SS_ERR_OBSERVATIONS);
    EXPECT_EQ(__vstdSSNewTask(nullptr, &one, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
              SS_ERR_NULL_TASK);
}

class EditorTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(__vstdSSNewTask(&task, &p_, nullptr, nullptr, nullptr, nullptr, nullptr, 0), SS_OK);
    }
    void TearDown() override { __vstSSDeleteTask(&task); }
    int32_t p_ = 3;
    SsTask* task = nullptr;
};

// Every number 1..79 belongs to exactly one side; the two real editors agree;
// each number edits its own field.
TEST_F(EditorTest, EachNumberHasOneSideAndOneField) {
    std::vector<char> cells(80);
    std::set<void*> seen;
    for (int32_t no = 1; no <= 79; ++no) {
        void* value = &cells[no];
        const int32_t ri = __vstiSSEditTask(task, no, value);
        const int32_t rd = __vstdSSEditTask(task, no, value);
        const int32_t rs = __vstsSSEditTask(task, no, value);
        EXPECT_EQ(rd, rs) << no;
        EXPECT_TRUE((ri == SS_OK) != (rd == SS_OK)) << no;
        EXPECT_EQ(ri == SS_OK ? rd : ri, SS_ERR_BAD_PARAMETER_NUMBER) << no;
    }
    // The record now holds the 79 addresses in 79 distinct pointer fields.
    const void* const* words = reinterpret_cast<const void* const*>(task);
    for (size_t k = 0; k < sizeof(SsTask) / sizeof(void*); ++k)
        if (words[k] >= &cells[1] && words[k] <= &cells[79]) seen.insert(const_cast<void*>(words[k]));
    EXPECT_EQ(seen.size(), 79u);
    EXPECT_EQ((std::vector<const void*>{task->cov, task->cross_product_storage, task->accum_weights,
                                        task->sorted_storage}),
              (std::vector<const void*>{&cells[19], &cells[75], &cells[23], &cells[79]}));
}

struct NullEdit { int32_t no; bool real; int32_t want; };
void PrintTo(const NullEdit& c, std::ostream* os) {
    *os << (c.real ? "real " : "int ") << c.no;
}

class NullEdits : public EditorTest, public ::testing::WithParamInterface<NullEdit> {};

TEST_P(NullEdits, NullGivesTheFieldStatusAndKeepsTheField) {
    const NullEdit c = GetParam();
    double cell = 0;
    auto ed = c.real ? __vstdSSEditTask : __vstiSSEditTask;
    if (c.want != SS_ERR_BAD_PARAMETER_NUMBER) { ASSERT_EQ(ed(task, c.no, &cell), SS_OK); }
    std::vector<unsigned char> before(sizeof(SsTask));
    std::memcpy(before.data(), task, sizeof(SsTask));
    EXPECT_EQ(ed(task, c.no, nullptr), c.want);
    EXPECT_EQ(std::memcmp(before.data(), task, sizeof(SsTask)), 0);
    EXPECT_EQ(ed(nullptr, c.no, &cell), SS_ERR_NULL_TASK);
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, NullEdits,
    ::testing::Values(NullEdit{1, true, SS_ERR_BAD_PARAMETER_NUMBER},
                      NullEdit{3, false, SS_ERR_BAD_PARAMETER_NUMBER},
                      NullEdit{0, true, SS_ERR_BAD_PARAMETER_NUMBER},
                      NullEdit{80, false, SS_ERR_BAD_PARAMETER_NUMBER},
                      NullEdit{1, false, SS_ERR_DIMENSION}, NullEdit{5, false, SS_ERR_INDICES},
                      NullEdit{4, false, SS_ERR_STORAGE_WORD}, NullEdit{61, false, SS_ERR_STORAGE_WORD},
                      NullEdit{3, true, SS_ERR_NULL_DATA}, NullEdit{7, true, SS_ERR_MEAN},
                      NullEdit{67, true, SS_ERR_MEAN}, NullEdit{68, true, SS_ERR_SUM2},
                      NullEdit{23, true, SS_ERR_ACCUM_WEIGHTS}, NullEdit{74, true, SS_ERR_CROSS_PRODUCT},
                      NullEdit{28, false, SS_ERR_GROUP_VALUES}, NullEdit{63, true, SS_ERR_STREAM_PARAMS},
                      NullEdit{78, true, SS_ERR_SORTED}, NullEdit{6, true, SS_ERR_WEIGHTS},
                      NullEdit{29, false, SS_ERR_STORAGE_WORD},
                      NullEdit{62, false, SS_ERR_STREAM_PARAM_COUNT},
                      NullEdit{64, false, SS_ERR_STREAM_ORDER_VALUES},
                      NullEdit{52, false, SS_ERR_IMPUTE_INIT_COUNT}));

TEST_F(EditorTest, GroupedEditorsSetInOrderAndKeepOnNull) {
    double v[7] = {};
    EXPECT_EQ(__vstsSSEditMoments(task, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6]), SS_OK);
    using Fields = std::vector<const void*>;
    EXPECT_EQ((Fields{task->mean, task->raw4, task->central4}), (Fields{&v[0], &v[3], &v[6]}));
    int32_t s1 = 0, s2 = 1;
    EXPECT_EQ(__vstdSSEditCovCor(task, nullptr, &v[1], &s1, &v[2], &s2), SS_OK);  // a null mean keeps it
    EXPECT_EQ((Fields{task->mean, task->cov, task->cor_storage}), (Fields{&v[0], &v[1], &s2}));
    EXPECT_EQ(__vstdSSEditOutDetect(task, &s1, &v[4], &v[5]), SS_OK);
    EXPECT_EQ(task->outlier_weights, &v[5]);

    std::vector<unsigned char> before(sizeof(SsTask));
    std::memcpy(before.data(), task, sizeof(SsTask));
    EXPECT_EQ(__vstdSSEditMoments(task, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), SS_OK);
    EXPECT_EQ(__vstdSSEditMissingVals(task, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                      nullptr, nullptr, nullptr, nullptr), SS_OK);
    EXPECT_EQ(std::memcmp(before.data(), task, sizeof(SsTask)), 0);
    EXPECT_EQ(__vstdSSEditSums(nullptr, &v[0], nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
              SS_ERR_NULL_TASK);
}

int g_released = 0;
SsTask* g_released_task = nullptr;
void count_release(SsTask* t) {
    ++g_released;
    g_released_task = t;
}

TEST_F(EditorTest, DeleteRunsReleaseOpsAndClearsHandle) {
    task->release_count = 1;
    task->release_ops[0] = count_release;
    SsTask* const was = task;
    EXPECT_EQ(__vstSSDeleteTask(&task), SS_OK);
    EXPECT_EQ(task, nullptr);
    EXPECT_EQ(g_released, 1);
    EXPECT_EQ(g_released_task, was);
    EXPECT_EQ(__vstSSDeleteTask(nullptr), SS_ERR_NULL_TASK);
}

}  // namespace
