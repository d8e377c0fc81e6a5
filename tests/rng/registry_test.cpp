// The registry: numbering, validity, properties, registration checks in
// order, and the refusals of stream creation.
#include <gtest/gtest.h>

#include <cstring>
#include <tuple>

#include <orv/rng.h>

#include "stream_util.h"

namespace {

struct Mapping { uint32_t id, row, sub; bool second; };
class BaseOffset : public testing::TestWithParam<Mapping> {};

TEST_P(BaseOffset, MapsNumbersToTableRowAndSubGenerator) {
    const Mapping m = GetParam();
    uint32_t row = 99, sub = 99;
    const BrngRow* t = __vstGetBrngBaseOffset(m.id, &row, &sub);
    EXPECT_EQ(std::make_tuple(t, row, sub),
              std::make_tuple(m.second ? static_cast<const BrngRow*>(__RegBrngsNew) : __RegBrngs, m.row, m.sub));
}

INSTANTIATE_TEST_SUITE_P(Numbers, BaseOffset,
                         testing::Values(Mapping{0, 0, 0, false}, Mapping{3, 3, 0, false}, Mapping{4, 4, 0, false},
                                         Mapping{276, 4, 272, false}, Mapping{277, 277, 0, false},
                                         Mapping{0x100000, 0, 0, true}, Mapping{0x500000 + 17, 4, 17, true},
                                         Mapping{0x900000 + 6023, 8, 6023, true},
                                         Mapping{0x1000000, 15, 0, true}));

struct Validity { int32_t id, status; };
class Properties : public testing::TestWithParam<Validity> {};

TEST_P(Properties, ValidNumbersGiveTheirRowOthersMinus1000) {
    const Validity v = GetParam();
    BrngRow row;
    std::memset(&row, 0x5A, sizeof row);
    EXPECT_EQ(__vstGetBrngProperties(v.id, &row), v.status);
    uint32_t r = 0, s = 0;
    const BrngRow* t = __vstGetBrngBaseOffset(static_cast<uint32_t>(v.id), &r, &s);
    EXPECT_EQ(__vstIsBrngValid(t, static_cast<int32_t>(r), static_cast<int32_t>(s)), v.status);
    if (v.status == 0) { EXPECT_EQ(0, std::memcmp(&row, &t[r], sizeof row)); }
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Properties,
    testing::Values(Validity{0, 0}, Validity{4, 0}, Validity{276, 0}, Validity{278, 0}, Validity{279, 0},
                    Validity{280, 0}, Validity{281, -1000}, Validity{511, -1000}, Validity{-1, -1000},
                    Validity{0x500000 + 272, 0}, Validity{0x500000 + 273, -1000}, Validity{0x900000 + 6023, 0},
                    Validity{0x900000 + 6024, -1000}, Validity{0x100000 + 1, -1000},
                    Validity{0x7FF00000, -1000}));

int32_t init_ok(int32_t, void*, int32_t, const void*) { return 0; }
int32_t fill_s(void*, int32_t, float*, float, float) { return 0; }
int32_t fill_d(void*, int32_t, double*, double, double) { return 0; }
int32_t fill_i(void*, int32_t, uint32_t*) { return 0; }

struct Bad { BrngRow row; int32_t status; };

// Runs in one test, since registration changes the process-wide count.
TEST(Registry, RegistrationChecksInOrderThenAppends) {
    const BrngRow good = {24, 1, 1, 4, 32, 0, init_ok, fill_s, fill_d, fill_i};
    const BrngRow nulls = {24, 1, 1, 2, 32, 0, nullptr, nullptr, nullptr, nullptr};
    const Bad bad[] = {
        {{-1, 0, 0, 2, 0, 0, nullptr, nullptr, nullptr, nullptr}, -1008},
        {nulls, -1009},  // word size is tested before the null functions
        {{24, 0, 1, 8, 0, 0, nullptr, nullptr, nullptr, nullptr}, -1010},
        {{24, 1, 1, 16, 0, 0, nullptr, nullptr, nullptr, nullptr}, -1011},
        {{24, 1, 1, 4, 32, 0, init_ok, fill_s, fill_d, nullptr}, -5},
        {{24, 1, 1, 4, 32, 0, init_ok, nullptr, fill_d, fill_i}, -5},
    };
    EXPECT_EQ(__vstGetNumRegBrngs(), 16);
    for (const auto& b : bad) {
        EXPECT_EQ(__vstRegisterBrng(&b.row), b.status);
        EXPECT_EQ(__vstGetNumRegBrngs(), 16);
    }
    BrngRow zero_size = good;
    zero_size.streamBytes = 0;  // passes registration
    BrngRow out;
    EXPECT_EQ(__vstGetBrngProperties(0x1100000, &out), -1000);  // the next row, still empty
    EXPECT_EQ(__vstRegisterBrng(&good), 0x1100000);
    EXPECT_EQ(__vstRegisterBrng(&zero_size), 0x1200000);
    EXPECT_EQ(__vstGetNumRegBrngs(), 18);
    EXPECT_EQ(__vstGetBrngProperties(0x1100000, &out), 0);
    EXPECT_EQ(out.initStream, &init_ok);
    EXPECT_EQ(__vstGetBrngProperties(0x1100001, &out), -1000);  // one sub-generator only
    void* s = nullptr;
    ASSERT_EQ(__vstNewStreamEx(&s, 0x1100000, 0, nullptr), 0);
    EXPECT_EQ(__vstGetStreamStateBrng(s), 0x1100000u);
    __vstDeleteStream(&s);
    EXPECT_EQ(s, nullptr);
    // A stream record needs its 16-byte header: a size below it can't be allocated.
    EXPECT_EQ(__vstNewStreamEx(&s, 0x1200000, 0, nullptr), -4);
    // The table holds 512 rows; registration stops there.
    int32_t last = 0;
    while (__vstGetNumRegBrngs() < 512) last = __vstRegisterBrng(&good);
    EXPECT_EQ(last, 512 << 20);
    EXPECT_EQ(__vstRegisterBrng(&good), -1000);
    EXPECT_EQ(__vstGetNumRegBrngs(), 512);
}

TEST(NewStream, RefusalsLeaveTheOutputUntouched) {
    void* const sentinel = reinterpret_cast<void*>(0x1234);
    const uint32_t seed = 1;
    for (int32_t id : {ORV_BRNG_IABSTRACT, ORV_BRNG_DABSTRACT, ORV_BRNG_SABSTRACT, 281, -5, 0x900000 + 6024,
                       279, 280, ORV_BRNG_MT2203}) {
        void* s = sentinel;
        EXPECT_EQ(__vstNewStreamEx(&s, id, 1, &seed), -1000) << id;
        EXPECT_EQ(s, sentinel);
    }
    void* s = nullptr;
    EXPECT_EQ(__vstDeleteStream(&s), 0);
    ASSERT_EQ(__vstNewStreamEx(&s, ORV_BRNG_MRG32K3A, 6, nullptr), 0);  // seeds as no words
    EXPECT_EQ(rngtest::words(s, 2), rngtest::Stream(ORV_BRNG_MRG32K3A, {}).words(2));
    __vstDeleteStream(&s);
    ASSERT_EQ(__vstNewStreamEx(&s, 2, 1, &seed), 0);  // first numbering
    const uint32_t* head = reinterpret_cast<uint32_t*>(s);
    EXPECT_EQ(std::vector<uint32_t>(head, head + 2), (std::vector<uint32_t>{2, 1}));  // generator, mark
    EXPECT_EQ(__vstGetStreamStateBrng(s), 2u);
    __vstDeleteStream(&s);
}

}  // namespace
