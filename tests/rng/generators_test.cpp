// The five congruential generators against the reference recursions, fills
// of every length against one-at-a-time stepping, skip-ahead against
// discarding, and leapfrog against taking every s-th output.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include <orv/rng.h>

#include "oracle.h"

namespace {

struct Gen {
    const char* name;
    int32_t id;
    int words;  // 32-bit words per output of the word fill
    bool skip, leapfrog;
};

const Gen kGens[] = {
    {"MCG31M1", ORV_BRNG_MCG31M1, 1, true, true}, {"R250", ORV_BRNG_R250, 1, false, false},
    {"MRG32K3A", ORV_BRNG_MRG32K3A, 1, true, false}, {"MCG59", ORV_BRNG_MCG59, 2, true, true},
    {"WH", ORV_BRNG_WH, 4, true, true},           {"WH272", ORV_BRNG_WH + 272, 4, true, true},
    {"WH_first_numbering", 4 + 131, 4, true, true},
};

struct Stream {
    void* s = nullptr;
    Stream(int32_t id, std::vector<uint32_t> seed) {
        EXPECT_EQ(__vstNewStreamEx(&s, id, static_cast<int32_t>(seed.size()), seed.data()), 0);
    }
    ~Stream() {
        if (s != nullptr) __vstDeleteStream(&s);
    }
    const BrngRow& row() const {
        static BrngRow r;
        __vstGetBrngProperties(static_cast<int32_t>(__vstGetStreamStateBrng(s)), &r);
        return r;
    }
    std::vector<uint32_t> words(int n, int per) {
        std::vector<uint32_t> out(static_cast<size_t>(n) * per + per);
        row().wordFill(s, n, out.data());
        out.resize(static_cast<size_t>(n) * per);
        return out;
    }
};

std::string name_of(const testing::TestParamInfo<Gen>& info) { return info.param.name; }
void PrintTo(const Gen& g, std::ostream* os) { *os << g.name; }

const std::vector<uint32_t> kSeed = {0x2545F491u, 0x9E3779B9u, 0x7F4A7C15u, 0x1234567u, 0xDEADBEEFu, 42u};

// ----------------------------------------------------------------------------
// Known answers from the reference recursions, over seeds that reach the
// seeding edge cases.

struct SeedCase {
    std::vector<uint32_t> seed;
};
class KnownAnswer : public testing::TestWithParam<SeedCase> {};

TEST_P(KnownAnswer, FirstThousandOutputsOfEveryGenerator) {
    const auto& seed = GetParam().seed;
    constexpr int n = 1000;
    {
        Stream s(ORV_BRNG_MCG31M1, seed);
        auto o = oracle::mcg31(seed.empty() ? 0 : seed[0], !seed.empty());
        auto w = s.words(n, 1);
        for (int i = 0; i < n; ++i) ASSERT_EQ(w[i], o.next()) << "MCG31M1 output " << i;
    }
    {
        Stream s(ORV_BRNG_MCG59, seed);
        auto o = oracle::mcg59(seed);
        auto w = s.words(n, 2);
        for (int i = 0; i < n; ++i)
            ASSERT_EQ(w[2 * i] | uint64_t{w[2 * i + 1]} << 32, o.next()) << "MCG59 output " << i;
    }
    {
        Stream s(ORV_BRNG_MRG32K3A, seed);
        oracle::Mrg o(seed);
        auto w = s.words(n, 1);
        for (int i = 0; i < n; ++i) ASSERT_EQ(w[i], o.next()) << "MRG32K3A output " << i;
    }
    {
        Stream s(ORV_BRNG_R250, seed);
        oracle::R250 o(seed);
        auto w = s.words(n, 1);
        for (int i = 0; i < n; ++i) ASSERT_EQ(w[i], o.next()) << "R250 output " << i;
    }
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
        auto w = s.words(300, 4);
        std::vector<double> u(300);
        d.row().doubleFill(d.s, 300, u.data(), 0.0, 1.0);
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
                    SeedCase{kSeed}, SeedCase{std::vector<uint32_t>(250, 0x55555555u)}));

