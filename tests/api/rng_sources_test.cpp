// The checked quasi-random and abstract stream calls: data that the kernel
// would quietly drop is refused with a status and nothing is made; good data
// gives the stream the kernel makes from the same seed words.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <vector>

#include <orv/orv_rng_sources.h>

#include "../rng/stream_util.h"

namespace {

void* const kUntouched = reinterpret_cast<void*>(0x1);

// Mode 2 data of the published initial numbers, rows of 8.
std::vector<uint32_t> published_rows(uint32_t dim) {
    std::ifstream in(ORV_RNG_SOBOL_NUMBERS);
    std::vector<uint32_t> data = {8};
    std::string line;
    for (uint32_t d = 1; d < dim && std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream f(line);
        uint32_t id, s, poly;
        f >> id >> s >> poly;
        std::vector<uint32_t> row(8, 1);
        for (uint32_t k = 0; k < s; ++k) f >> row[k];
        data.insert(data.end(), row.begin(), row.end());
        ++d;
    }
    return data;
}

TEST(RngSources, GoodDataMakesTheKernelsStream) {
    const auto rows = published_rows(40);
    void* s = kUntouched;
    ASSERT_EQ(vstNewSobolStream(&s, 40, 2, static_cast<int32_t>(rows.size()), rows.data()), 0);
    EXPECT_EQ(rngtest::Stream(s).words(4000), rngtest::Stream(ORV_BRNG_SOBOL, {40}).words(4000));
    const uint32_t polys[3] = {2, 3, 7};
    ASSERT_EQ(vstNewNiederrStream(&s, 3, 1, 3, polys), 0);
    EXPECT_EQ(rngtest::Stream(s).words(300), rngtest::Stream(ORV_BRNG_NIEDERR, {3}).words(300));
    ASSERT_EQ(vstNewSobolStream(&s, 40, 0, 0, nullptr), 0);
    __vstDeleteStream(&s);
}

struct Refusal { const char* what; bool sobol; uint32_t dim, mode; std::vector<uint32_t> data; int32_t status; };
class Refused : public testing::TestWithParam<Refusal> {};

TEST_P(Refused, NothingIsMade) {
    const Refusal& r = GetParam();
    void* s = kUntouched;
    const uint32_t* data = r.data.empty() ? nullptr : r.data.data();
    const int32_t n = static_cast<int32_t>(r.data.size());
    EXPECT_EQ(r.sobol ? vstNewSobolStream(&s, r.dim, r.mode, n, data) : vstNewNiederrStream(&s, r.dim, r.mode, n, data),
              r.status)
        << r.what;
    EXPECT_EQ(s, kUntouched) << r.what;
}

constexpr int32_t kBad = ORV_RNG_ERROR_BAD_ARGUMENT;
INSTANTIATE_TEST_SUITE_P(
    Arguments, Refused,
    testing::Values(Refusal{"dimension 0", true, 0, 0, {}, kBad},
                    Refusal{"built-in Sobol beyond 40", true, 41, 0, {}, kBad},
                    Refusal{"built-in Niederr beyond 318", false, 319, 0, {}, kBad},
                    Refusal{"null data", true, 2, 1, {}, ORV_RNG_ERROR_NULL_PTR},
                    Refusal{"unknown Sobol mode", true, 2, 5, {7}, kBad},
                    Refusal{"mode bits above 8", true, 2, 17, {7}, kBad},
                    Refusal{"mode 1, a word short", true, 3, 1, {7}, kBad},
                    Refusal{"mode 1, a word over", true, 2, 1, {7, 7}, kBad},
                    Refusal{"mode 1 beyond 40", true, 41, 1, std::vector<uint32_t>(40, 7), kBad},
                    Refusal{"polynomial without constant term", true, 2, 1, {6}, kBad},
                    Refusal{"mode 2, row shorter than the degree", true, 3, 2, {1, 1, 1}, kBad},
                    Refusal{"mode 2, even initial number", true, 2, 2, {1, 2}, kBad},
                    Refusal{"mode 3, m_1 too large", true, 2, 3, {7, 2, 1, 5}, kBad},
                    Refusal{"mode 3, degree above D", true, 2, 3, {11, 2, 1, 1}, kBad},
                    Refusal{"mode 4, short", true, 2, 4, std::vector<uint32_t>(63, 1), kBad},
                    Refusal{"unknown Niederr mode", false, 2, 2, {2, 3}, kBad},
                    Refusal{"reducible polynomial", false, 2, 1, {2, 5}, kBad},
                    Refusal{"repeated polynomial", false, 2, 1, {3, 3}, kBad},
                    Refusal{"Niederr mode 4, long", false, 1, 4, std::vector<uint32_t>(33, 1), kBad}),
    [](const testing::TestParamInfo<Refusal>& i) { return "case" + std::to_string(i.index); });

// The abstract calls pass their arguments to the kernel entries, which check
// them: every refusal is reached here through the public names.
TEST(RngSources, NullOutAndAbstractRefusals) {
    const uint32_t polys[1] = {3};
    EXPECT_EQ(vstNewSobolStream(nullptr, 1, 0, 0, nullptr), ORV_RNG_ERROR_NULL_PTR);
    EXPECT_EQ(vstNewNiederrStream(nullptr, 1, 1, 1, polys), ORV_RNG_ERROR_NULL_PTR);
    void* s = kUntouched;
    uint32_t ib[1];
    double db[1];
    float sb[1];
    auto ir = [](void*, int32_t, uint32_t*) -> int32_t { return 0; };
    auto dr = [](void*, int32_t, double*) -> int32_t { return 0; };
    auto sr = [](void*, int32_t, float*) -> int32_t { return 0; };
    EXPECT_EQ(vstiNewAbstractStream(nullptr, 1, ib, ir), ORV_RNG_ERROR_NULL_PTR);
    EXPECT_EQ(vstiNewAbstractStream(&s, 1, nullptr, ir), ORV_RNG_ERROR_NULL_PTR);
    EXPECT_EQ(vstiNewAbstractStream(&s, 1, ib, nullptr), ORV_RNG_ERROR_NULL_PTR);
    EXPECT_EQ(vstiNewAbstractStream(&s, 0, ib, ir), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(vstdNewAbstractStream(&s, 1, db, 1.0, 0.0, dr), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(vstdNewAbstractStream(&s, 1, db, 1.0, 1.0, dr), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(vstdNewAbstractStream(&s, 1, db, 0.0, 0.0 / 0.0, dr), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(vstdNewAbstractStream(&s, 1, db, -1e308, 1e308, dr), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(vstdNewAbstractStream(&s, 1, db, 0.0, 1.0, nullptr), ORV_RNG_ERROR_NULL_PTR);
    EXPECT_EQ(vstsNewAbstractStream(&s, -1, sb, 0.0f, 1.0f, sr), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(vstsNewAbstractStream(&s, 1, sb, 0.0f, 1.0f / 0.0f, sr), ORV_RNG_ERROR_BAD_ARGUMENT);
    EXPECT_EQ(s, kUntouched);
    ASSERT_EQ(vstsNewAbstractStream(&s, 1, sb, 0.0f, 1.0f, sr), 0);
    __vstDeleteStream(&s);
}

}  // namespace
