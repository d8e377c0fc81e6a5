// Checked distribution calls: each bad argument is refused with its named
// status, nothing is written and nothing drawn; good calls match the kernel.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <vector>

#include <orv/orv.h>

namespace {

std::vector<char> image(OrvStreamPtr s) {
    std::vector<char> m(static_cast<size_t>(vstGetStreamSize(s)));
    vstSaveStreamM(s, m.data());
    return m;
}

struct Case {
    const char* what;
    int status;
    std::function<int(OrvStreamPtr, void*)> call;  // the array holds 8 doubles
};

TEST(DistFrontEnd, RefusalsWriteNothingAndDrawNothing) {
    const double nan = std::nan(""), inf = INFINITY;
    auto d = [](void* r) { return static_cast<double*>(r); };
    auto f = [](void* r) { return static_cast<float*>(r); };
    auto i = [](void* r) { return static_cast<int*>(r); };
    const Case cases[] = {
        {"n negative", ORV_RNG_ERROR_BAD_COUNT, [&](auto s, auto r) { return vstdRngUniform(0, s, -1, d(r), 0, 1); }},
        {"null stream", ORV_RNG_ERROR_NULL_STREAM,
         [&](auto, auto r) { return vstdRngExponential(0, nullptr, 4, d(r), 0, 1); }},
        {"null array", ORV_RNG_ERROR_NULL_ARRAY, [&](auto s, auto) { return vstsRngLaplace(0, s, 4, nullptr, 0, 1); }},
        {"null bits", ORV_RNG_ERROR_NULL_ARRAY, [&](auto s, auto) { return vstiRngUniformBits64(0, s, 4, nullptr); }},
        {"unknown method", ORV_RNG_ERROR_BAD_METHOD, [&](auto s, auto r) { return vstdRngGumbel(1, s, 4, d(r), 0, 1); }},
        {"a equal to b", ORV_RNG_ERROR_BAD_INTERVAL, [&](auto s, auto r) { return vstdRngUniform(0, s, 4, d(r), 2, 2); }},
        {"a above b", ORV_RNG_ERROR_BAD_INTERVAL, [&](auto s, auto r) { return vstsRngUniform(0, s, 4, f(r), 3, 2); }},
        {"NaN bound", ORV_RNG_ERROR_BAD_INTERVAL, [&](auto s, auto r) { return vstdRngUniform(0, s, 4, d(r), 0, nan); }},
        {"infinite width", ORV_RNG_ERROR_BAD_INTERVAL,
         [&](auto s, auto r) { return vstdRngUniform(0, s, 4, d(r), -1e308, 1e308); }},
        {"integer a not below b", ORV_RNG_ERROR_BAD_INTERVAL,
         [&](auto s, auto r) { return vstiRngUniform(0, s, 4, i(r), 5, 5); }},
        {"zero scale", ORV_RNG_ERROR_BAD_SCALE, [&](auto s, auto r) { return vstdRngRayleigh(0, s, 4, d(r), 0, 0); }},
        {"negative scale", ORV_RNG_ERROR_BAD_SCALE, [&](auto s, auto r) { return vstsRngExponential(0, s, 4, f(r), 0, -1); }},
        {"infinite scale", ORV_RNG_ERROR_BAD_SCALE, [&](auto s, auto r) { return vstdRngLaplace(0, s, 4, d(r), 0, inf); }},
        {"NaN displacement", ORV_RNG_ERROR_BAD_DISPLACEMENT,
         [&](auto s, auto r) { return vstdRngGumbel(0, s, 4, d(r), nan, 1); }},
        {"p below 0", ORV_RNG_ERROR_BAD_PROBABILITY, [&](auto s, auto r) { return vstiRngBernoulli(0, s, 4, i(r), -0.1); }},
        {"p above 1", ORV_RNG_ERROR_BAD_PROBABILITY, [&](auto s, auto r) { return vstiRngBernoulli(0, s, 4, i(r), 1.5); }},
        {"p NaN", ORV_RNG_ERROR_BAD_PROBABILITY, [&](auto s, auto r) { return vstiRngBernoulli(0, s, 4, i(r), nan); }},
        {"no whole words", ORV_RNG_ERROR_NO_NUMBITS, [&](auto s, auto r) {
             OrvStreamPtr mrg = nullptr;
             vstNewStream(&mrg, ORV_BRNG_MRG32K3A, 1);
             const std::vector<char> before = image(mrg);
             const int status = vstiRngUniformBits32(0, mrg, 4, static_cast<uint32_t*>(r));
             EXPECT_EQ(image(mrg), before);
             vstDeleteStream(&mrg);
             return status;
         }},
        {"n zero", 0, [&](auto, auto r) {
             OrvStreamPtr mcg = nullptr;  // its fill would write one element for n = 0
             vstNewStream(&mcg, ORV_BRNG_MCG31M1, 1);
             const int status = vstdRngUniform(0, mcg, 0, d(r), 0, 1);
             vstDeleteStream(&mcg);
             return status;
         }},
    };
    OrvStreamPtr s = nullptr;
    ASSERT_EQ(vstNewStream(&s, ORV_BRNG_MCG59, 17), 0);
    for (const Case& c : cases) {
        double r[8];
        std::memset(r, 0x5A, sizeof r);
        const std::vector<char> before = image(s);
        EXPECT_EQ(c.call(s, r), c.status) << c.what;
        for (const double v : r) EXPECT_EQ(std::memcmp(&v, &r[7], sizeof v), 0) << c.what;
        EXPECT_EQ(image(s), before) << c.what;
    }
    // A record that names no generator.
    uint32_t bogus[16] = {0x7FFFFFFF};
    double r[1] = {0};
    EXPECT_EQ(vstdRngUniform(0, bogus, 1, r, 0, 1), ORV_RNG_ERROR_INVALID_BRNG);
    vstDeleteStream(&s);
}

// A checked call with good arguments gives the kernel's numbers.
TEST(DistFrontEnd, GoodCallsMatchTheKernel) {
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