TEST(Seeding, StatedEdgeCases) {
    uint32_t w[2];
    {
        Stream s(ORV_BRNG_MCG31M1, {0x7FFFFFFF}), u(ORV_BRNG_MCG31M1, {0xFFFFFFFF});
        EXPECT_EQ(s.words(1, 1)[0], 1u);  // residue 0 becomes 1
        EXPECT_EQ(u.words(1, 1)[0], 1u);  // 0xFFFFFFFF mod 0x7FFFFFFF
        Stream t(ORV_BRNG_MCG31M1, {});
        __vstiBRngMCG31M1(t.s, 1, w);
        EXPECT_EQ(w[0], 1u);
    }
    {  // count 1 takes 32 bits, count 2 all 59 low bits
        Stream one(ORV_BRNG_MCG59, {0x89ABCDEF, 0xFFFFFFFF});
        void* two = nullptr;
        const uint32_t seed[2] = {0x89ABCDEF, 0xFFFFFFFF};
        ASSERT_EQ(__vstNewStreamEx(&two, ORV_BRNG_MCG59, 1, seed), 0);
        __vstiBRngMCG59(two, 1, w);
        EXPECT_EQ(w[0], 0x89ABCDEFu);
        EXPECT_EQ(w[1], 0u);
        __vstiBRngMCG59(one.s, 1, w);
        EXPECT_EQ(w[1], 0x07FFFFFFu);
        __vstDeleteStream(&two);
    }
    {  // R250 seeded with 250 zero words stays at zero
        Stream s(ORV_BRNG_R250, std::vector<uint32_t>(250, 0));
        for (uint32_t v : s.words(1000, 1)) ASSERT_EQ(v, 0u);
    }
    {  // the forced diagonal of the R250 seeding
        Stream s(ORV_BRNG_R250, {7});
        const uint32_t* w250 = reinterpret_cast<const uint32_t*>(static_cast<char*>(s.s) + 16);
        EXPECT_EQ(w250[3] >> 31, 1u);
        EXPECT_EQ(w250[10] >> 30, 1u);
        EXPECT_EQ(w250[220], 1u);
    }
    {  // WH sub-generators 0 and 272 are unrelated
        Stream a(ORV_BRNG_WH, {1, 2, 3, 4}), b(ORV_BRNG_WH + 272, {1, 2, 3, 4});
        auto wa = a.words(100, 4), wb = b.words(100, 4);
        int same = 0;
        for (size_t i = 4; i < wa.size(); ++i) same += wa[i] == wb[i];
        EXPECT_LT(same, 4);
    }
}

// ----------------------------------------------------------------------------
// Fills of every length equal one-at-a-time stepping.

class Fills : public testing::TestWithParam<Gen> {};

TEST_P(Fills, EveryLengthEqualsSteppingInAllThreeForms) {
    const Gen& g = GetParam();
    std::vector<int> lengths;
    for (int n = 0; n <= 40; ++n) lengths.push_back(n);
    for (int n : {63, 64, 65, 127, 128, 129, 147, 249, 250, 251, 400, 499, 500, 501, 777, 1024, 5003}) lengths.push_back(n);
    const bool writes_one_at_zero = g.id == ORV_BRNG_MCG31M1;
    for (int n : lengths) {
        Stream bulk(g.id, kSeed), single(g.id, kSeed);
        const BrngRow& row = bulk.row();
        const int written = n == 0 && writes_one_at_zero ? 1 : n;
        // Words.
        std::vector<uint32_t> wb(static_cast<size_t>(written + 1) * g.words, 0xCDCDCDCDu);
        std::vector<uint32_t> ws(wb.size(), 0xCDCDCDCDu);
        row.wordFill(bulk.s, n, wb.data());
        for (int i = 0; i < written; ++i) row.wordFill(single.s, 1, ws.data() + i * g.words);
        ASSERT_EQ(wb, ws) << "word fill of " << n;
        // Doubles and floats continue from the same states.
        std::vector<double> db(written + 1, -7.0), ds(written + 1, -7.0);
        row.doubleFill(bulk.s, n, db.data(), -2.0, 3.0);
        for (int i = 0; i < written; ++i) row.doubleFill(single.s, 1, ds.data() + i, -2.0, 3.0);
        ASSERT_EQ(0, std::memcmp(db.data(), ds.data(), db.size() * sizeof(double))) << "double fill of " << n;
        for (int i = 0; i < written; ++i) ASSERT_TRUE(db[i] >= -2.0 && db[i] <= 3.0);
        std::vector<float> fb(written + 1, -7.0f), fs(written + 1, -7.0f);
        row.floatFill(bulk.s, n, fb.data(), 1.0f, 2.0f);
        for (int i = 0; i < written; ++i) row.floatFill(single.s, 1, fs.data() + i, 1.0f, 2.0f);
        ASSERT_EQ(0, std::memcmp(fb.data(), fs.data(), fb.size() * sizeof(float))) << "float fill of " << n;
        // And the streams go on alike.
        ASSERT_EQ(bulk.words(300, g.words), single.words(300, g.words)) << "after " << n;
    }
}

