// Checked distribution calls: each bad argument is refused with its named
// status, nothing is written and nothing drawn; a good call is the kernel's.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <tuple>
#include <vector>

#include <orv/orv.h>

#include "../rng/stream_util.h"

namespace {

using rngtest::image;

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
        {ORV_RNG_ERROR_INVALID_BRNG, [&] { return vstdRngUniform(0, bogus, 4, r, 0, 1); }},
        {ORV_RNG_ERROR_NULL_ARRAY, [&] { return vstiRngUniformBits64(0, s, 4, nullptr); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstdRngUniform(0, s, 4, r, 2, 2); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstsRngUniform(0, s, 4, f, 3, 2); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstdRngUniform(0, s, 4, r, 0, nan); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstdRngUniform(0, s, 4, r, -1e308, 1e308); }},
        {ORV_RNG_ERROR_BAD_INTERVAL, [&] { return vstiRngUniform(0, s, 4, i, 5, 5); }},
        {ORV_RNG_ERROR_BAD_PROBABILITY, [&] { return vstiRngBernoulli(0, s, 4, i, -0.1); }},
        {ORV_RNG_ERROR_BAD_PROBABILITY, [&] { return vstiRngBernoulli(0, s, 4, i, 1.5); }},
        {ORV_RNG_ERROR_BAD_PROBABILITY, [&] { return vstiRngBernoulli(0, s, 4, i, nan); }},
        {ORV_RNG_ERROR_NULL_STREAM, [&] { return vstiRngUniform(0, nullptr, 4, i, 0, 2); }},
        {ORV_RNG_ERROR_BAD_METHOD, [&] { return vstiRngBernoulli(1, s, 4, i, 0.5); }},
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

// Every checked continuous call with displacement, scale and shape
// parameters, in both precisions: the checked or the kernel form, with the
// parameters p.
enum Kind { kDisplacement, kScale, kShape };
using Call = int (*)(bool checked, bool single, int method, OrvStreamPtr s, int n, void* r, const double* p);
struct Checked {
    const char* name;
    int methods;  // variants 0 .. methods - 1
    std::vector<Kind> params;
    Call call;
};
#define CALL(Name, ...)                                                                                   \
    [](bool checked, bool single, int method, OrvStreamPtr s, int n, void* r, const double* p) -> int { \
        if (single) {                                                                                     \
            using T = float;                                                                              \
            return (checked ? vstsRng##Name : _vstsRng##Name)(method, s, n, static_cast<T*>(r), __VA_ARGS__); \
        }                                                                                                 \
        using T = double;                                                                                 \
        return (checked ? vstdRng##Name : _vstdRng##Name)(method, s, n, static_cast<T*>(r), __VA_ARGS__); \
    }
const Checked kCalls[] = {
    {"Exponential", 1, {kDisplacement, kScale}, CALL(Exponential, T(p[0]), T(p[1]))},
    {"Rayleigh", 1, {kDisplacement, kScale}, CALL(Rayleigh, T(p[0]), T(p[1]))},
    {"Gumbel", 1, {kDisplacement, kScale}, CALL(Gumbel, T(p[0]), T(p[1]))},
    {"Laplace", 1, {kDisplacement, kScale}, CALL(Laplace, T(p[0]), T(p[1]))},
    {"Cauchy", 1, {kDisplacement, kScale}, CALL(Cauchy, T(p[0]), T(p[1]))},
    {"Weibull", 1, {kShape, kDisplacement, kScale}, CALL(Weibull, T(p[0]), T(p[1]), T(p[2]))},
    {"Gaussian", 3, {kDisplacement, kScale}, CALL(Gaussian, T(p[0]), T(p[1]))},
    {"Lognormal", 2, {kDisplacement, kScale, kDisplacement, kScale}, CALL(Lognormal, T(p[0]), T(p[1]), T(p[2]), T(p[3]))},
};
#undef CALL

// For each call, precision and method: each bad argument gets its status with
// nothing written or drawn; a good call gives the kernel's numbers and
// leaves the stream where the kernel leaves a copy.
TEST(DistFrontEnd, EveryCallRefusesEachBadArgumentAndOtherwiseIsTheKernel) {
    const double nan = std::nan(""), inf = INFINITY;
    const std::vector<double> bad[] = {{nan, inf, -inf}, {0.0, -1.0, nan, inf}, {0.0, -2.0, nan, inf}};
    const int status[] = {ORV_RNG_ERROR_BAD_DISPLACEMENT, ORV_RNG_ERROR_BAD_SCALE, ORV_RNG_ERROR_BAD_SHAPE};
    const double good[] = {0.5, 2.0, 1.5};
    OrvStreamPtr s = nullptr, c = nullptr;
    ASSERT_EQ(vstNewStream(&s, ORV_BRNG_MCG59, 17), 0);
    for (const Checked& k : kCalls)
        for (const bool single : {false, true})
            for (int method = 0; method < k.methods; ++method) {
                std::vector<double> p;
                for (const Kind kind : k.params) p.push_back(good[kind]);
                std::vector<std::pair<int, std::function<int(double*)>>> cases = {
                    {ORV_RNG_ERROR_BAD_COUNT, [&](double* r) { return k.call(true, single, method, s, -1, r, p.data()); }},
                    {ORV_RNG_ERROR_NULL_STREAM, [&](double* r) { return k.call(true, single, method, nullptr, 4, r, p.data()); }},
                    {ORV_RNG_ERROR_NULL_ARRAY, [&](double*) { return k.call(true, single, method, s, 4, nullptr, p.data()); }},
                    {ORV_RNG_ERROR_BAD_METHOD, [&](double* r) { return k.call(true, single, k.methods, s, 4, r, p.data()); }},
                    {ORV_RNG_ERROR_BAD_METHOD, [&](double* r) { return k.call(true, single, -1, s, 4, r, p.data()); }},
                };
                for (size_t j = 0; j < p.size(); ++j)
                    for (const double v : bad[k.params[j]])
                        cases.push_back({status[k.params[j]], [&, j, v](double* r) {
                                             std::vector<double> q = p;
                                             q[j] = v;
                                             return k.call(true, single, method | ORV_RNG_METHOD_ACCURATE, s, 4, r, q.data());
                                         }});
                for (const auto& [want, call] : cases) {
                    double r[4];
                    std::memset(r, 0x5A, sizeof r);
                    const std::vector<char> before = image(s);
                    EXPECT_EQ(call(r), want) << k.name << " " << single << " " << method;
                    for (const double v : r) EXPECT_EQ(std::memcmp(&v, &r[3], sizeof v), 0) << k.name;
                    EXPECT_EQ(image(s), before) << k.name;
                }
                ASSERT_EQ(vstCopyStream(&c, s), 0);
                double mine[100], kernel[100];
                ASSERT_EQ(k.call(true, single, method, s, 100, mine, p.data()), 0);
                ASSERT_EQ(k.call(false, single, method, c, 100, kernel, p.data()), 0);
                EXPECT_EQ(std::memcmp(mine, kernel, single ? sizeof mine / 2 : sizeof mine), 0) << k.name;
                double next[2][4];  // where the streams stand (images differ in chunk order)
                vstdRngUniform(0, s, 4, next[0], 0, 1);
                vstdRngUniform(0, c, 4, next[1], 0, 1);
                EXPECT_EQ(std::memcmp(next[0], next[1], sizeof next[0]), 0) << k.name;
                vstDeleteStream(&c);
            }
    vstDeleteStream(&s);
}

// The multivariate call: a dimension below 1, a count that overflows with it,
// an unknown storage, a null mean or factor, a mean not finite, and in each
// storage a factor with a diagonal not positive or a read element not finite
// (the part above the full storage's diagonal is not read).
TEST(DistFrontEnd, MultivariateRefusesWhatIsNotAValidFactor) {
    OrvStreamPtr s = nullptr;
    ASSERT_EQ(vstNewStream(&s, ORV_BRNG_MCG59, 5), 0);
    const double nan = std::nan(""), a[2] = {0, 1}, bad_a[2] = {0, INFINITY};
    const double full[4] = {1, nan, 0.5, 2}, packed[3] = {1, 0.5, 2}, diag[2] = {1, 2};
    const double full_zero[4] = {1, 0, 0.5, 0}, packed_nan[3] = {1, nan, 2}, diag_neg[2] = {1, -2};
    const std::tuple<int, int, int, const double*, const double*> cases[] = {
        {ORV_RNG_ERROR_BAD_DIMENSION, 0, 0, a, full}, {ORV_RNG_ERROR_BAD_COUNT, 2, 0, a, full},
        {ORV_RNG_ERROR_BAD_STORAGE, 2, 3, a, full},   {ORV_RNG_ERROR_NULL_ARRAY, 2, 0, nullptr, full},
        {ORV_RNG_ERROR_NULL_ARRAY, 2, 1, a, nullptr}, {ORV_RNG_ERROR_BAD_DISPLACEMENT, 2, 2, bad_a, diag},
        {ORV_RNG_ERROR_BAD_FACTOR, 2, 0, a, full_zero}, {ORV_RNG_ERROR_BAD_FACTOR, 2, 1, a, packed_nan},
        {ORV_RNG_ERROR_BAD_FACTOR, 2, 2, a, diag_neg}, {0, 2, 0, a, full}, {0, 2, 1, a, packed}, {0, 2, 2, a, diag}};
    for (const auto& [status, dimen, mstorage, mean, factor] : cases) {
        double r[8];
        std::memset(r, 0x5A, sizeof r);
        const std::vector<char> before = image(s);
        const int n = status == ORV_RNG_ERROR_BAD_COUNT ? 1 << 30 : 4;
        EXPECT_EQ(vstdRngGaussianMV(0, s, n, r, dimen, mstorage, mean, factor), status) << mstorage;
        if (status == 0) continue;
        for (const double v : r) EXPECT_EQ(std::memcmp(&v, &r[7], sizeof v), 0);
        EXPECT_EQ(image(s), before);
    }
    vstDeleteStream(&s);
}

}  // namespace
