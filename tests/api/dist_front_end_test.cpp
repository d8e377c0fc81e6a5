// Checked distribution calls: each bad argument is refused with its named
// status, nothing is written and nothing drawn; a good call is the kernel's.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <vector>

#include <orv/orv.h>

namespace {

std::vector<char> image(OrvStreamPtr s) {
    std::vector<char> m(static_cast<size_t>(vstGetStreamSize(s)));
    vstSaveStreamM(s, m.data());
    return m;
}

TEST(DistFrontEnd, RefusalsWriteNothingAndDrawNothing) {
    const double nan = std::nan("");
    OrvStreamPtr s = nullptr, mrg = nullptr, mcg31 = nullptr;
    ASSERT_EQ(vstNewStream(&s, ORV_BRNG_MCG59, 17), 0);
    ASSERT_EQ(vstNewStream(&mrg, ORV_BRNG_MRG32K3A, 1), 0);
    ASSERT_EQ(vstNewStream(&mcg31, ORV_BRNG_MCG31M1, 1), 0);  // its fill writes one element for n = 0
    uint32_t bogus[16] = {0x7FFFFFFF};                          // a record naming no generator
    double r[8];
    auto* f = reinterpret_cast<float*>(r);
    auto* i = reinterpret_cast<int*>(r);
    const std::pair<int, std::function<int()>> cases[] = {
        {ORV_RNG_ERROR_BAD_COUNT, [&] { return vstdRngUniform(0, s, -1, r, 0, 1); }},
        {ORV_RNG_ERROR_NULL_STREAM, [&] { return vstdRngExponential(0, nullptr, 4, r, 0, 1); }},
        {ORV_RNG_ERROR_INVALID_BRNG, [&] { return vstdRngUniform(0, bogus, 4, r, 0, 1); }},
        {ORV_RNG_ERROR_NULL_ARRAY, [&] { return vstsRngLaplace(0, s, 4, nullptr, 0, 1); }},
        {ORV_RNG_ERROR_NULL_ARRAY, [&] { return vstiRngUniformBits64(0, s, 4, nullptr); }},
        {ORV_RNG_ERROR_BAD_METHOD, [&] { return vstdRngGumbel(1, s, 4, r, 0, 1); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstdRngUniform(0, s, 4, r, 2, 2); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstsRngUniform(0, s, 4, f, 3, 2); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstdRngUniform(0, s, 4, r, 0, nan); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstdRngUniform(0, s, 4, r, -1e308, 1e308); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstiRngUniform(0, s, 4, i, 5, 5); }},
        {ORV_RNG_ERROR_BAD_SCALE, [&] { return vstdRngRayleigh(0, s, 4, r, 0, 0); }},
        {ORV_RNG_ERROR_BAD_SCALE, [&] { return vstsRngExponential(0, s, 4, f, 0, -1); }},
        {ORV_RNG_ERROR_BAD_SCALE, [&] { return vstdRngLaplace(0, s, 4, r, 0, INFINITY); }},
        {ORV_RNG_ERROR_BAD_DISPLACEMENT, [&] { return vstdRngGumbel(0, s, 4, r, nan, 1); }},
        {ORV_RNG_ERROR_BAD_PROBABILITY, [&] { return vstiRngBernoulli(0, s, 4, i, -0.1); }},
        {ORV_RNG_ERROR_BAD_PROBABILITY, [&] { return vstiRngBernoulli(0, s, 4, i, 1.5); }},
        {ORV_RNG_ERROR_BAD_PROBABILITY, [&] { return vstiRngBernoulli(0, s, 4, i, nan); }},
        {ORV_RNG_ERROR_NO_NUMBITS, [&] { return vstiRngUniformBits32(0, mrg, 4, reinterpret_cast<uint32_t*>(r)); }},
        {0, [&] { return vstdRngUniform(0, mcg31, 0, r, 0, 1); }},
    };
    int k = 0;
    for (const auto& [status, call] : cases) {
        std::memset(r, 0x5A, sizeof r);
        const std::vector<char> before[3] = {image(s), image(mrg), image(mcg31)};
        EXPECT_EQ(call(), status) << "case " << k;
        for (const double v : r) EXPECT_EQ(std::memcmp(&v, &r[7], sizeof v), 0) << "case " << k;
        EXPECT_TRUE(image(s) == before[0] && image(mrg) == before[1] && image(mcg31) == before[2]) << "case " << k++;
    }
    for (OrvStreamPtr* p : {&s, &mrg, &mcg31}) vstDeleteStream(p);
}

TEST(DistFrontEnd, GoodCallsAreTheKernels) {
    OrvStreamPtr s = nullptr, c = nullptr;
    ASSERT_EQ(vstNewStream(&s, ORV_BRNG_SFMT19937, 3), 0);
    ASSERT_EQ(vstCopyStream(&c, s), 0);
    double mine[100], kernel[100];
    ASSERT_EQ(vstdRngLaplace(ORV_RNG_METHOD_ACCURATE, s, 100, mine, 1.0, 2.0), 0);
    ASSERT_EQ(_vstdRngLaplace(ORV_RNG_METHOD_ACCURATE, c, 100, kernel, 1.0, 2.0), 0);
    EXPECT_EQ(std::memcmp(mine, kernel, sizeof mine), 0);
    vstDeleteStream(&s);
    vstDeleteStream(&c);
}

}  // namespace
