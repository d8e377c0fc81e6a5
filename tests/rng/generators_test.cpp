// The five congruential generators against the reference recursions, the
// mapping of their words onto intervals, and skip counts wider than 64 bits.
// Fills, copies, images, skip-ahead and leapfrog are checked for every
// registered generator in generic_test.cpp.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <orv/rng.h>

#include "oracle.h"
#include "stream_util.h"

namespace {

struct Gen {
    const char* name;
    int32_t id;
    int words;  // 32-bit words per output of the word fill
};

const Gen kGens[] = {{"MCG31M1", ORV_BRNG_MCG31M1, 1},
                     {"R250", ORV_BRNG_R250, 1},
                     {"MRG32K3A", ORV_BRNG_MRG32K3A, 1},
                     {"MCG59", ORV_BRNG_MCG59, 2}};

using rngtest::Stream;

std::string name_of(const testing::TestParamInfo<Gen>& info) { return info.param.name; }
void PrintTo(const Gen& g, std::ostream* os) { *os << g.name; }

const std::vector<uint32_t> kSeed = {0x2545F491u, 0x9E3779B9u, 0x7F4A7C15u, 0x1234567u, 0xDEADBEEFu, 42u};

// Known answers from the reference recursions, over seeds that reach the
// seeding edge cases (residues 0 and the moduli, counts of 1, 2 and 250
// words, R250 seeded with zeros staying at zero).

struct SeedCase { std::vector<uint32_t> seed; };
class KnownAnswer : public testing::TestWithParam<SeedCase> {};

TEST_P(KnownAnswer, FirstThousandOutputsOfEveryGenerator) {
    const auto& seed = GetParam().seed;
    constexpr int n = 1000;
    auto check = [&](const Gen& g, auto&& o) {
        Stream s(g.id, seed);
        const auto w = s.words(n);
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(g.words == 2 ? w[2 * i] | uint64_t{w[2 * i + 1]} << 32 : w[i], o.next())
                << g.name << " output " << i;
    };
    check(kGens[0], oracle::mcg31(seed.empty() ? 0 : seed[0], !seed.empty()));
    check(kGens[1], oracle::R250(seed));
    check(kGens[2], oracle::Mrg(seed));
    check(kGens[3], oracle::mcg59(seed));
}

TEST_P(KnownAnswer, WichmannHillSetsFromTheirPublishedParameters) {
    const auto& seed = GetParam().seed;
    // Rows 0, 1 and 272 as published.
    const struct {
        int sub;
        uint64_t m[4], a[4];
    } sets[] = {{0, {16770647, 16770643, 16770623, 16770617}, {125, 117, 127, 126}},
                {1, {16770311, 16770283, 16770263, 16770209}, {127, 126, 125, 123}},
                {272, {16766363, 16766359, 16766327, 16766231}, {126, 127, 125, 124}}};
    for (const auto& set : sets) {
        oracle::Wh o{};
        const size_t words = seed.size() <= 3 ? seed.size() : 4;
        for (int i = 0; i < 4; ++i) {
            o.m[i] = set.m[i];
            o.a[i] = set.a[i];
            o.x[i] = i < static_cast<int>(words) ? seed[i] % set.m[i] : 1;
            if (o.x[i] == 0) o.x[i] = 1;
        }
        Stream s(ORV_BRNG_WH + set.sub, seed);
        Stream d(ORV_BRNG_WH + set.sub, seed);
        auto w = s.words(300);
        std::vector<double> u(300);
        d.row.doubleFill(d.s, 300, u.data(), 0.0, 1.0);
        for (int i = 0; i < 300; ++i) {
            const auto x = o.next();
            long double sum = 0;
            for (int k = 0; k < 4; ++k) {
                ASSERT_EQ(w[4 * i + k], x[k]) << "set " << set.sub << " output " << i;
                sum += static_cast<long double>(x[k]) / set.m[k];
            }
            const long double frac = sum - static_cast<long double>(static_cast<int>(sum));
            EXPECT_NEAR(u[i], static_cast<double>(frac), 1e-15);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Seeds, KnownAnswer,
    testing::Values(SeedCase{{}}, SeedCase{{12345}}, SeedCase{{0x7FFFFFFF}}, SeedCase{{0xFFFFFFFF}},
                    SeedCase{{0}}, SeedCase{{0, 0}}, SeedCase{{0xFFFFFFFF, 0xFFFFFFFF}},
                    SeedCase{{0, 0, 0, 0, 0, 0}}, SeedCase{{1, 2}},
                    SeedCase{{4294967087u, 4294967088u, 5, 4294944443u, 4294944444u, 0xFFFFFFFF}},
                    SeedCase{kSeed}, SeedCase{std::vector<uint32_t>(250, 0x55555555u)},
                    SeedCase{std::vector<uint32_t>(250, 0)}));

// WH outputs are fractions of four parts, tested against the reference above.
class Mapping : public testing::TestWithParam<Gen> {};

TEST_P(Mapping, IntervalFormsMapTheRawWords) {
    const Gen& g = GetParam();
    Stream w(g.id, kSeed), d(g.id, kSeed);
    auto raw = w.words(600);
    std::vector<double> u(600);
    d.row.doubleFill(d.s, 600, u.data(), 0.0, 1.0);
    const double m = g.id == ORV_BRNG_MCG31M1 ? 2147483647.0
                     : g.id == ORV_BRNG_MRG32K3A ? 4294967087.0
                     : g.id == ORV_BRNG_MCG59 ? 0x1p59
                                              : 0x1p32;
    for (int i = 0; i < 600; ++i) {
        const double v = g.words == 2 ? static_cast<double>(raw[2 * i] | uint64_t{raw[2 * i + 1]} << 32)
                                      : static_cast<double>(raw[i]);
        ASSERT_NEAR(u[i], v / m, 1e-15) << i;
        ASSERT_LT(u[i], 1.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Generators, Mapping, testing::ValuesIn(kGens), name_of);

// Large counts against the reference: a^k by 128-bit powering, and the
// MRG32k3a counts wider than 64 and 192 bits against repeated smaller skips.
TEST(SkipAhead, WideCountsOfTheMultiplicativeGenerators) {
    for (uint64_t k : {uint64_t{1} << 40, uint64_t{0xFFFFFFFFFFFFFFFFull}, uint64_t{0x8000000000000001ull}, uint64_t{123456789012345ull}}) {
        Stream s(ORV_BRNG_MCG31M1, {99});
        __vstSkipAheadStream(s.s, static_cast<int64_t>(k));
        EXPECT_EQ(s.words(1)[0], oracle::pow_mod(1132489760u, k, 2147483647u) * 99 % 2147483647u);
        Stream t(ORV_BRNG_MCG59, {99, 1});
        __vstSkipAheadStream(t.s, static_cast<int64_t>(k));
        auto w = t.words(1);
        const uint64_t want = static_cast<uint64_t>(
            static_cast<oracle::u128>(oracle::pow_mod(302875106592253ull, k, uint64_t{1} << 59)) *
            ((uint64_t{1} << 32) + 99) % (uint64_t{1} << 59));
        EXPECT_EQ(w[0] | uint64_t{w[1]} << 32, want);
    }
}

TEST(SkipAhead, Mrg32k3aCountsWiderThan64And192Bits) {
    const uint64_t half = uint64_t{1} << 63;
    {  // 3 * 2^64 + 5 as two words, against 2^63 six times and 5
        Stream ex(ORV_BRNG_MRG32K3A, kSeed), rep(ORV_BRNG_MRG32K3A, kSeed);
        const uint64_t count[2] = {5, 3};
        ASSERT_EQ(__vstSkipAheadStreamEx(ex.s, 2, count), 0);
        for (int i = 0; i < 6; ++i) __vstSkipAheadStream(rep.s, static_cast<int64_t>(half));
        __vstSkipAheadStream(rep.s, 5);
        EXPECT_EQ(ex.words(20), rep.words(20));
    }
    {  // 2^192 + 2^130 + 1: four words take the run-time squaring
        Stream ex(ORV_BRNG_MRG32K3A, kSeed), rep(ORV_BRNG_MRG32K3A, kSeed);
        const uint64_t count[4] = {1, 0, 4, 1};
        ASSERT_EQ(__vstSkipAheadStreamEx(ex.s, 4, count), 0);
        const uint64_t top[3] = {0, 0, half};  // 2^191, twice
        const uint64_t mid[3] = {0, 0, 4};
        __vstSkipAheadStreamEx(rep.s, 3, top);
        __vstSkipAheadStreamEx(rep.s, 3, top);
        __vstSkipAheadStreamEx(rep.s, 3, mid);
        __vstSkipAheadStream(rep.s, 1);
        EXPECT_EQ(ex.words(20), rep.words(20));
    }
    {  // leading zero words beyond the third keep the table path; count 0 and n 0 leave the state
        Stream ex(ORV_BRNG_MRG32K3A, kSeed), plain(ORV_BRNG_MRG32K3A, kSeed);
        const uint64_t zero[5] = {0, 0, 0, 0, 0};
        EXPECT_EQ(__vstSkipAheadStreamEx(ex.s, 5, zero), 0);
        EXPECT_EQ(__vstSkipAheadStreamEx(ex.s, 0, zero), 0);
        EXPECT_EQ(__vstSkipAheadStream(ex.s, 0), 0);
        EXPECT_EQ(ex.words(20), plain.words(20));
    }
}

}  // namespace
