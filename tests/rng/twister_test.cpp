// MT19937 and SFMT19937: published known answers read in calls of every
// awkward size, skip-ahead against generating and discarding on both sides
// of each path threshold, the two jump evaluations against each other and
// against jumps that add up, and the characteristic polynomials against the
// generators' own output bits.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include <orv/rng_twister.h>

#include "frame/fault_injection.h"
#include "rng/stream.h"
#include "stream_util.h"

namespace orv::rng {
int32_t mt19937_jump(void* stream, uint64_t nskip, bool horner);
int32_t sfmt19937_jump(void* stream, uint64_t nskip, bool horner);
const uint32_t* mt19937_polynomial(int32_t* terms);
const uint32_t* sfmt19937_polynomial(int32_t* terms);
}  // namespace orv::rng

namespace {

struct Twister {
    const char* name;
    int32_t id;
    const char* kat;
    std::vector<uint32_t> key;
    uint64_t below, above;  // counts on either side of the path threshold
    int32_t (*jump)(void*, uint64_t, bool);
};

const Twister kTwisters[] = {
    {"MT19937", ORV_BRNG_MT19937, "kat_mt19937_key_123_234_345_456.txt", {0x123, 0x234, 0x345, 0x456},
     0xFFFFF, 0x100000, orv::rng::mt19937_jump},
    {"SFMT19937", ORV_BRNG_SFMT19937, "kat_sfmt19937_key_1234_5678_9abc_def0.txt",
     {0x1234, 0x5678, 0x9abc, 0xdef0}, 19967, 19968, orv::rng::sfmt19937_jump},
};

using rngtest::Stream;

std::vector<uint32_t> read_kat(const char* file) {
    std::ifstream in(std::string(ORV_RNG_TEST_DATA) + "/" + file);
    std::vector<uint32_t> v;
    std::string line;
    while (std::getline(in, line))
        if (!line.empty() && line[0] != '#') v.push_back(static_cast<uint32_t>(std::stoul(line)));
    return v;
}

class TwisterTest : public testing::TestWithParam<Twister> {};
std::string name_of(const testing::TestParamInfo<Twister>& info) { return info.param.name; }

TEST_P(TwisterTest, KnownAnswersInCallsOfEverySize) {
    const Twister& g = GetParam();
    const std::vector<uint32_t> kat = read_kat(g.kat);
    ASSERT_EQ(kat.size(), 1000u);
    for (int32_t size : {1, 3, 623, 624, 625, 1000}) {
        Stream s(g.id, g.key);
        std::vector<uint32_t> got;
        while (got.size() < kat.size()) {
            const auto part = s.words(std::min<int32_t>(size, static_cast<int32_t>(kat.size() - got.size())));
            got.insert(got.end(), part.begin(), part.end());
        }
        EXPECT_EQ(got, kat) << "calls of " << size;
    }
}

// Skip-ahead against generating and discarding, from a fresh stream and
// from streams stopped inside a block, for counts inside the block, across
// blocks, and on both sides of the threshold between the two paths.
TEST_P(TwisterTest, SkipEqualsDiscard) {
    const Twister& g = GetParam();
    for (uint64_t before : {0, 1, 3, 622, 625}) {
        for (uint64_t n : {uint64_t{0}, uint64_t{1}, uint64_t{2}, uint64_t{5}, uint64_t{623}, uint64_t{1249},
                           g.below, g.above}) {
            Stream a(g.id, g.key), b(g.id, g.key);
            a.discard(before);
            b.discard(before);
            ASSERT_EQ(__vstSkipAheadStream(a.s, static_cast<int64_t>(n)), 0);
            b.discard(n);
            ASSERT_EQ(a.words(1000), b.words(1000)) << "after " << before << ", skip " << n;
        }
    }
}

// Large counts: Horner against the sliding window, and one jump against two
// that add up to it, from streams stopped inside a block.
TEST_P(TwisterTest, LargeJumpsAgreeAcrossMethods) {
    const Twister& g = GetParam();
    for (uint64_t n : {uint64_t{1000000000}, uint64_t{1000000000000000}}) {
        Stream a(g.id, g.key), b(g.id, g.key), c(g.id, g.key);
        for (Stream* s : {&a, &b, &c}) s->discard(5);
        ASSERT_EQ(g.jump(a.s, n, true), 0);
        ASSERT_EQ(g.jump(b.s, n, false), 0);
        ASSERT_EQ(__vstSkipAheadStream(c.s, static_cast<int64_t>(n / 3 + 7)), 0);
        ASSERT_EQ(__vstSkipAheadStream(c.s, static_cast<int64_t>(n - n / 3 - 7)), 0);
        const auto wa = a.words(700);
        EXPECT_EQ(wa, b.words(700)) << n;
        EXPECT_EQ(wa, c.words(700)) << n;
    }
}

TEST_P(TwisterTest, SeedingEdges) {
    const Twister& g = GetParam();
    Stream none(g.id, {}), one(g.id, {1});
    EXPECT_EQ(none.words(700), one.words(700));
    // Key words past the state length still count.
    std::vector<uint32_t> key(700);
    for (size_t i = 0; i < key.size(); ++i) key[i] = static_cast<uint32_t>(i * 2654435761u);
    Stream a(g.id, key);
    key[680] ^= 1;
    Stream b(g.id, key);
    EXPECT_NE(a.words(10), b.words(10));
}

// A failed allocation in the jump returns -4 and leaves the stream at the
// block end where preparing the jump put it.
TEST_P(TwisterTest, JumpWithoutMemory) {
    const Twister& g = GetParam();
    Stream a(g.id, g.key), b(g.id, g.key);
    a.discard(10);
    b.discard(10);
    {
        orv::fault::DisarmOnExit disarm;
        orv::fault::arm(orv::fault::kRngAllocation, 0);
        EXPECT_EQ(__vstSkipAheadStream(a.s, 5000000), ORV_RNG_ERROR_MEM_FAILURE);
    }
    b.discard(614);
    EXPECT_EQ(a.words(5), b.words(5));
}

INSTANTIATE_TEST_SUITE_P(Twisters, TwisterTest, testing::ValuesIn(kTwisters), name_of);

// The polynomials annihilate the generators' own output: every output bit is
// a linear function of the state, so sum over exponents e of bit(i + e) = 0,
// with one word per step for MT19937 and one block (its first word) for SFMT.
TEST(TwisterPolynomials, AnnihilateTheOutputAndMatchThePublishedEnds) {
    struct Case {
        int32_t id;
        const uint32_t* (*poly)(int32_t*);
        int32_t stride, terms;
        std::vector<uint32_t> first, last;
    };
    const Case cases[] = {
        {ORV_BRNG_MT19937, orv::rng::mt19937_polynomial, 1, 135, {0, 1189, 1416, 1585, 1643, 1870},
         {18860, 19087, 19314, 19937}},
        {ORV_BRNG_SFMT19937, orv::rng::sfmt19937_polynomial, 4, 6711, {0, 1041, 1195, 1197, 1232, 1260},
         {19380, 19393, 19437, 19968}},
    };
    for (const Case& c : cases) {
        int32_t terms = 0;
        const uint32_t* e = c.poly(&terms);
        ASSERT_EQ(terms, c.terms);
        EXPECT_EQ(std::vector<uint32_t>(e, e + c.first.size()), c.first);
        EXPECT_EQ(std::vector<uint32_t>(e + terms - c.last.size(), e + terms), c.last);
        const int32_t degree = static_cast<int32_t>(e[terms - 1]);
        Stream s(c.id, {7, 11});
        const auto w = s.words((degree + 40) * c.stride);
        for (int32_t i = 0; i < 40; ++i)
            for (int32_t b : {0, 13, 31}) {
                uint32_t sum = 0;
                for (int32_t k = 0; k < terms; ++k) sum ^= w[static_cast<size_t>(i + e[k]) * c.stride] >> b & 1;
                ASSERT_EQ(sum, 0u) << c.id << " at " << i << " bit " << b;
            }
    }
}

// x^e mod P: a single bit below the degree, the lower terms at the degree,
// and x^(e+1) = x * x^e for a large e; for the sparse (MT19937) and the
// dense (SFMT19937) polynomial, which reduce by different means.
TEST(TwisterPolynomials, PolyRemKnownPowers) {
    for (auto poly : {orv::rng::mt19937_polynomial, orv::rng::sfmt19937_polynomial}) {
        int32_t terms = 0;
        const uint32_t* e = poly(&terms);
        const int32_t degree = static_cast<int32_t>(e[terms - 1]), words = 624;
        auto bits = [&](uint64_t x) {
            std::vector<uint32_t> r(2 * words, 0xFFFFFFFF);
            EXPECT_EQ(__vstPolyRem(x, degree, terms, e, words, r.data()), 0);
            return r;
        };
        auto get = [](const std::vector<uint32_t>& r, uint32_t i) { return r[i / 32] >> (i % 32) & 1; };
        std::vector<uint32_t> single = bits(12345);
        for (uint32_t i = 0; i < 2 * 32 * words; ++i) ASSERT_EQ(get(single, i), i == 12345 ? 1u : 0u);
        std::vector<uint32_t> at_degree = bits(static_cast<uint64_t>(degree)), low(2 * words, 0);
        for (int32_t k = 0; k + 1 < terms; ++k) low[e[k] / 32] |= 1u << (e[k] % 32);
        EXPECT_EQ(at_degree, low);
        for (uint64_t big : {uint64_t{987654321987654321ull}, uint64_t{1000000000000ull}}) {
            std::vector<uint32_t> p = bits(big), q = bits(big + 1), shifted(2 * words, 0);
            for (uint32_t i = 0; i + 1 < static_cast<uint32_t>(degree); ++i)
                if (get(p, i)) shifted[(i + 1) / 32] |= 1u << ((i + 1) % 32);
            if (get(p, degree - 1))
                for (uint32_t i = 0; i < static_cast<uint32_t>(degree); ++i)
                    shifted[i / 32] ^= low[i / 32] & (1u << (i % 32));
            EXPECT_EQ(q, shifted) << degree << " " << big;
        }
        EXPECT_EQ(__vstPolyRem(5, degree, terms, e, 10, single.data()), ORV_RNG_ERROR_MEM_FAILURE);
    }
}

// The signed reading: word 0 is the middle of the interval, 0x80000000 its
// start; MT19937's unsigned reading puts word 0 at the start.
TEST(Sfmt19937, SignedReadingOfTheInterval) {
    Stream s(ORV_BRNG_SFMT19937, {1}), m(ORV_BRNG_MT19937, {1});
    auto* w = reinterpret_cast<uint32_t*>(static_cast<char*>(s.s) + 16);
    w[0] = 0;
    w[1] = 0x80000000u;
    w[2] = 0x7FFFFFFFu;
    w[624] = 0;  // pos; the side words follow
    double d[3];
    ASSERT_EQ(__vstdBRngSFMT19937(s.s, 3, d, 0.0, 1.0), 0);
    EXPECT_EQ(d[0], 0.5);
    EXPECT_EQ(d[1], 0.0);
    EXPECT_LT(d[2], 1.0);
    w[624] = 0;
    w[628] = w[629] = 0;  // no side words
    float f[1];
    ASSERT_EQ(__vstsBRngSFMT19937(s.s, 1, f, 0.0f, 1.0f), 0);
    EXPECT_EQ(f[0], 0.5f);
    // MT19937: the state word 0 tempers to 0.
    auto* mt = reinterpret_cast<uint32_t*>(static_cast<char*>(m.s) + 16);
    mt[0] = 0;
    mt[624] = 0;
    ASSERT_EQ(__vstdBRngMT19937(m.s, 1, d, 0.0, 1.0), 0);
    EXPECT_EQ(d[0], 0.0);
}

}  // namespace
