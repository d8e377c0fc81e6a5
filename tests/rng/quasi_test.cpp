// Sobol and Niederr: Sobol points against an oracle written here from the
// published Bratley-Fox numbers, the net properties of both sequences, the
// user data modes, and the stated edge cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <vector>

#include <orv/rng.h>

#include "stream_util.h"

namespace {

struct Owned : rngtest::Stream {
    using rngtest::Stream::Stream;
    uint32_t dimension() const { return static_cast<const uint32_t*>(s)[5]; }
    int32_t fill(int n, uint32_t* w) { return row.wordFill(s, n, w); }
};

// The oracle: m from the published initial numbers by Sobol's recursion
// written as a sum over the polynomial's coefficients, then the point of
// index n as the XOR of the direction numbers over the bits of gray(n).
struct SobolOracle {
    std::vector<std::vector<uint64_t>> v;  // v[d][k], 32 bits
    std::vector<uint32_t> polys;            // of dimensions 1.., as published
    std::vector<std::vector<uint32_t>> m;   // their initial numbers
    explicit SobolOracle(uint32_t dims) {
        std::ifstream in(ORV_RNG_SOBOL_NUMBERS);
        v.push_back({});
        for (int k = 0; k < 32; ++k) v[0].push_back(uint64_t{1} << (31 - k));
        std::string line;
        while (v.size() < dims && std::getline(in, line)) {
            if (line.empty() || line[0] == '#') continue;
            std::istringstream f(line);
            uint64_t d, s, poly;
            f >> d >> s >> poly;
            std::vector<uint64_t> mk(32);
            for (uint64_t k = 0; k < s; ++k) f >> mk[k];
            polys.push_back(static_cast<uint32_t>(poly));
            m.emplace_back(mk.begin(), mk.begin() + static_cast<long>(s));
            for (uint64_t k = s; k < 32; ++k) {
                uint64_t next = 0;
                for (uint64_t i = 1; i <= s; ++i)  // coefficient of x^(s-i), a_s = 1
                    if ((poly >> (s - i)) & 1) next ^= mk[k - i] << i;
                mk[k] = next ^ mk[k - s];
            }
            std::vector<uint64_t> row;
            for (int k = 0; k < 32; ++k) row.push_back(mk[k] << (31 - k));
            v.push_back(row);
        }
    }
    uint32_t at(uint32_t d, uint64_t n) const {
        const uint64_t g = n ^ (n >> 1);
        uint64_t x = 0;
        for (int b = 0; b < 32; ++b)
            if ((g >> b) & 1) x ^= v[d][b];
        return static_cast<uint32_t>(x);
    }
};

TEST(Sobol, PointsMatchTheOracleInAll40Dimensions) {
    const SobolOracle oracle(40);
    ASSERT_EQ(oracle.v.size(), 40u);
    Owned s(ORV_BRNG_SOBOL, {40});
    constexpr int points = 5000;
    const auto w = s.words(40 * points);
    for (int n = 0; n < points; ++n)
        for (uint32_t d = 0; d < 40; ++d) ASSERT_EQ(w[n * 40 + d], oracle.at(d, n + 1)) << "point " << n + 1 << " dim " << d;
    // The first points in two dimensions, as published.
    Owned two(ORV_BRNG_SOBOL, {2});
    std::vector<double> u(10);
    __vstdBRngSobol(two.s, 10, u.data(), 0.0, 1.0);
    EXPECT_EQ(u, (std::vector<double>{0.5, 0.5, 0.75, 0.25, 0.25, 0.75, 0.375, 0.375, 0.875, 0.875}));
}

// Irreducible polynomials over GF(2) in ascending order, by trial division.
std::vector<uint32_t> irreducible_polynomials(size_t count) {
    std::vector<uint32_t> out;
    auto deg = [](uint32_t p) { return 31 - __builtin_clz(p); };
    for (uint32_t p = 2; out.size() < count; ++p) {
        bool divisible = false;
        for (uint32_t q = 2; !divisible && deg(q) <= deg(p) / 2; ++q) {
            uint32_t r = p;
            while (r != 0 && deg(r) >= deg(q)) r ^= q << (deg(r) - deg(q));
            divisible = r == 0;
        }
        if (!divisible) out.push_back(p);
    }
    return out;
}

// A (t, 1)-sequence puts 2^t of its points 0 to 2^k - 1 in each of the
// 2^(k - t) dyadic cells. Sobol's dimensions have t = 0; Niederr's have
// t = deg(p) - 1 for the polynomial p of the dimension. Point 0 (zero) is
// never delivered, so the delivered points 1 to 2^k - 1 are counted with
// it. Dimensions 0 and 1 of both have t = 0 together: every cell of a
// 2^k by 2^k grid holds one of the first 4^k points.
class Nets : public testing::TestWithParam<int32_t> {};

TEST_P(Nets, DyadicCellsOfEachDimensionAndOfTheFirstPair) {
    const bool sobol = GetParam() == ORV_BRNG_SOBOL;
    const uint32_t dims = sobol ? 40 : 318;
    const auto polys = irreducible_polynomials(dims);
    Owned s(GetParam(), {dims});
    ASSERT_EQ(s.dimension(), dims);
    constexpr int kMax = 12;
    const auto w = s.words(static_cast<int>(dims) * ((1 << kMax) - 1));
    for (uint32_t d = 0; d < dims; ++d) {
        const int t = sobol ? 0 : 31 - __builtin_clz(polys[d]) - 1;
        for (int k = t + 1; k <= kMax; ++k) {
            const int cells = 1 << (k - t);
            std::vector<int> hits(static_cast<size_t>(cells), 0);
            hits[0] = 1;
            for (int n = 0; n < (1 << k) - 1; ++n) ++hits[w[static_cast<size_t>(n) * dims + d] >> (32 - (k - t))];
            for (int c = 0; c < cells; ++c) ASSERT_EQ(hits[c], 1 << t) << "dim " << d << " k " << k << " cell " << c;
        }
    }
    for (int k = 1; k <= kMax / 2; ++k) {
        std::vector<int> hits(size_t{1} << (2 * k), 0);
        hits[0] = 1;
        for (int n = 0; n < (1 << (2 * k)) - 1; ++n) {
            const uint32_t a = w[static_cast<size_t>(n) * dims] >> (32 - k), b = w[static_cast<size_t>(n) * dims + 1] >> (32 - k);
            ++hits[(a << k) | b];
        }
        for (int c = 0; c < (1 << (2 * k)); ++c) ASSERT_EQ(hits[c], 1) << "k " << k << " cell " << c;
    }
}

INSTANTIATE_TEST_SUITE_P(Generators, Nets, testing::Values(ORV_BRNG_SOBOL, ORV_BRNG_NIEDERR),
                         [](const testing::TestParamInfo<int32_t>& i) {
                             return i.param == ORV_BRNG_SOBOL ? std::string("Sobol") : std::string("Niederr");
                         });

TEST(Quasi, DimensionsFallBackToOne) {
    const struct {
        int32_t id;
        std::vector<uint32_t> seed;
        uint32_t want;
    } cases[] = {{ORV_BRNG_SOBOL, {41}, 1},         {ORV_BRNG_SOBOL, {40}, 40},        {ORV_BRNG_SOBOL, {0}, 1},
                 {ORV_BRNG_SOBOL, {}, 1},           {ORV_BRNG_NIEDERR, {318}, 318},    {ORV_BRNG_NIEDERR, {319}, 1}};
    for (const auto& c : cases) EXPECT_EQ(Owned(c.id, c.seed).dimension(), c.want) << c.seed.size();
    Owned three(ORV_BRNG_SOBOL, {3});
    std::vector<float> f(3);
    __vstsBRngSobol(three.s, 3, f.data(), 0.0f, 1.0f);
    EXPECT_EQ(f, (std::vector<float>{0.5f, 0.5f, 0.5f}));
}

TEST(Quasi, LeapfrogSelectsOneDimension) {
    const SobolOracle oracle(5);
    Owned s(ORV_BRNG_SOBOL, {5});
    EXPECT_EQ(__vstLeapfrogStream(s.s, 0, 5), ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
    EXPECT_EQ(__vstLeapfrogStream(s.s, 5, 0x7FFFFFFF), ORV_RNG_ERROR_LEAPFROG_UNSUPPORTED);
    ASSERT_EQ(__vstLeapfrogStream(s.s, 3, 0x7FFFFFFF), 0);
    ASSERT_EQ(__vstLeapfrogStream(s.s, 3, 0x7FFFFFFF), 0);  // the same again changes nothing
    auto w = s.words(103);  // runs singly, by fours and singly
    for (int n = 0; n < 103; ++n) ASSERT_EQ(w[n], oracle.at(3, n + 1)) << n;
    // Another dimension starts from the next point.
    ASSERT_EQ(__vstLeapfrogStream(s.s, 1, 0x7FFFFFFF), 0);
    w = s.words(10);
    for (int n = 0; n < 10; ++n) ASSERT_EQ(w[n], oracle.at(1, n + 105)) << n;
    // From a point begun with all dimensions, coordinate k below
    // dimension - position steps that coordinate once.
    Owned t(ORV_BRNG_SOBOL, {5});
    t.words(2);
    ASSERT_EQ(__vstLeapfrogStream(t.s, 0, 0x7FFFFFFF), 0);
    EXPECT_EQ(t.words(2), (std::vector<uint32_t>{oracle.at(0, 2), oracle.at(0, 3)}));
}

TEST(Quasi, SkipAheadRecomputesAndTheSequenceEnds) {
    for (int32_t id : {ORV_BRNG_SOBOL, ORV_BRNG_NIEDERR}) {
        // Dimension 1: point 0xFFFFFFF0 after skipping, then the last 15 points.
        Owned e(id, {1});
        ASSERT_EQ(__vstSkipAheadStream(e.s, 0xFFFFFFEFll), 0);
        EXPECT_EQ(__vstSkipAheadStream(e.s, 16), ORV_RNG_ERROR_SKIPAHEAD_UNSUPPORTED);
        std::vector<uint32_t> w(17, 0xABCDu);
        EXPECT_EQ(e.fill(16, w.data()), ORV_RNG_ERROR_QRNG_PERIOD_ELAPSED);
        EXPECT_EQ(w, std::vector<uint32_t>(17, 0xABCDu));
        EXPECT_EQ(e.fill(15, w.data()), 0);
        EXPECT_EQ(e.fill(1, w.data() + 15), ORV_RNG_ERROR_QRNG_PERIOD_ELAPSED);
        if (id == ORV_BRNG_SOBOL) {
            const SobolOracle oracle(1);
            EXPECT_EQ(w[14], oracle.at(0, 0xFFFFFFFEu));
        }
    }
}

// The user modes given the built-in numbers reproduce the built-in stream;
// mode 4 in 50 dimensions keeps its numbers in chunks 9 and 13.
TEST(Sobol, UserModesReproduceTheBuiltInNumbers) {
    const SobolOracle oracle(40);
    const auto& polys = oracle.polys;
    const auto& m = oracle.m;
    const uint32_t dim = 12;
    std::vector<uint32_t> mode1 = {dim, 1, 1}, mode2 = {dim, 1, 2, 8}, mode3 = {dim, 1, 3};
    for (uint32_t d = 1; d < dim; ++d) mode1.push_back(polys[d - 1]), mode3.push_back(polys[d - 1]);
    mode3.push_back(8);
    for (uint32_t d = 1; d < dim; ++d) {
        std::vector<uint32_t> row = m[d - 1];
        row.resize(8, 1);
        mode2.insert(mode2.end(), row.begin(), row.end());
        mode3.insert(mode3.end(), row.begin(), row.end());
    }
    Owned built(ORV_BRNG_SOBOL, {dim});
    const auto want = built.words(dim * 300);
    for (const auto& seed : {mode1, mode2, mode3}) {
        Owned u(ORV_BRNG_SOBOL, seed);
        EXPECT_EQ(u.dimension(), dim);
        EXPECT_EQ(u.words(dim * 300), want) << "mode " << seed[2];
        EXPECT_EQ(__vstGetNumChunks(u.s), seed[2] == 3 ? 2 : 0);
    }
    // Too few words or an unknown mode: the dimension alone.
    Owned short_data(ORV_BRNG_SOBOL, std::vector<uint32_t>(mode1.begin(), mode1.end() - 1));
    EXPECT_EQ(short_data.words(dim * 300), want);
    Owned unknown(ORV_BRNG_SOBOL, {dim, 1, 5, 0, 0, 0});
    EXPECT_EQ(unknown.dimension(), dim);

    // Mode 4, 50 dimensions: the 40 published ones, then ten repeats shifted.
    const uint32_t big = 50;
    std::vector<uint32_t> mode4 = {big, 1, 4};
    for (uint32_t d = 0; d < big; ++d)
        for (int k = 0; k < 32; ++k) mode4.push_back(static_cast<uint32_t>(oracle.v[d % 40][k]) ^ (d >= 40 ? 1u : 0u));
    Owned u(ORV_BRNG_SOBOL, mode4);
    ASSERT_EQ(u.dimension(), big);
    ASSERT_NE(__vstSearchChunk(u.s, 9), nullptr);
    ASSERT_NE(__vstSearchChunk(u.s, 13), nullptr);
    Owned copy;
    ASSERT_EQ(__vstCopyStream(&copy.s, u.s), 0);
    EXPECT_EQ(__vstSearchChunk(copy.s, 9), __vstSearchChunk(u.s, 9));  // shared, read-only
    const auto w = u.words(big * 700 + 17);
    for (uint32_t n = 0; n < 700; ++n)  // the repeats flip bit 0 once per direction number used
        for (uint32_t d = 0; d < big; ++d)
            ASSERT_EQ(w[n * big + d], oracle.at(d % 40, n + 1) ^ (d >= 40 ? __builtin_parity((n + 1) ^ ((n + 1) >> 1)) : 0))
                << n << " " << d;
    std::vector<uint32_t> c(w.size());
    __vstiBRngSobol(copy.s, static_cast<int32_t>(c.size()), c.data());
    EXPECT_EQ(c, w);
}

// The built-in table holds the irreducible polynomials in ascending order,
// starting x, x + 1, x^2 + x + 1, ...: the stream made from the list computed
// here equals the built-in one. Past 318 dimensions user polynomials go to
// chunk 10.
TEST(Niederr, PolynomialTableAndChunk) {
    const std::vector<uint32_t> first = {2, 3, 7, 11, 13, 19, 25, 31, 37, 41, 47, 55, 59, 61, 67, 73, 87, 91, 97, 103, 109, 115, 117, 131};
    const auto polys = irreducible_polynomials(318);
    ASSERT_TRUE(std::equal(first.begin(), first.end(), polys.begin()));
    std::vector<uint32_t> seed = {318, 1, 1};
    seed.insert(seed.end(), polys.begin(), polys.end());
    Owned user(ORV_BRNG_NIEDERR, seed), built(ORV_BRNG_NIEDERR, {318});
    EXPECT_EQ(__vstGetNumChunks(user.s), 0);
    EXPECT_EQ(user.words(318 * 100), built.words(318 * 100));
    seed.assign({400, 1, 1});
    for (int d = 0; d < 400; ++d) seed.push_back(first[d % first.size()]);
    Owned wide(ORV_BRNG_NIEDERR, seed);
    ASSERT_EQ(wide.dimension(), 400u);
    ASSERT_NE(__vstSearchChunk(wide.s, 10), nullptr);
    const auto w = wide.words(400 * 64);
    const auto n24 = Owned(ORV_BRNG_NIEDERR, {24}).words(24 * 64);
    for (int n = 0; n < 64; ++n)
        for (int d = 0; d < 400; ++d) ASSERT_EQ(w[n * 400 + d], n24[n * 24 + d % 24]) << n << " " << d;
}

}  // namespace