// WH outputs are fractions of four parts, tested against the reference above.
class Mapping : public testing::TestWithParam<Gen> {};

TEST_P(Mapping, IntervalFormsMapTheRawWords) {
    const Gen& g = GetParam();
    Stream w(g.id, kSeed), d(g.id, kSeed);
    auto raw = w.words(600, g.words);
    std::vector<double> u(600);
    d.row().doubleFill(d.s, 600, u.data(), 0.0, 1.0);
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

// ----------------------------------------------------------------------------
// Skip-ahead and leapfrog.

class Jumps : public testing::TestWithParam<Gen> {};

TEST_P(Jumps, SkipAheadEqualsGeneratingAndDiscarding) {
    const Gen& g = GetParam();
    if (!g.skip) {
        Stream s(g.id, kSeed);
        const uint64_t one = 1;
        EXPECT_EQ(__vstSkipAheadStream(s.s, 5), ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED);
        EXPECT_EQ(__vstSkipAheadStreamEx(s.s, 1, &one), ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED);
        return;
    }
    for (int64_t k : {0, 1, 2, 7, 16, 17, 100, 1000, 65537, 250001}) {
        Stream skipped(g.id, kSeed), walked(g.id, kSeed);
        ASSERT_EQ(__vstSkipAheadStream(skipped.s, k), 0);
        if (k > 0) walked.words(static_cast<int>(k), g.words);
        ASSERT_EQ(skipped.words(50, g.words), walked.words(50, g.words)) << "k = " << k;
        if (g.id == ORV_BRNG_MRG32K3A) {  // the multi-word form with one word
            Stream ex(g.id, kSeed);
            const uint64_t count = static_cast<uint64_t>(k);
            ASSERT_EQ(__vstSkipAheadStreamEx(ex.s, 1, &count), 0);
            Stream again(g.id, kSeed);
            __vstSkipAheadStream(again.s, k);
            ASSERT_EQ(ex.words(20, 1), again.words(20, 1));
        }
    }
}

TEST_P(Jumps, LeapfrogStreamKOfSIsEverySthOutput) {
    const Gen& g = GetParam();
    if (!g.leapfrog) {
        Stream s(g.id, kSeed);
        EXPECT_EQ(__vstLeapfrogStream(s.s, 0, 1), ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
        EXPECT_EQ(__vstLeapfrogStream(s.s, 0, -1), ORV_RNG_ERROR_LEAPFROG_NSTREAMS);
        return;
    }
    for (int s : {1, 2, 3, 7, 100}) {
        Stream plain(g.id, kSeed);
        auto all = plain.words(s * 40 + s, g.words);
        for (int k : {0, 1, s - 1}) {
            if (k >= s) continue;
            Stream member(g.id, kSeed);
            ASSERT_EQ(__vstLeapfrogStream(member.s, k, s), 0);
            auto mine = member.words(40, g.words);
            for (int i = 0; i < 40; ++i)
                for (int w = 0; w < g.words; ++w)
                    ASSERT_EQ(mine[i * g.words + w], all[(k + i * s) * g.words + w])
                        << "stream " << k << " of " << s << ", output " << i;
        }
        // A skip on a leapfrogged stream counts the stream's own steps.
        Stream member(g.id, kSeed);
        __vstLeapfrogStream(member.s, 1, s);
        __vstSkipAheadStream(member.s, 10);
        auto after = member.words(1, g.words);
        for (int w = 0; w < g.words; ++w) ASSERT_EQ(after[w], all[(1 + 10 * s) * g.words + w]);
    }
}

TEST_P(Jumps, MethodsOutsideTheTableAreRefused) {
    const Gen& g = GetParam();
    Stream s(g.id, kSeed);
    const BrngRow& row = s.row();
    EXPECT_EQ(row.initStream(4, s.s, 0, nullptr), ORV_RNG_ERROR_BAD_METHOD);
    EXPECT_EQ(row.initStream(-1, s.s, 0, nullptr), ORV_RNG_ERROR_BAD_METHOD);
    if (g.id != ORV_BRNG_MRG32K3A) {
        const uint64_t one = 1;
        EXPECT_EQ(__vstSkipAheadStreamEx(s.s, 1, &one), ORV_RNG_ERROR_SKIPAHEADEX_UNSUPPORTED);
    }
}

INSTANTIATE_TEST_SUITE_P(Generators, Fills, testing::ValuesIn(kGens), name_of);
INSTANTIATE_TEST_SUITE_P(Generators, Mapping, testing::ValuesIn(kGens, kGens + 4), name_of);
INSTANTIATE_TEST_SUITE_P(Generators, Jumps, testing::ValuesIn(kGens), name_of);

// Large counts against the reference: a^k by 128-bit powering, and the
// MRG32k3a counts wider than 64 and 192 bits against repeated smaller skips.
uint64_t pow_ref(uint64_t a, oracle::u128 e, uint64_t m) {
    oracle::u128 r = 1 % m, b = a % m;
    for (; e != 0; e >>= 1) {
        if (e & 1) r = r * b % m;
        b = b * b % m;
    }
    return static_cast<uint64_t>(r);
}

TEST(SkipAhead, WideCountsOfTheMultiplicativeGenerators) {
    for (uint64_t k : {uint64_t{1} << 40, uint64_t{0xFFFFFFFFFFFFFFFFull}, uint64_t{0x8000000000000001ull}, uint64_t{123456789012345ull}}) {
        Stream s(ORV_BRNG_MCG31M1, {99});
        __vstSkipAheadStream(s.s, static_cast<int64_t>(k));
        EXPECT_EQ(s.words(1, 1)[0], pow_ref(1132489760u, k, 2147483647u) * 99 % 2147483647u);
        Stream t(ORV_BRNG_MCG59, {99, 1});
        __vstSkipAheadStream(t.s, static_cast<int64_t>(k));
        auto w = t.words(1, 2);
        const uint64_t want = static_cast<uint64_t>(
            static_cast<oracle::u128>(pow_ref(302875106592253ull, k, uint64_t{1} << 59)) *
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
        EXPECT_EQ(ex.words(20, 1), rep.words(20, 1));
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
        EXPECT_EQ(ex.words(20, 1), rep.words(20, 1));
    }
    {  // leading zero words beyond the third keep the table path; count 0 and n 0 leave the state
        Stream ex(ORV_BRNG_MRG32K3A, kSeed), plain(ORV_BRNG_MRG32K3A, kSeed);
        const uint64_t zero[5] = {0, 0, 0, 0, 0};
        EXPECT_EQ(__vstSkipAheadStreamEx(ex.s, 5, zero), 0);
        EXPECT_EQ(__vstSkipAheadStreamEx(ex.s, 0, zero), 0);
        EXPECT_EQ(__vstSkipAheadStream(ex.s, 0), 0);
        EXPECT_EQ(ex.words(20, 1), plain.words(20, 1));
    }
}

}  // namespace
