// The constant tables: MRG32k3a power tables against direct powers, the WH
// parameter sets against the rule that generated them, and the modular
// power helpers against 128-bit powering.
#include <gtest/gtest.h>

#include <set>

#include <orv/rng.h>

#include "oracle.h"
#include "rng/congruential/modular.h"
#include "rng/congruential/wh.h"

namespace {

using oracle::u128;
using Mat = std::array<uint64_t, 9>;

Mat mul(const Mat& a, const Mat& b, uint64_t m) {
    Mat c{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            u128 s = 0;
            for (int k = 0; k < 3; ++k) s += static_cast<u128>(a[i * 3 + k]) * b[k * 3 + j];
            c[i * 3 + j] = static_cast<uint64_t>(s % m);
        }
    return c;
}

// A^e by left-to-right powering over a 256-bit exponent given as 2^k.
Mat power_of_two(const Mat& a, int k, uint64_t m) {
    Mat r{1, 0, 0, 0, 1, 0, 0, 0, 1};
    for (int bit = k; bit >= 0; --bit) {
        r = mul(r, r, m);
        if (bit == k) r = mul(r, a, m);
    }
    return r;
}

struct TableCase { const orv::rng::MrgPowerTable* table; uint64_t m; Mat a; };

TEST(MrgPowerTables, EveryEntryIsADirectPowerOfTwoOfTheRecursion) {
    const TableCase cases[] = {
        {&orv::rng::kMrgPowersM1, 4294967087ull, {0, 1, 0, 0, 0, 1, 4294967087ull - 810728, 1403580, 0}},
        {&orv::rng::kMrgPowersM2, 4294944443ull, {0, 1, 0, 0, 0, 1, 4294944443ull - 1370589, 0, 527612}}};
    for (const auto& c : cases) {
        for (int k = 0; k < 193; ++k) {
            const Mat want = power_of_two(c.a, k, c.m);
            for (int i = 0; i < 9; ++i) ASSERT_EQ((*c.table)[k][i], want[i]) << "entry " << k;
        }
    }
}

bool is_prime(uint32_t n) {
    if (n < 2) return false;
    for (uint32_t d = 2; d * d <= n; ++d)
        if (n % d == 0) return false;
    return true;
}

bool is_primitive_root(uint32_t a, uint32_t p) {
    uint32_t n = p - 1;
    for (uint32_t q = 2; q * q <= n || n > 1; ++q) {
        if (q * q > n) q = n;
        if (n % q != 0) continue;
        while (n % q == 0) n /= q;
        if (oracle::pow_mod(a, (p - 1) / q, p) == 1) return false;
    }
    return true;
}

TEST(WichmannHillSets, FollowTheirRule) {
    using orv::rng::kWhParameters;
    // The published rows 0, 1 and 272 are checked through their outputs in generators_test.cpp.
    std::set<uint32_t> moduli;
    uint32_t next_prime_below = 16766231;  // rows 2.. continue below row 272
    for (int r = 0; r < 273; ++r) {
        const auto& p = kWhParameters[r];
        for (int k = 0; k < 4; ++k) {
            const uint32_t m = p.m[k], a = (p.multipliers >> (8 * k)) & 0xFF;
            ASSERT_TRUE(is_prime(m)) << "row " << r;
            ASSERT_GT(m, (1u << 24) - 40000);
            ASSERT_LT(m, 1u << 24);
            ASSERT_TRUE(is_primitive_root(a, m)) << "row " << r << " part " << k;
            EXPECT_TRUE(moduli.insert(m).second) << "modulus used twice: " << m;
            ASSERT_DOUBLE_EQ(orv::rng::kWhReciprocals[r][k], 1.0 / m);
            if (r >= 2 && r <= 271) {
                uint32_t q = next_prime_below - 1;
                while (!is_prime(q)) --q;
                ASSERT_EQ(m, q) << "row " << r << ": the next prime down";
                next_prime_below = m;
                for (uint32_t b = a + 1; b < 128; ++b)
                    ASSERT_FALSE(is_primitive_root(b, m)) << "row " << r << ": a larger root below 128";
            }
        }
    }
}

struct PowCase { uint32_t a; uint64_t e; uint32_t m; };
class PowMod : public testing::TestWithParam<PowCase> {};

TEST_P(PowMod, AgreesWithWidePowering) {
    const auto c = GetParam();
    EXPECT_EQ(__vstiPowMod(c.a, c.e, c.m), oracle::pow_mod(c.a, c.e, c.m));
    EXPECT_EQ(__vstiPowMod2P31M1(c.a, c.e), oracle::pow_mod(c.a, c.e, 0x7FFFFFFF));
    const uint64_t a59 = uint64_t{c.a} * 0x9E3779B97F4Aull;
    EXPECT_EQ(__vstiPowMod2P59(a59, c.e), oracle::pow_mod(a59 & ((uint64_t{1} << 59) - 1), c.e, uint64_t{1} << 59));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PowMod,
    testing::Values(PowCase{3, 0, 7}, PowCase{0, 5, 11}, PowCase{1132489760u, 1, 0x7FFFFFFF},
                    PowCase{1132489760u, 0xFFFFFFFFFFFFFFFFull, 0x7FFFFFFF}, PowCase{0x7FFFFFFF, 3, 0x7FFFFFFF},
                    PowCase{0xFFFFFFFFu, 12345678901ull, 4294967087u}, PowCase{125, 1ull << 40, 16770647},
                    PowCase{2, 64, 1}, PowCase{4294967295u, 2, 4294967295u}));

TEST(PowMod, ZeroExponentGivesOneWithoutLookingAtTheModulus) { EXPECT_EQ(__vstiPowMod(5, 0, 0), 1u); }

}  // namespace

