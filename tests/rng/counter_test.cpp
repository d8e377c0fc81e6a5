// PHILOX4X32X10 and ARS5 against the block functions of Random123's headers
// (an independent implementation, used in tests only), with counters that
// carry across words and skip counts up to three words; TRNG's statuses, its
// retry rule through the RDRAND fault site, and a frequency test of its bits.
#include <gtest/gtest.h>

#include <Random123/ars.h>
#include <Random123/philox.h>

#include <bit>
#include <cmath>
#include <vector>

#include <orv/rng.h>

#include "frame/fault_injection.h"
#include "stream_util.h"

namespace {

using u128 = unsigned __int128;

using Owned = rngtest::Stream;

u128 counter_of(const uint32_t c[4]) {
    return static_cast<u128>(c[3]) << 96 | static_cast<u128>(c[2]) << 64 | static_cast<u128>(c[1]) << 32 | c[0];
}

// Block j after the seeded counter, from Random123.
std::vector<uint32_t> reference_block(int32_t id, const uint32_t* key, u128 ctr) {
    const uint32_t w[4] = {uint32_t(ctr), uint32_t(ctr >> 32), uint32_t(ctr >> 64), uint32_t(ctr >> 96)};
    const auto r = id == ORV_BRNG_PHILOX4X32X10
                       ? philox4x32_R(10, philox4x32_ctr_t{{w[0], w[1], w[2], w[3]}}, philox4x32_key_t{{key[0], key[1]}})
                       : ars4x32_R(5, ars4x32_ctr_t{{w[0], w[1], w[2], w[3]}}, ars4x32_key_t{{key[0], key[1], key[2], key[3]}});
    return {r.v[0], r.v[1], r.v[2], r.v[3]};
}

struct Case { const char* name; uint32_t key[4]; uint32_t ctr[4]; };
const Case kCases[] = {
    {"zero", {0, 0, 0, 0}, {0, 0, 0, 0}},
    {"carry_into_word1", {1, 2, 3, 4}, {0xFFFFFFFD, 0, 0, 0}},
    {"carry_into_word3", {0xDEADBEEF, 0x01234567, 5, 6}, {0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFF, 7}},
    {"wrap_of_128_bits", {0x243F6A88, 0x85A308D3, 0x13198A2E, 0x03707344}, {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFE}},
};

class Counter : public testing::TestWithParam<int32_t> {
  protected:
    int key_words() const { return GetParam() == ORV_BRNG_ARS5 ? 4 : 2; }
    bool open(Owned& o, const Case& c) {
        std::vector<uint32_t> seed(c.key, c.key + key_words());
        seed.insert(seed.end(), c.ctr, c.ctr + 4);
        const int32_t st = __vstNewStreamEx(&o.s, GetParam(), static_cast<int32_t>(seed.size()), seed.data());
        if (GetParam() == ORV_BRNG_ARS5 && !__vstCPUisAES()) {
            EXPECT_EQ(st, ORV_RNG_ERROR_NO_AES);
            return false;
        }
        EXPECT_EQ(st, 0);
        o.adopt();
        return st == 0;
    }
};

TEST_P(Counter, BlocksMatchRandom123AcrossCounterCarries) {
    for (const Case& c : kCases) {
        Owned o;
        if (!open(o, c)) return;
        constexpr int blocks = 9;
        auto got = o.words(3);  // a fill that stops inside a block
        const auto rest = o.words(4 * blocks - 3);
        got.insert(got.end(), rest.begin(), rest.end());
        for (int j = 0; j < blocks; ++j) {
            const auto want = reference_block(GetParam(), c.key, counter_of(c.ctr) + static_cast<u128>(j));
            for (int w = 0; w < 4; ++w) ASSERT_EQ(got[4 * j + w], want[w]) << c.name << " block " << j;
        }
    }
}

// Skip counts of one to four words: the next word is word N mod 4 of the
// block at counter + N / 4 (a fourth word is ignored).
TEST_P(Counter, WideSkipsLandOnTheRightBlock) {
    const uint64_t counts[][4] = {{5, 0, 0, 0}, {0, 1, 0, 0}, {7, 3, 0, 0}, {2, 0, 1, 0}, {0xFFFFFFFFFFFFFFFF, 0xFFFFFFFFFFFFFFFF, 3, 9}};
    for (const Case& c : kCases)
        for (const auto& n : counts) {
            for (int drawn : {0, 2}) {
                Owned o;
                if (!open(o, c)) return;
                o.words(drawn);
                ASSERT_EQ(__vstSkipAheadStreamEx(o.s, 4, n), 0);
                const auto w = o.words(1);
                // N = drawn + n0 + n1 2^64 + n2 2^128, modulo 2^130.
                const u128 low = static_cast<u128>(n[1]) << 64 | n[0];
                const u128 sum = low + static_cast<u128>(drawn);
                const uint64_t top = n[2] + (sum < low ? 1 : 0);
                const u128 blocks = sum >> 2 | static_cast<u128>(top) << 126;
                const auto want = reference_block(GetParam(), c.key, counter_of(c.ctr) + blocks);
                ASSERT_EQ(w[0], want[static_cast<int>(sum & 3)]) << c.name << " n0 " << n[0] << " drawn " << drawn;
            }
        }
}

INSTANTIATE_TEST_SUITE_P(Generators, Counter, testing::Values(ORV_BRNG_PHILOX4X32X10, ORV_BRNG_ARS5),
                         [](const testing::TestParamInfo<int32_t>& i) {
                             return i.param == ORV_BRNG_ARS5 ? std::string("ARS5") : std::string("PHILOX4X32X10");
                         });

TEST(Counter, LeapfrogAndMissingAesStatuses) {
    for (int32_t id : {ORV_BRNG_PHILOX4X32X10, ORV_BRNG_ARS5}) {
        Owned o;
        const int32_t st = __vstNewStreamEx(&o.s, id, 0, nullptr);
        if (id == ORV_BRNG_ARS5 && !__vstCPUisAES()) {
            EXPECT_EQ(st, ORV_RNG_ERROR_NO_AES);
            EXPECT_EQ(__vstSkipAheadStream(o.s, 1), ORV_RNG_ERROR_NO_AES);
            continue;
        }
        EXPECT_EQ(__vstLeapfrogStream(o.s, 0, 2), ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
    }
}

// TRNG

struct Trng {
    Owned o;
    BrngRow row{};
    int32_t status;
    explicit Trng(std::vector<uint32_t> seed = {}) {
        status = __vstNewStreamEx(&o.s, ORV_BRNG_TRNG, static_cast<int32_t>(seed.size()), seed.data());
        __vstGetBrngProperties(ORV_BRNG_TRNG, &row);
    }
};

// Without RDRAND the stream is refused and a fill says why. (With it, the
// missing skip-ahead and leapfrog are checked in generic_test.cpp.)
TEST(Trng, StatusesWithoutRdrand) {
    if (__vstCPUisRDRAND()) GTEST_SKIP() << "RDRAND present";
    Trng t;
    EXPECT_EQ(t.status, ORV_RNG_ERROR_NO_RDRAND);
    uint32_t w;
    EXPECT_EQ(t.row.wordFill(t.o.s, 1, &w), ORV_RNG_ERROR_NO_RDRAND);
}

// With r retries a value has r + 1 attempts, and one that comes only at the
// last of them is still a failure: r - 1 empty attempts pass, r do not.
struct Retry { std::vector<uint32_t> seed; int empty_attempts; int32_t status; };
class TrngRetry : public testing::TestWithParam<Retry> {};

TEST_P(TrngRetry, ValueMustComeWithinTheRetries) {
    if (!__vstCPUisRDRAND()) GTEST_SKIP() << "no RDRAND";
    orv::fault::DisarmOnExit disarm;
    Trng t(GetParam().seed);
    ASSERT_EQ(t.status, 0);
    uint32_t w[2] = {0, 0};
    double d = -1;
    float f = -1;
    for (int form = 0; form < 3; ++form) {
        orv::fault::arm(orv::fault::kRdrandNoData, 0, GetParam().empty_attempts);
        EXPECT_EQ(form == 0 ? t.row.wordFill(t.o.s, 2, w) : form == 1 ? t.row.doubleFill(t.o.s, 1, &d, 0.0, 1.0)
                                                                      : t.row.floatFill(t.o.s, 1, &f, 0.0f, 1.0f),
                  GetParam().status) << form;
    }
    EXPECT_EQ(d == -1, GetParam().status != 0);
}

INSTANTIATE_TEST_SUITE_P(Rule, TrngRetry,
                         testing::Values(Retry{{}, 9, 0}, Retry{{}, 10, ORV_RNG_ERROR_RDRAND_EXHAUSTED},
                                         Retry{{}, 11, ORV_RNG_ERROR_RDRAND_EXHAUSTED},
                                         Retry{{0, 3}, 2, 0}, Retry{{0, 3}, 3, ORV_RNG_ERROR_RDRAND_EXHAUSTED},
                                         Retry{{0, 0}, 9, 0}, Retry{{0, 0}, 10, ORV_RNG_ERROR_RDRAND_EXHAUSTED}));

TEST(Trng, FailedFillKeepsWhatItWrote) {
    if (!__vstCPUisRDRAND()) GTEST_SKIP() << "no RDRAND";
    orv::fault::DisarmOnExit disarm;
    Trng t;
    uint32_t w[6] = {0, 0, 0, 0, 0, 0};
    orv::fault::arm(orv::fault::kRdrandNoData, 2, orv::fault::kEveryHit);  // two values, then none
    EXPECT_EQ(t.row.wordFill(t.o.s, 5, w), ORV_RNG_ERROR_RDRAND_EXHAUSTED);
    EXPECT_TRUE(w[0] | w[1]);
    EXPECT_TRUE(w[2] | w[3]);
    EXPECT_EQ(w[4], 0u);
}

// Monobit and byte-frequency tests over 2^22 bits: the count of ones within
// 5 standard deviations, the chi-square of 256 byte counts below its 0.9999
// quantile (about 347). The mean of its uniforms is the generic test's.
TEST(Trng, OutputPassesFrequencyTests) {
    if (!__vstCPUisRDRAND()) GTEST_SKIP() << "no RDRAND";
    Trng t;
    std::vector<uint32_t> w((1 << 17) + 1);  // odd counts end on a half value
    ASSERT_EQ(t.row.wordFill(t.o.s, static_cast<int32_t>(w.size()), w.data()), 0);
    long ones = 0;
    std::vector<long> bytes(256, 0);
    for (uint32_t v : w) {
        ones += std::popcount(v);
        for (int b = 0; b < 4; ++b) ++bytes[(v >> (8 * b)) & 0xFF];
    }
    const double bits = 32.0 * w.size();
    EXPECT_LT(std::fabs(ones - bits / 2) / std::sqrt(bits / 4), 5.0);
    const double expect = 4.0 * w.size() / 256;
    double chi2 = 0;
    for (long c : bytes) chi2 += (c - expect) * (c - expect) / expect;
    EXPECT_LT(chi2, 347.0);
}

}  // namespace
